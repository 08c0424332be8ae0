/// Wave output and input on the machine's own devices. The input hears what the output plays: that is for
/// whoever runs this program to see to.

#include "audio/CtbWaveIn.h"
#include "audio/CtbWaveOut.h"
#include "tests/audio/BlockPool.h"
#include "toolkit/TmyApplication.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

constexpr std::uint32_t kOutputRate = 16000; ///< [Hz]
constexpr double kTone = 1000;               ///< [Hz]
constexpr std::uint32_t kBlockSamples = 1024;
constexpr std::size_t kPoolBlocks = 10;
constexpr std::uint32_t kBuffers = 32;
constexpr std::uint32_t kBufferSamples = 2400;
constexpr double kSeconds = 3;
constexpr DWORD kPatience = 10000; ///< [ms]

/// Collects all that is recorded.
class Recorder : public audio::IWaveInputOwner {
public:
    explicit Recorder(audio::CtbWaveIn& waveInput) : input(waveInput) {}

    void OnWaveInBuffer(std::int32_t index) override {
        const dsp::CtbSampleBlock* block = input.GetBlock(index);
        samples.insert(samples.end(), block->Data(), block->Data() + block->Used());
        input.Requeue(index);
    }

    std::vector<std::int16_t> samples;

private:
    audio::CtbWaveIn& input;
};

/// Share of the power of `count` samples that lies at `frequency`, 0 .. 1: a sum of products with a sine and
/// a cosine.
double ShareAt(double frequency, const std::int16_t* samples, std::size_t count, double rate) {
    double real = 0;
    double imaginary = 0;
    double power = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double angle = 2 * std::numbers::pi * frequency * static_cast<double>(i) / rate;
        real += samples[i] * std::cos(angle);
        imaginary += samples[i] * std::sin(angle);
        power += static_cast<double>(samples[i]) * samples[i];
    }
    return power == 0 ? 0 : 2 * (real * real + imaginary * imaginary) / (power * static_cast<double>(count));
}

TEST(RealDevices, HearsWhatIsPlayed) {
    audio::CtbWaveIn input(kBuffers, kBufferSamples);
    BlockPool pool(kPoolBlocks, kBlockSamples);
    audio::CtbWaveOut output(kOutputRate);
    if (input.GetDeviceCount() == 0 || output.GetDeviceCount() == 0) {
        GTEST_SKIP() << "no sound devices";
    }
    EXPECT_FALSE(input.GetDeviceName(0).empty());
    EXPECT_FALSE(output.GetDeviceName(0).empty());
    Recorder recorder(input);
    input.SetOwner(&recorder);
    input.SetDevice(0);
    ASSERT_TRUE(input.Open());
    output.SetDataSource(&pool);
    output.SetPrebufferBlocks(3);
    ASSERT_EQ(output.Start(), 0U);

    const auto wanted = static_cast<std::size_t>(kSeconds * audio::CtbWaveIn::kSampleRate);
    const DWORD start = GetTickCount();
    double phase = 0;
    std::size_t written = 0;
    while (recorder.samples.size() < wanted && GetTickCount() - start < kPatience) {
        while (dsp::CtbSampleBlock* block = pool.Take()) {
            for (std::uint32_t i = 0; i < kBlockSamples; ++i) {
                (*block)[i] = static_cast<std::int16_t>(std::lround(500 * std::sin(phase)));
                phase += 2 * std::numbers::pi * kTone / kOutputRate;
            }
            const std::size_t returned = pool.returned.size();
            output.Write(block);
            if (pool.returned.size() != returned) { // as many are at the device as may be
                phase -= kBlockSamples * 2 * std::numbers::pi * kTone / kOutputRate;
                break;
            }
            ++written;
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 100, QS_ALLINPUT);
        toolkit::TmyApplication::ProcessPendingMessages();
    }
    EXPECT_GE(recorder.samples.size(), wanted);

    EXPECT_EQ(output.Stop(), 0U);
    toolkit::TmyApplication::ProcessPendingMessages();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks) << "of " << written << " that were played";
    EXPECT_EQ(output.Close(), 0U);
    toolkit::TmyApplication::ProcessPendingMessages();
    input.Stop();
    toolkit::TmyApplication::ProcessPendingMessages();
    input.Close();
    toolkit::TmyApplication::ProcessPendingMessages();
    EXPECT_TRUE(input.Open()) << "the device has told that it is closed";

    // The tone at 20 times the amplitude, and nothing else. A busy machine may let the output run dry now and
    // then: one stretch without a gap is enough.
    constexpr std::size_t kStretch = audio::CtbWaveIn::kSampleRate / 5;
    double best = 0;
    std::int16_t loudest = 0;
    for (std::size_t first = 0; first + kStretch <= recorder.samples.size(); first += kStretch) {
        const std::int16_t* heard = recorder.samples.data() + first;
        const double share = ShareAt(kTone, heard, kStretch, audio::CtbWaveIn::kSampleRate);
        if (share > best) {
            best = share;
            loudest = *std::max_element(heard, heard + kStretch);
        }
    }
    EXPECT_GT(best, 0.999);
    EXPECT_NEAR(loudest, 10000, 100);
    std::printf("Heard: the tone has %.4f of the power, and a peak of %d.\n", best, loudest);
}

} // namespace
} // namespace orva::test
