#include "audio/WaveFileReader.h"

#include "tests/audio/RiffBytes.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <numeric>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#ifdef __linux__
#include <sys/stat.h>
#endif

namespace orva::audio {

namespace {

using test::FormatBytes;
using test::LittleEndianBytes;
using test::RiffBytes;
using test::SampleBytes;

using Bytes = std::vector<std::uint8_t>;
using Samples = std::vector<std::int16_t>;

constexpr std::uint32_t kAllOnes = 0xFFFFFFFF;

Samples Ramp(std::size_t count) {
    Samples samples(count);
    std::iota(samples.begin(), samples.end(), std::int16_t{-3});
    return samples;
}

/// Extremes and both signs, so that a swapped or shifted byte shows.
const Samples kFive = {-32768, 32767, 0x1234, -2, 7};

Bytes Recording(const Bytes& format, const Samples& samples) {
    return RiffBytes().Chunk("fmt ", format).Chunk("data", SampleBytes(samples)).Bytes();
}

class WaveFileReaderTest : public testing::Test {
protected:
    WaveFault Open(const Bytes& bytes) { return reader.Open(folder.Write("recording.wav", bytes)); }

    Samples ReadAll(std::size_t capacity = 3) {
        Samples all;
        Samples part(capacity);
        while (const std::size_t count = reader.Read(part.data(), capacity)) {
            EXPECT_LE(count, capacity);
            all.insert(all.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(count));
        }
        return all;
    }

