// The codeset model: what one paired appliance's remote sends. Plain values built and
// validated by CCodesetLibrary, read-only afterwards (safe to share between threads).
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace infrared {

// Key protocols; the first eleven have a Linux kernel encoder (LIRC_MODE_SCANCODE).
// AcStates: an air conditioner known only by captures of some of its states (an imported file).
enum class Protocol { Nec, NecX, Nec32, Rc5, Rc6Mode0, Sony12, Sony15, Sony20, Jvc, Sanyo, Sharp, Raw, Pronto, Aircon, AcStates };

const char* ProtocolName(Protocol protocol);       // the codesets file's word ("nec", "rc6_0", ...)
bool ProtocolFromName(const std::string& name, Protocol& out);
bool HasKernelEncoder(Protocol protocol);

struct CodesetKey {
    std::string name;                  // "power"
    int code = 0;                      // the IR library's key code the plugin sends
    std::uint32_t scancode = 0;        // scancode protocols
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

// A field with named values (power, mode, fan speed); each value gives one byte per slot,
// already positioned within the slot's mask.
struct EnumField {
    std::vector<FrameSlot> slots;
    std::vector<std::pair<std::string, std::vector<std::uint8_t>>> values;  // file order
};

// The set point: bits = round((degrees - offset) * scale) << shift, within the slot's mask.
struct SetpointField {
    FrameSlot slot;
    std::uint32_t shift = 0;
    double offset = 0;
    double scale = 1;
    double min = 0;
    double max = 0;
};

enum class ChecksumRule { None, ByteSum, NibbleSum, Xor };

// Computed over bytes first..last (inclusive), plus `add`, then (<< shift) into the slot.
struct Checksum {
    ChecksumRule rule = ChecksumRule::None;
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::uint8_t add = 0;
    std::uint32_t shift = 0;
    FrameSlot slot;
};

struct FrameTiming {
    std::uint32_t headerMark = 0, headerSpace = 0;  // 0: no header
    std::uint32_t mark = 0, oneSpace = 0, zeroSpace = 0;
    std::uint32_t trailer = 0;                      // closing mark; 0: none
    std::uint32_t gap = 0;                          // silence after each copy of the frame
    std::uint32_t repeats = 0;                      // copies sent after the first
    bool msbFirst = false;
};

struct AcFrameFormat {
    FrameTiming timing;
    std::vector<std::uint8_t> bytes;  // the template every state starts from
    EnumField power, mode, fan;
    SetpointField setpoint;
    Checksum checksum;
};

struct Codeset {
    std::string name;
    std::string source;       // where the protocol facts come from
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
