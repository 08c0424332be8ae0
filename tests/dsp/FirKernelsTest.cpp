// Every kernel of every family: 7 formats by 3 modes, single samples and pairs, against direct computation.

#include "dsp/TFIR_F32.h"
#include "dsp/TFIR_F32_2CH.h"
#include "tests/dsp/FilterReference.h"
#include "tests/dsp/ForcedDispatch.h"
#include "tests/support/AllocationProbe.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace orva::dsp {
namespace {

using test::FamilyWord;
using test::ForcedDispatch;
using test::Noise;
using test::RateRatio;
using test::ReferenceSample;

/// A filter type, how many channels it has, and the format that a test sends through it.
template <class FilterType, int channelCount, class OutType, class InType>
struct Route {
    using Filter = FilterType;
    using Out = OutType;
    using In = InType;
    static constexpr int kChannels = channelCount;

    static std::int32_t Run(Filter& filter, Out* out, const In* in, std::int32_t count) {
        constexpr bool kFromI16 = std::is_same_v<In, std::int16_t>;
        constexpr bool kFromI32 = std::is_same_v<In, std::int32_t>;
        if constexpr (kFromI16 && std::is_same_v<Out, std::int16_t>) {
            return filter.FilterI16(out, in, count);
        } else if constexpr (kFromI16) {
            return filter.FilterI16ToF32(out, in, count);
        } else if constexpr (kFromI32 && std::is_same_v<Out, std::int32_t>) {
            return filter.FilterI32(out, in, count);
        } else if constexpr (kFromI32) {
            return filter.FilterI32ToF32(out, in, count);
        } else if constexpr (std::is_same_v<Out, float>) {
            return filter.Filter(out, in, count);
        } else if constexpr (std::is_same_v<Out, std::int16_t>) {
            return filter.FilterF32ToI16(out, in, count);
        } else {
            return filter.FilterF32ToI32(out, in, count);
        }
    }
};

using Routes = testing::Types<
    Route<TFIR_F32, 1, std::int16_t, std::int16_t>, Route<TFIR_F32, 1, float, std::int16_t>,
    Route<TFIR_F32, 1, std::int32_t, std::int32_t>, Route<TFIR_F32, 1, float, std::int32_t>,
    Route<TFIR_F32, 1, float, float>, Route<TFIR_F32, 1, std::int16_t, float>,
    Route<TFIR_F32, 1, std::int32_t, float>, Route<TFIR_F32_2CH, 2, std::int16_t, std::int16_t>,
    Route<TFIR_F32_2CH, 2, float, std::int16_t>, Route<TFIR_F32_2CH, 2, std::int32_t, std::int32_t>,
    Route<TFIR_F32_2CH, 2, float, std::int32_t>, Route<TFIR_F32_2CH, 2, float, float>,
    Route<TFIR_F32_2CH, 2, std::int16_t, float>, Route<TFIR_F32_2CH, 2, std::int32_t, float>>;

class RouteNames {
public:
    template <class R>
    static std::string GetName(int) {
        return std::string(R::kChannels == 1 ? "Mono" : "Pair") + Name<typename R::In>() + "To" +
               Name<typename R::Out>();
    }

private:
    template <class Sample>
    static const char* Name() {
        if (std::is_same_v<Sample, float>) {
            return "F32";
        }
        return sizeof(Sample) == 2 ? "I16" : "I32";
    }
};

constexpr FamilyWord kFamilies[] = {test::kX87Word, test::kSseWord, test::kSse3Word};
constexpr RateRatio kRatios[] = {{1, 1}, {2, 1}, {5, 1}, {3, 2}, {3, 4}, {2, 7}, {1, 2}, {1, 3}, {1, 4}};

/// Loud enough that about one output in a thousand saturates an integer format.
template <class In>
constexpr double kAmplitude = sizeof(In) == 2 || std::is_same_v<In, float> ? 30000.0 : 2.0e9;

template <class In>
std::vector<In> MakeInput(std::uint32_t seed, int count, int channels) {
    Noise noise(seed);
    std::vector<In> input(static_cast<std::size_t>(count * channels));
    for (In& sample : input) {
        sample = static_cast<In>(noise.Next() * kAmplitude<In>);
    }
    return input;
}

std::vector<double> MakeTaps(std::uint32_t length) {
    Noise noise(length);
    std::vector<double> taps(length);
    for (double& tap : taps) {
        tap = noise.Next() / std::sqrt(static_cast<double>(length));
    }
    return taps;
}

template <class In>
std::vector<float> ChannelAsFloats(const std::vector<In>& input, int channels, int channel) {
    std::vector<float> samples;
    for (std::size_t i = static_cast<std::size_t>(channel); i < input.size();
         i += static_cast<std::size_t>(channels)) {
        samples.push_back(static_cast<float>(input[i]));
    }
    return samples;
}

std::size_t OutputCapacity(int count, RateRatio ratio) {
    return static_cast<std::size_t>(count) * ratio.up / ratio.down + 2;
}

template <class Filter>
void Prepare(Filter& filter, std::uint32_t length, RateRatio ratio) {
    ASSERT_TRUE(filter.SetLength(length));
    ASSERT_TRUE(filter.SetRateRatio(ratio.up, ratio.down));
    filter.SetTaps(MakeTaps(length).data(), true);
}

/// Rounding of the family's sums, as a share of the sum of magnitudes.
double SumTolerance(const FamilyWord& family, bool vectors, std::uint32_t length) {
    const bool extended = !vectors || family.features == test::kX87Word.features;
    return (length + 8.0) * std::ldexp(1.0, extended ? -52 : -24);
}

template <class Out>
double OutputTolerance(double value) {
    return std::is_same_v<Out, float> ? std::fabs(value) * std::ldexp(1.0, -24) : 0.5;
}

template <class Out>
double Limited(double value) {
    if (std::is_same_v<Out, float>) {
        return value;
    }
    return std::fmin(std::fmax(value, std::numeric_limits<Out>::lowest()), std::numeric_limits<Out>::max());
}

template <class R>
class FirKernels : public testing::Test {
protected:
    using Result = typename R::Out;
    using Sample = typename R::In;
    static constexpr int kChannels = R::kChannels;
    /// Pairs of integers never have vectors.
    static constexpr bool kVectors =
        kChannels == 1 || (std::is_same_v<Sample, float> && std::is_same_v<Result, float>);

