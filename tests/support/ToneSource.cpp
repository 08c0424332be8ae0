#include "tests/support/ToneSource.h"

#include <cmath>
#include <numbers>

namespace orva::test {

ToneSource::ToneSource(double frequency, double sampleRate, double peak)
    : cyclesPerSample(frequency / sampleRate), amplitude(peak) {}

double ToneSource::Next() {
    const double sample = amplitude * std::sin(2.0 * std::numbers::pi * cycles);
    cycles += cyclesPerSample;
    cycles -= std::floor(cycles);
    return sample;
}

} // namespace orva::test
