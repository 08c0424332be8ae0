/// The platform's high-resolution clock.
#pragma once

#include "toolkit/TmyObject.h"

#include <cstdint>

namespace orva::toolkit {

/// Counts in ticks, through the table of `Diagnostics`.
class TmyTimeCounter : public TmyObject {
public:
    /// Throws std::runtime_error, "TimeCounter constructor failed", on a machine without such a clock.
    TmyTimeCounter();

    std::int64_t Frequency() const { return frequency; } ///< [ticks/s], above 0
    std::int64_t Start() const { return start; }         ///< the count at construction
    std::int64_t Now() const;                            ///< the count at this moment

    /// Ticks in other units, towards 0, without an overflow on the way: a machine counts on for weeks. Of a
    /// frequency above 9.2e12 / s the last digit may be off by one.
    std::int64_t ToMicroseconds(std::int64_t ticks) const;
    std::int64_t ToMilliseconds(std::int64_t ticks) const;
    double ToSeconds(std::int64_t ticks) const;

private:
    std::int64_t ToUnits(std::int64_t ticks, std::int64_t unitsPerSecond) const;

    std::int64_t frequency;
    std::int64_t start;
};

} // namespace orva::toolkit
