#include "toolkit/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace orva::toolkit {

namespace {

constexpr unsigned kDecimalBase = 10;
constexpr unsigned kHexadecimalBase = 16;
constexpr std::uint64_t kLargestMagnitude = std::numeric_limits<std::uint64_t>::max();
/// Of the smallest number, which is one more than that of the largest.
constexpr std::uint64_t kNegativeMagnitude = std::uint64_t{1} << 63U;

bool IsSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

/// The digit's value; the base or more for any other character.
unsigned DigitValue(char character) {
    if (character >= '0' && character <= '9') {
        return static_cast<unsigned>(character - '0');
    }
    if (character >= 'a' && character <= 'f') {
        return static_cast<unsigned>(character - 'a') + kDecimalBase;
    }
    if (character >= 'A' && character <= 'F') {
        return static_cast<unsigned>(character - 'A') + kDecimalBase;
    }
    return kHexadecimalBase;
}

/// Digits taken one after the other into a number that never wraps.
class Magnitude {
public:
    explicit Magnitude(unsigned numberBase) : base(numberBase) {}

    void Append(unsigned digit) {
        if (value > (kLargestMagnitude - digit) / base) {
            tooLarge = true;
        } else {
            value = value * base + digit;
        }
    }

    [[nodiscard]] bool IsTooLarge() const { return tooLarge; }
    [[nodiscard]] std::uint64_t Value() const { return value; }

    /// With its sign, limited to the numbers there are.
    [[nodiscard]] std::int64_t Signed(bool negative) const {
        const bool beyond = tooLarge || value >= kNegativeMagnitude;
        if (negative) {
            return beyond ? std::numeric_limits<std::int64_t>::min() : -static_cast<std::int64_t>(value);
        }
        return beyond ? std::numeric_limits<std::int64_t>::max() : static_cast<std::int64_t>(value);
    }

private:
    unsigned base;
    std::uint64_t value = 0;
    bool tooLarge = false;
};

const char* SkipSpace(const char* text) {
    while (IsSpace(*text)) {
        ++text;
    }
    return text;
}

bool TakeSign(const char*& text) {
    const bool negative = *text == '-';
    if (negative || *text == '+') {
        ++text;
    }
    return negative;
}

std::int64_t ParseHexadecimal(const char* text, bool negative) {
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        text += 2;
    }
    Magnitude magnitude(kHexadecimalBase);
    for (; DigitValue(*text) < kHexadecimalBase; ++text) {
        magnitude.Append(DigitValue(*text));
    }
    if (magnitude.IsTooLarge()) {
        return magnitude.Signed(negative);
    }
    const std::uint64_t bits = negative ? std::uint64_t{0} - magnitude.Value() : magnitude.Value();
    return static_cast<std::int64_t>(bits);
}

std::string FormatHexadecimal(std::int64_t value) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(),
                                   static_cast<std::uint64_t>(value), kHexadecimalBase);
    return {digits.data(), end.ptr};
}

int LimitDecimals(int decimals) {
    return std::clamp(decimals, 0, kMostDecimals);
}

} // namespace

std::string FormatNumber(std::int64_t value, NumberBase base) {
    if (base == NumberBase::Decimal) {
        return std::to_string(value);
    }
    std::string text = FormatHexadecimal(value);
    if (base == NumberBase::UpperHexadecimal) {
        std::transform(text.begin(), text.end(), text.begin(), [](char digit) {
            return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
        });
    }
    return text;
}

std::int64_t ParseNumber(const char* text, NumberBase base) {
    text = SkipSpace(text);
    const bool negative = TakeSign(text);
    if (base != NumberBase::Decimal) {
        return ParseHexadecimal(text, negative);
    }
    Magnitude magnitude(kDecimalBase);
    for (; DigitValue(*text) < kDecimalBase; ++text) {
        magnitude.Append(DigitValue(*text));
    }
    return magnitude.Signed(negative);
}

std::string FormatFixedPoint(std::int64_t value, int decimals) {
    const auto places = static_cast<std::size_t>(LimitDecimals(decimals));
    std::string text = std::to_string(value);
    if (places == 0) {
        return text;
    }
    const std::size_t sign = value < 0 ? 1 : 0;
    const std::size_t digits = text.size() - sign;
    if (digits <= places) {
        text.insert(sign, places + 1 - digits, '0');
    }
    text.insert(text.size() - places, 1, '.');
    return text;
}

std::int64_t ParseFixedPoint(const char* text, int decimals) {
    text = SkipSpace(text);
    const bool negative = TakeSign(text);
    Magnitude magnitude(kDecimalBase);
    for (; DigitValue(*text) < kDecimalBase; ++text) {
        magnitude.Append(DigitValue(*text));
    }
    if (*text == '.') {
        ++text;
    }
    for (int place = LimitDecimals(decimals); place > 0; --place) {
        unsigned digit = DigitValue(*text);
        if (digit < kDecimalBase) {
            ++text;
        } else {
            digit = 0;
        }
        magnitude.Append(digit);
    }
    return magnitude.Signed(negative);
}

} // namespace orva::toolkit
