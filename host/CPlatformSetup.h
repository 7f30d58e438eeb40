// What the simulated platform holds before the plugin starts: the pairing list in the settings
// store, the IR blaster's codesets (and so its key maps), the model year and the IR service feature
// flag. Starts from embedded defaults (one paired appliance of each kind); Load() replaces them
// from the files and values it is given. Apply() writes it all into the simulator.
// Key maps are parsed once, when they are taken in. Used from one thread at a time.
#pragma once

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "JsonValue.h"
#include "PlatformOptions.h"
#include "ServiceContract.h"

namespace ircontrol::host {

// A codeset's key map as the IR library reports it: its text, the JSON it is (null when it is
// not JSON) and its named integer keys in the map's order.
struct KeyMap {
    std::string text;
    common::json::JsonValue json;
    std::vector<std::pair<std::string, int>> keys;

    static KeyMap Parse(const std::string& text);
};

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
    bool Load(const PlatformOptions& options, std::string& error, bool* badPath = nullptr);
    void Apply() const;
    // Attaches the --ir-device transmitter (after Apply); false with a reason it cannot be used.
    bool AttachTransmitter(std::string& error) const;
    // Replaces the pairing list with `text` and writes it to the settings store; false with a
    // one-line reason (the list unchanged) when it is not a usable pairing list.
    bool SetPairing(const std::string& text, std::string& error);
    // Reads the codesets (the --codesets file or the embedded ones) and the learned keys over
    // them again (a key was learned) and hands them to the simulator; false with a one-line
    // reason, everything kept, when they are unusable.
    bool ReloadCodesets(std::string& error);
    // Takes new options while the plugin runs: codesets, learned keys, catalogue and transmitter,
    // all or nothing (false with a reason, everything kept). The pairing list in use stays.
    bool Reload(const PlatformOptions& options, std::string& error);
    // Where learned keys are written: the learned-keys file when there is one, else --codesets.
    // The one place that decides it, for the learn command and the web remote alike.
    static const std::string& LearnInto(const PlatformOptions& options);
    // The codesets text `codesets` with the learned codesets text `learned` over it: a learned
    // codeset is added, or its keys replace the keys of that name (or code) in the codeset of its
    // name, carrying their protocol when it differs; an air-conditioner codeset is replaced whole.
    // False with a reason when `learned` is not a codesets text.
    static bool Overlay(const std::string& codesets, const std::string& learned, std::string& out,
                        std::string& error);

    const std::string& PairingText() const { return pairingText_; }
    const common::json::JsonValue& PairingJson() const { return pairingJson_; }  // the same, parsed
    const std::vector<PairedDevice>& Devices() const { return devices_; }
    const std::vector<std::pair<std::string, std::string>>& Catalogue() const { return catalogue_; }
    // The codeset of the first paired appliance of that OCF type, "" if none.
    std::string PairedCodeset(const std::string& type) const;
    // The key map the IR library gives for a codeset, or nullptr if it has none. Constant time.
    const host::KeyMap* KeyMap(const std::string& codeset) const;
    int Year() const { return year_; }
    bool MbrSupport() const { return mbrSupport_; }

    // The parsers behind Load(), for other texts; false with a one-line reason.
    // `root`, when given, receives the whole list as JSON.
    static bool ParsePairing(const std::string& text, std::vector<PairedDevice>& out, std::string& error,
                             common::json::JsonValue* root = nullptr);
    static bool ParseCatalogue(const std::string& text, std::vector<std::pair<std::string, std::string>>& out,
                               std::string& error);

    static constexpr int kDefaultYear = 23;
    static constexpr const char* kDevicesKey = contract::kDevicesKey;

private:
    std::string pairingText_;
    common::json::JsonValue pairingJson_;
    std::vector<PairedDevice> devices_;
    // The key maps the IR library reports: the codesets', or --catalogue's, which replaces them.
    std::vector<std::pair<std::string, std::string>> catalogue_;
    std::unordered_map<std::string, host::KeyMap> keyMaps_;  // codeset -> its catalogue entry, parsed
    void index();
    void applyCodesets() const;
    bool readCodesets(std::string& error, bool* badPath);  // codesetsFile_ into the text and key maps
    bool catalogueGiven_ = false;
    std::string codesetsText_;
    std::string codesetsFile_;  // "" when the embedded codesets are used
    std::string learnedFile_;   // "" when learned keys go to the codesets file
    std::string irDevice_;
    int year_ = kDefaultYear;
    bool mbrSupport_ = true;
};

}  // namespace ircontrol::host
