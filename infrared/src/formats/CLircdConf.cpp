#include "infrared/formats/CLircdConf.h"

#include <cerrno>
#include <cstdlib>
#include <sstream>

#include "TextLines.h"
#include "infrared/formats/CFormatError.h"

namespace infrared {
namespace {

constexpr std::uint64_t kMaxDuration = 1000000;  // µs
constexpr std::uint64_t kMaxGap = 5000000;

// Parameters lircd reads for receiving only, or that an old file still carries; accepted so
// that such files import, not used for sending.
const char* const kReceiveOnly[] = {"eps", "aeps", "ignore_mask", "toggle_bit", "repeat_bit", "toggle_mask",
                                    "repeat_mask", "suppress_repeat", "manual_sort", "min_code_repeat",
                                    "serial_mode", "baud", "driver", "release", "two", "three"};

std::vector<std::string> Words(const std::string& line) {
    std::vector<std::string> out;
    std::istringstream in(line);
    std::string word;
    while (in >> word) out.push_back(word);
    return out;
}

class Reader {
public:
    explicit Reader(const std::string& file) : file_(file) {}

    [[noreturn]] void Fail(const std::string& why) const { throw CFormatError(file_, line_, why); }

    void Line(std::size_t number) { line_ = number; }

    // Decimal, 0x hex or 0 octal as lircd reads them; no sign.
    std::uint64_t Number(const std::string& word, std::uint64_t max, const std::string& what) const {
        char* end = nullptr;
        errno = 0;
        const std::uint64_t value = std::strtoull(word.c_str(), &end, 0);
        if (word.empty() || word[0] == '-' || word[0] == '+' || *end != '\0' || errno != 0) {
            Fail(what + ": '" + word.substr(0, 24) + "' is not a number");
        }
        if (value > max) Fail(what + ": " + word + " is larger than " + std::to_string(max));
        return value;
    }

    std::uint32_t Duration(const std::string& word, const std::string& what) const {
        return static_cast<std::uint32_t>(Number(word, kMaxDuration, what));
    }

    void Parameter(LircRemote& r, const std::vector<std::string>& w) {
        const std::string& key = w[0];
        const auto count = [&](std::size_t min, std::size_t max) {
            if (w.size() - 1 < min || w.size() - 1 > max) Fail(key + " takes " + std::to_string(min) + " value(s)");
        };
        const auto pair = [&](LircPair& p) {
            count(2, 2);
            p.pulse = Duration(w[1], key);
            p.space = Duration(w[2], key);
        };
        const auto single = [&](std::uint32_t& out) {
            count(1, 1);
            out = Duration(w[1], key);
        };
        if (key == "name") {
            count(1, 1);
            if (!IsUtf8(w[1])) Fail("the name is not UTF-8 text");
            r.name = w[1];
        } else if (key == "flags") {
            Flags(r, w);
        } else if (key == "bits" || key == "pre_data_bits" || key == "post_data_bits") {
            count(1, 1);
            const auto bits = static_cast<std::uint32_t>(Number(w[1], 64, key));
            (key == "bits" ? r.bits : key == "pre_data_bits" ? r.preDataBits : r.postDataBits) = bits;
        } else if (key == "pre_data" || key == "post_data" || key == "toggle_bit_mask" || key == "rc6_mask") {
            count(1, 1);
            const std::uint64_t value = Number(w[1], UINT64_MAX, key);
            (key == "pre_data" ? r.preData : key == "post_data" ? r.postData : key == "rc6_mask" ? r.rc6Mask : r.toggleBitMask) = value;
        } else if (key == "header") { pair(r.header);
        } else if (key == "one") { pair(r.one);
        } else if (key == "zero") { pair(r.zero);
        } else if (key == "repeat") { pair(r.repeat);
        } else if (key == "pre") { pair(r.pre);
        } else if (key == "post") { pair(r.post);
        } else if (key == "foot") { pair(r.foot);
        } else if (key == "plead") { single(r.plead);
        } else if (key == "ptrail") { single(r.ptrail);
        } else if (key == "repeat_gap") {
            count(1, 1);
            r.repeatGap = static_cast<std::uint32_t>(Number(w[1], kMaxGap, key));
        } else if (key == "gap") {
            count(1, 2);  // a second gap (some learned files) is not used for sending
            r.gap = static_cast<std::uint32_t>(Number(w[1], kMaxGap, key));
        } else if (key == "frequency") {
            count(1, 1);
            r.frequency = static_cast<std::uint32_t>(Number(w[1], 500000, key));
            if (r.frequency == 0) r.frequency = 38000;
            if (r.frequency < 10000) Fail("frequency must be 0 (default) or 10000..500000 Hz");
        } else if (key == "duty_cycle") {
            count(1, 1);
            r.dutyCycle = static_cast<std::uint32_t>(Number(w[1], 100, key));
            if (r.dutyCycle == 0) Fail("duty_cycle must be 1..100");
        } else if (key == "min_repeat") {
            count(1, 1);
            r.minRepeat = static_cast<std::uint32_t>(Number(w[1], 8, key));
        } else {
            for (const char* ignored : kReceiveOnly) {
                if (key == ignored) {
                    if (key == "eps") r.eps = static_cast<std::uint32_t>(Number(w.size() > 1 ? w[1] : "", 100, key));
                    if (key == "aeps") r.aeps = static_cast<std::uint32_t>(Number(w.size() > 1 ? w[1] : "", 100000, key));
                    return;
                }
            }
            Fail("unknown parameter '" + key.substr(0, 40) + "'");
        }
    }

