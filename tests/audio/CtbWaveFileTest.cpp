#include "audio/CtbWaveFile.h"

#include "dsp/CtbSampleBlock.h"
#include "tests/audio/MemoryFiles.h"
#include "tests/audio/RiffBytes.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace orva::audio {

namespace {

using test::FormatBytes;
using test::LittleEndianBytes;
using test::RiffBytes;
using test::SampleBytes;

using Bytes = std::vector<std::uint8_t>;
using Samples = std::vector<std::int16_t>;

constexpr std::uint32_t kAllOnes = 0xFFFFFFFF;
constexpr const char* kPath = "C:\\Recordings\\call.wav";

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
Bytes Recording(std::uint32_t rate, const Samples& samples) {
    const std::uint32_t dataSize = 2 * Count(samples);
    LittleEndianBytes bytes;
    bytes.Text("RIFF").Number(38 + dataSize, 4).Text("WAVE");
    bytes.Text("fmt ").Number(18, 4).Number(1, 2).Number(1, 2).Number(rate, 4).Number(2 * rate, 4);
    bytes.Number(2, 2).Number(16, 2).Number(0, 2);
    return bytes.Text("data").Number(dataSize, 4).Raw(SampleBytes(samples)).Bytes();
}

class CtbWaveFileTest : public testing::Test {
protected:
    bool Open(const Bytes& contents) {
        memory.files[kPath] = contents;
        return file.Open(kPath);
    }

    Samples Read(std::uint32_t capacity) {
        Samples part(capacity);
        part.resize(file.Read(part.data(), capacity));
        return part;
    }

    Samples ReadAll(std::uint32_t capacity = 2400) {
        Samples all;
        for (Samples part = Read(capacity); !part.empty(); part = Read(capacity)) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }

    void ExpectClosed() {
        EXPECT_FALSE(file.IsOpen());
        EXPECT_FALSE(file.IsWriting());
        EXPECT_FALSE(file.IsIF());
        EXPECT_FALSE(file.IsUnfinished());
        EXPECT_EQ(file.GetFileSize(), kAllOnes);
        EXPECT_EQ(file.GetDataSize(), 0U);
        EXPECT_EQ(file.GetDurationSeconds(), 0U);
        EXPECT_EQ(file.GetPositionBytes(), 0U);
        EXPECT_EQ(file.GetPositionSeconds(), 0U);
        EXPECT_FALSE(file.Rewind());
        EXPECT_EQ(ReadAll(), Samples());
        EXPECT_FALSE(file.Write(kFive.data(), 1));
        EXPECT_EQ(memory.opened, memory.closed);
    }

