#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

std::vector<double> Take(VoiceLikeNoise& voice, std::size_t count) {
    std::vector<double> samples(count);
    std::generate(samples.begin(), samples.end(), [&] { return voice.Next(); });
    return samples;
}

} // namespace

TEST(VoiceLikeNoise, StaysWithinFullScaleAndReachesItsPeak) {
    for (const int rate : {8000, 48000, 64000}) {
        VoiceLikeNoise voice({.sampleRate = rate});
        const auto samples = Take(voice, static_cast<std::size_t>(10 * rate));
        const auto [least, greatest] = std::minmax_element(samples.begin(), samples.end());
        EXPECT_GE(*least, -1.0) << rate;
        EXPECT_LE(*greatest, 1.0) << rate;
        EXPECT_GT(*greatest, 0.4) << rate;
    }
}

TEST(VoiceLikeNoise, HasPausesAndLoudStretches) {
    constexpr int kRate = 16000;
    VoiceLikeNoise voice({.sampleRate = kRate});
    int pauses = 0;
    int loud = 0;
    for (int part = 0; part < 1000; ++part) {
        double power = 0.0;
        for (const double sample : Take(voice, kRate / 50)) {
            power += sample * sample * 50.0 / kRate;
        }
        pauses += power < 1e-6 ? 1 : 0;
        loud += power > 0.01 ? 1 : 0;
    }
    EXPECT_GT(pauses, 50);
    EXPECT_GT(loud, 300);
}

TEST(VoiceLikeNoise, DictationPausesInEveryHalfSecond) {
    constexpr int kRate = 48000;
    constexpr int kHalves = 40;
    constexpr std::size_t kHalf = kRate / 2;
    VoiceLikeNoise voice({.sampleRate = kRate, .peak = 5.0, .rhythm = VoiceRhythm::Dictated});
    std::size_t limited = 0;
    for (int half = 0; half < kHalves; ++half) {
        const auto samples = Take(voice, kHalf);
        EXPECT_GT(std::count(samples.begin(), samples.end(), 0.0), 0.1 * kRate) << half;
        const auto isLimited = [](double sample) { return std::abs(sample) == 1.0; };
        limited += static_cast<std::size_t>(std::count_if(samples.begin(), samples.end(), isLimited));
    }
    const double share = static_cast<double>(limited) / (kHalves * static_cast<double>(kHalf));
    EXPECT_GT(share, 0.1);
    EXPECT_LT(share, 0.2);
}

TEST(VoiceLikeNoise, IsTheSameAtEveryRun) {
    VoiceLikeNoise one({.seed = 5});
    VoiceLikeNoise same({.seed = 5});
    VoiceLikeNoise other({.seed = 6});
    const auto samples = Take(one, 48000);
    EXPECT_EQ(Take(same, 48000), samples);
    EXPECT_NE(Take(other, 48000), samples);
}

} // namespace orva::test
