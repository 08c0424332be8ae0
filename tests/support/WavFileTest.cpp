#include "tests/support/WavFile.h"

#include <cstdio>
#include <fstream>
#include <iterator>

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

TEST(WavFile, IsWrittenAsItsBytes) {
    const std::vector<std::int16_t> samples(1000, 77);
    const std::string path = testing::TempDir() + "orva-wav-file-test.if.wav";
    ASSERT_TRUE(WriteWavFile(path, samples, 64000));
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> read((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    file.close();
    const std::vector<std::uint8_t> expected = WavBytes(samples, 64000);
    EXPECT_EQ(std::vector<std::uint8_t>(read.begin(), read.end()), expected);
    EXPECT_EQ(std::remove(path.c_str()), 0);
}

TEST(WavFile, ReportsAPlaceThatCannotBeWritten) {
    const std::int16_t samples[] = {1};
    EXPECT_FALSE(WriteWavFile(testing::TempDir() + "no-such-folder/x/y.if.wav", samples, 48000));
}

} // namespace
} // namespace orva::test
