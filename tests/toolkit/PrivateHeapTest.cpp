#include "toolkit/PrivateHeap.h"

#include "tests/support/RandomSource.h"
#include "tests/toolkit/FakeHeapPlatform.h"
#include "tests/toolkit/HeapModel.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using orva::test::FakeHeapPlatform;
using orva::test::HeapModel;
using orva::test::RandomSource;

constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
/// Five words: two links, the first block, the size, the free bytes.
constexpr std::size_t kRegionHeader = 5 * sizeof(void*);

#if defined(__SANITIZE_ADDRESS__)
constexpr int kManyOperations = 100000;
#else
constexpr int kManyOperations = 1000000;
#endif

std::uintptr_t AddressOf(const void* memory) {
    return reinterpret_cast<std::uintptr_t>(memory);
}

/// A heap on a platform of the tests' own. Each test must leave it empty.
class PrivateHeapTest : public testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(heap.Verify(), nullptr);
        EXPECT_EQ(heap.Statistics().regions, 0U);
        heap.Close();
    }

    char* Allocate(std::size_t bytes) {
        void* memory = heap.Allocate(bytes);
        EXPECT_NE(memory, nullptr) << bytes;
        EXPECT_EQ(AddressOf(memory) % 64, 0U) << bytes;
        ExpectSound();
        return static_cast<char*>(memory);
    }

    void Free(void* memory) {
        heap.Free(memory);
        ExpectSound();
    }

    void ExpectSound() {
        const char* broken = heap.Verify();
        EXPECT_EQ(broken, nullptr) << broken;
    }

    std::size_t UsedBytes() { return heap.Statistics().usedBytes; }

    FakeHeapPlatform platform;
    PrivateHeap heap{platform.Calls()};
};

TEST_F(PrivateHeapTest, NothingIsNull) {
    platform.keepsLog = true;
    EXPECT_EQ(heap.Allocate(0), nullptr);
    EXPECT_TRUE(platform.log.empty());
}

TEST_F(PrivateHeapTest, BlocksAreWholeUnitsBehindAHeader) {
    const struct {
        std::size_t bytes;
        std::size_t block;
    } rows[] = {{1, 128},   {63, 128},  {64, 128},    {65, 192},    {128, 192},
                {129, 256}, {192, 256}, {4096, 4160}, {4097, 4224}, {100000, 100096}};
    for (const auto& row : rows) {
        char* memory = Allocate(row.bytes);
        EXPECT_EQ(UsedBytes(), row.block) << row.bytes;
        std::memset(memory, 0x5A, row.block - 64); // all of it may be written
        Free(memory);
    }
}

TEST_F(PrivateHeapTest, TheHeapComesWithTheFirstRegionAndGoesWithTheLast) {
    platform.keepsLog = true;
    void* first = heap.Allocate(1);
    void* second = heap.Allocate(10000);
    heap.Free(first);
    heap.Free(second);
    const std::vector<std::string> expected{
        "create 1 1048576 0", "alloc 4096", "alloc 12288", "free", "free", "destroy"};
    EXPECT_EQ(platform.log, expected);
    platform.log.clear();
    heap.Free(heap.Allocate(1));
    EXPECT_EQ(platform.log,
              (std::vector<std::string>{"create 1 1048576 0", "alloc 4096", "free", "destroy"}));
}

TEST_F(PrivateHeapTest, RegionsAreWholePages) {
    const struct {
        std::size_t bytes;
        std::size_t region;
    } rows[] = {
        {1, 4096},          // 128 + 4178
        {3840, 4096},       // 3904 + 4178 = 8082
        {3904, 4096},       // 3968 + 4178 = 8146
        {3905, 8192},       // 4032 + 4178 = 8210
        {8000, 8192},       // 8064 + 4178 = 12242
        {8001, 12288},      // 8128 + 4178 = 12306
        {1000000, 1003520}, // 1000064 + 4178 = 1004242
    };
    for (const auto& row : rows) {
        void* memory = heap.Allocate(row.bytes);
        EXPECT_EQ(platform.memories.begin()->second.asked, row.region) << row.bytes;
        Free(memory);
    }
}

