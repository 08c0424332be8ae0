// Wrong bits in a trunking signalling block: all single ones, and what becomes of more.
#include "tests/p25/ControlChannelStream.h"
#include "tests/support/FrameBuilder.h"
#include "tests/support/RandomSource.h"
#include "tests/support/TrunkingMessage.h"

#include <algorithm>
#include <iostream>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

constexpr std::size_t kBlockBits = 196;

BitString Damaged(const BitString& coded, const std::vector<std::size_t>& wrongBits) {
    BitString damaged;
    for (std::size_t i = 0; i < coded.Size(); ++i) {
        const bool isWrong = std::find(wrongBits.begin(), wrongBits.end(), i) != wrongBits.end();
        damaged.Append(coded.Field(i, 1) ^ (isWrong ? 1U : 0U), 1);
    }
    return damaged;
}

/// The block of `data` as it is heard with these bits of the air wrong.
HeardBlock Hear(const TrunkingData& data, const std::vector<std::size_t>& wrongBits) {
    const BitString block = Damaged(EncodeTrunkingBlock(data), wrongBits);
    ControlChannelStream stream;
    stream.Feed(TrunkingPacket(ControlChannelStream::kNac, std::vector<BitString>{block}));
    EXPECT_GE(stream.blocks.size(), 1U);
    return stream.blocks.empty() ? HeardBlock{} : stream.blocks[0];
}

TrunkingData RandomLastBlock(RandomSource& random) {
    TrunkingData data;
    std::generate(data.begin(), data.end(), [&] { return static_cast<std::uint8_t>(random.Next()); });
    data[0] |= 0x80;
    return data;
}

TEST(TrunkingDamage, EverySingleWrongBitIsCorrectedAndCounted) {
    RandomSource random(1);
    for (int trial = 0; trial < 5; ++trial) {
        const TrunkingData data = RandomLastBlock(random);
        const HeardBlock expected{WithTrunkingCrc(data), true, 1};
        for (std::size_t bit = 0; bit < kBlockBits; ++bit) {
            ASSERT_EQ(Hear(data, {bit}), expected) << "bit " << bit;
        }
    }
}

/// What becomes of blocks with so many wrong bits at random places.
struct Outcome {
    int right = 0;    ///< all bytes as sent
    int rejected = 0; ///< by the CRC
    int wrong = 0;    ///< bytes that were not sent pass the CRC
};

Outcome Spoil(std::size_t wrongBits, int trials) {
    RandomSource random(wrongBits);
    Outcome outcome;
    std::vector<std::size_t> places(kBlockBits);
    for (int trial = 0; trial < trials; ++trial) {
        const TrunkingData data = RandomLastBlock(random);
        std::iota(places.begin(), places.end(), 0U);
        for (std::size_t i = 0; i < wrongBits; ++i) {
            std::swap(places[i], places[i + random.Below(static_cast<std::uint32_t>(kBlockBits - i))]);
        }
        const HeardBlock heard = Hear(data, {places.begin(), places.begin() + static_cast<long>(wrongBits)});
        if (!heard.good) {
            ++outcome.rejected;
        } else if (heard.bytes == WithTrunkingCrc(data)) {
            ++outcome.right;
            EXPECT_LE(heard.errors, wrongBits) << "the best path is no worse than the one that was sent";
        } else {
            ++outcome.wrong;
        }
    }
    return outcome;
}

struct RandomDamage {
    std::size_t wrongBits;
    int leastRight; ///< of 2000 blocks
    int mostRight;
};

class TrunkingRandomDamage : public testing::TestWithParam<RandomDamage> {};

TEST_P(TrunkingRandomDamage, IsCorrectedOrRejected) {
    constexpr int kTrials = 2000;
    const Outcome outcome = Spoil(GetParam().wrongBits, kTrials);
    std::cout << "[ measured ] " << GetParam().wrongBits << " wrong bits: " << outcome.right << " of "
              << kTrials << " blocks right, " << outcome.rejected << " rejected, " << outcome.wrong
              << " wrong but with a good CRC\n";
    EXPECT_GE(outcome.right, GetParam().leastRight);
    EXPECT_LE(outcome.right, GetParam().mostRight);
    // A wrong block has a good CRC once in 65536 times.
    EXPECT_LE(outcome.wrong, 2);
}

INSTANTIATE_TEST_SUITE_P(Bits, TrunkingRandomDamage,
                         testing::Values(RandomDamage{2, 1995, 2000}, RandomDamage{4, 1950, 2000},
                                         RandomDamage{8, 1650, 1900}, RandomDamage{16, 400, 650}));

} // namespace
} // namespace orva::test