    void Check(const LircRemote& r) const {
        if (r.name.empty()) Fail("remote has no name");
        if (r.buttons.empty()) Fail("remote '" + r.name + "' has no buttons");
        if (r.encoding == LircRemote::Encoding::Raw) return;
        if (r.bits == 0) Fail("remote '" + r.name + "' needs bits");
        if (r.AllBits() > 64) Fail("remote '" + r.name + "': pre_data_bits + bits + post_data_bits exceed 64");
        if (!r.one.Set() || !r.zero.Set()) {
            Fail("remote '" + r.name + "' has no one/zero timings: the key map of a receiver, which cannot be sent");
        }
        const auto fits = [](std::uint64_t value, std::uint32_t bits) { return bits >= 64 || (value >> bits) == 0; };
        if (!fits(r.preData, r.preDataBits)) Fail("remote '" + r.name + "': pre_data does not fit pre_data_bits");
        if (!fits(r.postData, r.postDataBits)) Fail("remote '" + r.name + "': post_data does not fit post_data_bits");
        for (const auto& b : r.buttons) {
            for (const std::uint64_t code : b.codes) {
                if (!fits(code, r.bits)) {
                    throw CFormatError(file_, b.line, "code of '" + b.name + "' does not fit " + std::to_string(r.bits) + " bits");
                }
            }
        }
    }

