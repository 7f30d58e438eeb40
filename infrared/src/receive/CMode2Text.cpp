#include "infrared/receive/CMode2Text.h"


#include "RecordedLines.h"
#include "infrared/formats/CFormatError.h"
#include "infrared/receive/CCaptureBuilder.h"

namespace infrared {
namespace {

// One sample longer than this is not IR: a minute of silence is already far past any gap.
constexpr std::uint64_t kMaxSample = 60000000;

enum class Word { Pulse, Space, Timeout, Carrier, Unknown };

Word WordOf(const std::string& word) {
    if (word == "pulse") return Word::Pulse;
    if (word == "space") return Word::Space;
    if (word == "timeout") return Word::Timeout;
    if (word == "carrier") return Word::Carrier;
    return Word::Unknown;
}

std::string FirstWord(const std::string& line) { return line.substr(0, line.find_first_of(" \t")); }

}  // namespace

bool CMode2Text::Looks(const std::string& text) { return WordOf(FirstWord(FirstRecordedLine(text))) != Word::Unknown; }

std::optional<Capture> CMode2Text::Feed(CCaptureBuilder& builder, const std::string& line, std::size_t number,
                                        const std::string& name) {
    if (line[0] == '#') return builder.End();
    const std::string word = FirstWord(line);
    const Word kind = WordOf(word);
    if (kind == Word::Unknown) throw CFormatError(name, number, "'" + word + "' is not pulse, space, timeout or carrier");
    std::uint64_t value = 0;
    if (!ParseDecimal(Trim(line.substr(word.size())), value) || value > kMaxSample) {
        throw CFormatError(name, number,
                           "expected a whole number from 0 to " + std::to_string(kMaxSample) + " after '" + word + "'");
    }
    const auto sample = static_cast<std::uint32_t>(value);
    switch (kind) {
        case Word::Pulse: return builder.Mark(sample);
        case Word::Space: return builder.Space(sample);
        case Word::Timeout: {
            auto done = builder.Space(sample);
            auto ended = builder.End();  // after a completed capture: nothing, the builder reset as before
            return done ? done : ended;
        }
        case Word::Carrier: builder.Carrier(sample); return std::nullopt;
        case Word::Unknown: break;
    }
    return std::nullopt;
}

std::vector<Capture> CMode2Text::Parse(const std::string& text, const std::string& name) {
    std::vector<Capture> captures;
    CCaptureBuilder builder;
    ForEachRecordedLine(text, [&](std::size_t number, const std::string& line) {
        if (auto done = Feed(builder, line, number, name)) captures.push_back(std::move(*done));
    });
    if (auto done = builder.End()) captures.push_back(std::move(*done));
    return captures;
}

}  // namespace infrared