    test::MemoryFiles memory;
    CtbWaveFile file{memory.Platform()};
};

TEST_F(CtbWaveFileTest, BeginsClosedAndEmpty) {
    EXPECT_FALSE(file.IsOpen());
    EXPECT_FALSE(file.IsWriting());
    EXPECT_FALSE(file.IsIF());
    EXPECT_EQ(file.GetPath(), "");
    EXPECT_EQ(file.GetFileName(), "");
    EXPECT_EQ(file.GetFileSize(), 0U);
    EXPECT_EQ(file.GetSampleRate(), 0U);
    EXPECT_EQ(file.GetChannels(), 0U);
    EXPECT_EQ(file.GetBitsPerSample(), 0U);
    EXPECT_EQ(file.GetBytesPerSecond(), 0U);
    EXPECT_EQ(file.GetDataSize(), 0U);
    EXPECT_EQ(file.GetPositionBytes(), 0U);
    EXPECT_EQ(file.GetDurationSeconds(), 0U);
    EXPECT_EQ(file.GetPositionSeconds(), 0U);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(file.GetFileSize(), 0U) << "closing without a file does nothing";
}

/// A path and what is made of its name.
struct NameCase {
    std::string path;
    std::string name;
    bool isIF;
};

void PrintTo(const NameCase& value, std::ostream* stream) {
    *stream << value.path;
}

struct RecordingName : CtbWaveFileTest, testing::WithParamInterface<NameCase> {
    void ExpectName() {
        EXPECT_EQ(file.GetPath(), GetParam().path.c_str());
        EXPECT_EQ(file.GetFileName(), GetParam().name.c_str());
        EXPECT_EQ(file.IsIF(), GetParam().isIF);
    }
};

TEST_P(RecordingName, IsTheSameCreatedOpenedAndOpenedAgain) {
    ASSERT_TRUE(file.Create(GetParam().path.c_str(), 8000));
    ExpectName();
    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(file.IsIF());
    EXPECT_EQ(file.GetFileName(), GetParam().name.c_str());

    ASSERT_TRUE(file.Open(nullptr));
    ExpectName();
    CtbWaveFile other(memory.Platform());
    ASSERT_TRUE(other.Open(GetParam().path.c_str()));
    EXPECT_EQ(other.GetFileName(), GetParam().name.c_str());
    EXPECT_EQ(other.IsIF(), GetParam().isIF);
}

INSTANTIATE_TEST_SUITE_P(
    CtbWaveFile, RecordingName,
    testing::Values(
        NameCase{"a.if.wav", "a.if", true}, NameCase{"a.wav", "a", false}, NameCase{"a.if", "a", false},
        NameCase{"rec.IF.wav", "rec.IF", false}, NameCase{"rec.If.wav", "rec.If", false},
        NameCase{"rec.if.WAV", "rec.if", true}, NameCase{"rec.iff.wav", "rec.iff", false},
        NameCase{"C:\\radio\\rec.if.wav", "rec.if", true}, NameCase{"C:\\radio\\rec", "rec", false},
        NameCase{"C:\\radio.if\\rec", "rec", false}, NameCase{"C:\\radio.if\\rec.wav", "rec", false},
        NameCase{"C:\\a.if.wav\\b.wav", "b", false}, NameCase{"whole name", "whole name", false},
        NameCase{"a.b.if.wav", "a.b.if", true}, NameCase{"a.if.b.wav", "a.if.b", false},
        NameCase{".if.wav", ".if", true}, NameCase{"if.wav", "if", false}, NameCase{"..if.", "..if", true},
        NameCase{"C:\\radio\\", "", false}, NameCase{"154+785 MHz+.if.wav", "154+785 MHz+.if", true},
        NameCase{"\xC4\x80\xFF\x81.if.wav", "\xC4\x80\xFF\x81.if", true},
        NameCase{"C:\\" + std::string(300, 'f') + "\\" + std::string(150, 'n') + ".if.wav",
                 std::string(150, 'n') + ".if", true}));

struct RecordingRate : CtbWaveFileTest, testing::WithParamInterface<std::uint32_t> {};

TEST_P(RecordingRate, ComesBackFromTheDiskWithEverySample) {
    const Samples samples = Spread(30007); // more than the buffer, and no multiple of it
    const test::TemporaryFolder folder;
    const std::string path = folder.Path("round.if.wav");
    CtbWaveFile real;
    ASSERT_TRUE(real.Create(path.c_str(), GetParam()));
    for (std::uint32_t done = 0; done < Count(samples);) {
        const std::uint32_t part = std::min<std::uint32_t>(2400, Count(samples) - done);
        ASSERT_TRUE(real.Write(samples.data() + done, part));
        done += part;
        EXPECT_EQ(real.GetDataSize(), 2 * done);
        EXPECT_EQ(real.GetFileSize(), 46 + 2 * done);
    }
    EXPECT_TRUE(real.Close());
    const Bytes expected = Recording(GetParam(), samples);
    EXPECT_EQ(test::ReadWholeFile(path), std::string(expected.begin(), expected.end()));

    ASSERT_TRUE(real.Open(nullptr));
    EXPECT_EQ(real.GetSampleRate(), GetParam());
    EXPECT_EQ(real.GetBytesPerSecond(), 2 * GetParam());
    EXPECT_EQ(real.GetFileSize(), 46 + 2 * Count(samples));
    Samples read(samples.size());
    for (std::uint32_t done = 0; done < Count(samples);) {
        const std::uint32_t count =
            real.Read(read.data() + done, std::min<std::uint32_t>(2400, Count(samples) - done));
        ASSERT_GT(count, 0U);
        done += count;
    }
    EXPECT_EQ(read, samples);
}

INSTANTIATE_TEST_SUITE_P(CtbWaveFile, RecordingRate, testing::Values(8000U, 16000U, 44100U, 48000U, 64000U));

TEST_F(CtbWaveFileTest, WritesEveryByteOfHeaderAndSamples) {
    ASSERT_TRUE(file.Create(kPath, 64000));
    EXPECT_TRUE(file.IsOpen());
    EXPECT_TRUE(file.IsWriting());
    EXPECT_EQ(file.GetFileSize(), 46U) << "the samples' offset";
    EXPECT_EQ(file.GetDataSize(), 0U);
    EXPECT_TRUE(file.Write(kFive.data(), Count(kFive)));
    EXPECT_EQ(file.GetFileSize(), 56U);
    EXPECT_EQ(file.GetDataSize(), 10U);
    EXPECT_EQ(file.GetPositionBytes(), 0U);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(memory.files[kPath], Recording(64000, kFive));
    ExpectClosed();
}

TEST_F(CtbWaveFileTest, HasSixteenBitMonoWhileWritingAndAfter) {
    ASSERT_TRUE(file.Create(kPath, 44100));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(file.GetFormatTag(), 1U);
        EXPECT_EQ(file.GetChannels(), 1U);
        EXPECT_EQ(file.GetSampleRate(), 44100U);
        EXPECT_EQ(file.GetBytesPerSecond(), 88200U);
        EXPECT_EQ(file.GetBitsPerSample(), 16U);
        EXPECT_TRUE(file.Close());
    }
}

TEST_F(CtbWaveFileTest, LeavesAWholeHeaderInAnEmptyFile) {
    ASSERT_TRUE(file.Create(kPath, 8000));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(memory.files[kPath], Recording(8000, {}));
}

TEST_F(CtbWaveFileTest, CompletesTheHeaderWhenDestroyed) {
    {
        CtbWaveFile other(memory.Platform());
        ASSERT_TRUE(other.Create(kPath, 8000));
        ASSERT_TRUE(other.Write(kFive.data(), Count(kFive)));
    }
    EXPECT_EQ(memory.files[kPath], Recording(8000, kFive));
    EXPECT_EQ(memory.closed, 1);
}

