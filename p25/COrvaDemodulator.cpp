#include "p25/COrvaDemodulator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>

namespace orva::p25 {

namespace {

constexpr double kReferenceRate = 48000.0;
constexpr std::uint32_t kLowPassLength = 32;
constexpr double kLowPassCutoffHz = 3000.0;
constexpr std::uint32_t kLowPassType = 1;

/// One value per symbol of the frame sync, in order of time.
constexpr std::array<double, 24> kSyncSigns = {+1, +1, +1, +1, +1, -1, +1, +1, -1, -1, +1, +1,
                                               -1, -1, -1, -1, +1, -1, +1, -1, -1, -1, -1, -1};

constexpr double kDcNew = 0.001;
constexpr double kDcOld = 0.999;
constexpr double kAverageNew = 0.0002;
constexpr double kAverageOld = 0.9998;
constexpr double kPeakFactor = -6.0; ///< a sync stands out this many times above the mean negative output

/// The sync has 13 negative and 11 positive symbols, so that its sum is negative at zero offset.
constexpr double kSyncSumOffset = 4.3;
constexpr double kHertzPerSum = 32.9; ///< from radians summed over the sync to hertz
constexpr double kMaxOffsetHz = 4000.0;

constexpr float kSliceThreshold = 0.165F; ///< radians per sample, at every rate
constexpr double kClockGain = 0.01;

constexpr std::uint32_t kFirstDibits = 100; ///< first size of the text, and what it grows by

/// Class of a discriminator sample: 0 is +1, 1 is +3, 2 is -1, 3 is -3.
std::int32_t ClassOf(float x) {
    if (x >= 0.0F) {
        return x <= kSliceThreshold ? 0 : 1;
    }
    return x > -kSliceThreshold ? 2 : 3;
}

/// A transition between +1 and -1 or +3 and -3: its crossing lies midway between the symbols.
bool AreOpposite(std::int32_t a, std::int32_t b) {
    return (a ^ b) == 2;
}

} // namespace

COrvaDemodulator::COrvaDemodulator() {
    Reset();
}

void COrvaDemodulator::SetSampleRate(std::uint32_t rate) {
    if (rate == sampleRate) {
        return;
    }
    sampleRate = rate;
    oscillatorReady = false;
    filtersReady = false;
    correlatorReady = false;
    samplesPerSymbol = static_cast<float>(static_cast<double>(sampleRate) / symbolRate);
    rateRatio = static_cast<float>(sampleRate / kReferenceRate);
}

void COrvaDemodulator::SetCentreFrequency(std::uint32_t hz) {
    centreFrequency = hz;
    mixFrequency = hz;
}

void COrvaDemodulator::SetSymbolRate(float rate) {
    if (rate == symbolRate || !(rate > 0.0F)) {
        return;
    }
    symbolRate = rate;
    samplesPerSymbol = static_cast<float>(static_cast<double>(sampleRate) / symbolRate);
    correlatorReady = false;
}

void COrvaDemodulator::Reset() {
    oscillatorPhase = 0;
    prevLagging = 0;
    prevInPhase = 0;
    symbolClock = 0;
    lowPassLagging.ClearHistory();
    lowPassInPhase.ClearHistory();
    mixFrequency = centreFrequency;
}

std::int32_t COrvaDemodulator::Process(const float* samples, std::int32_t count) {
    if (samples == nullptr || count < 1 || sampleRate == 0) {
        return -1;
    }
    if (!BuildLowPassPair() || !BuildCorrelator() || !BuildOscillator() || !PrepareArrays(count)) {
        return -1;
    }
    Mix(samples, count);
    lowPassLagging.Filter(laggingBuffer.Data(), laggingBuffer.Data(), count);
    lowPassInPhase.Filter(inPhaseBuffer.Data(), inPhaseBuffer.Data(), count);
    Discriminate(count);
    RemoveDc(count);
    correlator.Filter(correlated.Data() + 2, correlated.Data() + 2, count);
    FindSync(count);
    CarryCorrelated(count);
    KeepHistory(count);
    return RecoverSymbols(count);
}

bool COrvaDemodulator::BuildLowPassPair() {
    if (filtersReady) {
        return true;
    }
    for (dsp::TFIR_F32* filter : {&lowPassLagging, &lowPassInPhase}) {
        if (!filter->SetLength(kLowPassLength) || !filter->SetSampleRate(sampleRate) ||
            !filter->SetFilterType(kLowPassType)) {
            return false;
        }
        filter->SetHighCut(kLowPassCutoffHz);
    }
    filtersReady = true;
    return true;
}

bool COrvaDemodulator::BuildCorrelator() {
    if (correlatorReady) {
        return true;
    }
    // In double: as a float product 64000 Hz would give 320.
    correlatorLength = static_cast<std::int32_t>(static_cast<double>(samplesPerSymbol) * kSyncSigns.size());
    if (correlatorLength < 1 || !correlator.SetLength(static_cast<std::uint32_t>(correlatorLength))) {
        return false;
    }
    // The filter's length is a multiple of four; what the pattern leaves over is the newest end, and counts
    // nothing.
    dsp::CtbBasicSampleBlock<double> taps;
    if (taps.Acquire(correlator.GetLength()) == nullptr ||
        history.Acquire(static_cast<std::uint32_t>(correlatorLength)) == nullptr) {
        return false;
    }
    double position = 0.0;
    std::size_t symbol = 0;
    for (std::int32_t i = 0; i < correlatorLength; ++i) {
        // The length is 1 at least. NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete)
        taps[static_cast<std::uint32_t>(i)] = kSyncSigns[std::min(symbol, kSyncSigns.size() - 1)];
        position += 1.0;
        if (position >= samplesPerSymbol) {
            position -= samplesPerSymbol;
            ++symbol;
        }
    }
    correlator.SetTaps(taps.Data(), true);
    correlator.ClearHistory();
    std::fill_n(history.Data(), correlatorLength, 0.0F);
    correlatorReady = true;
    return true;
}

bool COrvaDemodulator::BuildOscillator() {
    if (oscillatorReady) {
        return true;
    }
    if (oscillatorTable.Acquire(sampleRate) == nullptr) {
        return false;
    }
    for (std::uint32_t i = 0; i < sampleRate; ++i) {
        oscillatorTable[i] = static_cast<float>(std::cos(2.0 * std::numbers::pi * i / sampleRate));
    }
    oscillatorPhase = 0;
    quarterCycle = sampleRate >> 2;
    oscillatorReady = true;
    return true;
}

bool COrvaDemodulator::PrepareArrays(std::int32_t count) {
    const auto size = static_cast<std::uint32_t>(count);
    return (dibits.Data() != nullptr || dibits.Acquire(kFirstDibits) != nullptr) &&
           laggingBuffer.Acquire(size) != nullptr && inPhaseBuffer.Acquire(size) != nullptr &&
           discriminated.Acquire(size) != nullptr && correlated.Acquire(size + 2) != nullptr && PrepareRing();
}

bool COrvaDemodulator::PrepareRing() {
    // Sized once: the first rate's length stays in force.
    if (ring.Data() != nullptr) {
        return true;
    }
    ringLength = static_cast<std::int32_t>(samplesPerSymbol + 1.0);
    ringIndex = 0;
    return ring.Acquire(static_cast<std::uint32_t>(ringLength)) != nullptr;
}

void COrvaDemodulator::Mix(const float* samples, std::int32_t count) {
    // An entry per hertz makes every whole frequency exact; the step holds for the block.
    const auto rate = static_cast<std::int64_t>(sampleRate);
    const auto wrapped = (static_cast<std::int64_t>(mixFrequency) % rate + rate) % rate;
    const auto step = static_cast<std::uint32_t>(wrapped);
    const float* table = oscillatorTable.Data();
    float* inPhase = inPhaseBuffer.Data();
    float* lagging = laggingBuffer.Data();
    std::uint32_t phase = oscillatorPhase;
    for (std::int32_t n = 0; n < count; ++n) {
        std::uint32_t quarter = phase + quarterCycle;
        quarter -= quarter >= sampleRate ? sampleRate : 0;
        inPhase[n] = samples[n] * table[phase];
        lagging[n] = samples[n] * table[quarter];
        phase += step;
        phase -= phase >= sampleRate ? sampleRate : 0;
    }
    oscillatorPhase = phase;
}

void COrvaDemodulator::Discriminate(std::int32_t count) {
    const float* lagging = laggingBuffer.Data();
    const float* inPhase = inPhaseBuffer.Data();
    float* output = discriminated.Data();
    double lastA = prevLagging;
    double lastB = prevInPhase;
    for (std::int32_t n = 0; n < count; ++n) {
        const double a = lagging[n];
        const double b = inPhase[n];
        // Against the present power, not against the product with the previous sample.
        const double power = a * a + b * b;
        output[n] = power == 0.0 ? 0.0F : static_cast<float>(std::atan2(lastB * a - lastA * b, power));
        lastA = a;
        lastB = b;
    }
    prevLagging = lagging[count - 1];
    prevInPhase = inPhase[count - 1];
}

void COrvaDemodulator::RemoveDc(std::int32_t count) {
    const float* input = discriminated.Data();
    float* output = correlated.Data() + 2;
    for (std::int32_t n = 0; n < count; ++n) {
        dcStage1 = static_cast<float>(kDcNew * input[n] + kDcOld * dcStage1);
        dcStage2 = static_cast<float>(kDcNew * dcStage1 + kDcOld * dcStage2);
        output[n] = input[n] - dcStage2;
    }
}

void COrvaDemodulator::FindSync(std::int32_t count) {
    const float* value = correlated.Data();
    for (std::int32_t i = 1; i <= count; ++i) {
        if (value[i] < 0.0F) {
            negativeAverage =
                negativeAverage == 0.0F
                    ? value[i]
                    : static_cast<float>(kAverageNew * value[i] + kAverageOld * negativeAverage);
        }
        // Until the first negative output the limit is 0 and every local maximum above it counts.
        if (value[i - 1] < value[i] && value[i + 1] < value[i] && value[i] > kPeakFactor * negativeAverage) {
            CorrectFrequency(i - 1);
        }
    }
}

/// Steers the oscillator by the mean of the `correlatorLength` discriminator samples before index `end`.
void COrvaDemodulator::CorrectFrequency(std::int32_t end) {
    double sum = 0.0;
    for (std::int32_t i = end - correlatorLength; i < end; ++i) {
        sum += i < 0 ? history[static_cast<std::uint32_t>(correlatorLength + i)]
                     : discriminated[static_cast<std::uint32_t>(i)];
    }
    const auto correction =
        static_cast<float>((static_cast<double>(static_cast<float>(sum)) + kSyncSumOffset) * kHertzPerSum);
    mixFrequency += correction;
    if (mixFrequency < centreFrequency - kMaxOffsetHz || mixFrequency > centreFrequency + kMaxOffsetHz) {
        // Not clamped: a wild reading starts the search again from the nominal frequency.
        mixFrequency = centreFrequency;
    }
}

void COrvaDemodulator::CarryCorrelated(std::int32_t count) {
    // Not the last two outputs but the two before them: the next block compares against these positions.
    if (count >= 2) {
        correlated[0] = correlated[static_cast<std::uint32_t>(count - 2)];
    }
    correlated[1] = correlated[static_cast<std::uint32_t>(count - 1)];
}

void COrvaDemodulator::KeepHistory(std::int32_t count) {
    const float* block = discriminated.Data();
    float* kept = history.Data();
    if (count < correlatorLength) {
        std::copy(kept + count, kept + correlatorLength, kept);
        std::copy_n(block, count, kept + (correlatorLength - count));
    } else {
        std::copy_n(block + (count - correlatorLength), correlatorLength, kept);
    }
}

std::int32_t COrvaDemodulator::RecoverSymbols(std::int32_t count) {
    std::int32_t produced = 0;
    for (std::int32_t i = 0; i < count; ++i) {
        const float x = discriminated[static_cast<std::uint32_t>(i)];
        ring[static_cast<std::uint32_t>(ringIndex)] = x;
        ringIndex = ringIndex + 1 == ringLength ? 0 : ringIndex + 1;
        if (prevSample * x < 0.0F) {
            NoteCrossing(i);
        }
        prevSample = x;
        if (i == midSymbolIndex) {
            midSymbolIndex = -1;
            CorrectClock(x);
        }
        symbolClock += 1.0F;
        if (symbolClock >= samplesPerSymbol) {
            symbolClock -= samplesPerSymbol;
            const std::int32_t symbolClass = ClassOf(x);
            if (!AppendDibit(produced, symbolClass)) {
                return -1;
            }
            if (observer != nullptr) {
                observer->OnSymbol(x, symbolClass);
            }
            ++produced;
        }
    }
    if (midSymbolIndex > 0) {
        midSymbolIndex -= count;
    }
    return produced;
}

/// Remembers the clock and the symbol before a zero crossing; the symbol behind it is looked at half a symbol
/// later.
void COrvaDemodulator::NoteCrossing(std::int32_t index) {
    crossingClock = symbolClock;
    const auto back = static_cast<std::int32_t>(ringIndex + ringLength - 0.5 * samplesPerSymbol);
    const std::int32_t place = (back % ringLength + ringLength) % ringLength;
    crossingClass = ClassOf(ring[static_cast<std::uint32_t>(place)]);
    midSymbolIndex = static_cast<std::int32_t>(index + 0.5 * samplesPerSymbol);
}

void COrvaDemodulator::CorrectClock(float sample) {
    if (AreOpposite(ClassOf(sample), crossingClass)) {
        symbolClock = static_cast<float>(symbolClock + kClockGain * (0.5 * samplesPerSymbol - crossingClock));
    }
}

bool COrvaDemodulator::AppendDibit(std::int32_t count, std::int32_t symbolClass) {
    const auto position = static_cast<std::uint32_t>(count);
    if (dibits.Capacity() <= position + 1 && dibits.Grow(position + kFirstDibits) == nullptr) {
        return false;
    }
    dibits[position] = static_cast<char>('0' + symbolClass);
    dibits[position + 1] = '\0';
    return true;
}

} // namespace orva::p25
