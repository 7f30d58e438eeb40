// The receiver a --ir-receiver argument names: a character device is a lirc receiver, a named
// pipe mode2 text read as it comes, anything else a file of captures. Throws CReceiveError
// with a message for people.
#pragma once

#include <memory>
#include <string>

#include "infrared/receive/IReceiver.h"
#include "infrared/transmit/ILircDevice.h"

namespace infrared {

// `device`: the seam the lirc receiver uses (nullptr: the real system calls).
std::unique_ptr<IReceiver> OpenReceiver(const std::string& source, std::shared_ptr<ILircDevice> device = nullptr);

}  // namespace infrared
