#include "p25/GolayCode.h"

#include <array>

namespace orva::p25 {

namespace {

constexpr std::uint32_t kGenerator = 0xC75;
constexpr int kWordBits = 23;
constexpr int kParityBits = 11;
constexpr std::uint32_t kWordMask = (1U << kWordBits) - 1;
constexpr std::uint32_t kMaxRemainder = (1U << kParityBits) - 1;
constexpr int kHeaderSymbolShift = 12;
constexpr std::uint32_t kHeaderSymbolMask = 63;

constexpr std::uint32_t Remainder(std::uint32_t word) {
    for (int bit = kWordBits - 1; bit >= kParityBits && word > kMaxRemainder; --bit) {
        if ((word >> bit & 1U) != 0) {
            word ^= kGenerator << (bit - kParityBits);
        }
    }
    return word;
}

/// Error pattern of weight 3 or less by remainder. The code is perfect: each of the 2048 remainders has
/// exactly one.
constexpr std::array<std::uint32_t, kMaxRemainder + 1> MakeErrors() {
    std::array<std::uint32_t, kWordBits> remainders{};
    for (int bit = 0; bit < kWordBits; ++bit) {
        remainders[static_cast<std::size_t>(bit)] = Remainder(1U << bit);
    }
    std::array<std::uint32_t, kMaxRemainder + 1> errors{};
    for (int first = kWordBits - 1; first >= 0; --first) {
        const std::uint32_t one = remainders[static_cast<std::size_t>(first)];
        errors[one] = 1U << first;
        for (int second = first - 1; second >= 0; --second) {
            const std::uint32_t two = one ^ remainders[static_cast<std::size_t>(second)];
            errors[two] = 1U << first | 1U << second;
            for (int third = second - 1; third >= 0; --third) {
                errors[two ^ remainders[static_cast<std::size_t>(third)]] =
                    1U << first | 1U << second | 1U << third;
            }
        }
    }
    return errors;
}

constexpr auto kGolayErrors = MakeErrors();

} // namespace

std::uint32_t GolayRemainder(std::uint32_t word) {
    return Remainder(word & kWordMask);
}

std::uint32_t CorrectGolay(std::uint32_t word) {
    word &= kWordMask;
    return word ^ kGolayErrors[Remainder(word)];
}

std::uint32_t DecodeHeaderWord(std::uint32_t word) {
    return CorrectGolay(word) >> kHeaderSymbolShift & kHeaderSymbolMask;
}

} // namespace orva::p25
