#include "infrared/formats/CFlipperIrFile.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <locale>
#include <map>
#include <sstream>

#include "infrared/formats/CFormatError.h"
#include "TextLines.h"

namespace infrared {
namespace {

struct Limits {
    const char* name;
    std::uint32_t address;
    std::uint32_t command;
};

// The field widths the format allows per protocol (what a Flipper accepts when loading a file).
const Limits kLimits[] = {
    {"NEC", 0xff, 0xff},           {"NECext", 0xffff, 0xffff},   {"NEC42", 0x1fff, 0xff},
    {"NEC42ext", 0x3ffffff, 0xffff}, {"RC5", 0x1f, 0x3f},        {"RC5X", 0x1f, 0x7f},
    {"RC6", 0xff, 0xff},           {"SIRC", 0x1f, 0x7f},         {"SIRC15", 0xff, 0x7f},
    {"SIRC20", 0x1fff, 0x7f},      {"Kaseikyo", 0x3ffffff, 0x3ff}, {"RCA", 0xf, 0xff},
    {"Pioneer", 0xff, 0xff},
};

constexpr std::uint32_t kMaxDuration = 1000000;  // µs; longer is no IR signal

// One signal's "key: value" lines, checked together when the signal ends.
struct Pending {
    FlipperSignal signal;
    std::map<std::string, std::pair<std::string, std::size_t>> fields;  // key -> value, line
};

class Reader {
public:
    explicit Reader(const std::string& file) : file_(file) {}

    [[noreturn]] void Fail(std::size_t line, const std::string& why) const { throw CFormatError(file_, line, why); }

    std::uint32_t Bytes4(const std::string& text, std::size_t line, const std::string& key) const {
        std::istringstream in(text);
        std::string word;
        std::uint32_t value = 0;
        int count = 0;
        while (in >> word) {
            unsigned byte = 0;
            if (word.size() != 2 || !IsHex(word[0]) || !IsHex(word[1]) || count == 4) {
                Fail(line, key + " must be 4 hex bytes (\"40 BF 00 00\")");
            }
            byte = static_cast<unsigned>(std::stoul(word, nullptr, 16));
            value |= static_cast<std::uint32_t>(byte) << (8 * count++);
        }
        if (count != 4) Fail(line, key + " must be 4 hex bytes (\"40 BF 00 00\")");
        return value;
    }

    void Close(Pending& p, std::vector<FlipperSignal>& out) const {
        FlipperSignal& s = p.signal;
        const auto field = [&](const char* key) -> const std::pair<std::string, std::size_t>& {
            const auto found = p.fields.find(key);
            if (found == p.fields.end()) Fail(s.line, "signal '" + s.name + "' has no " + key);
            return found->second;
        };
        const auto& type = field("type");
        if (type.first != "parsed" && type.first != "raw") Fail(type.second, "type must be parsed or raw");
        s.raw = type.first == "raw";
        const char* const parsedKeys[] = {"protocol", "address", "command"};
        const char* const rawKeys[] = {"frequency", "duty_cycle", "data"};
        for (const char* key : s.raw ? parsedKeys : rawKeys) {
            const auto stray = p.fields.find(key);
            if (stray != p.fields.end()) Fail(stray->second.second, std::string(key) + " does not belong to a " + type.first + " signal");
        }
        if (s.raw) {
            Raw(s, field("frequency"), field("duty_cycle"), field("data"));
        } else {
            Parsed(s, field("protocol"), field("address"), field("command"));
        }
        out.push_back(std::move(s));
    }

private:
    using Field = std::pair<std::string, std::size_t>;