TEST_F(PrivateHeapTest, EveryBlockFitsWhereverThePlatformPutsIt) {
    for (std::size_t offset = 0; offset < 64; offset += sizeof(void*)) {
        platform.addressOffset = offset;
        for (std::size_t bytes = 64; bytes <= 3 * 4096; bytes += 64) {
            char* memory = Allocate(bytes);
            const auto& region = *platform.memories.begin();
            ASSERT_LE(memory + bytes, static_cast<char*>(region.first) + region.second.asked) << bytes;
            std::memset(memory, 0x5A, bytes);
            Free(memory);
        }
    }
}

TEST_F(PrivateHeapTest, UsesWhatThePlatformGaveInTruth) {
    platform.sizeSurplus = 2048;
    void* first = Allocate(1);
    EXPECT_EQ(heap.Statistics().regionBytes, 4096U + 2048U);
    void* second = Allocate(5600); // not in 4096 bytes
    EXPECT_EQ(heap.Statistics().regions, 1U);
    Free(first);
    Free(second);
}

TEST_F(PrivateHeapTest, TakesTheSizeAskedForIfThePlatformDoesNotTellIt) {
    platform.sizeFails = true;
    void* memory = Allocate(1);
    EXPECT_EQ(heap.Statistics().regionBytes, 4096U);
    Free(memory);
}

TEST_F(PrivateHeapTest, ABlockThatFillsItsRegionLeavesNoRemainder) {
    platform.addressOffset = 0;
    // 4096 less the 64 that the region's header takes.
    void* memory = heap.Allocate(1);
    void* rest = heap.Allocate(4096 - 64 - 128 - 64);
    EXPECT_EQ(heap.Statistics().regions, 1U);
    EXPECT_EQ(heap.Statistics().freeBlocks, 0U);
    EXPECT_EQ(heap.Statistics().usedBytes, 4096U - 64U);
    ExpectSound();
    Free(memory);
    Free(rest);
}

/// One region whose blocks are all taken, so that freed ones are the only free ones.
class PrivateHeapFitTest : public PrivateHeapTest {
protected:
    /// Fills a new region with blocks of these sizes, headers included, and one for the rest.
    std::vector<void*> FillRegion(const std::vector<std::size_t>& blockSizes) {
        std::vector<void*> blocks;
        const std::size_t regions = heap.Statistics().regions;
        for (const std::size_t size : blockSizes) {
            blocks.push_back(heap.Allocate(size - 64));
        }
        blocks.push_back(heap.Allocate(heap.Statistics().freeBytes - 64));
        EXPECT_EQ(heap.Statistics().regions, regions + 1);
        EXPECT_EQ(heap.Statistics().freeBlocks, 0U);
        ExpectSound();
        return blocks;
    }

    void FreeAll(const std::vector<void*>& blocks) {
        for (void* block : blocks) {
            Free(block);
        }
    }
};

TEST_F(PrivateHeapFitTest, AnExactFitIsTakenAtOnce) {
    const auto blocks = FillRegion({192, 128, 256, 128, 256, 128});
    heap.Free(blocks[0]);
    heap.Free(blocks[2]);
    heap.Free(blocks[4]);
    EXPECT_EQ(heap.Allocate(192), blocks[2]) << "the first of two exact ones";
    EXPECT_EQ(heap.Allocate(192), blocks[4]);
    EXPECT_EQ(heap.Allocate(128), blocks[0]);
    FreeAll(blocks);
}

TEST_F(PrivateHeapFitTest, OtherwiseTheSmallestThatIsLarger) {
    const auto blocks = FillRegion({512, 128, 256, 128, 384, 128});
    heap.Free(blocks[0]);
    heap.Free(blocks[2]);
    heap.Free(blocks[4]);
    void* taken = heap.Allocate(128); // 192
    EXPECT_EQ(taken, blocks[2]);
    EXPECT_EQ(heap.Statistics().freeBytes, 512U + 384U + 64U);
    ExpectSound();
    Free(taken);
    FreeAll({blocks[1], blocks[3], blocks[5], blocks[6]});
}

TEST_F(PrivateHeapFitTest, OfTwoEqualOnesTheLaterWins) {
    const auto blocks = FillRegion({256, 128, 256, 128, 256, 128});
    heap.Free(blocks[0]);
    heap.Free(blocks[2]);
    heap.Free(blocks[4]);
    EXPECT_EQ(heap.Allocate(128), blocks[4]);
    EXPECT_EQ(heap.Allocate(128), blocks[2]);
    EXPECT_EQ(heap.Allocate(128), blocks[0]);
    FreeAll(blocks);
}

