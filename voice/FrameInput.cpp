#include "voice/FrameInput.h"

#include "voice/CodeWords.h"
#include "voice/FixedPoint.h"

#include <algorithm>
#include <bit>
#include <span>

namespace orva::voice {

namespace {

constexpr int kGolayWords = 4;
constexpr int kHammingWords = 3;
constexpr int kUncodedBits = 7;
constexpr int kModulatedSamples = 114; // the words behind the first

int LargestSample(int softBits) {
    return (1 << softBits) - 1;
}

std::uint32_t HardWord(std::span<const std::uint8_t> samples, int softBits) {
    std::uint32_t word = 0;
    for (const std::uint8_t sample : samples) {
        word = (word << 1) | (static_cast<std::uint32_t>(sample) >> (softBits - 1));
    }
    return word;
}

// Bit masks of the least reliable samples, the least reliable first.
template <std::size_t Count>
std::array<std::uint32_t, Count> LeastReliable(std::span<const std::uint8_t> samples, int softBits) {
    std::array<std::uint32_t, Count> masks{};
    std::array<int, Count> reliabilities;
    reliabilities.fill(LargestSample(softBits) + 1); // above every sample's
    for (std::size_t i = samples.size(); i-- > 0;) {
        const int reliability = std::abs(2 * samples[i] + 1 - (1 << softBits));
        // Of equal reliabilities the one met first stays ahead.
        const auto place = static_cast<std::size_t>(
            std::ranges::find_if(reliabilities, [=](int held) { return reliability < held; }) -
            reliabilities.begin());
        if (place < Count) {
            std::move_backward(reliabilities.begin() + place, reliabilities.end() - 1, reliabilities.end());
            std::move_backward(masks.begin() + place, masks.end() - 1, masks.end());
            reliabilities[place] = reliability;
            masks[place] = 1U << (samples.size() - 1 - i);
        }
    }
    return masks;
}

// Squared distance between a code word and the samples, accumulated in 16 bits.
std::int16_t SoftMetric(std::span<const std::uint8_t> samples, int softBits, std::uint32_t word) {
    std::int16_t metric = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const bool one = ((word >> (samples.size() - 1 - i)) & 1U) != 0;
        const int distance = samples[i] - (one ? LargestSample(softBits) : 0);
        metric = To16Wrap(metric + distance * distance);
    }
    return metric;
}

// The procedure that both codes share. `candidate` gives the words to decode; number 0 is the hard word.
template <typename Candidates, typename Decode>
DecodedWord DecodeWord(std::span<const std::uint8_t> samples, int softBits, Candidates&& makeCandidates,
                       Decode&& decode) {
    const std::uint32_t hard = HardWord(samples, softBits);
    std::uint32_t best = decode(hard);
    std::int16_t metric = 0;
    if (softBits > 1 && best != hard) {
        metric = SoftMetric(samples, softBits, best);
        for (const std::uint32_t candidate : makeCandidates(hard)) {
            const std::uint32_t word = decode(candidate);
            const std::int16_t wordMetric = SoftMetric(samples, softBits, word);
            if (wordMetric < metric) {
                best = word;
                metric = wordMetric;
            }
        }
    }
    return {best, metric, static_cast<std::int16_t>(std::popcount(hard ^ best))};
}

std::uint8_t* WriteBits(std::uint8_t* to, std::uint32_t value, int count) {
    for (int bit = count - 1; bit >= 0; --bit) {
        *to++ = static_cast<std::uint8_t>((value >> bit) & 1U);
    }
    return to;
}

} // namespace

CodedSamples Deinterleave(const std::uint8_t* received) {
    constexpr int kGroups = 12;
    constexpr std::array<int, 12> kFirstPositions{0, 24, 48, 72, 96, 120, 25, 1, 73, 49, 121, 97};
    CodedSamples coded{};
    for (int group = 0; group < kGroups; ++group) {
        for (const int first : kFirstPositions) {
            const int position = 2 * group + first;
            coded[static_cast<std::size_t>(position)] = *received++;
        }
    }
    return coded;
}

