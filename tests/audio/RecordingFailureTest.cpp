/// Recordings that come to their end otherwise than by being closed in good order.
#include "audio/CtbWaveFile.h"
#include "audio/WaveFileReader.h"
#include "tests/audio/ChildProcess.h"
#include "tests/audio/MemoryFiles.h"
#include "tests/audio/RiffBytes.h"
#include "tests/support/AllocationProbe.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#ifdef __linux__
#include <csignal>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#endif

namespace orva::audio {

namespace {

using Bytes = std::vector<std::uint8_t>;
using Samples = std::vector<std::int16_t>;

constexpr std::uint32_t kBlock = 2400; ///< samples in a block of the receiver's stream
constexpr std::uint32_t kHeaderBytes = 46;
/// Blocks that may still be taken once the disk takes nothing.
constexpr std::uint32_t kBlocksInBuffer = BufferedFile::kBufferBytes / (std::size_t{2} * kBlock);
constexpr std::uint32_t kRate = 64000;
constexpr const char* kPath = "call.if.wav";

/// Sample `index` of every recording here: without a period, and with all bits used.
std::int16_t SampleAt(std::uint32_t index) {
    return static_cast<std::int16_t>(index * 40503U);
}

Samples Spread(std::uint32_t first, std::uint32_t count) {
    Samples samples(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        samples[i] = SampleAt(first + i);
    }
    return samples;
}

/// Writes blocks until one is refused, at most `mostBlocks`; returns how many were not.
std::uint32_t WriteBlocks(CtbWaveFile& file, std::uint32_t mostBlocks) {
    for (std::uint32_t block = 0; block < mostBlocks; ++block) {
        if (!file.Write(Spread(block * kBlock, kBlock).data(), kBlock)) {
            return block;
        }
    }
    return mostBlocks;
}

std::uint32_t NumberAt(const std::string& bytes, std::size_t offset) {
    std::uint32_t number = 0;
    for (int i = 3; i >= 0; --i) {
        number = number << 8 | static_cast<std::uint8_t>(bytes[offset + static_cast<std::size_t>(i)]);
    }
    return number;
}

/// A recording whose header tells of `samples`, and which has exactly those.
void ExpectWhole(const std::string& contents, std::uint32_t samples) {
    ASSERT_GE(contents.size(), kHeaderBytes);
    EXPECT_EQ(NumberAt(contents, 4), kHeaderBytes - 8 + 2 * samples);
    EXPECT_EQ(NumberAt(contents, 42), 2 * samples);
    ASSERT_GE(contents.size(), kHeaderBytes + 2 * samples);
    const Bytes expected = test::SampleBytes(Spread(0, samples));
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), contents.begin() + kHeaderBytes,
                           [](std::uint8_t a, char b) { return a == static_cast<std::uint8_t>(b); }));
}

std::string Contents(const test::MemoryFiles& memory) {
    const Bytes& bytes = memory.files.at(kPath);
    return {bytes.begin(), bytes.end()};
}

TEST(RecordingLimit, IsTwoThousandMillionBytes) {
    test::MemoryFiles memory;
    memory.kept = kHeaderBytes;
    CtbWaveFile file(memory.Platform());
    ASSERT_TRUE(file.Create(kPath, kRate));
    constexpr std::uint32_t kLimit = 2'000'000'000;
    constexpr std::uint32_t kLastSample = kLimit - 2;
    constexpr std::uint32_t kMany = 4'000'000;
    const Samples many(kMany);
    while (file.GetFileSize() < kLastSample) {
        const std::uint32_t room = (kLastSample - file.GetFileSize()) / 2;
        ASSERT_TRUE(file.Write(many.data(), std::min(room, kMany))) << file.GetFileSize();
    }
    EXPECT_TRUE(file.Write(many.data(), 1)) << "just below";
    EXPECT_EQ(file.GetFileSize(), kLimit);
    EXPECT_FALSE(file.Write(many.data(), 1));
    EXPECT_FALSE(file.Write(many.data(), 0));
    EXPECT_EQ(file.GetFileSize(), kLimit);
    EXPECT_EQ(file.GetDataSize(), kLimit - kHeaderBytes);
    EXPECT_FALSE(file.Close()) << "samples were refused";
    EXPECT_EQ(NumberAt(Contents(memory), 42), kLimit - kHeaderBytes);
    EXPECT_EQ(NumberAt(Contents(memory), 4), kLimit - 8);
}

