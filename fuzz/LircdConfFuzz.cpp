// Arbitrary text as a lircd.conf file: parse, write back, send every button as lircd would and
// import it. Any crash, sanitizer report, hang or escaped exception is a finding.
#include <cstddef>
#include <cstdint>
#include <string>

#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/encode/CLircdEncoder.h"
#include "infrared/formats/CFormatError.h"
#include "infrared/formats/CLircdConf.h"
#include "infrared/import/CCodesetImporter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const auto remotes = infrared::CLircdConf::Parse(text, "fuzz.conf");
        infrared::CLircdConf::Parse(infrared::CLircdConf::Write(remotes), "again.conf");
        for (const auto& remote : remotes) {
            for (const auto& button : remote.buttons) infrared::CLircdEncoder::Encode(remote, button);
        }
    } catch (const infrared::CFormatError&) {
    }
    const auto report = infrared::CCodesetImporter::ImportText(text, "fuzz.conf", {});
    for (const auto& codeset : report.codesets) infrared::CCodesetLibrary::Parse("{\"codesets\":[" + codeset.json + "]}");
    return 0;
}
