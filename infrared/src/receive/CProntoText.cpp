#include "infrared/receive/CProntoText.h"

#include <cctype>
#include <stdexcept>

#include "TextLines.h"
#include "infrared/encode/CProntoCode.h"

namespace infrared {
namespace {

// A learned code with more bursts is not a remote's press.
constexpr std::size_t kMaxLine = 16384;

bool HexWord(std::string_view word) {
    if (word.size() != 4) return false;
    for (const char c : word) {
        if (std::isxdigit(static_cast<unsigned char>(c)) == 0) return false;
    }
    return true;
}

}  // namespace

bool CProntoText::Looks(std::string_view text) {
    bool found = false, looks = false;
    textlines::ForEach(text, [&](std::size_t, std::string_view line) {
        if (found || line.empty() || line[0] == '#') return;
        found = true;
        looks = HexWord(line.substr(0, line.find_first_of(" \t")));
    });
    return looks;
}

std::vector<Capture> CProntoText::Parse(std::string_view text, const std::string& name) {
    std::vector<Capture> captures;
    std::uint64_t clock = 0;
    textlines::ForEach(text, [&](std::size_t number, std::string_view line) {
        if (line.empty() || line[0] == '#') return;
        if (line.size() > kMaxLine) {
            throw CReceiveError(textlines::Where(name, number, "longer than a Pronto code can be"));
        }
        // The parser below reads words with strtoul, which would take "0x1f" or "+fff": only
        // plain hex words get that far.
        std::size_t at = 0;
        while (at < line.size()) {
            const std::size_t begin = line.find_first_not_of(" \t", at);
            if (begin == std::string_view::npos) break;
            const std::size_t end = std::min(line.find_first_of(" \t", begin), line.size());
            if (!HexWord(line.substr(begin, end - begin))) {
                throw CReceiveError(textlines::Where(
                    name, number, "'" + std::string(line.substr(begin, end - begin)) + "' is not a 4-digit hex word"));
            }
            at = end;
        }
        PulseTrain train;
        try {
            train = CProntoCode::Parse(std::string(line));
        } catch (const std::invalid_argument& error) {
            throw CReceiveError(textlines::Where(name, number, error.what()));
        }
        Capture capture;
        capture.durations = std::move(train.durations);
        capture.carrier = train.carrier;
        capture.startUs = clock;
        for (const std::uint32_t d : capture.durations) clock += d;
        clock += train.trailingGap;
        captures.push_back(std::move(capture));
    });
    return captures;
}

}  // namespace infrared
