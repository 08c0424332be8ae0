#include "audio/CtbWaveFile.h"

#include "tests/audio/RiffBytes.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::audio {

namespace {

using Samples = std::vector<std::int16_t>;

/// Extremes and both signs, so that a swapped or shifted byte shows.
const Samples kFive = {-32768, 32767, 0x1234, -2, 7};

/// Samples without a period, and with all their bits used.
Samples Spread(std::size_t count) {
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<std::int16_t>(i * 40503U);
    }
    return samples;
}

std::uint32_t Count(const Samples& samples) {
    return static_cast<std::uint32_t>(samples.size());
}

/// The file as it must be, written out byte by byte.
std::string Recording(std::uint32_t rate, const Samples& samples) {
    const std::uint32_t dataSize = 2 * Count(samples);
    test::LittleEndianBytes bytes;
    bytes.Text("RIFF").Number(38 + dataSize, 4).Text("WAVE");
    bytes.Text("fmt ").Number(18, 4).Number(1, 2).Number(1, 2).Number(rate, 4).Number(2 * rate, 4);
    bytes.Number(2, 2).Number(16, 2).Number(0, 2);
    bytes.Text("data").Number(dataSize, 4).Raw(test::SampleBytes(samples));
    return {bytes.Bytes().begin(), bytes.Bytes().end()};
}

class CtbWaveFileTest : public testing::Test {
protected:
    Samples ReadAll(std::uint32_t capacity) {
        Samples all;
        Samples part(capacity);
        while (const std::uint32_t count = file.Read(part.data(), capacity)) {
            all.insert(all.end(), part.begin(), part.begin() + count);
        }
        return all;
    }

    test::TemporaryFolder folder;
    const std::string path = folder.Path("recording.wav");
    CtbWaveFile file;
};

struct RecordingRate : CtbWaveFileTest, testing::WithParamInterface<std::uint32_t> {};

TEST_P(RecordingRate, ComesBackWithEverySample) {
    const Samples samples = Spread(30007); // more than the buffer, and no multiple of it
    ASSERT_TRUE(file.Create(path.c_str(), GetParam()));
    for (std::uint32_t done = 0; done < samples.size();) {
        const std::uint32_t part = std::min<std::uint32_t>(2400, Count(samples) - done);
        ASSERT_TRUE(file.Write(samples.data() + done, part));
        done += part;
        EXPECT_EQ(file.GetDataSize(), 2 * done);
        EXPECT_EQ(file.GetFileSize(), 46 + 2 * done);
    }
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(test::ReadWholeFile(path), Recording(GetParam(), samples));

    ASSERT_TRUE(file.Open(nullptr));
    EXPECT_EQ(file.GetSampleRate(), GetParam());
    EXPECT_EQ(file.GetBytesPerSecond(), 2 * GetParam());
    EXPECT_EQ(file.GetChannels(), 1U);
    EXPECT_EQ(file.GetBitsPerSample(), 16U);
    EXPECT_EQ(file.GetDataSize(), 2 * Count(samples));
    EXPECT_EQ(file.GetFileSize(), 46 + 2 * Count(samples));
    EXPECT_EQ(ReadAll(2400), samples);
}

INSTANTIATE_TEST_SUITE_P(CtbWaveFile, RecordingRate, testing::Values(8000U, 16000U, 44100U, 48000U, 64000U));

TEST_F(CtbWaveFileTest, KnowsAnIntermediateFrequencyByItsName) {
    ASSERT_TRUE(file.Create(folder.Path("a.if.wav").c_str(), 48000));
    EXPECT_TRUE(file.IsIF());
    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(file.IsIF());
    ASSERT_TRUE(file.Open(nullptr));
    EXPECT_TRUE(file.IsIF());
}

TEST_F(CtbWaveFileTest, SeeksToWholeSamples) {
    folder.Write("recording.wav", Recording(8000, kFive));
    ASSERT_TRUE(file.Open(path.c_str()));
    EXPECT_TRUE(file.Seek(5));
    EXPECT_EQ(file.GetPositionBytes(), 4U);
    EXPECT_EQ(ReadAll(100), (Samples{kFive[2], kFive[3], kFive[4]}));
    EXPECT_TRUE(file.Rewind());
    EXPECT_EQ(ReadAll(2), kFive);
}

} // namespace

} // namespace orva::audio
