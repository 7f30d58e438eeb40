// The air-conditioner side of the IR library fed anything: a codesets file (the frame
// description reader must refuse it with a reason, never crash or leak another exception), or
// durations read back against every shipped family.
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/decode/CAcFrameDecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    if (data[0] == '{') {
        try {
            const auto library = infrared::CCodesetLibrary::Parse(std::string(reinterpret_cast<const char*>(data), size));
            for (const auto& codeset : library->Codesets()) {
                if (codeset.protocol != infrared::Protocol::Aircon) continue;
                (void)infrared::CCodesetLibrary::KeyMapText(codeset);
                try {
                    const auto bytes = infrared::CAcFrameEncoder::BuildFrame(codeset.frame, {"on", "cool", "24", "auto"});
                    const auto train = infrared::CAcFrameEncoder::Encode(codeset.frame, bytes, codeset.carrier, codeset.dutyCycle);
                    (void)infrared::CAcFrameDecoder::Decode(codeset, train.durations);
                } catch (const std::invalid_argument&) {
                }
            }
        } catch (const std::invalid_argument&) {
        }
        return 0;
    }
    static const auto shipped = infrared::CCodesetLibrary::Parse(infrared::DefaultCodesetsText());
    std::vector<std::uint32_t> durations;
    for (std::size_t i = 0; i + 1 < size; i += 2) durations.push_back(static_cast<std::uint32_t>(data[i] << 8 | data[i + 1]) * 4u);
    for (const auto& codeset : shipped->Codesets()) (void)infrared::CAcFrameDecoder::Decode(codeset, durations);
    return 0;
}
