#include "tests/support/VoiceErrorCorrection.h"

#include "tests/support/ImbeWord.h"
#include "tests/support/RandomSource.h"

#include <bit>
#include <numeric>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

VoiceBits RandomInformation(RandomSource& random) {
    VoiceBits information{};
    for (auto& bit : information) {
        bit = static_cast<std::uint8_t>(random.Below(2));
    }
    return information;
}

TEST(VoiceErrorCorrection, CleanWordComesThrough) {
    RandomSource random(3);
    for (int round = 0; round < 200; ++round) {
        const VoiceBits sent = RandomInformation(random);
        const CorrectedVoiceWord received = CorrectVoiceWord(EncodeImbeWord(sent));
        EXPECT_EQ(received.bits, sent) << round;
        EXPECT_EQ(std::accumulate(received.wordErrors.begin(), received.wordErrors.end(), 0), 0) << round;
    }
}

TEST(VoiceErrorCorrection, CorrectsThreeErrorsInGolayAndOneInHammingWords) {
    RandomSource random(4);
    for (int round = 0; round < 500; ++round) {
        const VoiceBits sent = RandomInformation(random);
        VoiceErrorPattern errors{};
        for (std::size_t word = 0; word < 7; ++word) {
            const bool isGolay = word < 4;
            while (std::popcount(errors[word]) < (isGolay ? 3 : 1)) {
                errors[word] |= 1U << random.Below(isGolay ? 23 : 15);
            }
        }
        const CorrectedVoiceWord received = CorrectVoiceWord(EncodeImbeWord(sent, errors));
        EXPECT_EQ(received.bits, sent) << round;
        EXPECT_EQ(received.wordErrors, (std::array<int, 7>{3, 3, 3, 3, 1, 1, 1})) << round;
    }
}

TEST(VoiceErrorCorrection, LastSevenBitsAreNotProtected) {
    const VoiceBits sent{};
    VoiceErrorPattern errors{};
    errors[7] = 0x41;
    const CorrectedVoiceWord received = CorrectVoiceWord(EncodeImbeWord(sent, errors));
    EXPECT_EQ(received.bits[81], 1);
    EXPECT_EQ(received.bits[87], 1);
    EXPECT_EQ(std::accumulate(received.bits.begin(), received.bits.end(), 0), 2);
}

} // namespace
} // namespace orva::test
