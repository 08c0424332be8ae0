#pragma once

namespace orva::test {

/// A sine of constant frequency, exact to double precision for hours.
class ToneSource {
public:
    /// frequency, sampleRate  [Hz]
    ToneSource(double frequency, double sampleRate, double peak = 1.0);

    double Next();

private:
    double cyclesPerSample;
    double amplitude;
    double cycles = 0.0; ///< since the begin, without whole ones
};

} // namespace orva::test
