#include "LircOpenFailure.h"

#include <cerrno>
#include <cstring>

namespace infrared {

std::string LircOpenFailure(const std::string& path, int error, ILircDevice& device, const std::string& driverHint) {
    const std::string cannot = "cannot open " + path + ": ";
    if (error == -ENOENT || error == -ENODEV || error == -ENXIO) {
        return cannot + "no such device. " + driverHint + " `ls /dev/lirc*` lists them";
    }
    if (error == -EACCES || error == -EPERM) {
        const std::string group = device.GroupOf(path);
        const std::string owner = group.empty() ? "its group" : "group '" + group + "'";
        return cannot + "permission denied. The device belongs to " + owner + ": add yourself (sudo usermod -aG " +
               (group.empty() ? "<group>" : group) +
               " $USER, then log in again) or add a udev rule such as "
               "KERNEL==\"lirc[0-9]*\", GROUP=\"video\", MODE=\"0660\"";
    }
    return cannot + std::strerror(error < 0 ? -error : error);
}

}  // namespace infrared
