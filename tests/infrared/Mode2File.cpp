#include "Mode2File.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace irtest {

std::vector<Mode2Block> ReadMode2(const std::string& path) {
    std::vector<Mode2Block> blocks;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("# ", 0) == 0) {
            blocks.push_back(Mode2Block{line, {}, 0});
            continue;
        }
        std::istringstream words(line);
        std::string kind;
        std::uint32_t value = 0;
        const bool expected = !blocks.empty() && (words >> kind >> value) &&
                              kind == (blocks.back().durations.size() % 2 == 0 ? "space" : "pulse");
        if (!expected) {
            ADD_FAILURE() << "unexpected line: " << line;
            continue;
        }
        blocks.back().durations.push_back(value);
    }
    // Each block is: lead-in gap, pulse, space, ..., pulse, closing gap.
    for (auto& block : blocks) {
        auto& d = block.durations;
        if (d.size() < 3 || d.size() % 2 == 0 || d.front() != d.back()) {
            ADD_FAILURE() << "malformed block after " << block.header;
            continue;
        }
        block.gap = d.front();
        d.pop_back();
        d.erase(d.begin());
    }
    return blocks;
}

std::vector<std::vector<std::uint8_t>> ReadFrames(const std::vector<std::uint32_t>& d, const infrared::FrameTiming& t) {
    std::vector<std::vector<std::uint8_t>> frames;
    std::size_t i = 0;
    const std::uint32_t threshold = (t.oneSpace + t.zeroSpace) / 2;
    while (i < d.size()) {
        if (t.headerMark != 0) {
            EXPECT_EQ(d[i], t.headerMark);
            EXPECT_EQ(d[i + 1], t.headerSpace);
            i += 2;
        }
        std::vector<std::uint8_t> bytes;
        unsigned bit = 0;
        std::uint8_t byte = 0;
        // Every bit is a mark and a space; the trailer is a mark followed by the gap (or the end).
        while (i + 1 < d.size() && d[i + 1] < t.gap) {
            EXPECT_EQ(d[i], t.mark);
            const unsigned position = t.msbFirst ? 7 - bit : bit;
            if (d[i + 1] > threshold) byte = static_cast<std::uint8_t>(byte | 1u << position);
            if (++bit == 8) {
                bytes.push_back(byte);
                byte = 0;
                bit = 0;
            }
            i += 2;
        }
        EXPECT_EQ(bit, 0u) << "a frame must hold whole bytes";
        EXPECT_EQ(d[i], t.trailer);
        i += 2;
        frames.push_back(bytes);
    }
    return frames;
}

}  // namespace irtest
