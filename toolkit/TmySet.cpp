#include "toolkit/TmySet.h"

#include <bit>

namespace orva::toolkit {
namespace {

constexpr std::uint32_t kWordBits = 32;

std::uint32_t Mask(std::uint32_t offset) {
    return 1U << (offset % kWordBits);
}

} // namespace

TmySet::TmySet(std::int32_t first, std::int32_t last) : firstValue(first), lastValue(last) {
    if (const std::uint32_t count = WordCount(); count > 1) {
        words = std::make_unique<std::uint32_t[]>(count);
    }
}

void TmySet::Add(std::int32_t value) {
    if (IsInRange(value)) {
        Words()[Offset(value) / kWordBits] |= Mask(Offset(value));
    }
}

void TmySet::Remove(std::int32_t value) {
    if (IsInRange(value)) {
        Words()[Offset(value) / kWordBits] &= ~Mask(Offset(value));
    }
}

bool TmySet::Contains(std::int32_t value) const {
    return IsInRange(value) && (Words()[Offset(value) / kWordBits] & Mask(Offset(value))) != 0;
}

bool TmySet::IsEmpty() const {
    for (std::uint32_t i = 0; i < WordCount(); ++i) {
        if (Words()[i] != 0) {
            return false;
        }
    }
    return true;
}

std::int32_t TmySet::First() const {
    for (std::uint32_t i = 0; i < WordCount(); ++i) {
        if (const std::uint32_t word = Words()[i]; word != 0) {
            const std::uint32_t offset = i * kWordBits + static_cast<std::uint32_t>(std::countr_zero(word));
            return static_cast<std::int32_t>(static_cast<std::uint32_t>(firstValue) + offset);
        }
    }
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(firstValue) - 1U);
}

std::uint32_t TmySet::Offset(std::int32_t value) const {
    // The whole range of 32-bit integers is a range too: only unsigned numbers hold its distances.
    return static_cast<std::uint32_t>(value) - static_cast<std::uint32_t>(firstValue);
}

std::uint32_t TmySet::WordCount() const {
    return lastValue < firstValue ? 0 : Offset(lastValue) / kWordBits + 1;
}

} // namespace orva::toolkit