    /// Runs all of `input` through `filter` in blocks of `blockSize`.
    static std::vector<Result> RunInBlocks(typename R::Filter& filter, const std::vector<Sample>& input,
                                           RateRatio ratio, int blockSize) {
        const int count = static_cast<int>(input.size()) / kChannels;
        std::vector<Result> output;
        std::vector<Result> block(OutputCapacity(blockSize, ratio) * kChannels);
        for (int done = 0; done < count; done += blockSize) {
            const int size = std::min(blockSize, count - done);
            const std::int32_t produced = R::Run(filter, block.data(), input.data() + done * kChannels, size);
            output.insert(output.end(), block.begin(), block.begin() + produced * kChannels);
        }
        return output;
    }

    /// The expected outputs of each channel.
    using Reference = std::vector<std::vector<ReferenceSample>>;

    static Reference MakeReference(std::uint32_t length, RateRatio ratio, const std::vector<Sample>& input) {
        Reference reference;
        for (int channel = 0; channel < kChannels; ++channel) {
            reference.push_back(
                FilterDirectly(MakeTaps(length), ChannelAsFloats(input, kChannels, channel), ratio));
        }
        return reference;
    }

    static void Check(const FamilyWord& family, std::uint32_t length, RateRatio ratio,
                      const std::vector<Result>& output, const Reference& reference) {
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            const std::vector<ReferenceSample>& expected = reference[channel];
            ASSERT_EQ(output.size() / kChannels, expected.size())
                << family.name << " length " << length << " ratio " << ratio.up << ":" << ratio.down;
            for (std::size_t n = 0; n < expected.size(); ++n) {
                const auto actual = static_cast<double>(output[n * kChannels + channel]);
                const double limited = Limited<Result>(expected[n].value);
                const double bound = SumTolerance(family, kVectors, length) * expected[n].magnitude +
                                     OutputTolerance<Result>(expected[n].value);
                ASSERT_LE(std::fabs(actual - limited), bound)
                    << family.name << " length " << length << " ratio " << ratio.up << ":" << ratio.down
                    << " channel " << channel << " output " << n << " expected " << limited << " actual "
                    << actual;
            }
        }
    }
};

TYPED_TEST_SUITE(FirKernels, Routes, RouteNames);

TYPED_TEST(FirKernels, AgreeWithDirectComputation) {
    constexpr int kCount = 61;
    std::vector<std::uint32_t> lengths;
    for (std::uint32_t length = 4; length <= 68; length += 4) {
        lengths.push_back(length);
    }
    lengths.insert(lengths.end(), {240, 256, 320, 512, 1024});
    for (const std::uint32_t length : lengths) {
        for (const RateRatio ratio : kRatios) {
            if (length > 100 && (ratio.up > 3 || ratio.down == 2)) {
                continue;
            }
            // Long enough to fill the history and go round it once.
            const int count = length > 100 && ratio.up == 1 ? static_cast<int>(length) + kCount : 3 * kCount;
            const auto input = MakeInput<typename TypeParam::In>(length, count, TypeParam::kChannels);
            const auto reference = this->MakeReference(length, ratio, input);
            for (const FamilyWord& family : kFamilies) {
                if (!CanRun(family)) {
                    continue;
                }
                const ForcedDispatch forced(family.features);
                typename TypeParam::Filter filter;
                Prepare(filter, length, ratio);
                this->Check(family, length, ratio, this->RunInBlocks(filter, input, ratio, count), reference);
                if (this->HasFatalFailure()) {
                    return;
                }
            }
        }
    }
}

