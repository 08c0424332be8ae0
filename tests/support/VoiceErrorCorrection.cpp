#include "tests/support/VoiceErrorCorrection.h"

#include "tests/support/BlockCodes.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <vector>

namespace orva::test {
namespace {

constexpr int kChannelBits = 144;
constexpr int kGolayWords = 4;
constexpr int kGolayInformationBits = 12;
constexpr int kHammingInformationBits = 11;

// Both codes are perfect: the words within the correction limit of the code words fill the whole space, so a
// table from syndrome to error pattern has no gaps and decodes every word to the nearest code word.
class PerfectCode {
public:
    using Encoder = std::uint32_t (*)(unsigned information);

    PerfectCode(int wordLength, int informationLength, int correctable, Encoder wordEncoder)
        : parityLength(wordLength - informationLength),
          encode(wordEncoder),
          patterns(std::size_t{1} << parityLength, 0) {
        for (std::uint32_t pattern = 1; pattern < 1U << wordLength; ++pattern) {
            if (std::popcount(pattern) <= correctable) {
                patterns[SyndromeOf(pattern)] = pattern;
            }
        }
    }

    std::uint32_t Nearest(std::uint32_t word) const { return word ^ patterns[SyndromeOf(word)]; }

    std::uint32_t InformationOf(std::uint32_t word) const { return word >> parityLength; }

private:
    std::size_t SyndromeOf(std::uint32_t word) const { return word ^ encode(InformationOf(word)); }

    int parityLength;
    Encoder encode;
    std::vector<std::uint32_t> patterns;
};

std::array<std::uint8_t, kChannelBits> Deinterleave(std::span<const std::uint8_t> received) {
    constexpr std::size_t kFirstPositions[] = {0, 24, 48, 72, 96, 120, 25, 1, 73, 49, 121, 97};
    std::array<std::uint8_t, kChannelBits> coded{};
    for (std::size_t i = 0; i < coded.size(); ++i) {
        coded[2 * (i / 12) + kFirstPositions[i % 12]] = received[i];
    }
    return coded;
}

// Inverts the bits of the words behind the first by the sequence that its information bits start.
void Demodulate(std::span<std::uint8_t> coded, std::uint32_t seed) {
    std::uint32_t random = 16 * seed;
    for (std::uint8_t& bit : coded) {
        random = (173 * random + 13849) & 0xFFFF;
        bit = static_cast<std::uint8_t>(bit ^ (random >> 15));
    }
}

} // namespace

CorrectedVoiceWord CorrectVoiceWord(std::span<const std::uint8_t> channelBits) {
    static const PerfectCode golay(kGolay23Bits, kGolayInformationBits, 3, EncodeGolay23);
    static const PerfectCode hamming(kHamming15Bits, kHammingInformationBits, 1, EncodeHamming15);

    auto coded = Deinterleave(channelBits);
    CorrectedVoiceWord corrected;
    std::size_t read = 0;
    std::size_t written = 0;
    for (int index = 0; index < kProtectedVoiceWords; ++index) {
        const bool isGolay = index < kGolayWords;
        const PerfectCode& code = isGolay ? golay : hamming;
        std::uint32_t word = 0;
        for (int i = 0; i < (isGolay ? kGolay23Bits : kHamming15Bits); ++i) {
            word = word << 1 | coded[read++];
        }
        const std::uint32_t nearest = code.Nearest(word);
        corrected.wordErrors[static_cast<std::size_t>(index)] = std::popcount(word ^ nearest);
        const std::uint32_t information = code.InformationOf(nearest);
        for (int bit = (isGolay ? kGolayInformationBits : kHammingInformationBits) - 1; bit >= 0; --bit) {
            corrected.bits[written++] = static_cast<std::uint8_t>((information >> bit) & 1);
        }
        if (index == 0) {
            Demodulate(std::span(coded).subspan(kGolay23Bits, 3 * kGolay23Bits + 3 * kHamming15Bits),
                       information);
        }
    }
    std::copy(coded.begin() + static_cast<std::ptrdiff_t>(read), coded.end(),
              corrected.bits.begin() + static_cast<std::ptrdiff_t>(written));
    return corrected;
}

} // namespace orva::test
