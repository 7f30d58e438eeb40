// Arbitrary text as a Flipper .ir file, then through the import: parse, map to codeset keys and
// state tables, check the codeset. Any crash, sanitizer report or escaped exception is a finding
// (the importer reports every refusal in its result).
#include <cstddef>
#include <cstdint>
#include <string>

#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/formats/CFlipperIrFile.h"
#include "infrared/formats/CFormatError.h"
#include "infrared/import/CCodesetImporter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = "Filetype: IR signals file\nVersion: 1\n" + std::string(reinterpret_cast<const char*>(data), size);
    try {
        infrared::CFlipperIrFile::Write(infrared::CFlipperIrFile::Parse(text, "fuzz.ir"));
    } catch (const infrared::CFormatError&) {
    }
    for (const auto kind : {infrared::ApplianceKind::Fan, infrared::ApplianceKind::Aircon}) {
        infrared::CCodesetImporter::Options options;
        options.kindGiven = true;
        options.kind = kind;
        const auto report = infrared::CCodesetImporter::ImportText(text, "fuzz.ir", options);
        for (const auto& codeset : report.codesets) {
            // What the importer makes must always be a valid codeset.
            infrared::CCodesetLibrary::Parse("{\"codesets\":[" + codeset.json + "]}");
        }
    }
    return 0;
}
