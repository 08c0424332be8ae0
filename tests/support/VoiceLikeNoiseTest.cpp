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
            power += sample * sample / (kRate / 50);
        }
        pauses += power < 1e-6 ? 1 : 0;
        loud += power > 0.01 ? 1 : 0;
    }
    EXPECT_GT(pauses, 50);
    EXPECT_GT(loud, 300);
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
