// What the simulated platform is set up from (CPlatformSetup::Load): its own options, so a front
// end other than the command line can fill them. Empty names and unset values keep the embedded
// defaults. A plain value.
#pragma once

#include <optional>
#include <string>

namespace ircontrol::host {

struct PlatformOptions {
    std::string devicesFile;    // pairing list
    std::string catalogueFile;  // key maps that replace the codesets'
    std::string codesetsFile;   // empty: the embedded codesets
    std::string learnedFile;    // learned keys, loaded over the codesets; empty: they go to codesetsFile
    std::string irDevice;       // empty: journal only; "mode2:FILE" or "/dev/lircN"
    std::optional<int> year;
    std::optional<bool> mbrSupport;
};

}  // namespace ircontrol::host
