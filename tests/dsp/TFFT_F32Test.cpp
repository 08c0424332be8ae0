#include "dsp/TFFT_F32.h"

#include "dsp/FftTables.h"
#include "dsp/LastError.h"
#include "tests/dsp/FilterReference.h"
#include "tests/dsp/ForcedDispatch.h"
#include "tests/support/AllocationProbe.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace orva::dsp {

struct TFFT_F32Inspector {
    static void SetMirror(TFFT_F32& fft, bool mirror) { fft.mirror = mirror; }
    /// In force from the next change of size on.
    static void SetWindowKind(TFFT_F32& fft, std::uint32_t kind) { fft.windowKind = kind; }
    static std::uint32_t WindowKind(const TFFT_F32& fft) { return fft.windowKind; }
    static std::uint32_t HalfSize(const TFFT_F32& fft) { return fft.halfSize; }
    static const float* Work(const TFFT_F32& fft) { return fft.work; }
    static const float* WindowF32(const TFFT_F32& fft) { return fft.windowF32; }
    static const float* WindowI16(const TFFT_F32& fft) { return fft.windowI16; }
    static const float* WindowI32(const TFFT_F32& fft) { return fft.windowI32; }
    static double WindowGain(const TFFT_F32& fft) { return fft.windowGain; }
    static const float* Twiddles(const TFFT_F32& fft) { return fft.twiddles; }
    static const std::uint32_t* BitReversal(const TFFT_F32& fft) { return fft.bitReversal; }
};

namespace {

using Inspector = TFFT_F32Inspector;
using std::numbers::pi;
using test::AllocationFailure;
using test::ForcedDispatch;

constexpr std::uint32_t kWithSse = kFeatureSse | kFeatureSse2;
constexpr double kFloor = -140.0;
/// The table logarithm reads up to one of 512 steps of the mantissa low.
constexpr double kTableStep = 0.0087;

/// The parametric Blackman window of n points, as doubles that sum to 1.
std::vector<double> UnitWindow(std::size_t n) {
    std::vector<double> window(n);
    double sum = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const double x = 2.0 * pi * static_cast<double>(i) / static_cast<double>(n - 1);
        window[i] = 0.42 - 0.5 * std::cos(x) + 0.08 * std::cos(2.0 * x);
        sum += window[i];
    }
    for (double& weight : window) {
        weight /= sum;
    }
    return window;
}

/// Decibels of a plain transform in double: an amplitude of 1 at a bin's centre, and a constant 1, are 0 dB.
std::vector<double> DirectSpectrum(const std::vector<float>& in) {
    const std::size_t n = in.size();
    const std::vector<double> window = UnitWindow(n);
    std::vector<double> decibels(n / 2);
    for (std::size_t k = 0; k < n / 2; ++k) {
        std::complex<double> sum = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            const double angle = -2.0 * pi * static_cast<double>(k * i % n) / static_cast<double>(n);
            sum += in[i] * window[i] * std::polar(1.0, angle);
        }
        const double amplitude = std::abs(sum) * (k == 0 ? 1.0 : 2.0);
        decibels[k] = std::clamp(20.0 * std::log10(amplitude + 1e-15), kFloor, 0.0);
    }
    return decibels;
}

std::vector<float> Compute(TFFT_F32& fft, const std::vector<float>& in) {
    std::vector<float> out(in.size() / 2);
    EXPECT_TRUE(fft.ComputeSpectrum(out.data(), in.data()));
    return out;
}

std::vector<float> MakeSine(std::size_t n, double bin, double amplitude = 1.0, double phase = 0.3) {
    std::vector<float> samples(n);
    for (std::size_t i = 0; i < n; ++i) {
        samples[i] = static_cast<float>(
            amplitude * std::sin(2.0 * pi * bin * static_cast<double>(i) / static_cast<double>(n) + phase));
    }
    return samples;
}

