#include "toolkit/TmyTimeCounter.h"

#include "toolkit/Trace.h"
#include "toolkit/TypeRegistry.h"

#include <limits>
#include <stdexcept>

namespace orva::toolkit {
namespace {

constexpr std::int64_t kMicrosecondsPerSecond = 1000000;
constexpr std::int64_t kMillisecondsPerSecond = 1000;
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

} // namespace

TmyTimeCounter::TmyTimeCounter() : frequency(Diagnostics().ticksPerSecond()), start(0) {
    RegisterType(this, TypeId::TimeCounter, "TimeCounter");
    if (frequency <= 0) {
        throw std::runtime_error("TimeCounter constructor failed");
    }
    start = Now();
}

std::int64_t TmyTimeCounter::Now() const {
    return Diagnostics().ticks();
}

std::int64_t TmyTimeCounter::ToMicroseconds(std::int64_t ticks) const {
    return ToUnits(ticks, kMicrosecondsPerSecond);
}

std::int64_t TmyTimeCounter::ToMilliseconds(std::int64_t ticks) const {
    return ToUnits(ticks, kMillisecondsPerSecond);
}

double TmyTimeCounter::ToSeconds(std::int64_t ticks) const {
    return static_cast<double>(ticks) / static_cast<double>(frequency);
}

std::int64_t TmyTimeCounter::ToUnits(std::int64_t ticks, std::int64_t unitsPerSecond) const {
    // Whole seconds first: ticks times the unit would overflow after 11 days of a clock of 10 MHz.
    const std::int64_t seconds = ticks / frequency;
    const std::int64_t rest = ticks % frequency;
    const std::int64_t units = frequency <= kMost / unitsPerSecond ? rest * unitsPerSecond / frequency
                                                                   : rest / (frequency / unitsPerSecond);
    return seconds * unitsPerSecond + units;
}

} // namespace orva::toolkit
