/// The watch over the fixed-point kit's plain operations.
///
/// Every operation that is meant to stay in range tells the value it computed and the place of the call. With
/// `ORVA_CHECKED_ARITHMETIC` defined the first value out of range is kept for the tests to read; without it
/// nothing is left of the watch. Results are the same in both builds: the value wraps.
#pragma once

#include <cstdint>

namespace orva::voice {

#ifdef ORVA_CHECKED_ARITHMETIC

/// A line of source text. Default-constructed as a default argument it names the line of the call.
struct SourcePlace {
    constexpr explicit SourcePlace(const char* callerFile = __builtin_FILE(),
                                   int callerLine = __builtin_LINE())
        : file(callerFile), line(callerLine) {}
    const char* file;
    int line;
};

/// The first value that left its range since `ClearArithmeticOverflow`.
struct ArithmeticOverflow {
    const char* operation; ///< name of the kit's operation, null while nothing has overflowed
    const char* file;      ///< file of the call
    int line;              ///< line of the call
    std::int64_t value;    ///< the exact result that did not fit
};

/// The calling thread's first overflow.
const ArithmeticOverflow& FirstArithmeticOverflow();

/// Forgets the calling thread's overflow.
void ClearArithmeticOverflow();

/// Keeps the overflow if it is the first of the calling thread.
void ReportArithmeticOverflow(const char* operation, std::int64_t value, SourcePlace place);

constexpr void CheckRange(std::int64_t value, std::int64_t lowest, std::int64_t highest,
                          const char* operation, SourcePlace place) {
    if (value < lowest || value > highest) {
        ReportArithmeticOverflow(operation, value, place);
    }
}

#else

struct SourcePlace {
    constexpr explicit SourcePlace() = default;
};

constexpr void CheckRange(std::int64_t, std::int64_t, std::int64_t, const char*, SourcePlace) {}

#endif

} // namespace orva::voice
