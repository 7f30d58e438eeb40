#include "Mode2File.h"

#include <gtest/gtest.h>


namespace irtest {

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