TEST_F(CtbWaveFileTest, ReplacesALongerFile) {
    memory.files[kPath] = Bytes(1000, 'x');
    ASSERT_TRUE(file.Create(kPath, 8000));
    EXPECT_TRUE(file.Write(kFive.data(), 1));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(memory.files[kPath], Recording(8000, {kFive[0]}));
}

TEST_F(CtbWaveFileTest, CompletesAFileWhenAnotherIsCreatedOrOpened) {
    ASSERT_TRUE(file.Create("first.if.wav", 8000));
    ASSERT_TRUE(file.Write(kFive.data(), 5));
    ASSERT_TRUE(file.Create("second.wav", 16000));
    EXPECT_FALSE(file.IsIF());
    EXPECT_EQ(file.GetDataSize(), 0U);
    EXPECT_EQ(memory.files["first.if.wav"], Recording(8000, kFive));
    ASSERT_TRUE(file.Write(kFive.data(), 2));
    ASSERT_TRUE(file.Open("first.if.wav"));
    EXPECT_FALSE(file.IsWriting());
    EXPECT_EQ(memory.files["second.wav"], Recording(16000, {kFive[0], kFive[1]}));
    EXPECT_EQ(ReadAll(), kFive);
    EXPECT_EQ(memory.closed, 2);
}

TEST_F(CtbWaveFileTest, ReadsByANullPathWhatItHasJustWritten) {
    ASSERT_TRUE(file.Create(kPath, 16000));
    ASSERT_TRUE(file.Write(kFive.data(), 5));
    EXPECT_TRUE(file.Close());
    ASSERT_TRUE(file.Open(nullptr));
    EXPECT_EQ(file.GetPath(), kPath);
    EXPECT_EQ(file.GetSampleRate(), 16000U);
    EXPECT_EQ(ReadAll(), kFive);
}

TEST_F(CtbWaveFileTest, ClosesWhatIsWrittenBeforeOpeningItByANullPath) {
    ASSERT_TRUE(file.Create(kPath, 16000));
    ASSERT_TRUE(file.Write(kFive.data(), 5));
    ASSERT_TRUE(file.Open(nullptr));
    EXPECT_EQ(file.GetDataSize(), 10U);
    EXPECT_EQ(ReadAll(), kFive);
}

TEST_F(CtbWaveFileTest, OpensAtTheFirstSampleWithEveryField) {
    ASSERT_TRUE(Open(Recording(48000, Spread(48000 * 2 + 10))));
    EXPECT_TRUE(file.IsOpen());
    EXPECT_FALSE(file.IsWriting());
    EXPECT_FALSE(file.IsUnfinished());
    EXPECT_EQ(file.GetOpening(), WaveOpening::Opened);
    EXPECT_EQ(file.GetSampleRate(), 48000U);
    EXPECT_EQ(file.GetBytesPerSecond(), 96000U);
    EXPECT_EQ(file.GetChannels(), 1U);
    EXPECT_EQ(file.GetBitsPerSample(), 16U);
    EXPECT_EQ(file.GetFileSize(), 192066U);
    EXPECT_EQ(file.GetDataSize(), 192020U);
    EXPECT_EQ(file.GetDurationSeconds(), 2U);
    EXPECT_EQ(file.GetPositionBytes(), 0U);
    EXPECT_EQ(file.GetPositionSeconds(), 0U);
}

struct FormatLength : CtbWaveFileTest, testing::WithParamInterface<std::uint32_t> {};

TEST_P(FormatLength, LeadsToEverySample) {
    ASSERT_TRUE(
        Open(RiffBytes().Chunk("fmt ", FormatBytes(GetParam())).Chunk("data", SampleBytes(kFive)).Bytes()));
    EXPECT_EQ(file.GetFormatSize(), GetParam());
    EXPECT_EQ(file.GetSampleRate(), 48000U);
    EXPECT_EQ(file.GetBitsPerSample(), 16U);
    EXPECT_EQ(file.GetDataSize(), 10U);
    EXPECT_EQ(ReadAll(), kFive);
    EXPECT_TRUE(file.Seek(8));
    EXPECT_EQ(ReadAll(), Samples{7}) << "the samples are where their chunk is";
}

INSTANTIATE_TEST_SUITE_P(CtbWaveFile, FormatLength, testing::Values(16U, 18U, 40U));

TEST_F(CtbWaveFileTest, PassesOverOtherChunksBeforeAndBehind) {
    const Bytes contents = RiffBytes()
                               .Chunk("JUNK", Bytes(28, 0xAA))
                               .Chunk("odd1", {1})
                               .Chunk("fmt ", FormatBytes(16))
                               .Chunk("LIST", Bytes(20001, 0xBB))
                               .Chunk("none", {})
                               .Chunk("data", SampleBytes(kFive))
                               .Chunk("LIST", Bytes(64, 0xCC))
                               .Bytes();
    ASSERT_TRUE(Open(contents));
    EXPECT_EQ(file.GetDataSize(), 10U);
    EXPECT_EQ(Read(5), kFive);
}

