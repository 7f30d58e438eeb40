#include "infrared/receive/CProntoText.h"

#include <cctype>
#include <sstream>
#include <stdexcept>

#include "RecordedLines.h"
#include "infrared/encode/CProntoCode.h"
#include "infrared/formats/CFormatError.h"

namespace infrared {
namespace {

// A learned code with more bursts is not a remote's press.
constexpr std::size_t kMaxLine = 16384;

bool HexWord(const std::string& word) {
    if (word.size() != 4) return false;
    for (const char c : word) {
        if (std::isxdigit(static_cast<unsigned char>(c)) == 0) return false;
    }
    return true;
}

}  // namespace

bool CProntoText::Looks(const std::string& text) {
    const std::string line = FirstRecordedLine(text);
    return HexWord(line.substr(0, line.find_first_of(" \t")));
}

std::vector<Capture> CProntoText::Parse(const std::string& text, const std::string& name) {
    std::vector<Capture> captures;
    std::uint64_t clock = 0;
    ForEachRecordedLine(text, [&](std::size_t number, const std::string& line) {
        if (line[0] == '#') return;
        if (line.size() > kMaxLine) throw CFormatError(name, number, "longer than a Pronto code can be");
        // The code parser reads words with strtoul, which would take "0x1f" or "+fff": only plain
        // hex words get that far.
        std::istringstream words(line);
        std::string word;
        while (words >> word) {
            if (!HexWord(word)) throw CFormatError(name, number, "'" + word + "' is not a 4-digit hex word");
        }
        PulseTrain train;
        try {
            train = CProntoCode::Parse(line);
        } catch (const std::invalid_argument& error) {
            throw CFormatError(name, number, error.what());
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
