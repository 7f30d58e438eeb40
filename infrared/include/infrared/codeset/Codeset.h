// The codeset model: what one paired appliance's remote sends. Plain values built and
// validated by CCodesetLibrary, read-only afterwards (safe to share between threads).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace infrared {

// Key protocols. The first twelve have a Linux kernel encoder (LIRC_MODE_SCANCODE; rc5x is sent
// as the kernel's rc5); all up to Pioneer are scancode protocols this library encodes itself.
// AcStates: an air conditioner known only by captures of some of its states (an imported file).
enum class Protocol {
    Nec, NecX, Nec32, Rc5, Rc5x, Rc6Mode0, Sony12, Sony15, Sony20, Jvc, Sanyo, Sharp,
    Nec42, Kaseikyo, Rca, Pioneer,
    Raw, Pronto, Aircon, AcStates
};

const char* ProtocolName(Protocol protocol);       // the codesets file's word ("nec", "rc6_0", ...)
bool ProtocolFromName(const std::string& name, Protocol& out);
bool HasKernelEncoder(Protocol protocol);
bool HasScancode(Protocol protocol);               // keys are a scancode that CKeyEncoder encodes

struct CodesetKey {
    std::string name;                  // "power"
    int code = 0;                      // the IR library's key code the plugin sends
    std::uint64_t scancode = 0;        // scancode protocols (42 bits at most)
    std::vector<std::uint32_t> raw;    // Raw: pulse, space, pulse, ... in microseconds
    std::string pronto;                // Pronto: the hex words as written
    Protocol protocol = Protocol::Nec; // what it sends: the codeset's unless the key names its own
    std::uint32_t carrier = 0;         // Hz; 0: the codeset's
    std::uint32_t dutyCycle = 0;       // percent; 0: the codeset's
    std::uint32_t gap = 0;             // Raw: silence after it in µs; 0: the default 50 ms
};

// One captured air-conditioner state: what its name says (empty / unset: not said) and its frame.
struct AcStateEntry {
    CodesetKey frame;                  // frame.name is the state's name; frame.code is unused
    std::string power;                 // "on", "off"
    std::string mode;                  // "auto", "cool", "dry", "fan", "heat"
    std::string fan;                   // "low", "medium", "high", "auto"
    bool hasSetpoint = false;
    double setpoint = 0;
};

// Where a value sits in the frame: a byte index and the bits of that byte it owns.
struct FrameSlot {
    std::uint32_t byte = 0;
    std::uint8_t mask = 0xff;
};

// Bits written as they are (a mode's companion bits, a fixed signature).
struct SlotValue {
    FrameSlot slot;
    std::uint8_t value = 0;  // within slot.mask
};

using WordBytes = std::pair<std::string, std::vector<std::uint8_t>>;  // one byte per slot

// A field with named values (power, mode, fan speed); each value gives one byte per slot,
// already positioned within the slot's mask. `readAlso` holds further codes a receiver takes
// for a word (a remote that sends auto fan two ways); the encoder never writes them.
struct EnumField {
    std::vector<FrameSlot> slots;
    std::vector<WordBytes> values;    // file order
    std::vector<WordBytes> readAlso;
};

// The set point: bits = round((degrees - offset) * scale) << shift within the slot's mask
// (scale may be negative for a field that counts down), or, when `table` is given, the code
// listed for each whole degree; `half` adds half a degree to either.
struct SetpointField {
    FrameSlot slot;
    std::uint32_t shift = 0;
    double offset = 0;
    double scale = 1;
    double min = 0;
    double max = 0;
    std::vector<std::pair<double, std::uint8_t>> table;  // degrees, code in place
    std::optional<FrameSlot> half;                        // bits set for an extra half degree
};

// What a mode changes beyond its own field: bits written after every other field, and the
// fields the frame then no longer carries (fan-only mode sends no set point).
struct ModeRule {
    std::string mode;
    std::vector<SlotValue> set;
    bool ignoresSetpoint = false;
    bool ignoresFan = false;
};

