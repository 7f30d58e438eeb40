#include "infrared/receive/OpenReceiver.h"

#include <sys/stat.h>

#include "infrared/receive/CFifoReceiver.h"
#include "infrared/receive/CFileReceiver.h"
#include "infrared/receive/CLircReceiver.h"
#include "infrared/transmit/CLircDevice.h"

namespace infrared {

std::unique_ptr<IReceiver> OpenReceiver(const std::string& source, std::shared_ptr<ILircDevice> device) {
    struct stat info {};
    // A /dev path that is missing is a device that is not there, not a file.
    const bool exists = ::stat(source.c_str(), &info) == 0;
    if ((exists && S_ISCHR(info.st_mode)) || (!exists && source.compare(0, 5, "/dev/") == 0)) {
        if (!device) device = std::make_shared<CLircDevice>();
        return std::make_unique<CLircReceiver>(source, std::move(device));
    }
    if (exists && S_ISFIFO(info.st_mode)) return std::make_unique<CFifoReceiver>(source);
    return std::make_unique<CFileReceiver>(source);
}

}  // namespace infrared