std::vector<float> MakeNoise(std::size_t n) {
    test::Noise noise(static_cast<std::uint32_t>(n));
    std::vector<float> samples(n);
    for (float& sample : samples) {
        sample = static_cast<float>(noise.Next());
    }
    return samples;
}

class TFFT_F32Kernels : public testing::TestWithParam<std::uint32_t> {
private:
    ForcedDispatch forced{GetParam()};
};

TEST_P(TFFT_F32Kernels, AgreeWithADirectTransform) {
    for (const std::uint32_t size : {16U, 32U, 64U, 128U, 256U, 512U, 1024U}) {
        TFFT_F32 fft;
        ASSERT_TRUE(fft.SetSize(size));
        const std::vector<float> in = MakeNoise(size);
        const std::vector<float> out = Compute(fft, in);
        const std::vector<double> expected = DirectSpectrum(in);
        for (std::size_t k = 0; k < out.size(); ++k) {
            EXPECT_LE(out[k], expected[k] + 0.002) << "size " << size << " bin " << k;
            EXPECT_GE(out[k], expected[k] - kTableStep - 0.002) << "size " << size << " bin " << k;
        }
    }
}

TEST_P(TFFT_F32Kernels, ReadAFullScaleSineAsZeroDecibels) {
    for (const std::uint32_t size : {128U, 2048U}) {
        TFFT_F32 fft;
        ASSERT_TRUE(fft.SetSize(size));
        for (const std::size_t bin :
             {std::size_t{5}, std::size_t{size / 8}, std::size_t{size / 4}, std::size_t{size / 2 - 5}}) {
            const std::vector<float> out = Compute(fft, MakeSine(size, static_cast<double>(bin)));
            EXPECT_NEAR(out[bin], 0.0, 0.01) << "size " << size << " bin " << bin;
            EXPECT_EQ(std::max_element(out.begin(), out.end()) - out.begin(),
                      static_cast<std::ptrdiff_t>(bin));
        }
    }
}

TEST_P(TFFT_F32Kernels, ReadNothingAboveZeroDecibels) {
    TFFT_F32 fft;
    std::vector<float> loud = MakeSine(128, 20.0, 1000.0);
    for (const float value : Compute(fft, loud)) {
        EXPECT_LE(value, 0.0F);
    }
    std::fill(loud.begin(), loud.end(), 1e30F);
    EXPECT_EQ(Compute(fft, loud)[0], 0.0F);
}

TEST_P(TFFT_F32Kernels, ReadSilenceAsTheFloor) {
    TFFT_F32 fft;
    for (const float value : Compute(fft, std::vector<float>(128, 0.0F))) {
        EXPECT_EQ(value, -140.0F);
    }
}

TEST_P(TFFT_F32Kernels, ReadDirectCurrentAsZeroDecibelsInBinZero) {
    TFFT_F32 fft;
    ASSERT_TRUE(fft.SetSize(2048));
    const std::vector<float> out = Compute(fft, std::vector<float>(2048, 1.0F));
    EXPECT_NEAR(out[0], 0.0, 0.01);
    for (std::size_t k = 5; k < out.size(); ++k) {
        EXPECT_LT(out[k], -60.0F) << "bin " << k;
    }
}

TEST_P(TFFT_F32Kernels, ReadLevelsInDecibels) {
    TFFT_F32 fft;
    ASSERT_TRUE(fft.SetSize(512));
    for (const double level : {-20.0, -60.0, -90.0}) {
        const std::vector<float> out = Compute(fft, MakeSine(512, 100.0, std::pow(10.0, level / 20.0)));
        EXPECT_NEAR(out[100], level, 0.01);
    }
}

TEST_P(TFFT_F32Kernels, DropTheValueAtTheNyquistFrequency) {
    TFFT_F32 fft;
    ASSERT_TRUE(fft.SetSize(512));
    std::vector<float> alternating(512);
    for (std::size_t i = 0; i < alternating.size(); ++i) {
        alternating[i] = i % 2 == 0 ? 1.0F : -1.0F;
    }
    const std::vector<float> out = Compute(fft, alternating);
    EXPECT_LT(out[0], -100.0F);
    EXPECT_LT(out[250], -60.0F);
}

