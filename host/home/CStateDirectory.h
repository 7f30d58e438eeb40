// What the service was told, kept in its state directory so a restart loses none of it:
//   devices.json   the pairing list, as the web page's PUT /api/devices or MQTT last set it
//   aircon.json    each air conditioner's last state, by codeset
//   learned.json   keys learned from remotes, a codesets file (written by the learner, loaded over
//                  the codesets by CPlatformSetup; not read here)
// Every write replaces the file atomically (CAtomicFile). A file that is there but unusable is
// refused as a whole with "FILE:LINE: reason". Not thread-safe: one owner thread; throws nothing.
#pragma once

#include <map>
#include <string>

#include "infrared/formats/CAtomicFile.h"
#include "Request.h"

namespace ircontrol::host {

class CStateDirectory {
public:
    explicit CStateDirectory(std::string directory) : directory_(std::move(directory)) {}

    // Creates the directory if needed and reads what is there. False with a reason.
    bool Load(std::string& error);

    bool HasPairing() const { return !pairing_.empty(); }
    const std::string& Pairing() const { return pairing_; }
    bool SavePairing(const std::string& text, std::string& error);

    // codeset -> last state sent and answered ok
    const std::map<std::string, AcState>& AcStates() const { return acStates_; }
    bool SaveAcState(const std::string& codeset, const AcState& state, std::string& error);

    std::string PairingPath() const { return directory_ + "/devices.json"; }
    std::string AcPath() const { return directory_ + "/aircon.json"; }
    // Every write passes `hook` at each of its steps (tests stop the process there).
    void SetWriteHook(infrared::CAtomicFile::Hook hook) { hook_ = std::move(hook); }

    // The text of aircon.json for `states`, and back; false with "line N: reason".
    static std::string AcText(const std::map<std::string, AcState>& states);
    static bool ParseAc(const std::string& text, std::map<std::string, AcState>& out, std::string& error);

private:
    std::string directory_;
    std::string pairing_;
    std::map<std::string, AcState> acStates_;
    infrared::CAtomicFile::Hook hook_;
};

}  // namespace ircontrol::host
