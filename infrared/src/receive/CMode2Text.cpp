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

std::vector<Capture> CMode2Text::Parse(const std::string& text, const std::string& name) {
    std::vector<Capture> captures;
    CCaptureBuilder builder;
    const auto keep = [&captures](std::optional<Capture> done) {
        if (done) captures.push_back(std::move(*done));
    };
    ForEachRecordedLine(text, [&](std::size_t number, const std::string& line) {
        if (line[0] == '#') {
            keep(builder.End());
            return;
        }
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
            case Word::Pulse: keep(builder.Mark(sample)); break;
            case Word::Space: keep(builder.Space(sample)); break;
            case Word::Timeout: keep(builder.Space(sample)); keep(builder.End()); break;
            case Word::Carrier: builder.Carrier(sample); break;
            case Word::Unknown: break;
        }
    });
    keep(builder.End());
    return captures;
}

}  // namespace infrared
