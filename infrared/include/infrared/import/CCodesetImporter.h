// Turns remote files people already have into codesets: Flipper ".ir" files (parsed signals
// become protocol keys where the library has the protocol, raw signals raw keys; air
// conditioners a state table, or the protocol codeset with `recognise`) and lircd.conf remotes (every button sends what lircd sends).
// Never throws for a bad file: the file's error is in the result. Stateless.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "infrared/import/CKeyNames.h"

namespace infrared {

struct ImportRefusal {
    std::string file;
    std::size_t line = 0;
    std::string reason;
};

// One codeset made from a file (a lircd.conf file may give several).
struct ImportedCodeset {
    std::string name;
    std::string json;                               // the codeset as a codesets-file entry
    std::size_t protocolKeys = 0, rawKeys = 0, acStates = 0;
    std::vector<std::pair<std::string, int>> freeCodes;  // buttons the key table does not know
};

struct ImportedFile {
    std::string file;
    std::string format;                    // "flipper", "lircd"
    ApplianceKind kind = ApplianceKind::Fan;
    std::string error;                     // "file:line: reason" when nothing can be imported
    std::vector<ImportedCodeset> codesets;
    std::vector<ImportRefusal> refused;    // single signals left out, each with its reason
    std::string acProtocol;                // air conditioners: the shipped codeset whose frames
                                           // the captures are ("" if none), offered by --recognise
};

class CCodesetImporter {
public:
    struct Options {
        std::string name;          // codeset name; default from the file or the remote
        bool kindGiven = false;    // else taken from the path, fan when it says nothing
        ApplianceKind kind = ApplianceKind::Fan;
        bool recognise = false;    // an AC file of a known protocol becomes that protocol's codeset
    };

    static constexpr std::size_t kMaxFileBytes = 4 * 1024 * 1024;

    static ImportedFile ImportFile(const std::string& path, const Options& options);
    static ImportedFile ImportText(const std::string& text, const std::string& file, const Options& options);
    // A codeset name made of the letters, digits, '_' and '-' of `text` ("Honeywell_Fan_HYF290B").
    static std::string CodesetName(const std::string& text);
};

}  // namespace infrared
