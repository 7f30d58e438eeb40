// Test helper: runs the host tool in-process on a command line (with the built plugin) and
// gives back its exit status and what it printed. A command line the parser refuses comes
// back as status 2 with the reason, as the tool reports it.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "CApp.h"

namespace ircontrol::host {

struct ToolRun {
    int status;
    std::string out;
    std::string err;
};

inline ToolRun RunApp(std::vector<std::string> args, const std::string& input = "") {
    args.insert(args.begin(), {"--plugin", IRC_PLUGIN_PATH});
    Options options = CCommandLine::Parse(args);
    if (!options.error.empty()) return {2, "", options.error};
    std::istringstream in(input);
    std::ostringstream out, err;
    const int status = CApp(options, in, out, err).Run();
    return {status, out.str(), err.str()};
}

}  // namespace ircontrol::host