TEST_P(TFFT_F32Kernels, ReadNotANumberAsTheFloor) {
    TFFT_F32 fft;
    const std::vector<float> out = Compute(fft, std::vector<float>(128, std::nanf("")));
    for (const float value : out) {
        EXPECT_EQ(value, -140.0F);
    }
}

TEST_P(TFFT_F32Kernels, WorkInPlaceAndUnaligned) {
    const std::vector<float> in = MakeNoise(256);
    TFFT_F32 fft;
    ASSERT_TRUE(fft.SetSize(256));
    const std::vector<float> expected = Compute(fft, in);
    for (std::size_t offset = 0; offset < 5; ++offset) {
        std::vector<float> data(offset);
        data.insert(data.end(), in.begin(), in.end());
        ASSERT_TRUE(fft.ComputeSpectrum(data.data() + offset, data.data() + offset));
        for (std::size_t k = 0; k < 256; ++k) {
            ASSERT_EQ(data[offset + k], k < 128 ? expected[k] : in[k])
                << "offset " << offset << " entry " << k;
        }
    }
}

TEST_P(TFFT_F32Kernels, AllocateNothingOnceWarm) {
    TFFT_F32 fft;
    const std::vector<float> in = MakeNoise(128);
    std::vector<float> out(64);
    ASSERT_TRUE(fft.ComputeSpectrum(out.data(), in.data()));
    const std::uint64_t before = test::CountAllocations();
    for (int i = 0; i < 10; ++i) {
        fft.ComputeSpectrum(out.data(), in.data());
    }
    EXPECT_EQ(test::CountAllocations(), before);
}

TEST_P(TFFT_F32Kernels, ReverseTheSpectrumWhenMirrored) {
    TFFT_F32 fft;
    const std::vector<float> in = MakeNoise(128);
    std::vector<float> expected = Compute(fft, in);
    std::reverse(expected.begin(), expected.end());
    Inspector::SetMirror(fft, true);
    EXPECT_EQ(Compute(fft, in), expected);
}

INSTANTIATE_TEST_SUITE_P(TFFT_F32, TFFT_F32Kernels, testing::Values(0U, kWithSse),
                         [](const auto& word) { return word.param == 0 ? "X87" : "Sse"; });

// Sizes

TEST(TFFT_F32SetSize, StartsAt128WithItsMemory) {
    const TFFT_F32 fft;
    EXPECT_EQ(fft.GetSize(), 128U);
    EXPECT_EQ(Inspector::HalfSize(fft), 64U);
    EXPECT_EQ(Inspector::WindowKind(fft), 4U);
    EXPECT_NE(Inspector::Work(fft), nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(Inspector::Work(fft)) % 16, 0U);
}

TEST(TFFT_F32SetSize, RefusesWhatIsNoPowerOfTwoOfAtLeastSixteen) {
    TFFT_F32 fft;
    for (const std::uint32_t size : {0U, 1U, 8U, 15U, 17U, 1000U, 0xFFFFFFFFU}) {
        SetErrorState(kErrorNone);
        EXPECT_FALSE(fft.SetSize(size)) << size;
        EXPECT_EQ(GetErrorState(), 87U);
        EXPECT_EQ(fft.GetSize(), 128U);
    }
}

TEST(TFFT_F32SetSize, TakesSixteen) {
    TFFT_F32 fft;
    SetErrorState(kErrorInvalidParameter);
    EXPECT_TRUE(fft.SetSize(16));
    EXPECT_EQ(GetErrorState(), 0U);
    EXPECT_EQ(fft.GetSize(), 16U);
    EXPECT_EQ(Inspector::HalfSize(fft), 8U);
    const std::vector<float> work(Inspector::Work(fft), Inspector::Work(fft) + 16);
    EXPECT_EQ(work, std::vector<float>(16, 0.0F));
}

