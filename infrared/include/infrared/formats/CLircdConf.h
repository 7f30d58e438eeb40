// lircd.conf remote definitions: the space-encoded (SPACE_ENC), bi-phase (RC5/SHIFT_ENC, RC6)
// and raw_codes remotes lircd can send. Parse() checks the whole text and throws CFormatError
// at the first fault; Write() gives a text Parse() and lircd read back. Stateless.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace infrared {

struct LircButton {
    std::string name;
    std::size_t line = 0;
    std::vector<std::uint64_t> codes;       // coded remotes: one or more codes sent in turn
    std::vector<std::uint32_t> durations;   // raw_codes remotes: pulse, space, ..., in µs
};

struct LircPair {
    std::uint32_t pulse = 0, space = 0;
    bool Set() const { return pulse != 0 || space != 0; }
};

struct LircRemote {
    enum class Encoding { Space, Rc5, Rc6, Raw };

    std::string name;
    std::size_t line = 0;                   // its "begin remote"
    Encoding encoding = Encoding::Space;
    bool constLength = false, reverse = false, noHeadRep = false, noFootRep = false, repeatHeader = false;
    std::uint32_t bits = 0, preDataBits = 0, postDataBits = 0;
    std::uint64_t preData = 0, postData = 0;
    LircPair header, one, zero, repeat, pre, post, foot;
    std::uint32_t plead = 0, ptrail = 0;
    std::uint32_t gap = 0, repeatGap = 0;
    std::uint32_t frequency = 38000;        // Hz
    std::uint32_t dutyCycle = 50;           // percent
    std::uint32_t minRepeat = 0;
    std::uint32_t eps = 30, aeps = 100;     // receive tolerances, kept for a written file
    std::uint64_t toggleBitMask = 0, rc6Mask = 0;
    std::vector<LircButton> buttons;

    std::uint32_t AllBits() const { return preDataBits + bits + postDataBits; }
};

class CLircdConf {
public:
    static constexpr std::size_t kMaxRemotes = 256;
    static constexpr std::size_t kMaxButtons = 4096;
    static constexpr std::size_t kMaxRawValues = 4096;

    static std::vector<LircRemote> Parse(const std::string& text, const std::string& fileName);
    static std::string Write(const std::vector<LircRemote>& remotes);
};

}  // namespace infrared