    test::TemporaryFolder folder;
    WaveFileReader reader;
};

struct FormatSize : WaveFileReaderTest, testing::WithParamInterface<std::size_t> {};

TEST_P(FormatSize, IsReadWithEveryFieldAndSample) {
    ASSERT_EQ(Open(Recording(FormatBytes(GetParam(), {.rate = 64000}), kFive)), WaveFault::None);
    EXPECT_EQ(reader.GetSampleRate(), 64000U);
    EXPECT_EQ(reader.GetPromisedSamples(), kFive.size());
    EXPECT_FALSE(reader.IsUnfinished());
    EXPECT_EQ(ReadAll(), kFive);
    EXPECT_EQ(reader.GetReadSamples(), kFive.size());
    EXPECT_FALSE(reader.IsCutShort());
}

INSTANTIATE_TEST_SUITE_P(WaveFileReader, FormatSize, testing::Values(16U, 18U, 40U));

TEST_F(WaveFileReaderTest, ReadsAnExtensibleFormatBySubFormat) {
    EXPECT_EQ(Open(Recording(FormatBytes(40, {.tag = test::kExtensibleTag}), kFive)), WaveFault::None);
    EXPECT_EQ(ReadAll(), kFive);
}

TEST_F(WaveFileReaderTest, ReadsAFormatOfOddLengthBehindItsPadByte) {
    Bytes format = FormatBytes(18);
    format.push_back(0xEE);
    EXPECT_EQ(Open(Recording(format, kFive)), WaveFault::None);
    EXPECT_EQ(ReadAll(), kFive);
}

TEST_F(WaveFileReaderTest, ReadsAFormatMuchLongerThanAnyKnownOne) {
    Bytes format = FormatBytes(18);
    format.resize(5000, 0xEE);
    EXPECT_EQ(Open(Recording(format, kFive)), WaveFault::None);
    EXPECT_EQ(ReadAll(), kFive);
}

TEST_F(WaveFileReaderTest, SkipsUnknownChunksBeforeTheSamples) {
    const Bytes file = RiffBytes()
                           .Chunk("JUNK", Bytes(28, 0xAA))
                           .Chunk("fmt ", FormatBytes(18))
                           .Chunk("LIST", Bytes(1500, 0xBB))
                           .Chunk("fact", {})
                           .Chunk("data", SampleBytes(kFive))
                           .Bytes();
    ASSERT_EQ(Open(file), WaveFault::None);
    EXPECT_EQ(ReadAll(), kFive);
}

TEST_F(WaveFileReaderTest, SkipsThePadByteOfOddChunks) {
    const Bytes file = RiffBytes()
                           .Chunk("odd1", {1})
                           .Chunk("fmt ", FormatBytes(16))
                           .Chunk("odd3", {1, 2, 3})
                           .Chunk("data", SampleBytes(kFive))
                           .Bytes();
    ASSERT_EQ(Open(file), WaveFault::None);
    EXPECT_EQ(ReadAll(), kFive);
}

TEST_F(WaveFileReaderTest, NeverReadsPastTheSamplesIntoLaterChunks) {
    const Bytes file = RiffBytes()
                           .Chunk("fmt ", FormatBytes(16))
                           .Chunk("data", SampleBytes(kFive))
                           .Chunk("LIST", Bytes(64, 0xCC))
                           .Bytes();
    for (const std::size_t capacity : {1U, 2U, 5U, 6U, 100U}) {
        ASSERT_EQ(Open(file), WaveFault::None);
        EXPECT_EQ(ReadAll(capacity), kFive) << "capacity " << capacity;
        EXPECT_FALSE(reader.IsCutShort());
    }
}

TEST_F(WaveFileReaderTest, LeavesTheHalfSampleOfAnOddDataSize) {
    Bytes data = SampleBytes(kFive);
    data.push_back(0x77);
    ASSERT_EQ(Open(RiffBytes()
                       .Chunk("fmt ", FormatBytes(16))
                       .Chunk("data", data)
                       .Chunk("LIST", Bytes(8, 0xCC))
                       .Bytes()),
              WaveFault::None);
    EXPECT_EQ(reader.GetPromisedSamples(), kFive.size());
    EXPECT_EQ(ReadAll(), kFive);
    EXPECT_FALSE(reader.IsCutShort());
}

TEST_F(WaveFileReaderTest, TakesTheFirstOfTwoFormats) {
    const Bytes file = RiffBytes()
                           .Chunk("fmt ", FormatBytes(16, {.rate = 48000}))
                           .Chunk("fmt ", FormatBytes(16, {.channels = 2, .rate = 8000, .bits = 8}))
                           .Chunk("data", SampleBytes(kFive))
                           .Bytes();
    ASSERT_EQ(Open(file), WaveFault::None);
    EXPECT_EQ(reader.GetSampleRate(), 48000U);
    EXPECT_EQ(ReadAll(), kFive);
}

TEST_F(WaveFileReaderTest, TellsAMissingFile) {
    EXPECT_EQ(reader.Open(folder.Path("absent.wav")), WaveFault::CannotOpen);
}

TEST_F(WaveFileReaderTest, TellsAFolder) {
    EXPECT_EQ(reader.Open(folder.Path("")), WaveFault::CannotOpen);
}

TEST_F(WaveFileReaderTest, TellsAFileOfNothingAsEmpty) {
    EXPECT_EQ(Open({}), WaveFault::NoSamples);
}

TEST_F(WaveFileReaderTest, TellsTinyFilesAsNoWave) {
    const Bytes riff = {'R', 'I', 'F', 'F', 0, 0, 0};
    for (std::size_t length = 1; length <= riff.size(); ++length) {
        EXPECT_EQ(Open(Bytes(riff.begin(), riff.begin() + static_cast<std::ptrdiff_t>(length))),
                  WaveFault::NotWave)
            << length << " bytes";
    }
}

TEST_F(WaveFileReaderTest, TellsAForeignFile) {
    EXPECT_EQ(Open(LittleEndianBytes().Text("This is a letter to a friend, long enough.").Bytes()),
              WaveFault::NotWave);
}

TEST_F(WaveFileReaderTest, TellsABigEndianFile) {
    Bytes file = Recording(FormatBytes(16), kFive);
    file[3] = 'X';
    EXPECT_EQ(Open(file), WaveFault::NotWave);
}

TEST_F(WaveFileReaderTest, TellsARiffFileOfAnotherForm) {
    Bytes file = Recording(FormatBytes(16), kFive);
    std::copy_n("AVI ", 4, file.begin() + 8);
    EXPECT_EQ(Open(file), WaveFault::NotWave);
}

TEST_F(WaveFileReaderTest, TellsSamplesBeforeTheirFormat) {
    const Bytes file = RiffBytes().Chunk("data", SampleBytes(kFive)).Chunk("fmt ", FormatBytes(16)).Bytes();
    EXPECT_EQ(Open(file), WaveFault::NotWave);
}

TEST_F(WaveFileReaderTest, TellsAFormatTooShortToHoldItsFields) {
    for (std::size_t size = 0; size < 16; ++size) {
        Bytes format = FormatBytes(16);
        format.resize(size);
        EXPECT_EQ(Open(Recording(format, kFive)), WaveFault::NotWave) << size << " bytes";
    }
}

TEST_F(WaveFileReaderTest, TellsASampleRateOfZero) {
    EXPECT_EQ(Open(Recording(FormatBytes(16, {.rate = 0}), kFive)), WaveFault::NotWave);
}

TEST_F(WaveFileReaderTest, TellsCompressedAndFloatingSamples) {
    for (const std::uint16_t tag : std::initializer_list<std::uint16_t>{0, 2, 3, 6, 7, 0x11, 0x55}) {
        EXPECT_EQ(Open(Recording(FormatBytes(18, {.tag = tag}), kFive)), WaveFault::NotPcm) << "tag " << tag;
    }
    EXPECT_EQ(Open(Recording(FormatBytes(40, {.tag = test::kExtensibleTag, .subFormat = 3}), kFive)),
              WaveFault::NotPcm);
}

TEST_F(WaveFileReaderTest, TellsAnExtensibleTagWithoutASubFormat) {
    EXPECT_EQ(Open(Recording(FormatBytes(18, {.tag = test::kExtensibleTag}), kFive)), WaveFault::NotPcm);
}

TEST_F(WaveFileReaderTest, TellsOtherThanOneChannel) {
    for (const std::uint16_t channels : std::initializer_list<std::uint16_t>{0, 2, 6}) {
        EXPECT_EQ(Open(Recording(FormatBytes(16, {.channels = channels}), kFive)), WaveFault::NotMono)
            << channels << " channels";
    }
}

TEST_F(WaveFileReaderTest, TellsOtherThanSixteenBits) {
    for (const std::uint16_t bits : std::initializer_list<std::uint16_t>{0, 8, 12, 24, 32}) {
        EXPECT_EQ(Open(Recording(FormatBytes(16, {.bits = bits}), kFive)), WaveFault::NotSixteenBit)
            << bits << " bits";
    }
}

TEST_F(WaveFileReaderTest, TellsARecordingWithoutSamples) {
    EXPECT_EQ(Open(Recording(FormatBytes(18), {})), WaveFault::NoSamples);
}

TEST_F(WaveFileReaderTest, TellsARecordingOfHalfASample) {
    EXPECT_EQ(Open(RiffBytes().Chunk("fmt ", FormatBytes(18)).Chunk("data", {1}).Bytes()),
              WaveFault::NoSamples);
}

TEST_F(WaveFileReaderTest, TellsAFileWithoutADataChunk) {
    EXPECT_EQ(Open(RiffBytes().Chunk("fmt ", FormatBytes(18)).Bytes()), WaveFault::NoSamples);
}

TEST_F(WaveFileReaderTest, TellsAFormatThatClaimsFourGigabytes) {
    EXPECT_EQ(Open(RiffBytes()
                       .ChunkOfSize("fmt ", kAllOnes, FormatBytes(18))
                       .Chunk("data", SampleBytes(kFive))
                       .Bytes()),
              WaveFault::HeaderCutShort);
}

TEST_F(WaveFileReaderTest, TellsAnUnknownChunkThatClaimsFourGigabytes) {
    EXPECT_EQ(Open(RiffBytes()
                       .Chunk("fmt ", FormatBytes(18))
                       .ChunkOfSize("JUNK", kAllOnes, {1, 2, 3})
                       .Chunk("data", SampleBytes(kFive))
                       .Bytes()),
              WaveFault::HeaderCutShort);
}

/// Cuts a file at each byte of its header. No cut file may open, hang, or be called anything but damaged.
TEST_F(WaveFileReaderTest, TellsAHeaderCutAtAnyByte) {
    for (const std::size_t formatSize : {16U, 18U, 40U}) {
        const Bytes file = Recording(FormatBytes(formatSize), kFive);
        const std::size_t formatEnd = 20 + formatSize;
        const std::size_t dataBegin = formatEnd + 8;
        for (std::size_t length = 1; length < dataBegin + 2; ++length) {
            const WaveFault expected = length < 8           ? WaveFault::NotWave
                                       : length < formatEnd ? WaveFault::HeaderCutShort
                                                            : WaveFault::NoSamples;
            EXPECT_EQ(Open(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length))), expected)
                << "format of " << formatSize << ", cut to " << length << " bytes";
            EXPECT_EQ(ReadAll(), Samples());
        }
    }
}

