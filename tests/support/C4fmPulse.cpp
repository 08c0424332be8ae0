#include "tests/support/C4fmPulse.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>

namespace orva::test {

namespace {

constexpr double kPassBandHz = 1920.0;
constexpr double kStopBandHz = 2880.0;
constexpr double kOuterDeviation = 1800.0;
constexpr double kInnerDeviation = 600.0;

constexpr int kStepsPerSymbol = 128;
constexpr std::size_t kTableSteps = static_cast<std::size_t>(kPulseReach) * kStepsPerSymbol;

// One half of the symmetric pulse, and an entry behind it for the interpolation.
using PulseTable = std::array<double, kTableSteps + 2>;

// Inverse Fourier transform of the response by the trapezoid rule. The response and its slope vanish at the
// band edge, so the rule converges fast; the interval must resolve the cosine at the end of the reach.
double Transform(double symbols) {
    constexpr int kIntervals = 576;
    constexpr double kStepHz = kStopBandHz / kIntervals;
    double sum = 0.5 * ShapingResponse(0.0);
    for (int interval = 1; interval < kIntervals; ++interval) {
        const double hz = interval * kStepHz;
        sum += ShapingResponse(hz) * std::cos(2.0 * std::numbers::pi * hz * symbols / kSymbolRate);
    }
    return 2.0 * sum * kStepHz / kSymbolRate;
}

PulseTable MakePulseTable() {
    PulseTable table = {};
    for (std::size_t step = 0; step < kTableSteps; ++step) {
        table[step] = Transform(static_cast<double>(step) / kStepsPerSymbol);
    }
    return table;
}

} // namespace

double NominalDeviation(char dibit) {
    switch (dibit) {
    case '0':
        return kInnerDeviation;
    case '1':
        return kOuterDeviation;
    case '2':
        return -kInnerDeviation;
    default:
        return -kOuterDeviation;
    }
}

double ShapingResponse(double hz) {
    const double frequency = std::abs(hz);
    if (frequency >= kStopBandHz) {
        return 0.0;
    }
    const double raisedCosine = frequency <= kPassBandHz
                                    ? 1.0
                                    : 0.5 + 0.5 * std::cos(std::numbers::pi * (frequency - kPassBandHz) /
                                                           (kStopBandHz - kPassBandHz));
    const double angle = std::numbers::pi * frequency / kSymbolRate;
    return angle == 0.0 ? raisedCosine : raisedCosine * angle / std::sin(angle);
}

double ShapingPulse(double symbols) {
    static const PulseTable table = MakePulseTable();
    const double position = std::abs(symbols) * kStepsPerSymbol;
    if (position >= static_cast<double>(kTableSteps)) {
        return 0.0;
    }
    const auto index = static_cast<std::size_t>(position);
    const double fraction = position - static_cast<double>(index);
    return table[index] + fraction * (table[index + 1] - table[index]);
}

double DeviationAt(std::string_view dibits, double symbols) {
    // Symbol k is centred on k + 0.5.
    const double centre = symbols - 0.5;
    const auto nearest = static_cast<std::int64_t>(std::floor(centre));
    const std::int64_t first = std::max<std::int64_t>(nearest - kPulseReach + 1, 0);
    const std::int64_t end =
        std::min<std::int64_t>(nearest + kPulseReach + 1, static_cast<std::int64_t>(dibits.size()));
    double deviation = 0.0;
    for (std::int64_t symbol = first; symbol < end; ++symbol) {
        deviation += NominalDeviation(dibits[static_cast<std::size_t>(symbol)]) *
                     ShapingPulse(centre - static_cast<double>(symbol));
    }
    return deviation;
}

} // namespace orva::test
