// What the simulated platform holds before the plugin starts: the pairing list in the settings
// store, the IR blaster's codesets (and so its key maps), the model year and the IR service feature
// flag. Starts from embedded defaults (one paired appliance of each kind); Load() replaces them
// from the files and values given on the command line. Apply() writes it all into the simulator.
#pragma once

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "CCommandLine.h"

namespace ircontrol::host {

struct PairedDevice {
    std::string codeset;
    int deviceIndex = 0;
    std::string type;  // OCF device type; only the tool reads it, the plugin ignores it
};

class CPlatformSetup {
public:
    CPlatformSetup();

    // false with a one-line reason when a file cannot be read or is not the expected JSON;
    // `badPath` (if given) tells the first kind (no such file, a directory) from the second.
    bool Load(const Options& options, std::string& error, bool* badPath = nullptr);
    void Apply() const;
    // Attaches the --ir-device transmitter (after Apply); false with a reason it cannot be used.
    bool AttachTransmitter(std::string& error) const;
    // Replaces the pairing list with `text` and writes it to the settings store; false with a
    // one-line reason (the list unchanged) when it is not a usable pairing list.
    bool SetPairing(const std::string& text, std::string& error);

    const std::string& PairingText() const { return pairingText_; }
    const std::vector<PairedDevice>& Devices() const { return devices_; }
    const std::vector<std::pair<std::string, std::string>>& Catalogue() const { return catalogue_; }
    // The codeset of the first paired appliance of that OCF type, "" if none.
    std::string PairedCodeset(const std::string& type) const;
    // The key map the IR library gives for a codeset, or nullptr if it has none. Constant time.
    const std::string* KeyMap(const std::string& codeset) const;
    int Year() const { return year_; }
    bool MbrSupport() const { return mbrSupport_; }

    // The parsers behind Load(), for other texts; false with a one-line reason.
    static bool ParsePairing(const std::string& text, std::vector<PairedDevice>& out, std::string& error);
    static bool ParseCatalogue(const std::string& text, std::vector<std::pair<std::string, std::string>>& out,
                               std::string& error);

    static constexpr int kDefaultYear = 23;
    static constexpr char kDevicesKey[] = "db/tavrell/irplugin/devices";

private:
    std::string pairingText_;
    std::vector<PairedDevice> devices_;
    // The key maps the IR library reports: the codesets', or --catalogue's, which replaces them.
    std::vector<std::pair<std::string, std::string>> catalogue_;
    std::unordered_map<std::string, std::size_t> catalogueIndex_;  // codeset -> catalogue_ position
    void index();
    bool catalogueGiven_ = false;
    std::string codesetsText_;
    std::string irDevice_;
    int year_ = kDefaultYear;
    bool mbrSupport_ = true;
};

}  // namespace ircontrol::host