TEST_F(CtbWaveFileTest, PassesOverChunksBeforeTheRiffChunk) {
    Bytes contents = LittleEndianBytes().Text("LEAD").Number(3, 4).Number(0, 4).Bytes();
    const Bytes recording = Recording(8000, kFive);
    contents.insert(contents.end(), recording.begin(), recording.end());
    ASSERT_TRUE(Open(contents));
    EXPECT_EQ(ReadAll(), kFive);
}

TEST_F(CtbWaveFileTest, TakesTheFirstOfTwoFormatsAndOfTwoDataChunks) {
    ASSERT_TRUE(Open(RiffBytes()
                         .Chunk("fmt ", FormatBytes(18, {.rate = 8000}))
                         .Chunk("fmt ", FormatBytes(16, {.channels = 2, .rate = 44100}))
                         .Chunk("data", SampleBytes({kFive.data(), 2}))
                         .Chunk("data", SampleBytes(kFive))
                         .Bytes()));
    EXPECT_EQ(file.GetSampleRate(), 8000U);
    EXPECT_EQ(file.GetChannels(), 1U);
    EXPECT_EQ(Read(2), (Samples{kFive[0], kFive[1]}));
}

TEST_F(CtbWaveFileTest, OpensWhatMayNotBePlayed) {
    struct Case {
        test::WaveFormat format;
        std::uint32_t tag, channels, bits, bytesPerSecond;
    };
    for (const Case& one :
         {Case{{.channels = 2}, 1, 2, 16, 192000}, Case{{.bits = 8}, 1, 1, 8, 48000},
          Case{{.tag = 3, .bits = 32}, 3, 1, 32, 192000}, Case{{.rate = 192000}, 1, 1, 16, 384000}}) {
        ASSERT_TRUE(Open(RiffBytes()
                             .Chunk("fmt ", FormatBytes(18, one.format))
                             .Chunk("data", SampleBytes(kFive))
                             .Bytes()));
        EXPECT_EQ(file.GetFormatTag(), one.tag);
        EXPECT_EQ(file.GetChannels(), one.channels);
        EXPECT_EQ(file.GetBitsPerSample(), one.bits);
        EXPECT_EQ(file.GetBytesPerSecond(), one.bytesPerSecond);
        EXPECT_EQ(file.GetSampleRate(), one.format.rate);
    }
}

TEST_F(CtbWaveFileTest, TellsTheSubFormatOfAnExtensibleFormat) {
    for (const std::uint16_t subFormat : {std::uint16_t{1}, std::uint16_t{3}}) {
        ASSERT_TRUE(
            Open(RiffBytes()
                     .Chunk("fmt ", FormatBytes(40, {.tag = test::kExtensibleTag, .subFormat = subFormat}))
                     .Chunk("data", SampleBytes(kFive))
                     .Bytes()));
        EXPECT_EQ(file.GetFormatTag(), subFormat);
    }
    ASSERT_TRUE(Open(RiffBytes()
                         .Chunk("fmt ", FormatBytes(18, {.tag = test::kExtensibleTag}))
                         .Chunk("data", SampleBytes(kFive))
                         .Bytes()));
    EXPECT_EQ(file.GetFormatTag(), 0U) << "there is none";
}

TEST_F(CtbWaveFileTest, HasNoSecondsAtARateOfZero) {
    ASSERT_TRUE(Open(Recording(0, kFive)));
    EXPECT_EQ(file.GetSampleRate(), 0U);
    EXPECT_EQ(file.GetDurationSeconds(), 0U);
    EXPECT_EQ(Read(3).size(), 3U);
    EXPECT_EQ(file.GetPositionSeconds(), 0U);
    ASSERT_TRUE(file.Create(kPath, 0));
    EXPECT_TRUE(file.Write(kFive.data(), 5));
    EXPECT_EQ(file.GetDurationSeconds(), 0U);
}

TEST_F(CtbWaveFileTest, CountsWholeSeconds) {
    ASSERT_TRUE(Open(Recording(8000, Spread(3 * 8000 - 1))));
    EXPECT_EQ(file.GetDurationSeconds(), 2U);
    EXPECT_TRUE(file.Seek(15998));
    EXPECT_EQ(file.GetPositionSeconds(), 0U);
    EXPECT_TRUE(file.Seek(16000));
    EXPECT_EQ(file.GetPositionSeconds(), 1U);
    ASSERT_TRUE(file.Create(kPath, 8000));
    const Samples second = Spread(8000);
    EXPECT_TRUE(file.Write(second.data(), 7999));
    EXPECT_EQ(file.GetDurationSeconds(), 0U);
    EXPECT_TRUE(file.Write(second.data(), 1));
    EXPECT_EQ(file.GetDurationSeconds(), 1U);
}

TEST_F(CtbWaveFileTest, KeepsTheLowBitsOfASizeBeyondThirtyTwo) {
    FilePlatform platform = memory.Platform();
    platform.size = [](FileHandle) { return std::int64_t{0x1'0000'0123}; };
    memory.files[kPath] = Recording(8000, kFive);
    CtbWaveFile large(platform);
    ASSERT_TRUE(large.Open(kPath));
    EXPECT_EQ(large.GetFileSize(), 0x123U);
}

