#include "audio/BufferedFile.h"

#include "tests/audio/MemoryFiles.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace orva::audio {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kBuffer = BufferedFile::kBufferBytes;
constexpr const char* kPath = "file";

Bytes Spread(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i * 167 + i / 251);
    }
    return bytes;
}

class BufferedFileTest : public testing::Test {
protected:
    void Open(const Bytes& contents) {
        memory.files[kPath] = contents;
        ASSERT_TRUE(file.OpenForReading(kPath));
    }

    Bytes Read(std::size_t count) {
        Bytes bytes(count);
        bytes.resize(file.Read(bytes.data(), count));
        return bytes;
    }

    std::size_t Write(const Bytes& bytes) { return file.Write(bytes.data(), bytes.size()); }

    test::MemoryFiles memory;
    BufferedFile file{memory.Platform()};
};

TEST_F(BufferedFileTest, DoesNothingWithoutAFile) {
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(Read(1), Bytes());
    EXPECT_EQ(Write({1}), 0U);
    EXPECT_FALSE(file.Seek(0));
    EXPECT_FALSE(file.Flush());
    EXPECT_LT(file.GetSize(), 0);
    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(file.OpenForReading("absent"));
    EXPECT_FALSE(file.IsOpen());
}

TEST_F(BufferedFileTest, ReadsTheSameWhateverThePieces) {
    const Bytes whole = Spread(3 * kBuffer + 5);
    for (const std::size_t perCall : {std::size_t{1000}, kBuffer - 1, std::size_t{1} << 30}) {
        memory.mostPerCall = perCall;
        for (const std::size_t count :
             {std::size_t{97}, kBuffer - 1, kBuffer, kBuffer + 1, whole.size() + 1}) {
            Open(whole);
            Bytes all;
            for (Bytes part = Read(count); !part.empty(); part = Read(count)) {
                all.insert(all.end(), part.begin(), part.end());
                ASSERT_EQ(file.GetPosition(), all.size());
            }
            EXPECT_EQ(all, whole) << perCall << " bytes a call, read by " << count;
        }
    }
}

TEST_F(BufferedFileTest, SeeksInsideTheBufferWithoutThePlatform) {
    const Bytes whole = Spread(kBuffer);
    Open(whole);
    EXPECT_EQ(Read(1), Bytes{whole[0]});
    EXPECT_TRUE(file.Seek(kBuffer - 1));
    EXPECT_EQ(Read(1), Bytes{whole[kBuffer - 1]});
    EXPECT_TRUE(file.Seek(7));
    EXPECT_EQ(Read(1), Bytes{whole[7]});
    EXPECT_EQ(memory.reads, 1);
    EXPECT_EQ(memory.seeks, 0);
}

TEST_F(BufferedFileTest, SeeksBackAndForthAcrossBuffers) {
    const Bytes whole = Spread(4 * kBuffer);
    Open(whole);
    for (const std::size_t position :
         {3 * kBuffer, std::size_t{0}, 2 * kBuffer - 1, kBuffer, 4 * kBuffer - 1}) {
        EXPECT_TRUE(file.Seek(position));
        EXPECT_EQ(Read(1), Bytes{whole[position]}) << position;
        EXPECT_EQ(file.GetPosition(), position + 1);
    }
    EXPECT_EQ(Read(1), Bytes()) << "the end";
    EXPECT_TRUE(file.Seek(0x1'0000'0000));
    EXPECT_EQ(file.GetPosition(), 0x1'0000'0000);
    EXPECT_EQ(Read(1), Bytes()) << "far beyond it";
    EXPECT_TRUE(file.Seek(5));
    EXPECT_EQ(Read(1), Bytes{whole[5]});
}

TEST_F(BufferedFileTest, SeeksForwardOnlyInAPipe) {
    const Bytes whole = Spread(4 * kBuffer);
    memory.isPipe = true;
    memory.mostPerCall = 1000;
    Open(whole);
    EXPECT_LT(file.GetSize(), 0);
    EXPECT_TRUE(file.Seek(3 * kBuffer + 5));
    EXPECT_EQ(Read(1), Bytes{whole[3 * kBuffer + 5]});
    EXPECT_TRUE(file.Seek(3 * kBuffer));
    EXPECT_EQ(Read(1), Bytes{whole[3 * kBuffer]}) << "still in the buffer";
    EXPECT_TRUE(file.Seek(5));
    EXPECT_EQ(Read(1), Bytes());
    EXPECT_TRUE(file.Seek(4 * kBuffer - 1));
    EXPECT_EQ(Read(2), Bytes{whole[4 * kBuffer - 1]});
}

TEST_F(BufferedFileTest, ReadsAgainOnceThePlatformDoes) {
    const Bytes whole = Spread(100);
    Open(whole);
    memory.refusesToRead = true;
    EXPECT_EQ(Read(10), Bytes());
    memory.refusesToRead = false;
    EXPECT_EQ(Read(100), whole);
    Open(Spread(4 * kBuffer));
    EXPECT_TRUE(file.Seek(2 * kBuffer));
    memory.refusesToSeek = true;
    EXPECT_EQ(Read(10), Bytes());
    memory.refusesToSeek = false;
    EXPECT_EQ(Read(1), Bytes{Spread(4 * kBuffer)[2 * kBuffer]});
}

