// The part every appliance class shares: parsing the device-info JSON into its record.
// Throws CException for a missing member (codes 4 and 5); the JSON layer's conversion
// exceptions and the IR interface's exceptions pass through.
#pragma once

#include <string>
#include <unordered_set>

#include "ir/IIRDevice.h"
#include "ir/IRDeviceInfo.h"

namespace ircontrol {

class CIRDevice : public IIRDevice {
public:
    CIRDevice() = default;

    IRDeviceInfo GetParsedDeviceInfo(const std::string& json);
    IRDeviceInfo parseDeviceInfo(const std::string& json);

protected:
    // The key appliances' BlastIR: parse, refuse a key outside `allowed` ("unsupported key",
    // code 5), send it as an H-codeset command. The library's result is not inspected.
    void blastAllowedKey(const std::string& json, const std::unordered_set<int>& allowed,
                         bool robotCleanerWording);

private:
    IRDeviceInfo info_;
};

}  // namespace ircontrol