TEST(RecordingLimit, IsTestedBeforeTheWrite) {
    test::MemoryFiles memory;
    CtbWaveFile file(memory.Platform());
    struct Case {
        std::uint32_t limit, writes;
    };
    for (const Case& one : {Case{1, 0}, Case{46, 0}, Case{47, 1}, Case{56, 1}, Case{57, 2}, Case{66, 2}}) {
        file.SetMaxFileSize(one.limit);
        ASSERT_TRUE(file.Create(kPath, kRate));
        const Samples ten = Spread(0, 10);
        for (std::uint32_t i = 0; i < one.writes; ++i) {
            EXPECT_TRUE(file.Write(&ten[5 * std::size_t{i}], 5)) << "limit " << one.limit << ", write " << i;
        }
        EXPECT_FALSE(file.Write(ten.data(), 5)) << "limit " << one.limit;
        EXPECT_FALSE(file.Write(ten.data(), 5)) << "nor again";
        EXPECT_TRUE(file.IsOpen());
        EXPECT_EQ(file.GetFileSize(), 46 + 10 * one.writes);
        EXPECT_FALSE(file.Close());
        ExpectWhole(Contents(memory), 5 * one.writes);
    }
}

TEST(RecordingLimit, OfZeroIsNone) {
    test::MemoryFiles memory;
    CtbWaveFile file(memory.Platform());
    file.SetMaxFileSize(0);
    ASSERT_TRUE(file.Create(kPath, kRate));
    EXPECT_EQ(WriteBlocks(file, 3), 3U);
    EXPECT_TRUE(file.Close());
    ExpectWhole(Contents(memory), 3 * kBlock);
}

TEST(RecordingFailure, RefusesSamplesWithoutAFileOrWhileReading) {
    test::MemoryFiles memory;
    CtbWaveFile file(memory.Platform());
    const std::int16_t sample = 1;
    EXPECT_FALSE(file.Write(&sample, 1));
    ASSERT_TRUE(file.Create(kPath, kRate));
    EXPECT_TRUE(file.Write(&sample, 0)) << "nothing can be written";
    EXPECT_TRUE(file.Write(nullptr, 0));
    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(file.Write(&sample, 1));
    ASSERT_TRUE(file.Open(nullptr));
    EXPECT_FALSE(file.Write(&sample, 1));
    EXPECT_TRUE(file.Close()) << "that is no loss of a recording";
}

TEST(RecordingFailure, RefusesSamplesThatAreNotThere) {
    test::MemoryFiles memory;
    CtbWaveFile file(memory.Platform());
    ASSERT_TRUE(file.Create(kPath, kRate));
    EXPECT_FALSE(file.Write(nullptr, 1));
    EXPECT_EQ(file.GetDataSize(), 0U);
    EXPECT_FALSE(file.Close());
    ExpectWhole(Contents(memory), 0);
}

/// A disk of any size that ends anywhere in the recording, also in the middle of a sample.
TEST(RecordingFailure, KeepsAllThatAFullDiskTook) {
    for (const std::uint64_t capacity : {46U, 47U, 48U, 1000U, 1001U, 16384U, 40000U, 40001U, 100003U}) {
        for (const std::size_t perCall : {std::size_t{1} << 30, std::size_t{999}}) {
            test::MemoryFiles memory;
            memory.capacity = capacity;
            memory.mostPerCall = perCall;
            CtbWaveFile file(memory.Platform());
            ASSERT_TRUE(file.Create(kPath, kRate));
            const std::uint32_t blocks = WriteBlocks(file, 100);
            EXPECT_LT(blocks, 100U);
            EXPECT_EQ(file.GetDataSize(), 2 * kBlock * blocks) << "only whole writes count";
            EXPECT_TRUE(file.IsOpen()) << "the caller closes it";
            EXPECT_GE(capacity + BufferedFile::kBufferBytes, file.GetFileSize());
            EXPECT_FALSE(file.Close());
            EXPECT_EQ(memory.files[kPath].size(), capacity);
            ExpectWhole(Contents(memory), static_cast<std::uint32_t>(capacity - kHeaderBytes) / 2);
        }
    }
}

TEST(RecordingFailure, LosesNothingWhenThereIsRoomAgainBeforeClosing) {
    test::MemoryFiles memory;
    memory.capacity = 50000;
    CtbWaveFile file(memory.Platform());
    ASSERT_TRUE(file.Create(kPath, kRate));
    const std::uint32_t blocks = WriteBlocks(file, 100);
    memory.capacity = test::MemoryFiles::kUnlimited;
    EXPECT_FALSE(file.Close()) << "the write that failed";
    const std::uint32_t samples = NumberAt(Contents(memory), 42) / 2;
    EXPECT_GE(samples, blocks * kBlock);
    ExpectWhole(Contents(memory), samples);
}