TEST_F(CtbWaveFileTest, BelievesTheHeadersDataSize) {
    Bytes contents = Recording(8000, kFive);
    contents.resize(contents.size() - 4);
    ASSERT_TRUE(Open(contents));
    EXPECT_EQ(file.GetDataSize(), 10U);
    EXPECT_TRUE(file.Seek(10));
    EXPECT_EQ(file.GetPositionBytes(), 10U);
    EXPECT_EQ(ReadAll(), Samples());
    EXPECT_TRUE(file.Rewind());
    EXPECT_EQ(ReadAll(), (Samples{kFive[0], kFive[1], kFive[2]}));
}

TEST_F(CtbWaveFileTest, ReadsOnBehindTheSamplesToTheEndOfTheFile) {
    ASSERT_TRUE(Open(RiffBytes()
                         .Chunk("fmt ", FormatBytes(18))
                         .Chunk("data", SampleBytes(kFive))
                         .Chunk("LIST", {1, 2, 3, 4})
                         .Bytes()));
    const Samples list = {0x494C, 0x5453, 4, 0, 0x0201, 0x0403};
    Samples expected = kFive;
    expected.insert(expected.end(), list.begin(), list.end());
    EXPECT_EQ(ReadAll(4), expected);
    EXPECT_EQ(file.GetPositionBytes(), 22U);
    EXPECT_TRUE(file.Seek(22));
    EXPECT_EQ(file.GetPositionBytes(), 10U) << "seeking does stop at the end of the samples";
    EXPECT_EQ(ReadAll(), list);
}

TEST_F(CtbWaveFileTest, SeeksOneByteBeforeTheEndOfAnOddDataSize) {
    Bytes data = SampleBytes(kFive);
    data.push_back(0x77);
    ASSERT_TRUE(Open(RiffBytes().Chunk("fmt ", FormatBytes(18)).ChunkOfSize("data", 11, data).Bytes()));
    EXPECT_EQ(file.GetDataSize(), 11U);
    EXPECT_TRUE(file.Seek(file.GetDataSize()));
    EXPECT_EQ(file.GetPositionBytes(), 10U);
    EXPECT_EQ(ReadAll(), Samples()) << "half a sample is none";
    EXPECT_EQ(file.GetPositionBytes(), 11U) << "but it was read";
    EXPECT_TRUE(file.Seek(11)) << "from behind it";
    EXPECT_EQ(file.GetPositionBytes(), 10U);
}

TEST_F(CtbWaveFileTest, CountsTheHalfSampleAtTheEndInItsPositionOnly) {
    Bytes data = SampleBytes(kFive);
    data.push_back(0x77);
    ASSERT_TRUE(Open(RiffBytes().Chunk("fmt ", FormatBytes(18)).ChunkOfSize("data", 11, data).Bytes()));
    EXPECT_EQ(Read(100), kFive);
    EXPECT_EQ(file.GetPositionBytes(), 11U);
}

TEST_F(CtbWaveFileTest, SeeksAnywhereInAnyOrder) {
    const Samples samples = Spread(50000); // several buffers
    ASSERT_TRUE(Open(Recording(8000, samples)));
    std::uint32_t random = 1;
    for (int i = 0; i < 2000; ++i) {
        random = random * 1664525U + 1013904223U;
        const std::uint32_t position = (random >> 8) % (2 * Count(samples) + 10);
        const std::uint32_t expected = std::min(position, 2 * Count(samples)) & ~1U;
        const bool moves = expected != file.GetPositionBytes();
        EXPECT_EQ(file.Seek(position), moves);
        ASSERT_EQ(file.GetPositionBytes(), expected);
        const std::uint32_t count = std::min(1 + (random >> 3) % 9000, Count(samples) - expected / 2);
        const Samples part = Read(count);
        ASSERT_EQ(part, Samples(samples.begin() + expected / 2, samples.begin() + expected / 2 + count));
        ASSERT_EQ(file.GetPositionBytes(), expected + 2 * count);
    }
}

TEST_F(CtbWaveFileTest, StepsBySecondsAsPlaybackDoes) {
    const Samples samples = Spread(40000);
    ASSERT_TRUE(Open(Recording(8000, samples)));
    std::uint32_t second = 0;
    for (const int step : {1, 1, 1, -1, -1, 1, 1, 1}) {
        const std::uint32_t target = file.GetPositionBytes() + static_cast<std::uint32_t>(step) * 16000U;
        ASSERT_TRUE(file.Seek(target));
        second += static_cast<std::uint32_t>(step);
        EXPECT_EQ(file.GetPositionSeconds(), second);
    }
    ASSERT_EQ(second, 4U);
    EXPECT_EQ(Read(3), (Samples{samples[32000], samples[32001], samples[32002]}));
    EXPECT_TRUE(file.Seek(file.GetPositionBytes() + 16000));
    EXPECT_EQ(file.GetPositionBytes(), 80000U) << "no further than the end";
    EXPECT_EQ(file.GetPositionSeconds(), 5U);
    EXPECT_EQ(ReadAll(), Samples());
}