    // A line inside "begin codes" ("NAME CODE...") or "begin raw_codes" ("name NAME" or durations).
    void ListLine(LircRemote& r, bool codes, const std::vector<std::string>& w, std::size_t number) {
        const bool startsButton = codes || w[0] == "name";
        if (startsButton) {
            if (r.buttons.size() == CLircdConf::kMaxButtons) Fail("more than " + std::to_string(CLircdConf::kMaxButtons) + " buttons");
            r.buttons.emplace_back();
            r.buttons.back().line = number;
        } else if (r.buttons.empty()) {
            Fail("raw durations before the first name");
        }
        LircButton& b = r.buttons.back();
        if (startsButton) {
            if (codes ? (w.size() < 2 || w.size() > 5) : w.size() != 2) Fail(codes ? "expected \"NAME CODE\"" : "expected \"name NAME\"");
            b.name = codes ? w[0] : w[1];
            if (!IsUtf8(b.name)) Fail("the name is not UTF-8 text");
            for (std::size_t i = 1; codes && i < w.size(); ++i) b.codes.push_back(Number(w[i], UINT64_MAX, b.name));
            return;
        }
        for (const auto& word : w) {
            if (b.durations.size() == CLircdConf::kMaxRawValues) Fail("more than " + std::to_string(CLircdConf::kMaxRawValues) + " durations");
            b.durations.push_back(Duration(word, b.name));
            if (b.durations.back() == 0) Fail(b.name + ": a duration of 0");
        }
    }

private:
    void Flags(LircRemote& r, const std::vector<std::string>& w) {
        std::string all;
        for (std::size_t i = 1; i < w.size(); ++i) all += w[i];
        std::size_t at = 0;
        while (at <= all.size()) {
            const std::size_t end = std::min(all.find('|', at), all.size());
            const std::string flag = all.substr(at, end - at);
            at = end + 1;
            if (flag == "SPACE_ENC") r.encoding = LircRemote::Encoding::Space;
            else if (flag == "RC5" || flag == "SHIFT_ENC") r.encoding = LircRemote::Encoding::Rc5;
            else if (flag == "RC6") r.encoding = LircRemote::Encoding::Rc6;
            else if (flag == "RAW_CODES") r.encoding = LircRemote::Encoding::Raw;
            else if (flag == "CONST_LENGTH") r.constLength = true;
            else if (flag == "REVERSE") r.reverse = true;
            else if (flag == "NO_HEAD_REP") r.noHeadRep = true;
            else if (flag == "NO_FOOT_REP") r.noFootRep = true;
            else if (flag == "REPEAT_HEADER") r.repeatHeader = true;
            else if (flag.empty()) Fail("flags: an empty flag");
            else Fail("flags: " + flag.substr(0, 24) + " is not supported (SPACE_ENC, RC5/SHIFT_ENC, RC6 and RAW_CODES are)");
        }
    }