TEST_F(WaveFileReaderTest, TellsAfterTheEndThatSamplesAreMissing) {
    Bytes file = Recording(FormatBytes(18), Ramp(100));
    file.resize(file.size() - 60);
    ASSERT_EQ(Open(file), WaveFault::None);
    EXPECT_EQ(reader.GetPromisedSamples(), 100U);
    EXPECT_FALSE(reader.IsCutShort());
    EXPECT_EQ(ReadAll(), Ramp(70));
    EXPECT_TRUE(reader.IsCutShort());
    EXPECT_EQ(reader.GetReadSamples(), 70U);
    EXPECT_FALSE(reader.IsUnfinished());
}

TEST_F(WaveFileReaderTest, TellsASingleMissingSample) {
    Bytes file = Recording(FormatBytes(18), Ramp(8));
    file.resize(file.size() - 2);
    ASSERT_EQ(Open(file), WaveFault::None);
    EXPECT_EQ(ReadAll(), Ramp(7));
    EXPECT_TRUE(reader.IsCutShort());
}

TEST_F(WaveFileReaderTest, DropsTheHalfSampleWhereAFileWasCut) {
    Bytes file = Recording(FormatBytes(18), Ramp(8));
    file.resize(file.size() - 1);
    ASSERT_EQ(Open(file), WaveFault::None);
    EXPECT_EQ(ReadAll(), Ramp(7));
    EXPECT_TRUE(reader.IsCutShort());
}