TEST_F(CtbWaveFileTest, DoesNotSeekToWhereItIs) {
    ASSERT_TRUE(Open(Recording(8000, kFive)));
    EXPECT_FALSE(file.Seek(0));
    EXPECT_FALSE(file.Seek(1)) << "rounded down";
    EXPECT_EQ(Read(2).size(), 2U);
    EXPECT_FALSE(file.Seek(4));
    EXPECT_FALSE(file.Seek(5));
    EXPECT_EQ(Read(1), Samples{kFive[2]});
    EXPECT_TRUE(file.Seek(kAllOnes));
    EXPECT_EQ(file.GetPositionBytes(), 10U);
    EXPECT_FALSE(file.Seek(10));
    EXPECT_EQ(memory.seeks, 0) << "all of it was in the buffer";
}

TEST_F(CtbWaveFileTest, DoesNotSeekWhileWritingNorWithoutAFile) {
    EXPECT_FALSE(file.Seek(2));
    EXPECT_EQ(file.GetPositionBytes(), 0U) << "limited to no samples at all";
    ASSERT_TRUE(file.Create(kPath, 8000));
    ASSERT_TRUE(file.Write(kFive.data(), 5));
    EXPECT_FALSE(file.Seek(2));
    EXPECT_FALSE(file.Rewind());
    EXPECT_EQ(file.GetPositionBytes(), 0U);
    ASSERT_TRUE(file.Write(kFive.data(), 1));
    EXPECT_TRUE(file.Close());
    Samples expected = kFive;
    expected.push_back(kFive[0]);
    EXPECT_EQ(memory.files[kPath], Recording(8000, expected));
    EXPECT_FALSE(file.Seek(2));
    EXPECT_FALSE(file.Rewind());
}

TEST_F(CtbWaveFileTest, RewindsToTheFirstSample) {
    ASSERT_TRUE(Open(Recording(8000, kFive)));
    EXPECT_EQ(ReadAll(), kFive);
    EXPECT_TRUE(file.Rewind());
    EXPECT_EQ(file.GetPositionBytes(), 0U);
    EXPECT_TRUE(file.Rewind());
    EXPECT_EQ(ReadAll(), kFive);
}

TEST_F(CtbWaveFileTest, ReadsNothingWithoutBufferSamplesOrFile) {
    std::int16_t sample = 0x5A5A;
    EXPECT_EQ(file.Read(&sample, 1), 0U);
    ASSERT_TRUE(Open(Recording(8000, kFive)));
    EXPECT_EQ(file.Read(nullptr, 1), 0U);
    EXPECT_EQ(file.Read(&sample, 0), 0U);
    EXPECT_EQ(file.GetPositionBytes(), 0U);
    EXPECT_EQ(sample, 0x5A5A);
}

TEST_F(CtbWaveFileTest, ReadsNothingWhileWriting) {
    ASSERT_TRUE(file.Create(kPath, 8000));
    ASSERT_TRUE(file.Write(kFive.data(), 5));
    EXPECT_EQ(ReadAll(), Samples());
    dsp::CtbSampleBlock block;
    block.Acquire(4);
    EXPECT_EQ(file.ReadBlock(block), 0U);
    EXPECT_EQ(file.GetPositionBytes(), 0U);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(memory.files[kPath], Recording(8000, kFive));
}

TEST_F(CtbWaveFileTest, ReadsNoFurtherThanItsCount) {
    constexpr std::int16_t kGuard = 0x5A5A;
    ASSERT_TRUE(Open(Recording(8000, kFive)));
    Samples samples(8, kGuard);
    EXPECT_EQ(file.Read(samples.data(), 2), 2U);
    EXPECT_EQ(samples, (Samples{kFive[0], kFive[1], kGuard, kGuard, kGuard, kGuard, kGuard, kGuard}));
    EXPECT_EQ(file.Read(samples.data(), 8), 3U);
    EXPECT_EQ(samples, (Samples{kFive[2], kFive[3], kFive[4], kGuard, kGuard, kGuard, kGuard, kGuard}));
}

TEST_F(CtbWaveFileTest, FillsBlocksToTheirCapacity) {
    ASSERT_TRUE(Open(Recording(8000, kFive)));
    dsp::CtbSampleBlock block;
    EXPECT_EQ(file.ReadBlock(block), 0U) << "no room yet";
    block.Acquire(3);
    EXPECT_EQ(file.ReadBlock(block), 3U);
    EXPECT_EQ(block.Used(), 3U);
    EXPECT_EQ(block[2], kFive[2]);
    EXPECT_EQ(file.ReadBlock(block), 2U);
    EXPECT_EQ(block.Used(), 2U);
    EXPECT_EQ(block[0], kFive[3]);
    EXPECT_EQ(block[1], kFive[4]);
    EXPECT_EQ(file.ReadBlock(block), 0U);
    EXPECT_EQ(block.Used(), 0U);
}

TEST_F(CtbWaveFileTest, ReadsThroughABuffer) {
    ASSERT_TRUE(Open(Recording(8000, Spread(16000))));
    EXPECT_EQ(ReadAll(100), Spread(16000));
    EXPECT_EQ(memory.reads, 3) << "32046 bytes and the end";
    EXPECT_EQ(memory.seeks, 0);
}