TEST(RecordingFailure, TellsAFullDiskThatShowsOnlyWhenClosing) {
    test::MemoryFiles memory;
    memory.capacity = 60;
    CtbWaveFile file(memory.Platform());
    ASSERT_TRUE(file.Create(kPath, kRate));
    EXPECT_EQ(WriteBlocks(file, 1), 1U) << "it is in the buffer";
    EXPECT_FALSE(file.Close());
    ExpectWhole(Contents(memory), 7);
}

TEST(RecordingFailure, LeavesThePartOfAHeaderThatTheDiskTook) {
    for (std::uint64_t capacity = 0; capacity < kHeaderBytes; ++capacity) {
        test::MemoryFiles memory;
        memory.capacity = capacity;
        CtbWaveFile file(memory.Platform());
        ASSERT_TRUE(file.Create(kPath, kRate));
        EXPECT_LT(WriteBlocks(file, 10), 10U);
        EXPECT_FALSE(file.Close());
        EXPECT_EQ(memory.files[kPath].size(), capacity);
        EXPECT_FALSE(file.Open(nullptr));
    }
}

TEST(RecordingFailure, StopsWhenTheDiskIsPulledOut) {
    test::MemoryFiles memory;
    CtbWaveFile file(memory.Platform());
    ASSERT_TRUE(file.Create(kPath, kRate));
    ASSERT_EQ(WriteBlocks(file, 20), 20U);
    const std::size_t taken = memory.files[kPath].size();
    EXPECT_GE(taken + BufferedFile::kBufferBytes, 46U + 20 * 2 * kBlock);
    memory.isGone = true;
    EXPECT_LE(WriteBlocks(file, 20), kBlocksInBuffer);
    EXPECT_FALSE(file.Close());
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetFileSize(), CtbWaveFile::kNoFileSize);
    EXPECT_EQ(memory.closed, 1);
    EXPECT_EQ(memory.files[kPath].size(), taken) << "what it had stays on it";
}

TEST(RecordingFailure, StopsWhenItsFolderIsTakenAwayAndLosesNothing) {
    test::MemoryFiles memory;
    CtbWaveFile file(memory.Platform());
    ASSERT_TRUE(file.Create(kPath, kRate));
    ASSERT_EQ(WriteBlocks(file, 20), 20U);
    memory.isMoved = true;
    const std::uint32_t more = WriteBlocks(file, 20);
    EXPECT_LE(more, kBlocksInBuffer);
    EXPECT_FALSE(file.Close());
    const std::uint32_t samples = NumberAt(Contents(memory), 42) / 2;
    EXPECT_GE(samples, (20 + more) * kBlock);
    EXPECT_EQ(Contents(memory).size(), kHeaderBytes + 2 * samples);
}

TEST(RecordingFailure, TellsWhatThePlatformLostWhenClosing) {
    test::MemoryFiles memory;
    memory.refusesToClose = true;
    CtbWaveFile file(memory.Platform());
    ASSERT_TRUE(file.Create(kPath, kRate));
    EXPECT_EQ(WriteBlocks(file, 1), 1U);
    EXPECT_FALSE(file.Close());
    EXPECT_FALSE(file.IsOpen());
}

TEST(RecordingFailure, StartsAfreshWithTheNextFile) {
    test::MemoryFiles memory;
    memory.capacity = 100;
    CtbWaveFile file(memory.Platform());
    ASSERT_TRUE(file.Create(kPath, kRate));
    WriteBlocks(file, 10);
    memory.capacity = test::MemoryFiles::kUnlimited;
    ASSERT_TRUE(file.Create(kPath, kRate));
    EXPECT_EQ(WriteBlocks(file, 10), 10U);
    EXPECT_TRUE(file.Close());
    ExpectWhole(Contents(memory), 10 * kBlock);
}

TEST(Recording, AllocatesNothingBlockByBlock) {
    const test::TemporaryFolder folder;
    const std::string path = folder.Path(kPath);
    CtbWaveFile file;
    ASSERT_TRUE(file.Create(path.c_str(), kRate));
    Samples block = Spread(0, kBlock);
    std::uint64_t before = test::CountAllocations();
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(file.Write(block.data(), kBlock));
    }
    EXPECT_EQ(test::CountAllocations(), before) << "writing";
    ASSERT_TRUE(file.Close());

    ASSERT_TRUE(file.Open(nullptr));
    before = test::CountAllocations();
    for (std::uint32_t i = 0; i < 100; ++i) {
        ASSERT_EQ(file.Read(block.data(), kBlock), kBlock);
        if (i % 10 == 9) {
            ASSERT_TRUE(file.Seek(i * 7000));
            ASSERT_TRUE(file.Rewind());
        }
    }
    EXPECT_EQ(test::CountAllocations(), before) << "reading and seeking";
}