TEST_F(PrivateHeapFitTest, NewRegionsComeFirstInTheSearch) {
    const auto older = FillRegion({256, 128});
    const auto newer = FillRegion({256, 128});
    heap.Free(older[0]);
    heap.Free(newer[0]);
    EXPECT_EQ(heap.Allocate(192), newer[0]) << "the exact one of the newest region";
    heap.Free(newer[0]);
    EXPECT_EQ(heap.Allocate(128), older[0]) << "the later of equal ones, in the older region";
    Free(older[0]);
    FreeAll({older[1], older[2], newer[1], newer[2]});
}

TEST_F(PrivateHeapFitTest, ASplitBlockGivesItsFront) {
    const auto blocks = FillRegion({1024, 128});
    heap.Free(blocks[0]);
    void* front = Allocate(64);
    void* rest = Allocate(1024 - 128 - 64);
    EXPECT_EQ(front, blocks[0]);
    EXPECT_EQ(AddressOf(rest), AddressOf(front) + 128);
    EXPECT_EQ(heap.Statistics().freeBlocks, 0U);
    FreeAll({front, rest, blocks[1], blocks[2]});
}

TEST_F(PrivateHeapFitTest, FreedBlocksJoinTheirFreeNeighbours) {
    // In every order of freeing three neighbours, they end as one block.
    std::vector<std::size_t> order{0, 1, 2};
    do {
        const auto blocks = FillRegion({128, 192, 256, 128});
        for (const std::size_t i : order) {
            Free(blocks[i]);
        }
        EXPECT_EQ(heap.Statistics().freeBlocks, 1U) << testing::PrintToString(order);
        EXPECT_EQ(heap.Statistics().freeBytes, 128U + 192U + 256U) << testing::PrintToString(order);
        EXPECT_EQ(heap.Allocate(128 + 192 + 256 - 64), blocks[0]) << testing::PrintToString(order);
        FreeAll({blocks[0], blocks[3], blocks[4]});
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(PrivateHeapFitTest, NeighboursOfOtherRegionsStayApart) {
    const auto older = FillRegion({128});
    const auto newer = FillRegion({128});
    heap.Free(older[0]);
    heap.Free(newer[0]);
    EXPECT_EQ(heap.Statistics().freeBlocks, 2U);
    ExpectSound();
    Free(newer[1]);
    EXPECT_EQ(heap.Statistics().regions, 1U);
    Free(older[1]);
    EXPECT_FALSE(platform.hasHeap);
}

TEST_F(PrivateHeapFitTest, RegionsGoInAnyOrder) {
    std::vector<std::size_t> order{0, 1, 2};
    do {
        std::vector<void*> blocks;
        for (std::size_t i = 0; i < 3; ++i) {
            blocks.push_back(Allocate(5000));
        }
        EXPECT_EQ(platform.memories.size(), 3U);
        for (const std::size_t i : order) {
            Free(blocks[i]);
        }
        EXPECT_TRUE(platform.memories.empty());
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(PrivateHeapTest, FreeIgnoresWhatIsNotItsOwn) {
    char onTheStack = 0;
    heap.Free(nullptr);
    heap.Free(&onTheStack);
    char* memory = Allocate(1);
    const auto before = heap.Statistics();
    heap.Free(nullptr);
    heap.Free(&onTheStack);
    heap.Free(platform.newestMemory);                            // the region's own header
    heap.Free(static_cast<char*>(platform.newestMemory) + 4096); // just behind
    heap.Free(static_cast<char*>(platform.newestMemory) - 1);    // just before
    EXPECT_EQ(heap.Statistics().usedBytes, before.usedBytes);
    ExpectSound();
    Free(memory);
}

TEST_F(PrivateHeapTest, AnyPointerIntoABlockFreesIt) {
    for (const std::size_t inside : {0U, 1U, 63U, 64U, 99U, 127U}) {
        char* memory = Allocate(100);
        void* other = Allocate(100);
        heap.Free(memory + inside);
        EXPECT_EQ(heap.Statistics().usedBlocks, 1U) << inside;
        ExpectSound();
        Free(other);
    }
}

TEST_F(PrivateHeapTest, FreeingTwiceDoesNothing) {
    void* memory = Allocate(100);
    void* other = Allocate(100);
    heap.Free(memory);
    heap.Free(memory);
    EXPECT_EQ(heap.Statistics().usedBlocks, 1U);
    ExpectSound();
    Free(other);
    Free(other);
}

TEST_F(PrivateHeapTest, ReallocatingNullAllocates) {
    void* memory = heap.Reallocate(nullptr, 100);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(UsedBytes(), 192U);
    Free(memory);
    EXPECT_EQ(heap.Reallocate(nullptr, 0), nullptr);
}

TEST_F(PrivateHeapTest, ReallocatingWithoutARegionGivesTheSamePointer) {
    char outside = 0;
    EXPECT_EQ(heap.Reallocate(&outside, 100), &outside);
    EXPECT_EQ(heap.Statistics().regions, 0U);
}

TEST_F(PrivateHeapTest, ReallocatingAForeignPointerGivesItBack) {
    char outside = 0;
    void* memory = Allocate(1);
    void* freed = Allocate(1);
    heap.Free(freed);
    EXPECT_EQ(heap.Reallocate(&outside, 100), &outside);
    EXPECT_EQ(heap.Reallocate(freed, 10000), freed);
    EXPECT_EQ(heap.Statistics().usedBlocks, 1U);
    Free(memory);
}

TEST_F(PrivateHeapTest, WhatFitsTheBlockStays) {
    char* memory = Allocate(100); // 192 with the header
    for (const std::size_t bytes : {128U, 101U, 100U, 65U, 1U, 0U}) {
        EXPECT_EQ(heap.Reallocate(memory, bytes), memory) << bytes;
        EXPECT_EQ(UsedBytes(), 192U) << "never smaller";
    }
    Free(memory);
}

TEST_F(PrivateHeapTest, WhatGrowsMovesWithItsContents) {
    char* memory = Allocate(100);
    void* neighbour = Allocate(1);
    for (int i = 0; i < 128; ++i) { // the whole block, more than was asked for
        memory[i] = static_cast<char>(i);
    }
    auto* larger = static_cast<char*>(heap.Reallocate(memory, 129));
    ASSERT_NE(larger, memory);
    EXPECT_EQ(AddressOf(larger) % 64, 0U);
    for (int i = 0; i < 128; ++i) {
        ASSERT_EQ(larger[i], static_cast<char>(i)) << i;
    }
    EXPECT_EQ(heap.Statistics().usedBlocks, 2U);
    ExpectSound();
    Free(larger);
    Free(neighbour);
}

TEST_F(PrivateHeapTest, WhatCannotGrowStays) {
    char* memory = Allocate(100);
    memory[99] = 'x';
    platform.FailAfter(0, true);
    EXPECT_EQ(heap.Reallocate(memory, 100000), nullptr);
    EXPECT_EQ(memory[99], 'x');
    EXPECT_EQ(UsedBytes(), 192U);
    EXPECT_EQ(heap.Reallocate(memory, kMost), nullptr);
    EXPECT_EQ(UsedBytes(), 192U);
    Free(memory);
}

TEST_F(PrivateHeapTest, SizesThatWouldWrapAreRefused) {
    platform.keepsLog = true;
    for (const std::size_t bytes :
         {kMost, kMost - 63, kMost - 127, kMost - 128, kMost - 4178, kMost / 2 + 1}) {
        EXPECT_EQ(heap.Allocate(bytes), nullptr) << bytes;
    }
    EXPECT_TRUE(platform.log.empty());
}

TEST_F(PrivateHeapTest, EachOperationIsOneMutexPair) {
    void* memory = heap.Allocate(1);
    EXPECT_EQ(FakeHeapPlatform::Waits(), 1);
    memory = heap.Reallocate(memory, 10000);
    EXPECT_EQ(FakeHeapPlatform::Waits(), 2);
    heap.Free(memory);
    EXPECT_EQ(FakeHeapPlatform::Waits(), 3);
    EXPECT_EQ(FakeHeapPlatform::Releases(), 3);
    EXPECT_EQ(FakeHeapPlatform::LiveMutexes(), 1);
}

TEST_F(PrivateHeapTest, ClosesItsMutexOnlyWhenEmpty) {
    heap.Close();
    void* memory = heap.Allocate(1);
    heap.Close();
    EXPECT_EQ(FakeHeapPlatform::LiveMutexes(), 1);
    heap.Free(memory);
    heap.Close();
    EXPECT_EQ(FakeHeapPlatform::LiveMutexes(), 0);
    heap.Close();
    heap.Free(heap.Allocate(1));
    EXPECT_EQ(FakeHeapPlatform::LiveMutexes(), 1);
}

/// Some of each operation; gives back all it got.
void UseHeap(PrivateHeap& heap) {
    std::vector<void*> memories;
    for (const std::size_t bytes : {1U, 5000U, 300U, 20000U}) {
        memories.push_back(heap.Allocate(bytes));
        EXPECT_EQ(heap.Verify(), nullptr);
    }
    for (void*& memory : memories) {
        if (void* larger = heap.Reallocate(memory, 30000); larger != nullptr) {
            memory = larger;
        }
        EXPECT_EQ(heap.Verify(), nullptr);
    }
    for (void* memory : memories) {
        heap.Free(memory);
        EXPECT_EQ(heap.Verify(), nullptr);
    }
}

TEST_F(PrivateHeapTest, SurvivesEveryFailureOfThePlatform) {
    for (const bool forGood : {false, true}) {
        for (int successes = 0; successes < 15; ++successes) {
            platform.FailAfter(successes, forGood);
            UseHeap(heap);
            platform.FailAfter(FakeHeapPlatform::kNever, false);
            EXPECT_EQ(heap.Statistics().regions, 0U) << successes;
            EXPECT_TRUE(platform.memories.empty()) << successes;
            EXPECT_FALSE(platform.hasHeap) << successes;
            heap.Close();
        }
    }
    UseHeap(heap);
}

TEST_F(PrivateHeapTest, WithoutAMutexThereIsNoMemory) {
    platform.keepsLog = true;
    char outside = 0;
    platform.FailAfter(0, true);
    EXPECT_EQ(heap.Allocate(1), nullptr);
    heap.Free(&outside);
    EXPECT_EQ(heap.Reallocate(&outside, 1), &outside);
    EXPECT_EQ(heap.Reallocate(nullptr, 1), nullptr);
    EXPECT_TRUE(platform.log.empty());
    platform.FailAfter(FakeHeapPlatform::kNever, false);
    Free(Allocate(1));
}

TEST_F(PrivateHeapTest, AHeapWithoutItsFirstRegionIsGoneAgain) {
    Free(Allocate(1)); // the mutex is there
    platform.keepsLog = true;
    platform.FailAfter(1, false);
    EXPECT_EQ(heap.Allocate(1), nullptr);
    EXPECT_EQ(platform.log, (std::vector<std::string>{"create 1 1048576 0", "alloc 4096", "destroy"}));
}

/// A block's header, as the words it is made of.
struct HeaderWords {
    std::uintptr_t next;
    std::uintptr_t previous;
    std::uintptr_t region;
    std::size_t size;
    std::uint32_t flags;
};

TEST_F(PrivateHeapTest, VerifyFindsEverySpoiledWord) {
    void* memory = Allocate(100);
    void* second = Allocate(100);
    auto* header = reinterpret_cast<HeaderWords*>(static_cast<char*>(second) - 64);
    const HeaderWords sound = *header;
    HeaderWords spoiled[] = {sound, sound, sound, sound, sound, sound, sound};
    spoiled[0].next = 0;
    spoiled[1].previous = 0;
    spoiled[2].region = 0;
    spoiled[3].size += 64;
    spoiled[4].size += 1;
    spoiled[5].size = 0;
    spoiled[6].flags = 0;
    for (const HeaderWords& words : spoiled) {
        *header = words;
        EXPECT_NE(heap.Verify(), nullptr) << &words - spoiled;
        *header = sound;
        ExpectSound();
    }
    auto* freeBytes = reinterpret_cast<std::size_t*>(platform.newestMemory) + 4;
    *freeBytes += 64;
    EXPECT_STREQ(heap.Verify(), "a region counts its free bytes");
    *freeBytes -= 64;
    Free(memory);
    Free(second);
}

/// A load of random operations, each answered as the model says.
class RandomLoad {
public:
    RandomLoad(PrivateHeap& loadedHeap, FakeHeapPlatform& heapPlatform, std::uint64_t seed)
        : heap(loadedHeap), platform(heapPlatform), random(seed) {}

    void Run(int operations) {
        for (int i = 0; i < operations && !testing::Test::HasFailure(); ++i) {
            if (live.size() < kMostLive && (live.empty() || random.Below(100) < 50)) {
                Allocate(Bytes());
            } else if (random.Below(100) < 20) {
                Reallocate(random.Below(static_cast<std::uint32_t>(live.size())), Bytes());
            } else {
                Free(random.Below(static_cast<std::uint32_t>(live.size())));
            }
            if (i % kVerifyEvery == 0) {
                VerifyAll();
            }
        }
        while (!live.empty() && !testing::Test::HasFailure()) {
            Free(live.size() - 1);
        }
        VerifyAll();
    }

private:
    struct Memory {
        unsigned char* bytes;
        std::size_t count;
        unsigned char mark;
    };

    static constexpr std::size_t kMostLive = 150;
    static constexpr int kVerifyEvery = 100;

    /// Mostly small, seldom of many pages.
    std::size_t Bytes() { return 1 + random.Below(1U << (4 + random.Below(11))); }

    void Allocate(std::size_t bytes) {
        const std::uintptr_t place = model.Place(bytes);
        platform.sizeSurplus = 8 * random.Below(40);
        platform.addressOffset = 8 * random.Below(8);
        const void* newestBefore = platform.newestMemory;
        const std::size_t memoriesBefore = platform.memories.size();
        void* memory = heap.Allocate(bytes);
        ASSERT_EQ(AddressOf(memory) % 64, 0U);
        if (place == HeapModel::kNoPlace) {
            ASSERT_EQ(platform.memories.size(), memoriesBefore + 1);
            const FakeHeapPlatform::Memory& region = platform.memories.at(platform.newestMemory);
            ASSERT_EQ(region.asked, HeapModel::RegionSize(HeapModel::BlockSize(bytes)));
            model.AddRegion(AddressOf(platform.newestMemory), region.told, kRegionHeader);
            ASSERT_EQ(AddressOf(memory), model.Place(bytes)) << bytes << " bytes in a new region";
        } else {
            ASSERT_EQ(platform.newestMemory, newestBefore);
            ASSERT_EQ(AddressOf(memory), place) << bytes << " bytes";
        }
        model.Take(AddressOf(memory), bytes);
        Remember(memory, bytes);
    }

    void Remember(void* memory, std::size_t bytes) {
        live.push_back(
            {static_cast<unsigned char*>(memory), bytes, static_cast<unsigned char>(random.Next())});
        std::memset(memory, live.back().mark, bytes);
    }

    void CheckContents(const Memory& memory, const unsigned char* at) const {
        for (std::size_t i = 0; i < memory.count; ++i) {
            ASSERT_EQ(at[i], memory.mark) << "byte " << i << " of " << memory.count;
        }
    }

    void Free(std::size_t index) {
        CheckContents(live[index], live[index].bytes);
        heap.Free(live[index].bytes);
        model.Free(AddressOf(live[index].bytes));
        live[index] = live.back();
        live.pop_back();
    }

    void Reallocate(std::size_t index, std::size_t bytes) {
        Memory memory = live[index];
        const bool fits = HeapModel::BlockSize(bytes) <= model.SizeAt(AddressOf(memory.bytes));
        const std::uintptr_t place = fits ? AddressOf(memory.bytes) : model.Place(bytes);
        void* moved = heap.Reallocate(memory.bytes, bytes);
        if (place == HeapModel::kNoPlace) {
            const FakeHeapPlatform::Memory& region = platform.memories.at(platform.newestMemory);
            model.AddRegion(AddressOf(platform.newestMemory), region.told, kRegionHeader);
            ASSERT_EQ(AddressOf(moved), model.Place(bytes)) << bytes << " bytes in a new region";
        } else {
            ASSERT_EQ(AddressOf(moved), place) << bytes << " bytes";
        }
        if (!fits) {
            model.Take(AddressOf(moved), bytes);
            model.Free(AddressOf(memory.bytes));
        }
        memory.count = std::min(memory.count, bytes);
        CheckContents(memory, static_cast<unsigned char*>(moved));
        live[index] = live.back();
        live.pop_back();
        Remember(moved, bytes);
    }

    void VerifyAll() {
        const char* broken = heap.Verify();
        ASSERT_EQ(broken, nullptr) << broken;
        const PrivateHeapStatistics statistics = heap.Statistics();
        ASSERT_EQ(statistics.regions, model.Regions());
        ASSERT_EQ(statistics.usedBlocks, live.size());
        std::size_t usedBytes = 0;
        for (const Memory& memory : live) {
            usedBytes += model.SizeAt(AddressOf(memory.bytes));
        }
        ASSERT_EQ(statistics.usedBytes, usedBytes);
    }

    PrivateHeap& heap;
    FakeHeapPlatform& platform;
    RandomSource random;
    HeapModel model;
    std::vector<Memory> live;
};

TEST_F(PrivateHeapTest, AnswersARandomLoadAsTheModelDoes) {
    RandomLoad(heap, platform, 20).Run(kManyOperations);
    EXPECT_TRUE(platform.memories.empty());
    EXPECT_FALSE(platform.hasHeap);
}

/// Allocates, marks, checks and frees, as one thread of several.
void LoadFromThread(PrivateHeap& heap, std::uint64_t seed, int operations, std::atomic<int>& spoiled) {
    RandomSource random(seed);
    std::vector<std::pair<unsigned char*, std::size_t>> live;
    const auto mark = static_cast<unsigned char>(seed);
    const auto freeLast = [&] {
        const auto [memory, bytes] = live.back();
        spoiled += static_cast<int>(std::count_if(memory, memory + bytes, [=](auto b) { return b != mark; }));
        heap.Free(memory);
        live.pop_back();
    };
    for (int i = 0; i < operations; ++i) {
        if (live.size() < 30 && (live.empty() || random.Below(2) == 0)) {
            const std::size_t bytes = 1 + random.Below(3000);
            auto* memory = static_cast<unsigned char*>(heap.Allocate(bytes));
            std::memset(memory, mark, bytes);
            live.emplace_back(memory, bytes);
        } else {
            std::swap(live.back(), live[random.Below(static_cast<std::uint32_t>(live.size()))]);
            freeLast();
        }
    }
    while (!live.empty()) {
        freeLast();
    }
}

TEST(PrivateHeapThreads, ShareTheHeap) {
    constexpr int kOperations = 3000; // a mutex pair is slow under Wine
    PrivateHeap heap(kRealHeapPlatform);
    std::atomic<int> spoiled{0};
    std::vector<std::thread> threads;
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
        threads.emplace_back([&, seed] { LoadFromThread(heap, seed, kOperations, spoiled); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(spoiled, 0);
    EXPECT_EQ(heap.Verify(), nullptr);
    EXPECT_EQ(heap.Statistics().regions, 0U);
    heap.Close();
}

TEST(PrivateHeapThreads, TheFirstCallsMakeOneMutex) {
    for (int round = 0; round < 50; ++round) {
        const FakeHeapPlatform platform;
        PrivateHeap heap(platform.Calls());
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                ++ready;
                while (ready < 4) {
                }
                heap.Free(heap.Allocate(1));
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(FakeHeapPlatform::LiveMutexes(), 1);
        heap.Close();
    }
}

TEST(PrivateHeap, StandsOnTheRealPlatformToo) {
    PrivateHeap heap(kRealHeapPlatform);
    void* small = heap.Allocate(1);
    void* large = heap.Allocate(3000000);
    EXPECT_EQ(AddressOf(small) % 64, 0U);
    EXPECT_EQ(AddressOf(large) % 64, 0U);
    EXPECT_EQ(heap.Verify(), nullptr);
    EXPECT_EQ(heap.Statistics().usedBytes, 128U + 3000064U);
    heap.Free(small);
    heap.Free(large);
    EXPECT_EQ(heap.Statistics().regions, 0U);
    heap.Close();
}

} // namespace
} // namespace orva::toolkit
