// web: serves the web remote until Ctrl-C; then the plugin is destroyed and unloaded here, so the
// last line can say whether the library really left the process.
#include "Commands.h"
#ifdef IRC_HOST_WEB
#include "CRequestGuard.h"
#include "CWebServer.h"
#endif

namespace ircontrol::host {

int RunWeb(CommandContext& c) {
#ifdef IRC_HOST_WEB
    WebOptions web;
    const auto listen = c.options.values.find("listen");
    if (listen != c.options.values.end()) web.listen = listen->second;
    web.timeoutMs = c.options.timeoutMs;
    web.learn.receiver = c.options.irReceiver;
    web.learn.codesetsFile = CPlatformSetup::LearnInto(c.options.platform);
    {
        CWebServer server(web, c.session, c.setup);
        std::string error;
        if (!server.Listen(error)) return c.Fail(error, 2);
        std::string address;
        unsigned port = 0;
        if (CRequestGuard::ParseListen(web.listen, address, port) && !CRequestGuard::IsLoopback(address)) {
            c.err << "ircontrol-host: warning: serving beyond this machine (" << web.listen
                  << "); anyone who can reach it can drive the plugin\n";
        }
        c.out << "ircontrol-host: serving " << server.Url() << " (Ctrl-C stops)" << std::endl;
        server.Run();
    }
    return UnloadAfterServing(c);
#else
    return c.Fail("this ircontrol-host was built without libsoup-3.0, so it has no web command", 1);
#endif
}

int UnloadAfterServing(CommandContext& c) {
    const bool unloaded = c.plugin.Unload();
    c.out << "ircontrol-host: stopped; plugin destroyed, library " << (unloaded ? "unloaded" : "still mapped")
          << std::endl;
    return unloaded ? 0 : 1;
}

}  // namespace ircontrol::host
