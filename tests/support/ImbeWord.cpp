#include "tests/support/ImbeWord.h"

#include "tests/support/BlockCodes.h"

#include <charconv>

namespace orva::test {

namespace {

constexpr int kGolayInformationBits = 12;
constexpr int kHammingInformationBits = 11;
constexpr std::array<int, kVoiceWords> kInformationWidths = {12, 12, 12, 12, 11, 11, 11, 7};
constexpr std::array<int, kVoiceWords> kCodedWidths = {23, 23, 23, 23, 15, 15, 15, 7};

constexpr std::uint32_t kPnMultiplier = 173;
constexpr std::uint32_t kPnIncrement = 13849;
constexpr std::uint32_t kPnMask = 0xFFFF;
constexpr int kPnSeedShift = 4;
constexpr int kPnBitShift = 15;

constexpr std::size_t kInterleaverRows = 6;
constexpr std::size_t kInterleaverColumns = 24;

constexpr int kHexDigitBits = 4;
constexpr int kHexDigits = kVoiceBits / kHexDigitBits;

using Words = std::array<std::uint32_t, kVoiceWords>;

Words SplitInformation(const VoiceBits& information) {
    Words words = {};
    std::size_t next = 0;
    for (std::size_t word = 0; word < words.size(); ++word) {
        for (int bit = 0; bit < kInformationWidths[word]; ++bit) {
            words[word] = words[word] << 1 | (information[next++] & 1u);
        }
    }
    return words;
}

Words EncodeWords(const Words& information) {
    Words coded = {};
    for (std::size_t word = 0; word < coded.size(); ++word) {
        if (kInformationWidths[word] == kGolayInformationBits) {
            coded[word] = EncodeGolay23(information[word]);
        } else if (kInformationWidths[word] == kHammingInformationBits) {
            coded[word] = EncodeHamming15(information[word]);
        } else {
            coded[word] = information[word];
        }
    }
    return coded;
}

// c1 .. c6 are scrambled by a sequence that u0 seeds; c0, which carries the seed, and c7 are not.
void Modulate(Words& coded, std::uint32_t seed) {
    std::uint32_t state = seed << kPnSeedShift & kPnMask;
    for (std::size_t word = 1; word + 1 < coded.size(); ++word) {
        for (int bit = kCodedWidths[word] - 1; bit >= 0; --bit) {
            state = (kPnMultiplier * state + kPnIncrement) & kPnMask;
            coded[word] ^= state >> kPnBitShift << bit;
        }
    }
}

ChannelBits Concatenate(const Words& coded) {
    ChannelBits bits = {};
    std::size_t next = 0;
    for (std::size_t word = 0; word < coded.size(); ++word) {
        for (int bit = kCodedWidths[word] - 1; bit >= 0; --bit) {
            bits[next++] = static_cast<std::uint8_t>(coded[word] >> bit & 1);
        }
    }
    return bits;
}

// The words fill six rows of 24, which are sent column by column; in every other column the two bits of each
// dibit change places, so that no word always has the stronger bit.
ChannelBits Interleave(const ChannelBits& coded) {
    ChannelBits sent = {};
    std::size_t next = 0;
    for (std::size_t column = 0; column < kInterleaverColumns; ++column) {
        for (std::size_t row = 0; row < kInterleaverRows; ++row) {
            const std::size_t swappedRow = column % 2 == 0 ? row : row ^ 1;
            sent[next++] = coded[swappedRow * kInterleaverColumns + column];
        }
    }
    return sent;
}

} // namespace

ChannelBits EncodeImbeWord(const VoiceBits& information, const VoiceErrorPattern& errors) {
    const Words split = SplitInformation(information);
    Words coded = EncodeWords(split);
    Modulate(coded, split[0]);
    for (std::size_t word = 0; word < coded.size(); ++word) {
        coded[word] ^= errors[word];
    }
    return Interleave(Concatenate(coded));
}

std::string ToHex(const VoiceBits& information) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string hex;
    for (std::size_t first = 0; first < information.size(); first += kHexDigitBits) {
        unsigned digit = 0;
        for (std::size_t bit = 0; bit < kHexDigitBits; ++bit) {
            digit = digit << 1 | (information[first + bit] & 1u);
        }
        hex.push_back(kDigits[digit]);
    }
    return hex;
}

bool FromHex(std::string_view hex, VoiceBits& information) {
    if (hex.size() != kHexDigits) {
        return false;
    }
    VoiceBits read = {};
    for (std::size_t position = 0; position < hex.size(); ++position) {
        unsigned digit = 0;
        const char* begin = hex.data() + position;
        if (std::from_chars(begin, begin + 1, digit, 16).ptr != begin + 1) {
            return false;
        }
        for (std::size_t bit = 0; bit < kHexDigitBits; ++bit) {
            read[position * kHexDigitBits + bit] =
                static_cast<std::uint8_t>(digit >> (kHexDigitBits - 1 - bit) & 1);
        }
    }
    information = read;
    return true;
}

} // namespace orva::test