void DemodulatePn(CodedSamples& samples, std::uint32_t seed, int softBits) {
    auto p = static_cast<std::uint16_t>(16 * seed);
    const int largest = LargestSample(softBits);
    for (std::uint8_t& sample : std::span(samples).subspan(kGolayLength, kModulatedSamples)) {
        p = static_cast<std::uint16_t>(173U * p + 13849U);
        if ((p & 0x8000U) != 0) {
            sample = static_cast<std::uint8_t>(largest - sample);
        }
    }
}

DecodedWord DecodeGolayWord(const std::uint8_t* samples, int softBits) {
    const std::span word(samples, kGolayLength);
    const auto combinations = [&](std::uint32_t hard) {
        const auto masks = LeastReliable<3>(word, softBits);
        std::array<std::uint32_t, 8> candidates{};
        for (std::size_t index = 0; index < candidates.size(); ++index) {
            candidates[index] = hard;
            for (std::size_t k = 0; k < masks.size(); ++k) {
                candidates[index] ^= ((index >> k) & 1U) != 0 ? masks[k] : 0;
            }
        }
        return candidates;
    };
    return DecodeWord(word, softBits, combinations, DecodeGolay);
}

DecodedWord DecodeHammingWord(const std::uint8_t* samples, int softBits) {
    const std::span word(samples, kHammingLength);
    const auto singles = [&](std::uint32_t hard) {
        const auto masks = LeastReliable<4>(word, softBits);
        return std::array<std::uint32_t, 5>{hard, hard ^ masks[0], hard ^ masks[1], hard ^ masks[2],
                                            hard ^ masks[3]};
    };
    return DecodeWord(word, softBits, singles, DecodeHamming);
}

void DecodeFrame(const std::uint8_t* received, int softBits, std::uint8_t* information,
                 ImbeDecoderState& state) {
    CodedSamples samples = Deinterleave(received);
    state.errorTotal = 0;
    state.softMetricTotal = 0;
    std::int16_t* wordErrors = state.wordErrors;
    const auto account = [&](const DecodedWord& decoded) {
        *wordErrors++ = decoded.errors;
        state.errorTotal = To16(state.errorTotal + decoded.errors);
        state.softMetricTotal = To16Wrap(state.softMetricTotal + decoded.metric);
    };

    const std::uint8_t* word = samples.data();
    for (int i = 0; i < kGolayWords; ++i, word += kGolayLength) {
        const DecodedWord decoded = DecodeGolayWord(word, softBits);
        const std::uint32_t value = decoded.word >> (kGolayLength - kGolayInformation);
        account(decoded);
        information = WriteBits(information, value, kGolayInformation);
        if (i == 0) {
            DemodulatePn(samples, value, softBits);
        }
    }
    for (int i = 0; i < kHammingWords; ++i, word += kHammingLength) {
        const DecodedWord decoded = DecodeHammingWord(word, softBits);
        account(decoded);
        information = WriteBits(information, decoded.word >> (kHammingLength - kHammingInformation),
                                kHammingInformation);
    }
    WriteBits(information, HardWord(std::span(word, kUncodedBits), softBits), kUncodedBits);
}

std::int16_t UpdateErrorStatistics(int softBits, ImbeDecoderState& state) {
    constexpr std::int16_t kMuteRateHard = 2867; // 0.0875
    constexpr std::int16_t kMuteRateSoft = 3932; // 0.12
    const bool hard = softBits < 2;
    const int errors = state.errorTotal;
    const int firstWordErrors = state.wordErrors[0];
    const int rate = state.errorRate;

    bool repeat = false;
    if (hard) {
        // 10 + 40 errorRate, at most 12.
        const int threshold = std::min((40 * (2 * rate + 16384)) >> 16, 12);
        repeat = errors >= threshold && firstWordErrors >= 2;
    } else {
        repeat = errors + firstWordErrors >= 19 && firstWordErrors >= 3;
    }

    // 0.95 errorRate + 0.000365 errors
    const std::uint32_t moved =
        783744U * static_cast<std::uint32_t>(errors) + 62260U * static_cast<std::uint32_t>(rate);
    state.errorRate = To16(static_cast<std::int32_t>(moved >> 16));
    const bool mute = state.errorRate > (hard ? kMuteRateHard : kMuteRateSoft);
    return static_cast<std::int16_t>((repeat ? kImbeFlagRepeat : 0) | (mute ? kImbeFlagMute : 0));
}

} // namespace orva::voice