TYPED_TEST(FirKernels, GiveTheSameBitsHoweverASignalIsCut) {
    constexpr int kCount = 1000;
    for (const FamilyWord& family : kFamilies) {
        if (!CanRun(family)) {
            continue;
        }
        const ForcedDispatch forced(family.features);
        for (const std::uint32_t length : {4U, 36U, 120U}) {
            for (const RateRatio ratio : {RateRatio{1, 1}, RateRatio{3, 2}, RateRatio{1, 3}}) {
                const auto input = MakeInput<typename TypeParam::In>(length, kCount, TypeParam::kChannels);
                typename TypeParam::Filter whole;
                Prepare(whole, length, ratio);
                const auto expected = this->RunInBlocks(whole, input, ratio, kCount);
                for (const int block : {1, 2, 7, 64, 999}) {
                    typename TypeParam::Filter cut;
                    Prepare(cut, length, ratio);
                    const auto output = this->RunInBlocks(cut, input, ratio, block);
                    ASSERT_EQ(output.size(), expected.size());
                    ASSERT_EQ(std::memcmp(output.data(), expected.data(), output.size() * sizeof(output[0])),
                              0)
                        << family.name << " length " << length << " ratio " << ratio.up << ":" << ratio.down
                        << " block " << block;
                }
            }
        }
    }
}

TYPED_TEST(FirKernels, StayInsideTheirArraysAtAnyOffset) {
    using Out = typename TypeParam::Out;
    using In = typename TypeParam::In;
    constexpr std::size_t kMargin = 8;
    constexpr auto kGuard = static_cast<Out>(123);
    for (const FamilyWord& family : kFamilies) {
        if (!CanRun(family)) {
            continue;
        }
        const ForcedDispatch forced(family.features);
        for (const RateRatio ratio : {RateRatio{1, 1}, RateRatio{5, 3}, RateRatio{1, 4}}) {
            for (std::size_t offset = 0; offset < 5; ++offset) {
                for (const int count : {1, 3, 4, 5, 8, 61}) {
                    const auto samples = MakeInput<In>(7, count, TypeParam::kChannels);
                    std::vector<In> input(offset);
                    input.insert(input.end(), samples.begin(), samples.end());
                    typename TypeParam::Filter filter;
                    Prepare(filter, 32, ratio);
                    const std::size_t capacity = OutputCapacity(count, ratio) * TypeParam::kChannels;
                    std::vector<Out> output(capacity + offset + 2 * kMargin, kGuard);
                    Out* target = output.data() + kMargin + offset;
                    const auto produced = static_cast<std::size_t>(
                        TypeParam::Run(filter, target, input.data() + offset, count) * TypeParam::kChannels);
                    ASSERT_LE(produced, capacity);
                    this->Check(family, 32, ratio, std::vector<Out>(target, target + produced),
                                this->MakeReference(32, ratio, samples));
                    for (std::size_t i = 0; i < output.size(); ++i) {
                        const bool inside = i >= kMargin + offset && i < kMargin + offset + produced;
                        ASSERT_TRUE(inside || output[i] == kGuard)
                            << family.name << " ratio " << ratio.up << ":" << ratio.down << " offset "
                            << offset << " count " << count << " word " << i;
                    }
                }
            }
        }
    }
}

TYPED_TEST(FirKernels, WorkInPlace) {
    if constexpr (std::is_same_v<typename TypeParam::In, typename TypeParam::Out>) {
        constexpr int kCount = 203;
        for (const FamilyWord& family : kFamilies) {
            if (!CanRun(family)) {
                continue;
            }
            const ForcedDispatch forced(family.features);
            for (const RateRatio ratio : {RateRatio{1, 1}, RateRatio{3, 4}, RateRatio{1, 3}}) {
                const auto input = MakeInput<typename TypeParam::In>(5, kCount, TypeParam::kChannels);
                typename TypeParam::Filter apart;
                Prepare(apart, 36, ratio);
                const auto expected = this->RunInBlocks(apart, input, ratio, kCount);
                typename TypeParam::Filter inPlace;
                Prepare(inPlace, 36, ratio);
                auto data = input;
                const std::int32_t produced = TypeParam::Run(inPlace, data.data(), data.data(), kCount);
                data.resize(static_cast<std::size_t>(produced * TypeParam::kChannels));
                EXPECT_EQ(data, expected) << family.name << " ratio " << ratio.up << ":" << ratio.down;
            }
        }
    } else {
        SUCCEED() << "two formats cannot share an array";
    }
}

