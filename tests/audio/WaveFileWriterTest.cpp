#include "audio/WaveFileWriter.h"

#include "audio/WaveFileReader.h"
#include "tests/audio/RiffBytes.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::audio {

namespace {

using Samples = std::vector<std::int16_t>;

const Samples kFive = {-32768, 32767, 0x1234, -2, 7};

/// The file as it must be, written out byte by byte.
std::string Expected(std::uint32_t rate, const Samples& samples) {
    const auto dataSize = static_cast<std::uint32_t>(2 * samples.size());
    test::LittleEndianBytes bytes;
    bytes.Text("RIFF").Number(38 + dataSize, 4).Text("WAVE");
    bytes.Text("fmt ").Number(18, 4).Number(1, 2).Number(1, 2).Number(rate, 4).Number(2 * rate, 4);
    bytes.Number(2, 2).Number(16, 2).Number(0, 2);
    bytes.Text("data").Number(dataSize, 4).Raw(test::SampleBytes(samples));
    return {bytes.Bytes().begin(), bytes.Bytes().end()};
}

class WaveFileWriterTest : public testing::Test {
protected:
    test::TemporaryFolder folder;
    const std::string path = folder.Path("speech.wav");
    WaveFileWriter writer;
};

TEST_F(WaveFileWriterTest, WritesEveryByteOfHeaderAndSamples) {
    ASSERT_TRUE(writer.Create(path, 8000));
    EXPECT_TRUE(writer.Write(kFive.data(), kFive.size()));
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(test::ReadWholeFile(path), Expected(8000, kFive));
}

TEST_F(WaveFileWriterTest, AppendsWriteByWrite) {
    ASSERT_TRUE(writer.Create(path, 48000));
    Samples all;
    for (std::size_t count = 0; count <= kFive.size(); ++count) {
        EXPECT_TRUE(writer.Write(kFive.data(), count));
        all.insert(all.end(), kFive.begin(), kFive.begin() + static_cast<std::ptrdiff_t>(count));
    }
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(test::ReadWholeFile(path), Expected(48000, all));
}

TEST_F(WaveFileWriterTest, LeavesAWholeHeaderInAnEmptyFile) {
    ASSERT_TRUE(writer.Create(path, 8000));
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(test::ReadWholeFile(path), Expected(8000, {}));
}

TEST_F(WaveFileWriterTest, FillsInTheSizesWhenDestroyed) {
    {
        WaveFileWriter other;
        ASSERT_TRUE(other.Create(path, 8000));
        ASSERT_TRUE(other.Write(kFive.data(), kFive.size()));
    }
    EXPECT_EQ(test::ReadWholeFile(path), Expected(8000, kFive));
}

TEST_F(WaveFileWriterTest, ReplacesALongerFile) {
    folder.Write("speech.wav", std::string(1000, 'x'));
    ASSERT_TRUE(writer.Create(path, 8000));
    EXPECT_TRUE(writer.Write(kFive.data(), 1));
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(test::ReadWholeFile(path), Expected(8000, {kFive[0]}));
}

TEST_F(WaveFileWriterTest, CompletesTheFirstFileWhenASecondIsCreated) {
    ASSERT_TRUE(writer.Create(path, 8000));
    ASSERT_TRUE(writer.Write(kFive.data(), kFive.size()));
    ASSERT_TRUE(writer.Create(folder.Path("second.wav"), 8000));
    ASSERT_TRUE(writer.Write(kFive.data(), 2));
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(test::ReadWholeFile(path), Expected(8000, kFive));
    EXPECT_EQ(test::ReadWholeFile(folder.Path("second.wav")), Expected(8000, {kFive[0], kFive[1]}));
}

TEST_F(WaveFileWriterTest, TellsThatAFileCannotBeCreated) {
    EXPECT_FALSE(writer.Create(folder.Path("no such folder/speech.wav"), 8000));
    EXPECT_FALSE(writer.IsOpen());
    EXPECT_FALSE(writer.Write(kFive.data(), kFive.size()));
    EXPECT_FALSE(writer.Close());
}

TEST_F(WaveFileWriterTest, WorksAgainAfterAFailedCreation) {
    ASSERT_FALSE(writer.Create(folder.Path("no such folder/speech.wav"), 8000));
    ASSERT_TRUE(writer.Create(path, 8000));
    EXPECT_TRUE(writer.IsOpen());
    EXPECT_TRUE(writer.Write(kFive.data(), kFive.size()));
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(test::ReadWholeFile(path), Expected(8000, kFive));
}

TEST_F(WaveFileWriterTest, RefusesSamplesAfterClosing) {
    ASSERT_TRUE(writer.Create(path, 8000));
    ASSERT_TRUE(writer.Write(kFive.data(), kFive.size()));
    ASSERT_TRUE(writer.Close());
    EXPECT_FALSE(writer.IsOpen());
    EXPECT_FALSE(writer.Write(kFive.data(), kFive.size()));
    EXPECT_EQ(test::ReadWholeFile(path), Expected(8000, kFive));
}

TEST_F(WaveFileWriterTest, ClosesTwiceWithoutHarm) {
    ASSERT_TRUE(writer.Create(path, 8000));
    EXPECT_TRUE(writer.Close());
    EXPECT_TRUE(writer.Close());
}

#ifdef __linux__
TEST_F(WaveFileWriterTest, TellsAFullDisk) {
    ASSERT_TRUE(writer.Create("/dev/full", 8000));
    const Samples many(100000, 1);
    EXPECT_FALSE(writer.Write(many.data(), many.size()));
    EXPECT_FALSE(writer.Write(many.data(), 1));
    EXPECT_FALSE(writer.Close());
}

TEST_F(WaveFileWriterTest, TellsAFullDiskThatShowsOnlyWhenClosing) {
    ASSERT_TRUE(writer.Create("/dev/full", 8000));
    EXPECT_TRUE(writer.Write(kFive.data(), kFive.size()));
    EXPECT_FALSE(writer.Close());
}
#endif

TEST_F(WaveFileWriterTest, LeavesAReadableFileWhileItIsBeingWritten) {
    const Samples many(10000, 1234);
    ASSERT_TRUE(writer.Create(path, 8000));
    ASSERT_TRUE(writer.Write(many.data(), many.size()));
    // What has left the stream's buffer is what a program that was killed would leave behind.
    WaveFileReader reader;
    ASSERT_EQ(reader.Open(path), WaveFault::None);
    EXPECT_TRUE(reader.IsUnfinished());
    Samples read(many.size());
    const std::size_t count = reader.Read(read.data(), read.size());
    EXPECT_GT(count, 0U);
    EXPECT_EQ(Samples(read.begin(), read.begin() + static_cast<std::ptrdiff_t>(count)), Samples(count, 1234));
}

struct RoundTrip : testing::TestWithParam<std::uint32_t> {};

TEST_P(RoundTrip, GivesBackRateAndSamples) {
    const test::TemporaryFolder folder;
    const std::string path = folder.Path("round.wav");
    Samples samples(10007);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::int16_t>(i * 40503U);
    }
    WaveFileWriter writer;
    ASSERT_TRUE(writer.Create(path, GetParam()));
    ASSERT_TRUE(writer.Write(samples.data(), samples.size()));
    ASSERT_TRUE(writer.Close());

    WaveFileReader reader;
    ASSERT_EQ(reader.Open(path), WaveFault::None);
    EXPECT_EQ(reader.GetSampleRate(), GetParam());
    EXPECT_EQ(reader.GetPromisedSamples(), samples.size());
    Samples read(samples.size() + 1);
    EXPECT_EQ(reader.Read(read.data(), read.size()), samples.size());
    read.pop_back();
    EXPECT_EQ(read, samples);
    EXPECT_FALSE(reader.IsCutShort());
}

INSTANTIATE_TEST_SUITE_P(WaveFile, RoundTrip, testing::Values(8000U, 48000U, 64000U));

} // namespace

} // namespace orva::audio
