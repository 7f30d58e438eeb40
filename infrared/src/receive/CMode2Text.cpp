#include "infrared/receive/CMode2Text.h"

#include <charconv>

#include "TextLines.h"
#include "infrared/receive/CCaptureBuilder.h"

namespace infrared {
namespace {

// One sample longer than this is not IR: a minute of silence is already far past any gap.
constexpr std::uint32_t kMaxSample = 60000000;

enum class Word { Pulse, Space, Timeout, Carrier, Unknown };

Word WordOf(std::string_view word) {
    if (word == "pulse") return Word::Pulse;
    if (word == "space") return Word::Space;
    if (word == "timeout") return Word::Timeout;
    if (word == "carrier") return Word::Carrier;
    return Word::Unknown;
}

std::string_view FirstWord(std::string_view line) { return line.substr(0, line.find_first_of(" \t")); }

// The number after the word: decimal digits only, nothing after them.
bool Number(std::string_view line, std::uint32_t& out) {
    std::string_view rest = line.substr(FirstWord(line).size());
    const std::size_t first = rest.find_first_not_of(" \t");
    if (first == std::string_view::npos) return false;
    rest = rest.substr(first);
    if (rest.empty() || rest[0] < '0' || rest[0] > '9') return false;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), out);
    return error == std::errc() && end == rest.data() + rest.size() && out <= kMaxSample;
}

}  // namespace

bool CMode2Text::Looks(std::string_view text) {
    bool found = false, looks = false;
    textlines::ForEach(text, [&](std::size_t, std::string_view line) {
        if (found || line.empty() || line[0] == '#') return;
        found = true;
        looks = WordOf(FirstWord(line)) != Word::Unknown;
    });
    return looks;
}

std::vector<Capture> CMode2Text::Parse(std::string_view text, const std::string& name) {
    std::vector<Capture> captures;
    CCaptureBuilder builder;
    const auto keep = [&captures](std::optional<Capture> done) {
        if (done) captures.push_back(std::move(*done));
    };
    textlines::ForEach(text, [&](std::size_t number, std::string_view line) {
        if (line.empty()) return;
        if (line[0] == '#') {
            keep(builder.End());
            return;
        }
        const Word word = WordOf(FirstWord(line));
        if (word == Word::Unknown) {
            throw CReceiveError(textlines::Where(name, number, "'" + std::string(FirstWord(line)) +
                                                                   "' is not pulse, space, timeout or carrier"));
        }
        std::uint32_t value = 0;
        if (!Number(line, value)) {
            throw CReceiveError(textlines::Where(name, number, "expected a whole number from 0 to " +
                                                                   std::to_string(kMaxSample) + " after '" +
                                                                   std::string(FirstWord(line)) + "'"));
        }
        switch (word) {
            case Word::Pulse: keep(builder.Mark(value)); break;
            case Word::Space: keep(builder.Space(value)); break;
            case Word::Timeout: keep(builder.Space(value)); keep(builder.End()); break;
            case Word::Carrier: builder.Carrier(value); break;
            case Word::Unknown: break;
        }
    });
    keep(builder.End());
    return captures;
}

}  // namespace infrared
