/// Signals for an instance, and what the decoder makes of them without one.
#pragma once

#include "dsp/TFIR_F32.h"
#include "p25/COrvaAnalogDemodulator.h"
#include "p25/COrvaDemodulator.h"
#include "p25/COrvaFrameDecoder.h"
#include "tests/support/FrameFields.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace orva::test {

constexpr std::uint16_t kCallTalkGroup = 1234;
constexpr std::uint32_t kCallSource = 56789;
constexpr unsigned kCallNac = 0x293;

/// A call of 360 ms a superframe between pauses of noise, at 30 dB.
std::vector<std::int16_t> CallSignal(int rate, std::uint8_t algorithm = kAlgorithmClear, int superframes = 4);

/// A control channel that announces and grants.
std::vector<std::int16_t> ControlChannelSignal(int rate, double seconds);

/// An FM carrier with this audio, -1.0 to 1.0 for 3000 Hz; without noise unless an SNR is given [dB].
std::vector<std::int16_t> FmSignal(int rate, double seconds, const std::function<double()>& audio,
                                   double snrDb = 60.0);
std::vector<std::int16_t> FmTone(int rate, double seconds, double hz = 1000.0);
std::vector<std::int16_t> Carrier(int rate, double seconds);
/// The samples with white noise that grows from nothing to `level` times their own root mean square.
std::vector<std::int16_t> WithGrowingNoise(std::vector<std::int16_t> samples, double level);
/// No carrier at all.
std::vector<std::int16_t> Noise(int rate, double seconds);

/// The portable stages, put one behind the other here once more.
class PortableDecoder {
public:
    explicit PortableDecoder(int rate);

    /// Takes a block of samples.
    void Process(std::span<const std::int16_t> samples);

    bool decodes = true;                            ///< off: the dibits go nowhere
    double gain = 1.0;                              ///< of the voice; overflow wraps
    std::vector<std::int16_t> voice;                ///< all so far, 16000 Hz
    std::vector<std::int32_t> algorithms;           ///< known when each voice block came out
    std::vector<std::vector<std::uint8_t>> reports; ///< trunking reports, one for each block that had any
    p25::COrvaFrameDecoder decoder;

private:
    p25::COrvaDemodulator demodulator;
    dsp::TFIR_F32 interpolator;
};

/// FM audio of the same blocks, 16000 Hz.
std::vector<std::int16_t> PortableFm(std::span<const std::int16_t> samples, int rate, std::size_t blockSize);

/// What the output makes of samples at a volume, in steps.
std::vector<std::int16_t> AtVolume(std::vector<std::int16_t> samples, int volume);

} // namespace orva::test
