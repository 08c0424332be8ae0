#include "tests/support/WavFile.h"

#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

TEST(WavFile, HasTheLayoutOfARecording) {
    const std::int16_t samples[] = {1, -2, 0x1234};
    const std::vector<std::uint8_t> expected = {
        'R', 'I', 'F', 'F', 44,  0,   0,    0,    'W', 'A', 'V', 'E',  'f',  'm',  't',  ' ', 18, 0,
        0,   0,   1,   0,   1,   0,   0x80, 0xBB, 0,   0,   0,   0x77, 1,    0,    2,    0,   16, 0,
        0,   0,   'd', 'a', 't', 'a', 6,    0,    0,   0,   1,   0,    0xFE, 0xFF, 0x34, 0x12};
    EXPECT_EQ(WavBytes(samples, 48000), expected);
}

} // namespace
} // namespace orva::test
