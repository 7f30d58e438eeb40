// service: the web remote and MQTT in one process until SIGTERM; then the plugin is destroyed and
// unloaded here, as web does, so the last line can say whether the library left the process.
#include "Commands.h"
#ifdef IRC_HOST_HOME
#include "CHomeService.h"
#endif

namespace ircontrol::host {

int RunService(CommandContext& c) {
#ifdef IRC_HOST_HOME
    {
        CHomeService service(c);
        std::string error;
        if (!service.Run(error)) return c.Fail(error, 2);
    }
    return UnloadAfterServing(c);
#else
    return c.Fail("this ircontrol-host was built without libmosquitto or libsoup-3.0, so it has no service command", 1);
#endif
}

}  // namespace ircontrol::host
