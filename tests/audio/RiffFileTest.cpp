#include "audio/RiffFile.h"

#include "tests/audio/MemoryFiles.h"
#include "tests/audio/RiffBytes.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace orva::audio {

namespace {

using test::LittleEndianBytes;
using test::RiffBytes;

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kListId = FourCharacters("LIST");
constexpr std::uint32_t kWave = FourCharacters("WAVE");
constexpr std::uint32_t kOne = FourCharacters("one ");
constexpr std::uint32_t kTwo = FourCharacters("two ");
constexpr const char* kPath = "file.riff";

class RiffFileTest : public testing::Test {
protected:
    void Open(const Bytes& contents) {
        memory.files[kPath] = contents;
        ASSERT_TRUE(file.OpenForReading(kPath));
    }

    std::string Text(std::size_t count) {
        std::string text(count, '?');
        text.resize(file.Read(text.data(), count));
        return text;
    }

    test::MemoryFiles memory;
    RiffFile file{memory.Platform()};
    RiffChunk chunk;
};

Bytes TwoChunks(const Bytes& first) {
    return RiffBytes().Chunk("one ", first).Chunk("two ", {'t', 'w', 'o', '!'}).Bytes();
}

TEST(FourCharacters, HasTheFirstOneLowest) {
    EXPECT_EQ(kRiffId, 0x46464952U);
    EXPECT_EQ(FourCharacters(std::string_view("\xFF\0\x80\x01", 4)), 0x018000FFU);
}

TEST_F(RiffFileTest, DescendsToTheContentsBehindTheFormType) {
    Open(TwoChunks({1, 2}));
    ASSERT_EQ(file.Descend(chunk, kRiffId, kWave), RiffSearch::Found);
    EXPECT_EQ(chunk.id, kRiffId);
    EXPECT_EQ(chunk.form, kWave);
    EXPECT_EQ(chunk.size, 4U + 10 + 12);
    EXPECT_EQ(chunk.dataOffset, 8U);
    EXPECT_EQ(file.GetPosition(), 12U);
    ASSERT_EQ(file.Descend(chunk, kOne), RiffSearch::Found);
    EXPECT_EQ(chunk.size, 2U);
    EXPECT_EQ(chunk.form, 0U);
    EXPECT_EQ(chunk.dataOffset, 20U);
    EXPECT_EQ(file.GetPosition(), 20U);
}

TEST_F(RiffFileTest, PassesOverOtherChunksAndTheirPadBytes) {
    for (const std::size_t size : {0U, 1U, 2U, 3U, 16383U, 16384U, 40001U}) {
        Open(TwoChunks(Bytes(size, 'x')));
        ASSERT_EQ(file.Descend(chunk, kRiffId, kWave), RiffSearch::Found);
        ASSERT_EQ(file.Descend(chunk, kTwo), RiffSearch::Found) << size;
        EXPECT_EQ(Text(9), "two!");
    }
}

TEST_F(RiffFileTest, AscendsToTheEndOfAChunkWhereverItStandsInIt) {
    for (const std::size_t size : {2U, 3U}) {
        for (const std::size_t read : {0U, 1U, 8U}) {
            Open(TwoChunks(Bytes(size, 'x')));
            ASSERT_EQ(file.Descend(chunk, kRiffId, kWave), RiffSearch::Found);
            ASSERT_EQ(file.Descend(chunk, kOne), RiffSearch::Found);
            Text(read);
            EXPECT_TRUE(file.Ascend(chunk));
            ASSERT_EQ(file.Descend(chunk, kTwo), RiffSearch::Found);
            EXPECT_EQ(Text(4), "two!");
        }
    }
}

TEST_F(RiffFileTest, DoesNotAscendFromAChunkThatTheFileCuts) {
    Open(RiffBytes().ChunkOfSize("one ", 100, {1, 2}).Bytes());
    ASSERT_EQ(file.Descend(chunk, kRiffId, kWave), RiffSearch::Found);
    ASSERT_EQ(file.Descend(chunk, kOne), RiffSearch::Found);
    EXPECT_FALSE(file.Ascend(chunk));
}

TEST_F(RiffFileTest, DoesNothingToAscendFromNoChunk) {
    Open(TwoChunks({1}));
    Text(5);
    EXPECT_TRUE(file.Ascend(chunk));
    EXPECT_EQ(file.GetPosition(), 5U);
}

TEST_F(RiffFileTest, SearchesAFormAmongChunksOfThatName) {
    Open(LittleEndianBytes()
             .Text("LIST")
             .Number(6, 4)
             .Text("INFOab")
             .Text("LIST")
             .Number(4, 4)
             .Text("adtl")
             .Bytes());
    ASSERT_EQ(file.Descend(chunk, kListId, FourCharacters("adtl")), RiffSearch::Found);
    EXPECT_EQ(chunk.dataOffset, 22U);
    EXPECT_EQ(file.GetPosition(), 26U);
    EXPECT_EQ(file.Descend(chunk, kListId, FourCharacters("adtl")), RiffSearch::NotThere);
}

TEST_F(RiffFileTest, TellsHowASearchEnded) {
    const Bytes whole = TwoChunks({1, 2});
    struct Case {
        std::size_t length;
        RiffSearch riff, two;
    };
    for (const Case& one :
         {Case{0, RiffSearch::NotThere, {}}, Case{7, RiffSearch::NotThere, {}},
          Case{8, RiffSearch::HeaderCut, {}}, Case{11, RiffSearch::HeaderCut, {}},
          Case{12, RiffSearch::Found, RiffSearch::NotThere},
          Case{19, RiffSearch::Found, RiffSearch::NotThere},
          Case{20, RiffSearch::Found, RiffSearch::ContentsCut},
          Case{21, RiffSearch::Found, RiffSearch::ContentsCut},
          Case{22, RiffSearch::Found, RiffSearch::NotThere},
          Case{29, RiffSearch::Found, RiffSearch::NotThere}, Case{30, RiffSearch::Found, RiffSearch::Found},
          Case{34, RiffSearch::Found, RiffSearch::Found}}) {
        for (const bool isPipe : {false, true}) {
            memory.isPipe = isPipe;
            Open({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(one.length)});
            EXPECT_EQ(file.Descend(chunk, kRiffId, kWave), one.riff) << one.length << " bytes";
            if (one.riff == RiffSearch::Found) {
                EXPECT_EQ(file.Descend(chunk, kTwo), one.two) << one.length << " bytes, pipe " << isPipe;
            }
        }
    }
}

TEST_F(RiffFileTest, ComesToAnEndWhateverTheSizes) {
    for (const std::uint32_t size :
         {0U, 1U, 3U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFF0U, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
        for (const bool isPipe : {false, true}) {
            memory.isPipe = isPipe;
            Open(RiffBytes().ChunkOfSize("one ", size, Bytes(64, 'x')).BytesOfSize(size));
            EXPECT_NE(file.Descend(chunk, kRiffId, FourCharacters("none")), RiffSearch::Found);
            Open(RiffBytes().ChunkOfSize("one ", size, Bytes(64, 'x')).BytesOfSize(size));
            EXPECT_EQ(file.Descend(chunk, kRiffId, kWave), RiffSearch::Found);
            EXPECT_NE(file.Descend(chunk, kTwo), RiffSearch::Found);
        }
    }
}

TEST_F(RiffFileTest, LooksAtSoManyChunksOnly) {
    Bytes contents(std::size_t{8} * (RiffFile::kMostChunks - 1));
    const Bytes last = LittleEndianBytes().Text("one ").Number(0, 4).Bytes();
    contents.insert(contents.end(), last.begin(), last.end());
    Open(contents);
    EXPECT_EQ(file.Descend(chunk, kOne), RiffSearch::Found);
    contents.insert(contents.begin(), 8, 0);
    Open(contents);
    EXPECT_EQ(file.Descend(chunk, kOne), RiffSearch::NotThere);
}

TEST_F(RiffFileTest, MakesChunksInChunksWithTheSizesTheyHaveComeTo) {
    RiffChunk outer;
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_TRUE(file.CreateChunk(outer, kRiffId, 0, kWave));
    EXPECT_TRUE(file.CreateChunk(chunk, kOne, 3));
    EXPECT_EQ(file.Write("odd", 3), 3U);
    EXPECT_TRUE(file.Ascend(chunk));
    EXPECT_TRUE(file.CreateChunk(chunk, kTwo, 77)); // a size that is not kept
    EXPECT_EQ(file.Write("even", 4), 4U);
    EXPECT_TRUE(file.Ascend(chunk));
    EXPECT_TRUE(file.CreateChunk(chunk, kOne, 0));
    EXPECT_TRUE(file.Ascend(chunk));
    EXPECT_TRUE(file.Ascend(outer));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(memory.files[kPath], RiffBytes()
                                       .Chunk("one ", {'o', 'd', 'd'})
                                       .Chunk("two ", {'e', 'v', 'e', 'n'})
                                       .Chunk("one ", {})
                                       .Bytes());
}

TEST_F(RiffFileTest, WritesASizeOnlyOnceWhenItIsRight) {
    ASSERT_TRUE(file.Create(kPath));
    EXPECT_TRUE(file.CreateChunk(chunk, kOne, 4));
    EXPECT_EQ(file.Write("even", 4), 4U);
    EXPECT_TRUE(file.Ascend(chunk));
    EXPECT_TRUE(file.Ascend(chunk)) << "it is an ordinary chunk now";
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(memory.writes, 1);
    EXPECT_EQ(memory.seeks, 0);
}

TEST_F(RiffFileTest, LeavesOutOfTheSizeWhatTheDiskDoesNotTake) {
    memory.capacity = 13;
    ASSERT_TRUE(file.Create(kPath));
    ASSERT_TRUE(file.CreateChunk(chunk, kOne, 0));
    ASSERT_EQ(file.Write("0123456789", 10), 10U);
    EXPECT_FALSE(file.Ascend(chunk));
    EXPECT_FALSE(file.Close()) << "there is no room for the pad byte either";
    EXPECT_EQ(memory.files[kPath], LittleEndianBytes().Text("one ").Number(5, 4).Text("01234").Bytes());
}

} // namespace

} // namespace orva::audio
