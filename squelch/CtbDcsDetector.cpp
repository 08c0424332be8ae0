#include "squelch/CtbDcsDetector.h"

#include <algorithm>
#include <bit>

namespace orva::squelch {

namespace {

constexpr float kInitialRate = 1000.0F;
constexpr std::uint32_t kTapsPerBranch = 127;
constexpr float kTargetRate = 2688.0F; ///< 20 samples a bit
constexpr float kRateTolerance = 0.01F;
constexpr float kCutoffHz = 300.0F;
constexpr std::uint32_t kFilterTaps = 255;
constexpr double kBitsPerSecond = 134.4;
constexpr double kClockGain = 0.1;
constexpr double kClockRateGain = 0.0002;

constexpr int kWordBits = 23;
constexpr std::uint32_t kWordMask = 0x7FFFFF;
constexpr std::uint32_t kFixedBits = 0x800; ///< the three bits above the code are 100
constexpr int kDataBits = 12;

/// A parity bit: of the masked code bits, inverted where the fixed bit takes part.
struct ParityRule {
    std::uint32_t mask;
    bool inverted;
};

/// Bits 12 to 22 of a word.
constexpr std::array<ParityRule, kWordBits - kDataBits> kParityRules = {{{0x09F, false},
                                                                         {0x13E, true},
                                                                         {0x0E3, false},
                                                                         {0x1C6, true},
                                                                         {0x113, true},
                                                                         {0x0B9, true},
                                                                         {0x1ED, false},
                                                                         {0x1DA, false},
                                                                         {0x1B4, false},
                                                                         {0x168, true},
                                                                         {0x04F, true}}};

constexpr std::uint32_t MakeWord(std::uint32_t code) {
    const std::uint32_t data = code | kFixedBits;
    std::uint32_t word = data;
    for (std::size_t i = 0; i < kParityRules.size(); ++i) {
        const bool odd = std::popcount(data & kParityRules[i].mask) % 2 != 0;
        if (odd != kParityRules[i].inverted) {
            word |= 1U << (kDataBits + i);
        }
    }
    return word;
}

constexpr std::array<std::uint32_t, kDcsCodeCount>
MakeWords(const std::array<std::uint16_t, kDcsCodeCount>& codes) {
    std::array<std::uint32_t, kDcsCodeCount> words{};
    std::transform(codes.begin(), codes.end(), words.begin(), MakeWord);
    return words;
}

constexpr std::uint32_t RotateRight(std::uint32_t word) {
    return word >> 1 | (word & 1U) << (kWordBits - 1);
}

/// The code of the first word that fits, with `kDcsInverted` added when its inverse does; -1 for none.
std::int32_t FindCode(std::uint32_t word) {
    for (std::size_t i = 0; i < kDcsCodeCount; ++i) {
        if (word == kDcsWords[i]) {
            return kDcsCodes[i];
        }
        if (word == (kDcsWords[i] ^ kWordMask)) {
            return kDcsCodes[i] + kDcsInverted;
        }
    }
    return -1;
}

} // namespace

constexpr std::array<std::uint16_t, kDcsCodeCount> kDcsCodes = {
    0006, 0007, 0015, 0017, 0021, 0023, 0025, 0026, 0031, 0032, 0036, 0043, 0047, 0050, 0051, 0053,
    0054, 0065, 0071, 0072, 0073, 0074, 0114, 0115, 0116, 0122, 0125, 0131, 0132, 0134, 0141, 0143,
    0145, 0152, 0155, 0156, 0162, 0165, 0172, 0174, 0205, 0212, 0214, 0223, 0225, 0226, 0243, 0244,
    0245, 0246, 0251, 0252, 0255, 0261, 0263, 0265, 0266, 0271, 0274, 0306, 0311, 0315, 0325, 0331,
    0332, 0343, 0346, 0351, 0356, 0364, 0365, 0371, 0411, 0412, 0413, 0423, 0431, 0432, 0445, 0446,
    0452, 0454, 0455, 0462, 0464, 0465, 0466, 0503, 0506, 0516, 0523, 0526, 0532, 0546, 0565, 0606,
    0612, 0624, 0627, 0631, 0632, 0654, 0662, 0664, 0703, 0712, 0723, 0731, 0732, 0734, 0743, 0754};

constexpr std::array<std::uint32_t, kDcsCodeCount> kDcsWords = MakeWords(kDcsCodes);

CtbDcsDetector::CtbDcsDetector() {
    filter.SetUpperFrequency(kCutoffHz);
    filter.SetKind(kFixedFirLowPass);
    filter.SetTaps(kFilterTaps);
    bitClock.SetCallback(
        [](void* detector, std::uint32_t bit) { static_cast<CtbDcsDetector*>(detector)->TakeBit(bit); },
        this);
    bitClock.SetBitRate(kBitsPerSecond);
    bitClock.SetGain(kClockGain);
    bitClock.SetRateGain(kClockRateGain);
    bitClock.Reset();
    SetSampleRate(kInitialRate);
}

void CtbDcsDetector::SetSampleRate(float rate) {
    if (rate == sampleRate || !resampler.Configure(kTapsPerBranch, rate, kTargetRate, kRateTolerance)) {
        return;
    }
    sampleRate = rate;
    reducedRate = static_cast<float>(static_cast<double>(rate) * resampler.GetUp() / resampler.GetDown());
    filter.SetFilterRate(reducedRate);
    bitClock.SetSampleRate(reducedRate);
}

void CtbDcsDetector::Process(const std::int16_t* samples, std::uint32_t count, std::uint32_t stride) {
    if (samples == nullptr || stride == 0) {
        return;
    }
    resampler.SetBlockLength(count / stride);
    const std::uint32_t reduced = resampler.Resample(nullptr, samples, count, stride);
    if (reduced > filter.GetBlockLength()) {
        filter.SetBlockLength(reduced);
    }
    const std::uint32_t filtered = filter.Filter(nullptr, resampler.Output(), reduced, 1);
    bitClock.Process(filter.Output(), filtered);
}

/// Bits of a word come from bit 0 on, and the word may begin anywhere: all rotations are tried.
void CtbDcsDetector::TakeBit(std::uint32_t bit) {
    shiftRegister >>= 1;
    if (bit != 0) {
        shiftRegister |= 1U << (kWordBits - 1);
    }
    bool matched = false;
    for (int rotation = 0; rotation < kWordBits; ++rotation) {
        const std::int32_t value = FindCode(shiftRegister);
        if (value >= 0) {
            if (!matched) {
                matchCount = 0;
                matched = true;
            }
            AddMatch(value);
        }
        shiftRegister = RotateRight(shiftRegister);
    }
}

void CtbDcsDetector::AddMatch(std::int32_t value) {
    const auto end = matches.begin() + matchCount;
    if (std::find(matches.begin(), end, value) == end) {
        matches[matchCount++] = value;
    }
}

} // namespace orva::squelch
