// Why a /dev/lircN node could not be opened, worded for people: a missing driver with where to
// look, a permission problem with the group and the udev rule that fixes it. Shared by the
// transmitter and the receiver.
#pragma once

#include <string>

#include "infrared/transmit/ILircDevice.h"

namespace infrared {

// `error`: the -errno of the open; `driverHint`: how the missing kind of device is usually added.
std::string LircOpenFailure(const std::string& path, int error, ILircDevice& device, const std::string& driverHint);

}  // namespace infrared
