// Splits a capture into frames and says what each is: a key of a known protocol (named by the
// loaded codesets when one has it), an air conditioner's state, or cleaned raw timings. Noise
// before a frame is skipped and copies of one press are folded into one frame. Immutable after
// construction, so one decoder may serve several threads; Decode() never throws on bad input
// (std::bad_alloc aside).
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/decode/Capture.h"
#include "infrared/encode/CAcFrameEncoder.h"

namespace infrared {

struct DecodedFrame {
    enum class Kind { Key, Aircon, Raw };
    Kind kind = Kind::Raw;
    std::uint64_t startUs = 0;     // on the capture's clock (Capture::startUs + offset)
    std::uint64_t durationUs = 0;  // first mark to last mark, copies included
    // Key
    Protocol protocol = Protocol::Raw;
    std::uint64_t scancode = 0;
    bool repeat = false;           // an NEC repeat frame: the scancode is the frame's before it, if any
    std::optional<bool> toggle;    // RC-5 and RC-6
    std::string codeset;           // Key and Aircon: the loaded codeset that has it, "" if none
    std::string key;               // Key: that codeset's key name and code (-1: none)
    int code = -1;
    // Aircon
    std::string family;
    AcState state;
    std::vector<std::uint8_t> bytes;
    // Raw
    std::vector<std::uint32_t> durations;  // one frame, mark first, odd count
    std::uint32_t carrier = 0;             // Hz, 0: unknown
    std::string pronto;
};

class CFrameDecoder {
public:
    explicit CFrameDecoder(std::shared_ptr<const CCodesetLibrary> codesets);
    std::vector<DecodedFrame> Decode(const Capture& capture) const;

private:
    struct KeyName {
        std::string codeset, key;
        int code = -1;
    };
    using KeyId = std::pair<Protocol, std::uint64_t>;

    void index_codeset(const Codeset& codeset);
    void decode_burst(const std::vector<std::uint32_t>& d, std::size_t first, std::size_t last,
                      const std::vector<std::uint64_t>& at, const Capture& capture,
                      std::vector<DecodedFrame>& out) const;
    std::optional<DecodedFrame> decode_aircon(const std::vector<std::uint32_t>& burst) const;
    void name_key(DecodedFrame& frame) const;

    std::shared_ptr<const CCodesetLibrary> codesets_;
    std::map<KeyId, KeyName> keys_;  // what each codeset key decodes to
};

}  // namespace infrared