TEST(TFFT_F32SetSize, DoesNothingForTheSizeInForce) {
    TFFT_F32 fft;
    const std::uint64_t before = test::CountAllocations();
    SetErrorState(kErrorInvalidParameter);
    EXPECT_TRUE(fft.SetSize(128));
    EXPECT_EQ(GetErrorState(), 0U);
    EXPECT_EQ(test::CountAllocations(), before);
}

TEST(TFFT_F32SetSize, LeavesNoSizeWhenMemoryIsShort) {
    TFFT_F32 fft;
    {
        const AllocationFailure failure(0);
        EXPECT_FALSE(fft.SetSize(256));
    }
    EXPECT_EQ(GetErrorState(), 8U);
    EXPECT_EQ(fft.GetSize(), 0U);
    std::vector<float> in(256, 0.5F);
    float out[128] = {7.0F};
    EXPECT_FALSE(fft.ComputeSpectrum(out, in.data()));
    EXPECT_EQ(out[0], 7.0F);
    EXPECT_TRUE(fft.SetSize(128));
    EXPECT_TRUE(fft.ComputeSpectrum(out, in.data()));
}

TEST(TFFT_F32, WithoutMemoryAtConstructionHasNoSize) {
    const AllocationFailure failure(0);
    TFFT_F32 fft;
    EXPECT_EQ(fft.GetSize(), 0U);
    EXPECT_EQ(GetErrorState(), 8U);
    EXPECT_TRUE(fft.SetSize(128));
}

TEST(TFFT_F32, LeavesTheOutputAloneWithoutTables) {
    const std::vector<float> in(4096, 0.5F);
    for (int successes = 0; successes < 5; ++successes) {
        TFFT_F32 fft;
        ASSERT_TRUE(fft.SetSize(4096));
        std::vector<float> out(2048, 7.0F);
        {
            const AllocationFailure failure(successes);
            EXPECT_FALSE(fft.ComputeSpectrum(out.data(), in.data())) << successes;
            EXPECT_TRUE(failure.HasStruck());
        }
        EXPECT_EQ(GetErrorState(), 8U);
        EXPECT_EQ(out, std::vector<float>(2048, 7.0F));
        const FftTableReferences references = CountFftTableReferences(4096);
        EXPECT_EQ(references.twiddles, 0U);
        EXPECT_EQ(references.bitReversal, 0U);
        EXPECT_TRUE(fft.ComputeSpectrum(out.data(), in.data()));
    }
}

// Windows

TEST(TFFT_F32Windows, SumToOneOverTheWholeBlock) {
    TFFT_F32 fft;
    for (const std::uint32_t size : {16U, 128U, 2048U}) {
        ASSERT_TRUE(fft.SetSize(size));
        const std::vector<double> expected = UnitWindow(size);
        for (std::size_t i = 0; i < size / 2; ++i) {
            EXPECT_NEAR(Inspector::WindowF32(fft)[i], expected[i], 1e-7 * expected[size / 2])
                << "entry " << i;
            EXPECT_FLOAT_EQ(Inspector::WindowI16(fft)[i], Inspector::WindowF32(fft)[i] / 32768.0F);
            EXPECT_FLOAT_EQ(Inspector::WindowI32(fft)[i], Inspector::WindowF32(fft)[i] / 2147483648.0F);
        }
        double sum = 0.0;
        for (std::size_t i = 0; i < size / 2; ++i) {
            const double x = 2.0 * pi * static_cast<double>(i) / (size - 1);
            sum += 0.42 - 0.5 * std::cos(x) + 0.08 * std::cos(2.0 * x);
        }
        EXPECT_NEAR(Inspector::WindowGain(fft), 0.5 / sum, 1e-12);
    }
}

