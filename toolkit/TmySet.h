/// A set of integers out of a fixed range.
#pragma once

#include "toolkit/TmyObject.h"

#include <cstdint>
#include <memory>

namespace orva::toolkit {

/// One bit for each value of a range. Ranges of up to 32 values live inside the object, larger ones take
/// memory once, at construction. A value outside the range is never in the set: adding or removing it does
/// nothing.
class TmySet : public TmyObject {
public:
    /// first, last  the range, both included; with `last` below `first` it has no values. Throws
    /// std::bad_alloc without the memory of a large one.
    TmySet(std::int32_t first, std::int32_t last);

    void Add(std::int32_t value);
    void Remove(std::int32_t value);
    bool Contains(std::int32_t value) const;
    bool IsEmpty() const;

    /// The lowest value in the set; of an empty set the number below the range, so -1 for a range that starts
    /// at 0.
    std::int32_t First() const;

private:
    bool IsInRange(std::int32_t value) const { return firstValue <= value && value <= lastValue; }
    std::uint32_t Offset(std::int32_t value) const;
    std::uint32_t WordCount() const;
    std::uint32_t* Words() { return words ? words.get() : &insideWord; }
    const std::uint32_t* Words() const { return words ? words.get() : &insideWord; }

    std::int32_t firstValue;
    std::int32_t lastValue;
    std::uint32_t insideWord = 0;
    std::unique_ptr<std::uint32_t[]> words; ///< null if the range fits `insideWord`
};

} // namespace orva::toolkit