    static bool IsHex(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

    void Parsed(FlipperSignal& s, const Field& protocol, const Field& address, const Field& command) const {
        s.protocol = protocol.first;
        std::uint32_t maxAddress = 0, maxCommand = 0;
        if (!CFlipperIrFile::FieldLimits(s.protocol, maxAddress, maxCommand)) {
            Fail(protocol.second, "unknown protocol '" + s.protocol + "'");
        }
        s.address = Bytes4(address.first, address.second, "address");
        s.command = Bytes4(command.first, command.second, "command");
        if (s.address > maxAddress) Fail(address.second, "address does not fit " + s.protocol);
        if (s.command > maxCommand) Fail(command.second, "command does not fit " + s.protocol);
    }

    void Raw(FlipperSignal& s, const Field& frequency, const Field& duty, const Field& data) const {
        std::uint64_t hz = 0;
        if (!ParseDecimal(frequency.first, hz) || hz < 10000 || hz > 56000) {
            Fail(frequency.second, "frequency must be 10000..56000 Hz");
        }
        s.frequency = static_cast<std::uint32_t>(hz);
        std::istringstream in(duty.first);
        in.imbue(std::locale::classic());
        in >> s.dutyCycle;
        if (in.fail() || !(in >> std::ws).eof() || !std::isfinite(s.dutyCycle) || s.dutyCycle <= 0 || s.dutyCycle > 1) {
            Fail(duty.second, "duty_cycle must be a number in (0, 1]");
        }
        std::size_t at = 0;
        const std::string& text = data.first;
        while (at < text.size()) {
            const std::size_t end = std::min(text.find(' ', at), text.size());
            if (end > at) {
                std::uint64_t value = 0;
                if (!ParseDecimal(text.substr(at, end - at), value) || value == 0 || value > kMaxDuration) {
                    Fail(data.second, "data value " + std::to_string(s.data.size() + 1) + " must be 1.." +
                                          std::to_string(kMaxDuration) + " µs");
                }
                if (s.data.size() == CFlipperIrFile::kMaxRawValues) {
                    Fail(data.second, "data has more than " + std::to_string(CFlipperIrFile::kMaxRawValues) + " values");
                }
                s.data.push_back(static_cast<std::uint32_t>(value));
            }
            at = end + 1;
        }
        if (s.data.empty()) Fail(data.second, "data is empty");
    }

    std::string file_;
};

}  // namespace

bool CFlipperIrFile::FieldLimits(const std::string& protocol, std::uint32_t& address, std::uint32_t& command) {
    for (const auto& limits : kLimits) {
        if (protocol == limits.name) {
            address = limits.address;
            command = limits.command;
            return true;
        }
    }
    return false;
}

std::vector<FlipperSignal> CFlipperIrFile::Parse(const std::string& text, const std::string& fileName) {
    Reader reader(fileName);
    std::vector<FlipperSignal> out;
    TextLines lines(text);
    std::string line;
    std::size_t number = 0;
    int headerSeen = 0;  // 0: expecting Filetype, 1: expecting Version, 2: body
    bool open = false;
    Pending pending;
    while (lines.Next(line, number)) {
        if (line.find('\0') != std::string::npos) reader.Fail(number, "binary data in a text file");
        if (line.empty() || line[0] == '#') continue;
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos) reader.Fail(number, "expected \"key: value\"");
        const std::string key = line.substr(0, colon);
        const std::string value = Trim(line.substr(colon + 1));
        if (headerSeen == 0) {
            if (key != "Filetype" || (value != "IR signals file" && value != "IR library file")) {
                reader.Fail(number, "not an IR signals file (expected \"Filetype: IR signals file\")");
            }
            ++headerSeen;
            continue;
        }
        if (headerSeen == 1) {
            if (key != "Version") reader.Fail(number, "expected \"Version: 1\"");
            if (value != "1") reader.Fail(number, "version " + value + " is not supported (only 1)");
            ++headerSeen;
            continue;
        }
        if (key == "name") {
            if (open) reader.Close(pending, out);
            if (out.size() == kMaxSignals) reader.Fail(number, "more than " + std::to_string(kMaxSignals) + " signals");
            if (value.empty()) reader.Fail(number, "a signal needs a name");
            if (!IsUtf8(value)) reader.Fail(number, "the name is not UTF-8 text");
            pending = Pending{};
            pending.signal.name = value;
            pending.signal.line = number;
            open = true;
            continue;
        }
        static const char* const kKeys[] = {"type", "protocol", "address", "command", "frequency", "duty_cycle", "data"};
        bool known = false;
        for (const char* k : kKeys) known = known || key == k;
        if (!known) reader.Fail(number, "unknown key '" + key.substr(0, 40) + "'");
        if (!open) reader.Fail(number, key + " before the first name");
        if (!pending.fields.emplace(key, std::make_pair(value, number)).second) reader.Fail(number, key + " given twice");
    }
    if (headerSeen < 2) reader.Fail(number, headerSeen == 0 ? "empty file" : "the file ends after its header's first line");
    if (open) reader.Close(pending, out);
    return out;
}

std::string CFlipperIrFile::Write(const std::vector<FlipperSignal>& signals) {
    std::string out = "Filetype: IR signals file\nVersion: 1\n";
    char buffer[64];
    const auto bytes = [&](std::uint32_t value) {
        std::snprintf(buffer, sizeof buffer, "%02X %02X %02X %02X", value & 0xff, (value >> 8) & 0xff,
                      (value >> 16) & 0xff, value >> 24);
        return std::string(buffer);
    };
    for (const auto& s : signals) {
        out += "#\nname: " + s.name + "\n";
        if (!s.raw) {
            out += "type: parsed\nprotocol: " + s.protocol + "\naddress: " + bytes(s.address) + "\ncommand: " +
                   bytes(s.command) + "\n";
            continue;
        }
        std::snprintf(buffer, sizeof buffer, "%.6f", s.dutyCycle);
        out += "type: raw\nfrequency: " + std::to_string(s.frequency) + "\nduty_cycle: " + buffer + "\ndata:";
        for (const std::uint32_t d : s.data) out += " " + std::to_string(d);
        out += "\n";
    }
    return out;
}

}  // namespace infrared