TEST_F(BufferedFileTest, WritesTheSameWhateverThePieces) {
    const Bytes whole = Spread(3 * kBuffer + 5);
    for (const std::size_t perCall : {std::size_t{1000}, std::size_t{1} << 30}) {
        memory.mostPerCall = perCall;
        for (const std::size_t count : {std::size_t{97}, kBuffer - 1, kBuffer, kBuffer + 1, whole.size()}) {
            ASSERT_TRUE(file.Create(kPath));
            for (std::size_t done = 0; done < whole.size(); done += count) {
                const std::size_t part = std::min(count, whole.size() - done);
                ASSERT_EQ(file.Write(whole.data() + done, part), part);
                ASSERT_EQ(file.GetPosition(), done + part);
            }
            EXPECT_TRUE(file.Close());
            EXPECT_EQ(memory.files[kPath], whole);
        }
    }
}

TEST_F(BufferedFileTest, LeavesNoMoreThanItsBufferUnwritten) {
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_EQ(Write(Spread(kBuffer)), kBuffer);
    EXPECT_EQ(memory.files[kPath].size(), 0U);
    EXPECT_EQ(Write({1}), 1U);
    EXPECT_EQ(memory.files[kPath].size(), kBuffer);
    EXPECT_TRUE(file.Flush());
    EXPECT_EQ(memory.files[kPath].size(), kBuffer + 1);
    EXPECT_EQ(memory.writes, 2);
}

TEST_F(BufferedFileTest, WritesOverWhatItHasWritten) {
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_EQ(Write({1, 2, 3, 4}), 4U);
    EXPECT_TRUE(file.Seek(4)) << "where it is";
    EXPECT_EQ(memory.writes, 0);
    EXPECT_TRUE(file.Seek(1));
    EXPECT_EQ(Write({20, 30}), 2U);
    EXPECT_EQ(file.GetPosition(), 3U);
    EXPECT_TRUE(file.Seek(6));
    EXPECT_EQ(Write({7}), 1U);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(memory.files[kPath], (Bytes{1, 20, 30, 4, 0, 0, 7}));
}

TEST_F(BufferedFileTest, ReadsNothingWhileWritingAndWritesNothingWhileReading) {
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_EQ(Write({1}), 1U);
    EXPECT_EQ(Read(1), Bytes());
    EXPECT_TRUE(file.Close());
    ASSERT_TRUE(file.OpenForReading(kPath));
    EXPECT_EQ(Write({2}), 0U);
    EXPECT_FALSE(file.Flush());
    EXPECT_EQ(Read(2), Bytes{1});
}

TEST_F(BufferedFileTest, KeepsWhatAFullDiskDidNotTakeUntilThereIsRoom) {
    const Bytes whole = Spread(kBuffer + 50);
    memory.capacity = 100;
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_EQ(Write(whole), kBuffer) << "as much as the buffer holds";
    EXPECT_EQ(memory.files[kPath].size(), 100U);
    EXPECT_FALSE(file.Flush());
    EXPECT_FALSE(file.Seek(0)) << "it would be lost";
    memory.capacity = test::MemoryFiles::kUnlimited;
    EXPECT_TRUE(file.Flush());
    EXPECT_EQ(file.Write(whole.data() + kBuffer, 50), 50U);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(memory.files[kPath], whole);
}

TEST_F(BufferedFileTest, DropsWhatItWasTold) {
    memory.capacity = 3;
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_EQ(Write({1, 2, 3, 4, 5}), 5U);
    EXPECT_FALSE(file.Flush());
    EXPECT_EQ(file.GetPosition(), 5U);
    file.DropUnwritten();
    EXPECT_EQ(file.GetPosition(), 3U);
    EXPECT_TRUE(file.Seek(0));
    EXPECT_EQ(Write({9}), 1U);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(memory.files[kPath], (Bytes{9, 2, 3}));
}

TEST_F(BufferedFileTest, TellsWhatIsLostWhenClosing) {
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_EQ(Write({1}), 1U);
    memory.isGone = true;
    EXPECT_FALSE(file.Close());
    EXPECT_FALSE(file.IsOpen());
    memory.isGone = false;
    memory.refusesToClose = true;
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_FALSE(file.Close());
    EXPECT_TRUE(file.Close()) << "there is nothing left to close";
    EXPECT_EQ(memory.opened, memory.closed);
}

TEST_F(BufferedFileTest, TakesNoMoreOnceItsPathLeadsElsewhere) {
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_EQ(Write(Spread(kBuffer)), kBuffer);
    memory.isMoved = true;
    EXPECT_EQ(Write({1}), 0U);
    EXPECT_EQ(memory.files[kPath], Spread(kBuffer)) << "nothing of what was written is lost";
    EXPECT_FALSE(file.Flush());
    EXPECT_TRUE(file.Seek(0)) << "for the header";
    EXPECT_EQ(Write({99}), 1U);
    EXPECT_FALSE(file.Close());
    EXPECT_EQ(memory.files[kPath][0], 99);
}

TEST_F(BufferedFileTest, DoesNotWatchAFileThatNeverWasUnderItsPath) {
    memory.isMoved = true; // a pipe's name leads nowhere
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_EQ(Write(Spread(2 * kBuffer)), 2 * kBuffer);
    EXPECT_TRUE(file.Close());
}

TEST_F(BufferedFileTest, ClosesWhatIsOpenBeforeOpeningAnother) {
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_EQ(Write({1, 2}), 2U);
    ASSERT_TRUE(file.OpenForReading(kPath));
    EXPECT_EQ(file.GetSize(), 2);
    EXPECT_EQ(Read(2), (Bytes{1, 2}));
    ASSERT_TRUE(file.Create("other"));
    EXPECT_EQ(file.GetPosition(), 0U);
    memory.standardInput = kPath;
    ASSERT_TRUE(file.OpenStandardInput());
    EXPECT_EQ(memory.closed, 3);
    EXPECT_EQ(Read(2), (Bytes{1, 2}));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(memory.closed, 3) << "standard input is not ours to close";
}

} // namespace

} // namespace orva::audio