    std::string file_;
    std::size_t line_ = 0;
};

}  // namespace

std::vector<LircRemote> CLircdConf::Parse(const std::string& text, const std::string& fileName) {
    enum class In { Outside, Remote, Codes, RawCodes } in = In::Outside;
    Reader reader(fileName);
    std::vector<LircRemote> remotes;
    TextLines lines(text);
    std::string line;
    std::size_t number = 0;
    while (lines.Next(line, number)) {
        reader.Line(number);
        if (line.find('\0') != std::string::npos) reader.Fail("binary data in a text file");
        const std::size_t hash = line.find('#');
        if (hash != std::string::npos) line.resize(hash);
        const std::vector<std::string> w = Words(line);
        if (w.empty()) continue;
        const bool begin = w[0] == "begin" && w.size() == 2;
        const bool end = w[0] == "end" && w.size() == 2;
        if (in == In::Outside) {
            if (w[0] == "include") reader.Fail("include is not supported");
            if (!begin || w[1] != "remote") reader.Fail("expected \"begin remote\"");
            if (remotes.size() == kMaxRemotes) reader.Fail("more than " + std::to_string(kMaxRemotes) + " remotes");
            remotes.emplace_back();
            remotes.back().line = number;
            in = In::Remote;
            continue;
        }
        LircRemote& r = remotes.back();
        if (in == In::Remote) {
            if (end && w[1] == "remote") {
                reader.Check(r);
                in = In::Outside;
            } else if (begin && (w[1] == "codes" || w[1] == "raw_codes")) {
                if (!r.buttons.empty()) reader.Fail("a second list of codes");
                if ((w[1] == "raw_codes") != (r.encoding == LircRemote::Encoding::Raw)) {
                    reader.Fail(w[1] == "raw_codes" ? "raw_codes needs flags RAW_CODES" : "codes in a RAW_CODES remote");
                }
                in = w[1] == "codes" ? In::Codes : In::RawCodes;
            } else if (begin || end) {
                reader.Fail("unexpected \"" + w[0] + " " + w[1] + "\"");
            } else {
                reader.Parameter(r, w);
            }
            continue;
        }
        if (end) {
            if (w[1] != (in == In::Codes ? "codes" : "raw_codes")) reader.Fail("unexpected \"end " + w[1] + "\"");
            in = In::Remote;
            continue;
        }
        if (begin) reader.Fail("unexpected \"begin " + w[1] + "\"");
        reader.ListLine(r, in == In::Codes, w, number);
    }
    if (in != In::Outside) reader.Fail("the file ends inside a remote");
    if (remotes.empty()) reader.Fail("no remote in the file");
    for (const auto& r : remotes) {
        for (const auto& b : r.buttons) {
            if (r.encoding == LircRemote::Encoding::Raw && b.durations.empty()) {
                throw CFormatError(fileName, b.line, "'" + b.name + "' has no durations");
            }
        }
    }
    return remotes;
}

std::string CLircdConf::Write(const std::vector<LircRemote>& remotes) {
    std::ostringstream out;
    const auto hex = [](std::uint64_t value) {
        std::ostringstream text;
        text << "0x" << std::hex << std::uppercase << value;
        return text.str();
    };
    for (const auto& r : remotes) {
        out << "begin remote\n  name  " << r.name << "\n";
        const bool raw = r.encoding == LircRemote::Encoding::Raw;
        std::string flags = raw ? "RAW_CODES" : r.encoding == LircRemote::Encoding::Rc5 ? "RC5"
                          : r.encoding == LircRemote::Encoding::Rc6 ? "RC6" : "SPACE_ENC";
        if (r.constLength) flags += "|CONST_LENGTH";
        if (r.reverse) flags += "|REVERSE";
        if (r.noHeadRep) flags += "|NO_HEAD_REP";
        if (r.noFootRep) flags += "|NO_FOOT_REP";
        if (r.repeatHeader) flags += "|REPEAT_HEADER";
        out << "  flags " << flags << "\n  eps " << r.eps << "\n  aeps " << r.aeps << "\n";
        if (!raw) out << "  bits " << r.bits << "\n";
        const std::pair<const char*, const LircPair*> pairs[] = {{"header", &r.header}, {"one", &r.one},
            {"zero", &r.zero}, {"repeat", &r.repeat}, {"pre", &r.pre}, {"post", &r.post}, {"foot", &r.foot}};
        for (const auto& [word, p] : pairs) {
            if (p->Set()) out << "  " << word << " " << p->pulse << " " << p->space << "\n";
        }
        const std::pair<const char*, std::uint32_t> singles[] = {{"plead", r.plead}, {"ptrail", r.ptrail},
            {"pre_data_bits", r.preDataBits}, {"post_data_bits", r.postDataBits}, {"gap", r.gap},
            {"repeat_gap", r.repeatGap}, {"min_repeat", r.minRepeat}};
        for (const auto& [word, value] : singles) {
            if (value != 0) out << "  " << word << " " << value << "\n";
        }
        if (r.preDataBits != 0) out << "  pre_data " << hex(r.preData) << "\n";
        if (r.postDataBits != 0) out << "  post_data " << hex(r.postData) << "\n";
        if (r.toggleBitMask != 0) out << "  toggle_bit_mask " << hex(r.toggleBitMask) << "\n";
        if (r.rc6Mask != 0) out << "  rc6_mask " << hex(r.rc6Mask) << "\n";
        out << "  frequency " << r.frequency << "\n  duty_cycle " << r.dutyCycle << "\n";
        out << (raw ? "  begin raw_codes\n" : "  begin codes\n");
        for (const auto& b : r.buttons) {
            if (!raw) {
                out << "    " << b.name;
                for (const std::uint64_t code : b.codes) out << " " << hex(code);
                out << "\n";
                continue;
            }
            out << "    name " << b.name << "\n";
            for (std::size_t i = 0; i < b.durations.size(); ++i) {
                out << (i % 8 == 0 ? "      " : " ") << b.durations[i] << (i % 8 == 7 || i + 1 == b.durations.size() ? "\n" : "");
            }
        }
        out << (raw ? "  end raw_codes\n" : "  end codes\n") << "end remote\n";
    }
    return out.str();
}

}  // namespace infrared
