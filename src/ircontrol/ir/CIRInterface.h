// The service's only door to the IR blaster library: resolves a codeset to its paired
// transmitter entry (re-reading the pairing list from the settings store on every call) and
// sends keys, air-conditioner states and key-map queries. Used from the queue's worker thread;
// holds no state. Throws CException (code 2, or the settings store's code 8) on failures it
// detects; the library's own failure results are returned, not thrown.
#pragma once

#include <string>

#include "common/CNoncopyable.h"
#include "ir/IRDeviceInfo.h"

namespace ircontrol {

class CIRInterface : private CNoncopyable {
public:
    static CIRInterface& GetInstance();
    virtual ~CIRInterface();

    int getD2DDeviceIndex(const std::string& codeset);  // -1 when no entry matches
    bool SendCommandHDevice(const std::string& codeset, int key, bool online);
    bool SendCommandZDevice(const std::string& codeset, int key, bool online);
    int SetAirconStateAndSendCommand(const std::string& codeset, const IRAcCommand& state);
    std::string GetSupportedKeyMapHCodeset(const std::string& codeset, bool online);  // "" if none
    std::string GetSupportedKeyMapZCodeset(const std::string& codeset, bool online);

private:
    CIRInterface();
    int deviceIndexOrThrow(const std::string& codeset);
};

}  // namespace ircontrol
