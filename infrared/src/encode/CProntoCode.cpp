#include "infrared/encode/CProntoCode.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace infrared {
namespace {

// The Pronto's carrier clock: one frequency unit is 0.241246 microseconds.
constexpr double kProntoClockMicroseconds = 0.241246;

}  // namespace

PulseTrain CProntoCode::Parse(const std::string& text, std::uint32_t dutyCycle) {
    std::istringstream in(text);
    std::vector<std::uint32_t> words;
    std::string word;
    while (in >> word) {
        if (word.size() != 4) throw std::invalid_argument("'" + word + "' is not a 4-digit hex word");
        char* end = nullptr;
        const unsigned long value = std::strtoul(word.c_str(), &end, 16);
        if (end == nullptr || *end != '\0') throw std::invalid_argument("'" + word + "' is not a 4-digit hex word");
        words.push_back(static_cast<std::uint32_t>(value));
    }
    if (words.size() < 4) throw std::invalid_argument("a Pronto code needs at least 4 words");
    if (words[0] != 0) throw std::invalid_argument("only learned (0000) Pronto codes are supported");
    if (words[1] == 0) throw std::invalid_argument("the frequency word must not be 0");
    const std::size_t once = words[2], repeat = words[3];
    if (once + repeat == 0) throw std::invalid_argument("the code has no bursts");
    if (words.size() != 4 + 2 * (once + repeat)) {
        throw std::invalid_argument("the burst counts do not match the number of words");
    }
    const double unit = words[1] * kProntoClockMicroseconds;  // one carrier period
    PulseTrain train;
    train.carrier = static_cast<std::uint32_t>(std::lround(1e6 / unit));
    train.dutyCycle = dutyCycle;
    for (std::size_t i = 4; i < words.size(); ++i) {
        if (words[i] == 0) throw std::invalid_argument("a burst of 0 periods");
        train.durations.push_back(static_cast<std::uint32_t>(std::lround(words[i] * unit)));
    }
    train.trailingGap = train.durations.back();
    train.durations.pop_back();
    return train;
}

std::string CProntoCode::Format(const std::vector<std::uint32_t>& durations, std::uint32_t carrier,
                                std::uint32_t gap) {
    const double hz = carrier != 0 ? carrier : 38000;
    const long frequencyWord = std::max(1L, std::lround(1e6 / (hz * kProntoClockMicroseconds)));
    const double unit = frequencyWord * kProntoClockMicroseconds;
    std::vector<long> words{0, frequencyWord, 0, 0};
    const auto periods = [unit](double us) { return std::min(0xffffL, std::max(1L, std::lround(us / unit))); };
    for (const std::uint32_t d : durations) words.push_back(periods(d));
    if (durations.size() % 2 == 1) words.push_back(periods(std::max<std::uint32_t>(gap, 1)));
    words[2] = std::min(0xffffL, static_cast<long>((words.size() - 4) / 2));
    words.resize(4 + 2 * static_cast<std::size_t>(words[2]));
    std::string out;
    char word[8];
    for (const long w : words) {
        std::snprintf(word, sizeof word, "%04lX", static_cast<unsigned long>(w) & 0xffff);
        if (!out.empty()) out += ' ';
        out += word;
    }
    return out;
}

}  // namespace infrared