enum class ChecksumRule { None, Sum, Xor };
enum class ChecksumUnit { Bytes, Nibbles, LowNibbles, HighNibbles };

struct ChecksumRange {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    ChecksumUnit unit = ChecksumUnit::Bytes;
};

// value = add + (negate ? -total : total) over the ranges (each byte bit-reversed first and the
// result reversed back when `reversed`), then (value << shift) within the slot. The slot's own
// bits count as 0; rules apply in file order, so a later one may cover an earlier one's byte.
struct Checksum {
    ChecksumRule rule = ChecksumRule::None;
    std::vector<ChecksumRange> ranges;
    std::uint8_t add = 0;
    bool negate = false;
    bool reversed = false;
    std::uint32_t shift = 0;
    FrameSlot slot;
};

enum class Inversion { None, Whole, EachByte };

// One block on air: optional header, then either constant bits or the frame's bytes
// first..last (last == kToEnd: to the frame's end, whatever its length), then the trailer mark
// and the gap. `skipBits` leading bits of the first byte are not sent (a 28-bit value in four
// bytes); `tailBits` are sent after the bytes.
struct FrameSection {
    static constexpr std::uint32_t kToEnd = 0xffffffffu;
    std::uint32_t headerMark = 0, headerSpace = 0;  // 0: no header
    std::uint32_t first = 0, last = kToEnd;
    std::string bits;                               // constant "0101" instead of bytes
    std::string tailBits;
    std::uint32_t skipBits = 0;
    bool msbFirst = false;
    Inversion inversion = Inversion::None;
    std::uint32_t trailer = 0;                      // closing mark; 0: none
    std::uint32_t gap = 0;                          // silence after it, at least
    std::uint32_t period = 0;                       // pad the gap so the block lasts this long
};

// Defaults every section starts from; a codeset without `sections` has one section with these.
struct FrameTiming {
    std::uint32_t leaderMark = 0, leaderSpace = 0;  // once per copy, before the first section
    std::uint32_t headerMark = 0, headerSpace = 0;  // 0: no header
    std::uint32_t mark = 0, oneSpace = 0, zeroSpace = 0;
    std::uint32_t trailer = 0;                      // closing mark; 0: none
    std::uint32_t gap = 0;                          // silence after each copy of the frame
    std::uint32_t finalSpace = 0;                   // extra silence after the last copy
    std::uint32_t repeats = 0;                      // copies sent after the first
    bool msbFirst = false;
};

struct AcFrameFormat {
    FrameTiming timing;
    std::vector<FrameSection> sections;
    std::vector<std::uint8_t> bytes;     // the template every state starts from
    std::vector<std::uint8_t> offFrame;  // power off as a fixed frame (empty: a field)
    EnumField power, mode, fan;          // power without slots: only the off frame
    SetpointField setpoint;
    std::vector<ModeRule> modeRules;
    std::vector<Checksum> checksums;     // applied in order
    std::vector<FrameSlot> fixed;        // bits a frame of this family always has as in `bytes`
};

// The power words a frame takes: its field's, "off" when an off frame stands for it, and "on"
// when only "off" is a code.
std::vector<std::string> PowerWords(const AcFrameFormat& frame);

struct Codeset {
    std::string name;
    std::string source;       // where the protocol facts come from
    std::string family;       // air conditioners: the protocol family ("MITSUBISHI_AC")
    Protocol protocol = Protocol::Nec;
    std::uint32_t carrier = 38000;  // Hz
    std::uint32_t dutyCycle = 33;   // percent
    std::uint32_t repeats = 0;      // key codesets: extra copies of each frame
    std::vector<CodesetKey> keys;   // file order
    AcFrameFormat frame;            // Aircon only
    std::vector<AcStateEntry> states;  // AcStates only, file order

    const CodesetKey* FindKey(int code) const;
};

}  // namespace infrared