TYPED_TEST(FirKernels, SaturateIntegersAndRoundToNearestEven) {
    using Out = typename TypeParam::Out;
    using In = typename TypeParam::In;
    if constexpr (std::is_integral_v<Out>) {
        constexpr double kHighest = std::numeric_limits<Out>::max();
        constexpr double kLowest = std::numeric_limits<Out>::lowest();
        for (const FamilyWord& family : kFamilies) {
            if (!CanRun(family)) {
                continue;
            }
            const ForcedDispatch forced(family.features);
            typename TypeParam::Filter filter;
            ASSERT_TRUE(filter.SetLength(4));
            const double loud[4] = {0.0, 0.0, 0.0, 4.0e9};
            filter.SetTaps(loud, true);
            // Blocks of four and of one, for both forms of the plain loop.
            std::vector<In> in(5 * TypeParam::kChannels, static_cast<In>(1));
            std::vector<Out> out(in.size());
            for (const In sign : {static_cast<In>(1), static_cast<In>(-1)}) {
                std::fill(in.begin(), in.end(), sign);
                TypeParam::Run(filter, out.data(), in.data(), 5);
                for (const Out value : out) {
                    EXPECT_EQ(static_cast<double>(value), sign > 0 ? kHighest : kLowest) << family.name;
                }
            }
            const double half[4] = {0.0, 0.0, 0.0, 0.5};
            filter.SetTaps(half, true);
            const int inputs[5] = {1, 3, 5, -1, -3};
            const int expected[5] = {0, 2, 2, 0, -2};
            for (std::size_t i = 0; i < in.size(); ++i) {
                const std::size_t frame = i / TypeParam::kChannels;
                in[i] = static_cast<In>(inputs[frame]);
            }
            TypeParam::Run(filter, out.data(), in.data(), 5);
            for (std::size_t i = 0; i < out.size(); ++i) {
                EXPECT_EQ(static_cast<int>(out[i]), expected[i / TypeParam::kChannels]) << family.name;
            }
        }
    } else {
        SUCCEED() << "floats are given as they are";
    }
}

TYPED_TEST(FirKernels, DoNothingWithoutSamples) {
    for (const FamilyWord& family : kFamilies) {
        if (!CanRun(family)) {
            continue;
        }
        const ForcedDispatch forced(family.features);
        for (const RateRatio ratio : {RateRatio{1, 1}, RateRatio{3, 2}, RateRatio{1, 3}}) {
            typename TypeParam::Filter filter;
            Prepare(filter, 32, ratio);
            typename TypeParam::In in[2] = {};
            typename TypeParam::Out out[2] = {5, 5};
            EXPECT_EQ(TypeParam::Run(filter, out, in, 0), 0);
            EXPECT_EQ(TypeParam::Run(filter, out, in, -1), 0);
            EXPECT_EQ(out[0], 5);
        }
    }
}

TYPED_TEST(FirKernels, AllocateNothing) {
    constexpr int kCount = 256;
    const auto input = MakeInput<typename TypeParam::In>(1, kCount, TypeParam::kChannels);
    for (const RateRatio ratio : {RateRatio{1, 1}, RateRatio{3, 2}, RateRatio{1, 3}}) {
        typename TypeParam::Filter filter;
        Prepare(filter, 64, ratio);
        std::vector<typename TypeParam::Out> output(OutputCapacity(kCount, ratio) * TypeParam::kChannels);
        const std::uint64_t before = test::CountAllocations();
        TypeParam::Run(filter, output.data(), input.data(), kCount);
        EXPECT_EQ(test::CountAllocations(), before);
    }
}

TEST(FirKernelsX87, KeepTheirSumsInExtendedForm) {
    // 1 + 2^-60 - 1 is lost in double and kept with 64 bits of mantissa.
    const ForcedDispatch forced(test::kX87Word.features);
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetLength(4));
    const double ones[4] = {1.0, 1.0, 1.0, 1.0};
    filter.SetTaps(ones, true);
    const float tiny = std::ldexp(1.0F, -60);
    const float in[3] = {1.0F, tiny, -1.0F};
    float out[3];
    filter.Filter(out, in, 3);
    EXPECT_EQ(out[2], tiny);
}

} // namespace
} // namespace orva::dsp