TEST_F(CtbWaveFileTest, ReadsWhatComesPieceByPiece) {
    memory.mostPerCall = 7;
    ASSERT_TRUE(Open(Recording(8000, Spread(1000))));
    EXPECT_EQ(ReadAll(64), Spread(1000));
}

/// What does not open, and why.
struct BadFile {
    const char* name;
    Bytes contents;
    WaveOpening opening;
};

void PrintTo(const BadFile& file, std::ostream* stream) {
    *stream << file.name;
}

Bytes WithText(Bytes contents, std::ptrdiff_t offset, std::string_view text) {
    std::copy(text.begin(), text.end(), contents.begin() + offset);
    return contents;
}

struct BadRecording : CtbWaveFileTest, testing::WithParamInterface<BadFile> {};

TEST_P(BadRecording, DoesNotOpenAndLeavesAllClosed) {
    ASSERT_TRUE(file.Create("good.if.wav", 8000));
    memory.files["bad.if.wav"] = GetParam().contents;
    EXPECT_FALSE(file.Open("bad.if.wav"));
    EXPECT_EQ(file.GetOpening(), GetParam().opening);
    EXPECT_EQ(file.GetPath(), "bad.if.wav");
    EXPECT_EQ(file.GetFileName(), "bad.if");
    ExpectClosed();
    ASSERT_TRUE(file.Open("good.if.wav"));
    EXPECT_TRUE(file.IsIF());
}

TEST_P(BadRecording, DoesNotOpenFromAPipe) {
    memory.isPipe = true;
    memory.files["pipe"] = GetParam().contents;
    memory.standardInput = "pipe";
    EXPECT_FALSE(file.OpenStandardInput());
    EXPECT_FALSE(file.IsOpen());
}

INSTANTIATE_TEST_SUITE_P(
    CtbWaveFile, BadRecording,
    testing::Values(
        BadFile{"empty", {}, WaveOpening::Empty},
        BadFile{"text", LittleEndianBytes().Text("This is a letter to a friend.").Bytes(),
                WaveOpening::NotWave},
        BadFile{"bigEndian", WithText(Recording(8000, kFive), 0, "RIFX"), WaveOpening::NotWave},
        BadFile{"otherForm", WithText(Recording(8000, kFive), 8, "AVI "), WaveOpening::NotWave},
        BadFile{"zeros", Bytes(1 << 20), WaveOpening::NotWave},
        BadFile{"riffAlone", LittleEndianBytes().Text("RIFF").Number(4, 4).Text("WA").Bytes(),
                WaveOpening::CutShort},
        BadFile{"noFormat", RiffBytes().Chunk("data", SampleBytes(kFive)).Bytes(), WaveOpening::NoFormat},
        BadFile{"formatCut", RiffBytes().ChunkOfSize("fmt ", 18, Bytes(17)).Bytes(), WaveOpening::NoFormat},
        BadFile{"formatOfSixteenAlone", RiffBytes().Chunk("fmt ", FormatBytes(16)).Bytes(),
                WaveOpening::NoData},
        BadFile{"formatAlone", RiffBytes().Chunk("fmt ", FormatBytes(18)).Bytes(), WaveOpening::NoData},
        BadFile{"formatOfFourGigabytes",
                RiffBytes()
                    .ChunkOfSize("fmt ", kAllOnes, FormatBytes(18))
                    .Chunk("data", SampleBytes(kFive))
                    .Bytes(),
                WaveOpening::CutShort},
        BadFile{"junkOfFourGigabytes",
                RiffBytes()
                    .ChunkOfSize("JUNK", kAllOnes, Bytes(7))
                    .Chunk("fmt ", FormatBytes(18))
                    .Chunk("data", SampleBytes(kFive))
                    .Bytes(),
                WaveOpening::CutShort},
        BadFile{"dataFirst",
                RiffBytes().Chunk("data", SampleBytes(kFive)).Chunk("fmt ", FormatBytes(18)).Bytes(),
                WaveOpening::DataBeforeFormat}),
    [](const auto& file) { return file.param.name; });

TEST_F(CtbWaveFileTest, KeepsTheFormatOfAFileWithoutSamples) {
    EXPECT_FALSE(Open(RiffBytes().Chunk("fmt ", FormatBytes(18, {.rate = 44100})).Bytes()));
    EXPECT_EQ(file.GetSampleRate(), 44100U);
    EXPECT_EQ(file.GetBytesPerSecond(), 88200U);
}