/// What is left of a recording whose sizes were never written: `written` samples are surely in it, but for
/// those of the buffer.
void ExpectLeftBehind(const std::string& path, std::uint32_t written) {
    const std::string contents = test::ReadWholeFile(path);
    ASSERT_GE(contents.size() + BufferedFile::kBufferBytes, kHeaderBytes + 2 * written);
    static_assert(BufferedFile::kBufferBytes <= 65536);
    EXPECT_EQ(NumberAt(contents, 4), 0U);
    EXPECT_EQ(NumberAt(contents, 42), 0U);

    CtbWaveFile file;
    ASSERT_TRUE(file.Open(path.c_str()));
    EXPECT_TRUE(file.IsUnfinished());
    EXPECT_EQ(file.GetDataSize(), 0U);
    EXPECT_EQ(file.GetSampleRate(), kRate);

    WaveFileReader reader;
    ASSERT_EQ(reader.Open(path), WaveFault::None);
    EXPECT_TRUE(reader.IsUnfinished());
    Samples samples(contents.size() / 2);
    samples.resize(reader.Read(samples.data(), samples.size()));
    EXPECT_EQ(samples.size(), (contents.size() - kHeaderBytes) / 2);
    EXPECT_EQ(samples, Spread(0, static_cast<std::uint32_t>(samples.size())));
}

constexpr const char* kChildPath = "ORVA_TEST_RECORDING";

