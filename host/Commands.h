// The handlers of the host tool's commands, held in the command table (CCommandLine::Commands).
// Each returns the exit status (see CApp.h) and reports failures through CommandContext::Fail.
// A new command is a handler here, its own source file and a row in the table.
#pragma once

#include "CommandContext.h"

namespace ircontrol::host {

int RunDemo(CommandContext& context);     // the guided tour
int RunRequest(CommandContext& context);  // key, ac and set: one request from the command line
int RunDevices(CommandContext& context);  // the pairing list, accepted keys and key maps
int RunServe(CommandContext& context);    // JSON lines on stdin
int RunWeb(CommandContext& context);      // the web remote, until Ctrl-C
int RunDecode(CommandContext& context);   // what received frames are
int RunLearn(CommandContext& context);    // a key or an air conditioner into a codesets file
int RunImport(CommandContext& context);   // remote files people have -> codesets
int RunExport(CommandContext& context);   // a codeset -> lircd.conf or .ir
int RunService(CommandContext& context);  // the web remote and MQTT, until SIGTERM

// After a serving command: unloads the plugin and says whether the library left the process
// (status 0 if it did, 1 if it is still mapped).
int UnloadAfterServing(CommandContext& context);

}  // namespace ircontrol::host