TEST(TFFT_F32Windows, OfKindZeroAreOneOverTheSize) {
    TFFT_F32 fft;
    Inspector::SetWindowKind(fft, 0);
    ASSERT_TRUE(fft.SetSize(64));
    for (std::size_t i = 0; i < 32; ++i) {
        EXPECT_EQ(Inspector::WindowF32(fft)[i], 1.0F / 64.0F);
    }
    const std::vector<float> out = Compute(fft, MakeSine(64, 10.0));
    EXPECT_NEAR(out[10], 0.0, 0.01);
    EXPECT_LT(out[11], -100.0F);
}

// Shared tables

TEST(TFFT_F32Tables, HoldTwiddlesAndBitReversal) {
    TFFT_F32 fft;
    ASSERT_TRUE(fft.SetSize(64));
    EXPECT_EQ(Inspector::Twiddles(fft), nullptr);
    Compute(fft, MakeNoise(64));
    const float* twiddles = Inspector::Twiddles(fft);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(twiddles) % 16, 0U);
    for (std::size_t i = 0; i < 32; ++i) {
        const double t = 2.0 * pi * static_cast<double>(i) / 64.0;
        EXPECT_NEAR(twiddles[2 * i], -std::sin(t), 1e-7) << "entry " << i;
        EXPECT_NEAR(twiddles[2 * i + 1], std::cos(t), 1e-7) << "entry " << i;
        std::uint32_t reversed = 0;
        for (std::uint32_t bit = 0; bit < 5; ++bit) {
            reversed = 2 * reversed + (static_cast<std::uint32_t>(i) >> bit & 1U);
        }
        EXPECT_EQ(Inspector::BitReversal(fft)[i], 2 * reversed) << "entry " << i;
    }
}

TEST(TFFT_F32Tables, AreSharedBySizeAndCounted) {
    const std::vector<float> in = MakeNoise(2048);
    TFFT_F32 first;
    ASSERT_TRUE(first.SetSize(2048));
    EXPECT_EQ(CountFftTableReferences(2048).twiddles, 0U);
    const std::vector<float> expected = Compute(first, in);
    {
        TFFT_F32 second;
        ASSERT_TRUE(second.SetSize(2048));
        Compute(second, in);
        EXPECT_EQ(Inspector::Twiddles(first), Inspector::Twiddles(second));
        EXPECT_EQ(Inspector::BitReversal(first), Inspector::BitReversal(second));
        EXPECT_EQ(CountFftTableReferences(2048).twiddles, 2U);
        EXPECT_EQ(CountFftTableReferences(2048).bitReversal, 2U);
        Compute(second, in);
        EXPECT_EQ(CountFftTableReferences(2048).twiddles, 2U);
    }
    EXPECT_EQ(CountFftTableReferences(2048).twiddles, 1U);
    EXPECT_EQ(Compute(first, in), expected);
    ASSERT_TRUE(first.SetSize(1024));
    EXPECT_EQ(CountFftTableReferences(2048).twiddles, 0U);
    EXPECT_EQ(CountFftTableReferences(2048).bitReversal, 0U);
}

TEST(TFFT_F32Tables, OfDifferentSizesLiveSideBySide) {
    TFFT_F32 transforms[4];
    const std::uint32_t sizes[4] = {16, 32, 64, 256};
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 0; i < 4; ++i) {
            ASSERT_TRUE(transforms[i].SetSize(sizes[(i + static_cast<std::size_t>(round)) % 4]));
            Compute(transforms[i], MakeNoise(transforms[i].GetSize()));
        }
    }
    for (const std::uint32_t size : sizes) {
        EXPECT_EQ(CountFftTableReferences(size).twiddles, 1U) << size;
    }
}

TEST(TFFT_F32, IsNotCopiedAndHasAVirtualDestructor) {
    EXPECT_FALSE(std::is_copy_constructible_v<TFFT_F32>);
    EXPECT_TRUE(std::has_virtual_destructor_v<TFFT_F32>);
}

} // namespace
} // namespace orva::dsp