/// Records until it is killed, and tells how many blocks it has written by the length of a second file.
void RecordUntilKilled(const std::string& path) {
    CtbWaveFile file;
    ASSERT_TRUE(file.Create(path.c_str(), kRate));
    std::ofstream progress(path + ".progress", std::ios::binary); // others may read it meanwhile
    constexpr std::uint32_t kMostBlocks = 20000;                  // should nobody kill it
    for (std::uint32_t block = 0; block < kMostBlocks; ++block) {
        ASSERT_TRUE(file.Write(Spread(block * kBlock, kBlock).data(), kBlock));
        ASSERT_TRUE(progress << '.' << std::flush);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

TEST(RecordingFailure, LeavesAllButTheBufferWhenTheProcessIsKilled) {
    if (const char* path = std::getenv(kChildPath)) {
        RecordUntilKilled(path); // this is the process to be killed
        return;
    }
    const test::TemporaryFolder folder;
    const std::string path = folder.Path(kPath);
    test::ChildProcess child(
        {"--gtest_filter=RecordingFailure.LeavesAllButTheBufferWhenTheProcessIsKilled", "--gtest_brief=1"},
        kChildPath, path);
    ASSERT_TRUE(child.HasStarted());
    constexpr std::uint32_t kEnoughBlocks = 30;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    const auto written = [&path] {
        return static_cast<std::uint32_t>(test::ReadWholeFile(path + ".progress").size());
    };
    while (written() < kEnoughBlocks && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    child.Kill();
    ASSERT_GE(written(), kEnoughBlocks);
    ExpectLeftBehind(path, written() * kBlock);
}

#ifdef __linux__

/// For its lifetime no file may grow beyond so many bytes.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : previousHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &previous);
        const rlimit limit = {bytes, previous.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &previous);
        std::signal(SIGXFSZ, previousHandler);
    }

private:
    rlimit previous{};
    void (*previousHandler)(int);
};

TEST(RecordingFailure, KeepsAllThatTheSystemTookUpToALimit) {
    const test::TemporaryFolder folder;
    const std::string path = folder.Path(kPath);
    constexpr std::uint32_t kBytes = 100001; // half a sample too many
    CtbWaveFile file;
    std::uint32_t blocks = 0;
    bool whole = true;
    {
        const FileSizeLimit limit(kBytes);
        ASSERT_TRUE(file.Create(path.c_str(), kRate));
        blocks = WriteBlocks(file, 100);
        whole = file.Close();
    }
    EXPECT_FALSE(whole);
    EXPECT_LT(blocks, 100U);
    const std::string contents = test::ReadWholeFile(path);
    EXPECT_EQ(contents.size(), kBytes);
    ExpectWhole(contents, (kBytes - kHeaderBytes) / 2);
}

TEST(RecordingFailure, StopsWhenItsFolderIsRenamedAndLosesNothing) {
    const test::TemporaryFolder folder;
    ASSERT_TRUE(std::filesystem::create_directory(folder.Path("before")));
    CtbWaveFile file;
    ASSERT_TRUE(file.Create(folder.Path("before/call.if.wav").c_str(), kRate));
    ASSERT_EQ(WriteBlocks(file, 20), 20U);
    std::filesystem::rename(folder.Path("before"), folder.Path("after"));
    EXPECT_LT(WriteBlocks(file, 20), 20U);
    EXPECT_FALSE(file.Close());
    const std::string contents = test::ReadWholeFile(folder.Path("after/call.if.wav"));
    ASSERT_GE(contents.size(), kHeaderBytes + 20 * 2 * kBlock);
    EXPECT_EQ(NumberAt(contents, 42), contents.size() - kHeaderBytes);
}

TEST(RecordingFailure, StopsWhenItsFolderIsDeleted) {
    const test::TemporaryFolder folder;
    ASSERT_TRUE(std::filesystem::create_directory(folder.Path("before")));
    CtbWaveFile file;
    ASSERT_TRUE(file.Create(folder.Path("before/call.if.wav").c_str(), kRate));
    ASSERT_EQ(WriteBlocks(file, 20), 20U);
    std::filesystem::remove_all(folder.Path("before"));
    EXPECT_LT(WriteBlocks(file, 20), 20U);
    EXPECT_FALSE(file.Close());
    EXPECT_FALSE(file.IsOpen());
    EXPECT_FALSE(std::filesystem::exists(folder.Path("before")));
}

TEST(RecordingFailure, TellsADiskThatIsAlwaysFull) {
    CtbWaveFile file;
    ASSERT_TRUE(file.Create("/dev/full", kRate));
    EXPECT_LT(WriteBlocks(file, 100), 100U);
    EXPECT_FALSE(file.Close());
    ASSERT_TRUE(file.Create("/dev/full", kRate));
    EXPECT_EQ(WriteBlocks(file, 1), 1U);
    EXPECT_FALSE(file.Close());
}

/// A disk of 256 KiB, under two folders. Whoever may not mount one skips the test.
class SmallDisk : public testing::Test {
protected:
    static constexpr std::uint32_t kDiskBytes = 256 * 1024;

    void SetUp() override {
        std::filesystem::create_directory(disk);
        std::filesystem::create_directory(otherName);
        // In a name space of this process: whatever happens, no mount is left behind.
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=256k") != 0) {
            GTEST_SKIP() << "a disk can be mounted by root only";
        }
        ASSERT_EQ(mount(disk.c_str(), otherName.c_str(), nullptr, MS_BIND, nullptr), 0);
    }

    void TearDown() override {
        umount2(disk.c_str(), MNT_DETACH);
        umount2(otherName.c_str(), MNT_DETACH);
    }

    const test::TemporaryFolder folder;
    const std::string disk = folder.Path("disk");
    const std::string otherName = folder.Path("other");
    CtbWaveFile file;
};

TEST_F(SmallDisk, KeepsAllItTookWhenItIsFull) {
    ASSERT_TRUE(file.Create((disk + "/call.if.wav").c_str(), kRate));
    const std::uint32_t blocks = WriteBlocks(file, 1000);
    EXPECT_LT(blocks, 1000U);
    EXPECT_GE(file.GetFileSize() + BufferedFile::kBufferBytes, kDiskBytes);
    EXPECT_FALSE(file.Close());
    const std::string contents = test::ReadWholeFile(disk + "/call.if.wav");
    EXPECT_EQ(contents.size(), kDiskBytes);
    ExpectWhole(contents, (kDiskBytes - kHeaderBytes) / 2);
}

TEST_F(SmallDisk, EndsARecordingWhenItIsTakenAwayAndKeepsAllOfIt) {
    ASSERT_TRUE(file.Create((disk + "/call.if.wav").c_str(), kRate));
    ASSERT_EQ(WriteBlocks(file, 20), 20U);
    ASSERT_EQ(umount2(disk.c_str(), MNT_DETACH), 0);
    EXPECT_LT(WriteBlocks(file, 20), 20U);
    EXPECT_FALSE(file.Close());
    const std::string contents = test::ReadWholeFile(otherName + "/call.if.wav");
    ASSERT_GE(contents.size(), kHeaderBytes + 20 * 2 * kBlock);
    EXPECT_EQ(NumberAt(contents, 42), contents.size() - kHeaderBytes);
}

#endif

} // namespace

} // namespace orva::audio