TEST_F(CtbWaveFileTest, TellsWhatCannotBeOpened) {
    EXPECT_FALSE(file.Open(nullptr)) << "no path yet";
    EXPECT_EQ(file.GetOpening(), WaveOpening::CannotOpen);
    EXPECT_FALSE(file.Open(""));
    EXPECT_FALSE(file.Open("absent.if.wav"));
    EXPECT_EQ(file.GetFileName(), "absent.if");
    ExpectClosed();
    EXPECT_FALSE(file.OpenStandardInput()) << "there is none";
    ExpectClosed();
    memory.files[kPath] = Recording(8000, kFive);
    memory.refusesToOpen = true;
    EXPECT_FALSE(file.Open(kPath));
    EXPECT_FALSE(file.Create("new.if.wav", 8000));
    EXPECT_EQ(file.GetPath(), "new.if.wav");
    EXPECT_EQ(file.GetFileName(), "new.if");
    ExpectClosed();
    memory.refusesToOpen = false;
    memory.refusesToRead = true;
    EXPECT_FALSE(file.Open(kPath));
    ExpectClosed();
    memory.refusesToRead = false;
    EXPECT_TRUE(file.Open(kPath));
}

TEST_F(CtbWaveFileTest, CreatesNothingWithoutAPath) {
    ASSERT_TRUE(Open(Recording(8000, kFive)));
    EXPECT_FALSE(file.Create(nullptr, 8000));
    EXPECT_TRUE(file.IsOpen()) << "nothing was done";
    EXPECT_EQ(ReadAll(), kFive);
    EXPECT_FALSE(file.Create("", 8000));
    ExpectClosed();
}

/// Cut at each byte, nothing opens before the samples begin, and what opens reads what there is.
TEST_F(CtbWaveFileTest, BearsAFileCutAtAnyByte) {
    for (const std::uint32_t formatSize : {16U, 18U, 40U}) {
        const Bytes whole = RiffBytes()
                                .Chunk("JUNK", {1, 2, 3})
                                .Chunk("fmt ", FormatBytes(formatSize))
                                .Chunk("data", SampleBytes(kFive))
                                .Bytes();
        const std::size_t start = 12 + 12 + 8 + formatSize + 8;
        for (std::size_t length = 0; length <= whole.size(); ++length) {
            const bool opens = Open({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)});
            EXPECT_EQ(opens, length >= start) << "format of " << formatSize << ", " << length << " bytes";
            EXPECT_EQ(ReadAll().size(), opens ? (length - start) / 2 : 0);
        }
    }
}

TEST_F(CtbWaveFileTest, BearsAnySizesInTheHeader) {
    for (const std::uint32_t riff : {0U, 1U, 4U, 37U, 0x7FFFFFFFU, 0x80000000U, kAllOnes - 1, kAllOnes}) {
        for (const std::uint32_t data : {0U, 1U, 9U, 0x7FFFFFFFU, 0x80000000U, kAllOnes - 1, kAllOnes}) {
            ASSERT_TRUE(Open(RiffBytes()
                                 .Chunk("fmt ", FormatBytes(18))
                                 .ChunkOfSize("data", data, SampleBytes(kFive))
                                 .BytesOfSize(riff)));
            EXPECT_EQ(file.GetDataSize(), data);
            EXPECT_EQ(file.IsUnfinished(), data == kAllOnes || (data == 0 && riff == 0))
                << "sizes " << riff << " and " << data;
            EXPECT_EQ(ReadAll(), kFive);
            file.Seek(kAllOnes);
            EXPECT_EQ(file.GetPositionBytes(), data & ~1U);
            EXPECT_EQ(Read(1).size(), data < 10 && (data & ~1U) < 10 ? 1U : 0U);
        }
    }
}

/// The samples' chunk is where a format of 18 bytes ends, and one of 17 with its pad byte: only these lead
/// there.
TEST_F(CtbWaveFileTest, BearsAFormatOfAnySize) {
    for (const std::uint32_t size :
         {0U, 1U, 2U, 15U, 16U, 17U, 18U, 19U, 0x7FFFFFFFU, kAllOnes - 1, kAllOnes}) {
        Bytes contents =
            RiffBytes().ChunkOfSize("fmt ", size, FormatBytes(18)).Chunk("data", SampleBytes(kFive)).Bytes();
        contents.resize(60);
        const bool leadsToSamples = size == 17 || size == 18;
        EXPECT_EQ(Open(contents), leadsToSamples) << "size " << size;
        EXPECT_EQ(Read(5), leadsToSamples ? kFive : Samples()) << "size " << size;
    }
}

TEST_F(CtbWaveFileTest, ReadsStandardInputFromItsPresentPlaceOn) {
    memory.isPipe = true;
    memory.mostPerCall = 11;
    memory.files["pipe"] = RiffBytes()
                               .Chunk("LIST", Bytes(40001, 0xAA))
                               .Chunk("fmt ", FormatBytes(16))
                               .Chunk("LIST", Bytes(3, 0xBB))
                               .Chunk("data", SampleBytes(Spread(20000)))
                               .Bytes();
    memory.standardInput = "pipe";
    ASSERT_TRUE(file.OpenStandardInput());
    EXPECT_EQ(file.GetDataSize(), 40000U);
    EXPECT_EQ(file.GetFileSize(), kAllOnes) << "a pipe has no size";
    EXPECT_EQ(ReadAll(500), Spread(20000));
    EXPECT_EQ(memory.seeks, 0);
    EXPECT_TRUE(file.Seek(0));
    EXPECT_EQ(ReadAll(), Samples()) << "that has passed";
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(memory.closed, 0) << "it was not opened here";
}

} // namespace

} // namespace orva::audio
