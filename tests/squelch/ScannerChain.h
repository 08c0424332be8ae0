/// The scanner's way from the antenna to the detectors.
#pragma once

#include "dsp/TFIR_F32.h"
#include "p25/COrvaAnalogDemodulator.h"
#include "squelch/CtbDcsDetector.h"
#include "squelch/CtbToneDetector.h"
#include "squelch/CtbVoiceDetector.h"
#include "squelch/DcBlock.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orva::test {

/// Samples of a block as the scanner takes them.
constexpr std::size_t kScannerBlock = 2400;

/// FM audio in radians per sample as 16-bit samples, pi being full scale.
std::vector<std::int16_t> ToPcm(std::span<const float> audio);

/// FM demodulator with 16-bit input and output.
class FmReceiver {
public:
    explicit FmReceiver(std::uint32_t sampleRate) { demodulator.SetSampleRate(sampleRate); }

    /// Audio of a block of signal, one sample per sample.
    std::vector<std::int16_t> Receive(std::span<const std::int16_t> signal);

private:
    p25::COrvaAnalogDemodulator demodulator;
    std::vector<float> scaled;
};

/// All detectors behind an FM demodulator, each fed as the scanner feeds it.
class ScannerChain {
public:
    explicit ScannerChain(std::uint32_t sampleRate);

    /// One block, signal to detectors.
    void TakeSignal(std::span<const std::int16_t> signal) { TakeAudio(receiver.Receive(signal)); }

    /// One block of FM audio to the detectors.
    void TakeAudio(std::vector<std::int16_t> audio);

    squelch::CtbToneDetector tone;
    squelch::CtbDcsDetector dcs;
    squelch::CtbVoiceDetector voice;
    std::int32_t noise = 0; ///< of the last block, 0 .. 99

private:
    std::uint32_t rate;
    FmReceiver receiver;
    squelch::DcBlockState dcBlock;
    dsp::TFIR_F32 noiseHighPass;
    std::vector<std::int16_t> noiseScratch;
    float noiseLevel = 0.0F;
};

/// The parts of `samples`, a scanner block each; the last may be shorter.
template <class Action>
void ForEachBlock(std::span<const std::int16_t> samples, Action action) {
    for (std::size_t begin = 0; begin < samples.size(); begin += kScannerBlock) {
        action(samples.subspan(begin, std::min(kScannerBlock, samples.size() - begin)));
    }
}

} // namespace orva::test