TEST_F(WaveFileReaderTest, KeepsSilentWhenTheReadsEndExactlyWithTheSamples) {
    ASSERT_EQ(Open(Recording(FormatBytes(18), Ramp(8))), WaveFault::None);
    EXPECT_EQ(ReadAll(4), Ramp(8));
    EXPECT_FALSE(reader.IsCutShort());
}

TEST_F(WaveFileReaderTest, ReadsAStreamOfUnknownSizeToItsEnd) {
    const Bytes file = RiffBytes()
                           .Chunk("fmt ", FormatBytes(16))
                           .ChunkOfSize("data", kAllOnes, SampleBytes(kFive))
                           .BytesOfSize(kAllOnes);
    ASSERT_EQ(Open(file), WaveFault::None);
    EXPECT_TRUE(reader.IsUnfinished());
    EXPECT_EQ(reader.GetPromisedSamples(), 0U);
    EXPECT_EQ(ReadAll(), kFive);
    EXPECT_EQ(reader.GetReadSamples(), kFive.size());
    EXPECT_FALSE(reader.IsCutShort());
}

TEST_F(WaveFileReaderTest, ReadsARecordingWhoseWriterDiedToItsEnd) {
    const Bytes file =
        RiffBytes().Chunk("fmt ", FormatBytes(18)).ChunkOfSize("data", 0, SampleBytes(kFive)).BytesOfSize(0);
    ASSERT_EQ(Open(file), WaveFault::None);
    EXPECT_TRUE(reader.IsUnfinished());
    EXPECT_EQ(ReadAll(), kFive);
    EXPECT_FALSE(reader.IsCutShort());
}

TEST_F(WaveFileReaderTest, TellsAnUnfinishedRecordingWithoutSamples) {
    for (const std::uint32_t size : {std::uint32_t{0}, kAllOnes}) {
        EXPECT_EQ(
            Open(RiffBytes().Chunk("fmt ", FormatBytes(18)).ChunkOfSize("data", size, {}).BytesOfSize(size)),
            WaveFault::NoSamples)
            << "size " << size;
    }
}

