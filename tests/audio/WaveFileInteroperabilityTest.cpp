/// Our files and those of the most widely used library for them.
#include "audio/CtbWaveFile.h"
#include "audio/WaveFileReader.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sndfile.h>

namespace orva::audio {

namespace {

using Samples = std::vector<std::int16_t>;

Samples Spread(std::size_t count) {
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<std::int16_t>(i * 40503U);
    }
    return samples;
}

void WriteBySndfile(const std::string& path, const Samples& samples, int format, int channels, bool withText,
                    int rate = 48000) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = format;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    if (withText) {
        sf_set_string(file, SF_STR_COMMENT, "three words long"); // a LIST chunk before the samples
    }
    const auto frames = static_cast<sf_count_t>(samples.size()) / channels;
    EXPECT_EQ(sf_writef_short(file, samples.data(), frames), frames);
    if (withText) {
        sf_set_string(file, SF_STR_TITLE, "odd"); // and another behind them
    }
    EXPECT_EQ(sf_close(file), 0);
}

struct SndfileFormat : testing::TestWithParam<int> {};

TEST_P(SndfileFormat, IsReadSampleBySample) {
    const test::TemporaryFolder folder;
    const std::string path = folder.Path("sndfile.wav");
    const Samples samples = Spread(5001);
    for (const bool withText : {false, true}) {
        WriteBySndfile(path, samples, GetParam() | SF_FORMAT_PCM_16, 1, withText);
        WaveFileReader reader;
        ASSERT_EQ(reader.Open(path), WaveFault::None);
        EXPECT_EQ(reader.GetSampleRate(), 48000U);
        EXPECT_EQ(reader.GetPromisedSamples(), samples.size());
        Samples read(samples.size() + 100);
        read.resize(reader.Read(read.data(), read.size()));
        EXPECT_EQ(read, samples);
        EXPECT_FALSE(reader.IsCutShort());
    }
}

TEST_P(SndfileFormat, IsPlayedFromAnywhere) {
    const test::TemporaryFolder folder;
    const std::string path = folder.Path("sndfile.wav");
    const Samples samples = Spread(5001);
    for (const int rate : {8000, 16000, 44100, 48000, 64000}) {
        WriteBySndfile(path, samples, GetParam() | SF_FORMAT_PCM_16, 1, true, rate);
        CtbWaveFile file;
        ASSERT_TRUE(file.Open(path.c_str()));
        EXPECT_EQ(file.GetFormatTag(), 1U);
        EXPECT_EQ(file.GetChannels(), 1U);
        EXPECT_EQ(file.GetBitsPerSample(), 16U);
        EXPECT_EQ(file.GetSampleRate(), static_cast<std::uint32_t>(rate));
        EXPECT_EQ(file.GetBytesPerSecond(), 2 * static_cast<std::uint32_t>(rate));
        EXPECT_EQ(file.GetDataSize(), 10002U);
        Samples read(samples.size());
        EXPECT_EQ(file.Read(read.data(), 5001), 5001U);
        EXPECT_EQ(read, samples);
        EXPECT_TRUE(file.Seek(10000));
        EXPECT_EQ(file.Read(read.data(), 1), 1U);
        EXPECT_EQ(read[0], samples[5000]);
    }
}

INSTANTIATE_TEST_SUITE_P(WaveFile, SndfileFormat, testing::Values(SF_FORMAT_WAV, SF_FORMAT_WAVEX));

TEST(WaveFileInteroperability, RefusesWhatIsNotSixteenBitMonoPcm) {
    struct Case {
        int format;
        int channels;
        WaveFault fault;
    };
    const test::TemporaryFolder folder;
    const std::string path = folder.Path("sndfile.wav");
    for (const Case& foreign : {Case{SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 1, WaveFault::NotSixteenBit},
                                Case{SF_FORMAT_WAV | SF_FORMAT_PCM_24, 1, WaveFault::NotSixteenBit},
                                Case{SF_FORMAT_WAV | SF_FORMAT_PCM_16, 2, WaveFault::NotMono},
                                Case{SF_FORMAT_WAV | SF_FORMAT_FLOAT, 1, WaveFault::NotPcm},
                                Case{SF_FORMAT_WAVEX | SF_FORMAT_FLOAT, 1, WaveFault::NotPcm},
                                Case{SF_FORMAT_WAV | SF_FORMAT_ULAW, 1, WaveFault::NotPcm},
                                Case{SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 1, WaveFault::NotWave},
                                Case{SF_FORMAT_RF64 | SF_FORMAT_PCM_16, 1, WaveFault::NotWave}}) {
        WriteBySndfile(path, Spread(100), foreign.format, foreign.channels, false);
        WaveFileReader reader;
        EXPECT_EQ(reader.Open(path), foreign.fault) << std::hex << foreign.format;
    }
}

TEST(WaveFileInteroperability, WritesWhatSndfileReads) {
    const test::TemporaryFolder folder;
    const std::string path = folder.Path("ours.wav");
    const Samples samples = Spread(5001);
    for (const std::uint32_t rate : {8000U, 16000U, 44100U, 48000U, 64000U}) {
        CtbWaveFile ours;
        ASSERT_TRUE(ours.Create(path.c_str(), rate));
        ASSERT_TRUE(ours.Write(samples.data(), static_cast<std::uint32_t>(samples.size())));
        ASSERT_TRUE(ours.Close());

        SF_INFO info{};
        SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
        ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
        EXPECT_EQ(info.samplerate, static_cast<int>(rate));
        EXPECT_EQ(info.channels, 1);
        EXPECT_EQ(info.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        EXPECT_EQ(info.frames, static_cast<sf_count_t>(samples.size()));
        Samples read(samples.size());
        EXPECT_EQ(sf_readf_short(file, read.data(), info.frames), info.frames);
        EXPECT_EQ(read, samples);
        EXPECT_EQ(sf_close(file), 0);
    }
}

} // namespace

} // namespace orva::audio
