/// Spectrum of integer samples.
#pragma once

#include <complex>
#include <cstdint>
#include <vector>

namespace orva::squelch {

/// Windows of `CtbFftAnalyzer`, symmetric from both ends and with a mean of 1.
enum AnalyzerWindow : std::uint32_t {
    kAnalyzerRectangle = 0,
    kAnalyzerTriangle = 1,
    kAnalyzerHann = 2,
    kAnalyzerHamming = 3,
    kAnalyzerBlackman = 4,
};

/// Windowed real transform of `GetLength` samples, by a radix-2 complex transform of half the length in
/// single precision. Forward, unscaled: entry k is the sum of window x sample x exp(-2 pi i k n / length), k
/// from 0 to below half the length. Input samples count as the integers they are.
///
/// The setters take memory, the analysing operations do not.
class CtbFftAnalyzer {
public:
    /// 1024 points, rectangle.
    CtbFftAnalyzer();

    /// Points, rounded up to a power of two, 4 .. `kMostPoints`.
    void SetLength(std::uint32_t points);
    std::uint32_t GetLength() const { return length; }
    std::uint32_t GetHalfLength() const { return halfLength; }

    /// kind  an `AnalyzerWindow`; others count as the rectangle. Compares first.
    void SetWindow(std::uint32_t kind);

    /// Fills `Real`, `Imaginary` and `Power`. samples  [GetLength()]
    void Analyze(const std::int16_t* samples);
    void Analyze(const std::int32_t* samples);

    /// Fills the entries `first` .. `last`, at most half the length - 1, by a direct sum each.
    void AnalyzeBins(const std::int16_t* samples, std::uint32_t first, std::uint32_t last);
    void AnalyzeBins(const std::int32_t* samples, std::uint32_t first, std::uint32_t last);

    /// [GetHalfLength()] each.
    const float* Real() const { return real.data(); }
    const float* Imaginary() const { return imaginary.data(); }
    /// A quarter of the squared magnitude.
    const float* Power() const { return power.data(); }

    static constexpr std::uint32_t kMostPoints = 1U << 20;

private:
    friend struct CtbFftAnalyzerInspector;

    template <class Sample>
    void AnalyzeSamples(const Sample* samples);
    template <class Sample>
    void SumBins(const Sample* samples, std::uint32_t first, std::uint32_t last);
    void BuildTwiddles();
    void BuildIndices();
    void BuildWindow();
    void Transform();
    void Split();
    void Store(std::uint32_t bin, std::complex<float> value);

    std::uint32_t length = 0;
    std::uint32_t halfLength = 0;
    std::vector<float> real;
    std::vector<float> imaginary;
    std::vector<float> power;
    std::vector<std::complex<float>> twiddles; ///< exp(-2 pi i k / length), [halfLength]
    std::vector<std::complex<float>> work;     ///< [halfLength]
    std::vector<float> window;                 ///< [length]
    std::vector<std::uint32_t> indices;        ///< bit-reversed numbers, [halfLength]
    std::uint32_t windowKind = kAnalyzerRectangle;
};

} // namespace orva::squelch
