// decode and learn: the command table's handlers for receiving, run by CReceiveCommands.
#include "CReceiveCommands.h"
#include "Commands.h"

namespace ircontrol::host {

int RunDecode(CommandContext& context) { return CReceiveCommands(context.options, context.out, context.err).Decode(); }

int RunLearn(CommandContext& context) { return CReceiveCommands(context.options, context.out, context.err).Learn(); }

}  // namespace ircontrol::host