TEST_F(WaveFileReaderTest, IgnoresTheRiffSizeOfAFinishedRecording) {
    for (const std::uint32_t size : {std::uint32_t{1}, std::uint32_t{0}, kAllOnes}) {
        ASSERT_EQ(Open(RiffBytes()
                           .Chunk("fmt ", FormatBytes(16))
                           .Chunk("data", SampleBytes(kFive))
                           .BytesOfSize(size)),
                  WaveFault::None);
        EXPECT_FALSE(reader.IsUnfinished());
        EXPECT_EQ(ReadAll(), kFive);
    }
}

TEST_F(WaveFileReaderTest, IsAsNewAfterAFailedOpening) {
    ASSERT_EQ(Open(Recording(FormatBytes(16), kFive)), WaveFault::None);
    ASSERT_EQ(Open(Recording(FormatBytes(16, {.channels = 2}), kFive)), WaveFault::NotMono);
    EXPECT_EQ(reader.GetSampleRate(), 0U);
    EXPECT_EQ(reader.GetPromisedSamples(), 0U);
    EXPECT_EQ(reader.GetReadSamples(), 0U);
    EXPECT_FALSE(reader.IsCutShort());
    EXPECT_EQ(ReadAll(), Samples());
    ASSERT_EQ(Open(Recording(FormatBytes(16), kFive)), WaveFault::None);
    EXPECT_EQ(ReadAll(), kFive);
}

TEST_F(WaveFileReaderTest, GivesNothingWithoutAFileOrRoom) {
    std::int16_t sample = 0;
    EXPECT_EQ(reader.Read(&sample, 1), 0U);
    ASSERT_EQ(Open(Recording(FormatBytes(16), kFive)), WaveFault::None);
    EXPECT_EQ(reader.Read(&sample, 0), 0U);
    EXPECT_EQ(reader.Read(nullptr, 1), 0U);
    EXPECT_EQ(ReadAll(), kFive);
    EXPECT_EQ(reader.Read(&sample, 1), 0U);
}

TEST_F(WaveFileReaderTest, WritesNoFurtherThanItsCount) {
    constexpr std::int16_t kGuard = 0x5A5A;
    ASSERT_EQ(Open(Recording(FormatBytes(16), kFive)), WaveFault::None);
    Samples samples(8, kGuard);
    EXPECT_EQ(reader.Read(samples.data(), 2), 2U);
    EXPECT_EQ(samples, (Samples{kFive[0], kFive[1], kGuard, kGuard, kGuard, kGuard, kGuard, kGuard}));
    EXPECT_EQ(reader.Read(samples.data(), 8), 3U);
    EXPECT_EQ(samples, (Samples{kFive[2], kFive[3], kFive[4], kGuard, kGuard, kGuard, kGuard, kGuard}));
}

#ifdef __linux__
TEST_F(WaveFileReaderTest, ReadsAPipeAsItFills) {
    const std::string path = folder.Path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const Bytes file = RiffBytes()
                           .Chunk("LIST", Bytes(20001, 0xBB))
                           .Chunk("fmt ", FormatBytes(16))
                           .Chunk("data", SampleBytes(Ramp(20000)))
                           .Bytes();
    std::jthread writer([&] {
        std::ofstream pipe(path, std::ios::binary);
        for (std::size_t done = 0; done < file.size(); done += 777) {
            const std::size_t part = std::min<std::size_t>(777, file.size() - done);
            pipe.write(reinterpret_cast<const char*>(file.data()) + done, static_cast<std::streamsize>(part));
            pipe.flush();
        }
    });
    ASSERT_EQ(reader.Open(path), WaveFault::None);
    EXPECT_EQ(ReadAll(2400), Ramp(20000));
    EXPECT_FALSE(reader.IsCutShort());
}
#endif

TEST(WaveFaultDescription, DiffersForEachFault) {
    std::set<std::string> phrases;
    for (const WaveFault fault :
         {WaveFault::None, WaveFault::CannotOpen, WaveFault::NotWave, WaveFault::NotPcm, WaveFault::NotMono,
          WaveFault::NotSixteenBit, WaveFault::HeaderCutShort, WaveFault::NoSamples}) {
        const std::string phrase = Describe(fault);
        EXPECT_FALSE(phrase.empty());
        EXPECT_EQ(phrase.find('\n'), std::string::npos);
        EXPECT_TRUE(phrases.insert(phrase).second) << phrase;
    }
}

} // namespace

} // namespace orva::audio
