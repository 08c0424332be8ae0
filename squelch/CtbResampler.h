/// Rational resampler for integer samples.
#pragma once

#include <cstdint>
#include <vector>

namespace orva::squelch {

/// Changes the rate of a sample stream by `up` : `down`, chosen near a wanted rate, with a Blackman-windowed
/// sinc of odd length. Samples are Q31 inside, taps Q31, sums 64 bits wide.
///
/// The stream may come in blocks of any size; history and phase run through. `Configure` and
/// `SetBlockLength` take memory, `Resample` does not.
class CtbResampler {
public:
    CtbResampler();

    /// Picks the smallest `up` with a whole `down` that comes within `tolerance` of `targetRate`, and designs
    /// the filter. The history is cleared when a factor or the number of taps changes; the filter is designed
    /// anew only when the number of taps does.
    /// tapsPerBranch  taps per output sample, 1 .. 1024
    /// inputRate, targetRate  [Hz], above 0
    /// tolerance  relative error allowed of the resulting rate, above 0
    /// Returns false, with everything as it was, for values out of range or a ratio of the rates that needs
    /// factors above `kMostUp` and `kMostDown`.
    bool Configure(std::uint32_t tapsPerBranch, float inputRate, float targetRate, float tolerance);

    /// Input samples per inner pass, at least 1. A change clears the history.
    void SetBlockLength(std::uint32_t length);

    /// Takes `count` / `stride` samples, one every `stride` entries, `stride` above 0. Returns the number of
    /// output samples. output  gets the top 16 bits of each; room for `MostOutputs` of them. Null: the
    /// samples stay in `Output`, and of a call with more than a block length of samples those of the last
    /// pass only, which then are also the number returned.
    std::uint32_t Resample(std::int16_t* output, const std::int16_t* samples, std::uint32_t count,
                           std::uint32_t stride);

    /// Result of the last pass, Q31.
    const std::int32_t* Output() const { return outputBuffer.data(); }

    /// Most output samples that `inputs` input samples can give.
    std::uint32_t MostOutputs(std::uint32_t inputs) const;

    std::uint32_t GetUp() const { return up; }
    std::uint32_t GetDown() const { return down; }
    std::uint32_t GetTaps() const { return taps; }
    std::uint32_t GetBlockLength() const { return blockLength; }

    static constexpr std::uint32_t kMostUp = 4096;
    static constexpr std::uint32_t kMostDown = 1U << 24;

private:
    friend struct CtbResamplerInspector;

    void Allocate();
    void DesignFilter();
    std::uint32_t RunPass(std::uint32_t inputs);
    std::int32_t BranchSum(std::uint32_t firstTap, const std::int32_t* input) const;

    std::int32_t* inputBuffer = nullptr;     ///< new samples of a pass, behind the history
    std::vector<std::int32_t> outputBuffer;  ///< of one pass
    std::uint32_t blockLength = 1024;        ///< input samples per pass
    std::uint32_t up = 1;                    ///< interpolation factor
    std::uint32_t taps = 0;                  ///< all branches together, odd
    std::uint32_t down = 1;                  ///< decimation factor
    std::vector<std::int32_t> historyBuffer; ///< `historyLength` earlier samples, then room for a block
    std::vector<std::int32_t> coefficients;  ///< Q31, [taps]
    std::uint32_t phase = 0;                 ///< of the next output, in the up-sampled stream
    std::uint32_t historyLength = 0;         ///< samples kept between passes
};

} // namespace orva::squelch
