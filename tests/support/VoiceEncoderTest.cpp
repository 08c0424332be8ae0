#include "tests/support/VoiceEncoder.h"

#include "tests/support/RandomSource.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <string>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

// Reads the transmitted bits in one pass, field by field, as a receiver without a parameter vector would.
class StraightUnpacker {
public:
    explicit StraightUnpacker(const VoiceBits& voiceBits) : bits(voiceBits) {
        fields.pitchCode = Take(6) << 2;
        harmonics = HarmonicsOf(fields.pitchCode);
        fields.gainCode = Take(3) << 3;
        plane = *std::max_element(AllocationOf(harmonics).begin(), AllocationOf(harmonics).end());
        TakePlanesUpTo(48);
        for (int band = 0; band < BandsOf(harmonics); ++band) {
            fields.voicedBands[static_cast<std::size_t>(band)] = Take(1) != 0;
        }
        fields.gainCode |= Take(2) << 1;
        TakePlanesUpTo(84);
        fields.gainCode |= Take(1);
        fields.pitchCode |= Take(2);
        fields.spare = Take(1) != 0;
    }

    const VoiceFields& Fields() const { return fields; }
    int Harmonics() const { return harmonics; }

private:
    int Take(int count) {
        int code = 0;
        for (int i = 0; i < count; ++i) {
            code = 2 * code + bits[next++];
        }
        return code;
    }

    void TakePlanesUpTo(std::size_t end) {
        const auto lengths = AllocationOf(harmonics);
        while (next < end) {
            if (lengths[field] >= plane) {
                fields.coefficientCodes[field] |= Take(1) << (plane - 1);
            }
            if (++field == lengths.size()) {
                field = 0;
                --plane;
            }
        }
    }

    const VoiceBits& bits;
    VoiceFields fields;
    std::size_t next = 0;
    int harmonics = 0;
    int plane = 0;
    std::size_t field = 0;
};

VoiceFields RandomFields(RandomSource& random, int pitchCode) {
    VoiceFields fields;
    fields.pitchCode = pitchCode;
    const int harmonics = HarmonicsOf(pitchCode);
    fields.gainCode = static_cast<int>(random.Below(kGainCodes));
    const auto allocation = AllocationOf(harmonics);
    for (std::size_t i = 0; i < allocation.size(); ++i) {
        fields.coefficientCodes[i] = static_cast<int>(random.Below(1U << allocation[i]));
    }
    for (int band = 0; band < BandsOf(harmonics); ++band) {
        fields.voicedBands[static_cast<std::size_t>(band)] = random.Below(2) != 0;
    }
    fields.spare = random.Below(2) != 0;
    return fields;
}

// A gentle spectrum, well within the reach of the quantisers.
VoiceParameters GentleFrame(int pitchCode, double level) {
    VoiceParameters parameters;
    parameters.pitchCode = pitchCode;
    const int harmonics = HarmonicsOf(pitchCode);
    for (int l = 1; l <= harmonics; ++l) {
        parameters.logAmplitudes[static_cast<std::size_t>(l - 1)] =
            level + std::cos(4.0 * l / harmonics) - 0.5 * l / harmonics;
    }
    parameters.voicedBands[0] = true;
    return parameters;
}

double RmsError(const VoiceParameters& parameters, const LogSpectrum& reconstructed) {
    const int harmonics = HarmonicsOf(parameters.pitchCode);
    double sum = 0.0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(harmonics); ++i) {
        const double error = reconstructed[i] - parameters.logAmplitudes[i];
        sum += error * error / harmonics;
    }
    return std::sqrt(sum);
}

TEST(VoiceFields, ComeBackFromTheBitsForEveryPitchCode) {
    RandomSource random(1);
    for (int pitchCode = 0; pitchCode < kPitchCodes; ++pitchCode) {
        const VoiceFields sent = RandomFields(random, pitchCode);
        const VoiceBits bits = PackVoiceFields(sent);
        const VoiceFields received = StraightUnpacker(bits).Fields();
        EXPECT_EQ(received.pitchCode, sent.pitchCode);
        EXPECT_EQ(received.gainCode, sent.gainCode) << "pitch code " << pitchCode;
        EXPECT_EQ(received.coefficientCodes, sent.coefficientCodes) << "pitch code " << pitchCode;
        EXPECT_EQ(received.voicedBands, sent.voicedBands) << "pitch code " << pitchCode;
        EXPECT_EQ(received.spare, sent.spare) << "pitch code " << pitchCode;
    }
}

TEST(VoiceFields, BitsComeBackFromTheFields) {
    RandomSource random(2);
    for (int round = 0; round < 500; ++round) {
        VoiceBits bits{};
        for (auto& bit : bits) {
            bit = static_cast<std::uint8_t>(random.Below(2));
        }
        bits[0] = 0; // a pitch code of voice
        EXPECT_EQ(PackVoiceFields(StraightUnpacker(bits).Fields()), bits) << "round " << round;
    }
}

TEST(VoiceFields, MostImportantBitsComeFirst) {
    VoiceFields fields;
    fields.pitchCode = 0x80;
    EXPECT_EQ(PackVoiceFields(fields)[0], 1);
    fields.pitchCode = 0;
    fields.gainCode = 32;
    EXPECT_EQ(PackVoiceFields(fields)[6], 1);
    fields.gainCode = 0;
    fields.coefficientCodes[0] = 512; // nine harmonics: ten bits for gain coefficient 1
    EXPECT_EQ(PackVoiceFields(fields)[9], 1);
}

TEST(VoiceFields, VoicelessFrameCarriesItsPitchCode) {
    for (int pitchCode = kPitchCodes; pitchCode < 256; ++pitchCode) {
        const VoiceBits bits = PackVoicelessFrame(pitchCode);
        int top = 0;
        for (std::size_t i = 0; i < 6; ++i) {
            top = 2 * top + bits[i];
        }
        EXPECT_EQ(top, pitchCode >> 2);
        EXPECT_EQ(2 * bits[85] + bits[86], pitchCode & 3);
    }
}

TEST(VoiceEncoder, SendsPitchAndVoicingAsGiven) {
    VoiceEncoder encoder;
    VoiceParameters parameters = GentleFrame(123, 6.0);
    for (std::size_t band = 0; band < kMostBands; ++band) {
        parameters.voicedBands[band] = band % 3 == 1;
    }
    const VoiceFields fields = StraightUnpacker(encoder.Encode(parameters)).Fields();
    EXPECT_EQ(fields.pitchCode, 123);
    for (std::size_t band = 0; band < static_cast<std::size_t>(BandsOf(HarmonicsOf(123))); ++band) {
        EXPECT_EQ(fields.voicedBands[band], parameters.voicedBands[band]) << band;
    }
}

TEST(VoiceEncoder, ChoosesTheNearestCodeOfEveryField) {
    // Nine harmonics are blocks of one or two: with only the first gain and coefficient changing from frame
    // to frame the error of an amplitude is that of a few fields, each off by half a step at most.
    VoiceEncoder encoder;
    for (int frame = 0; frame < 50; ++frame) {
        const VoiceParameters parameters = GentleFrame(0, 5.0 + 0.05 * frame);
        encoder.Encode(parameters);
        const auto allocation = AllocationOf(9);
        double bound = 0.08; // half the widest step of the gain table, and the cosine steps
        for (std::size_t i = 0; i < allocation.size(); ++i) {
            const int deviation = i < 5 ? GainDeviation(static_cast<int>(i) + 1) : CoefficientDeviation(0);
            bound += QuantiserStep(allocation[i], deviation);
        }
        for (std::size_t i = 0; i < 9; ++i) {
            EXPECT_NEAR(encoder.Reconstructed()[i], parameters.logAmplitudes[i], bound)
                << "frame " << frame << " harmonic " << i + 1;
        }
    }
}

TEST(VoiceEncoder, ErrorStaysWithinAThirdOfAnOctaveAtEveryPitch) {
    for (int pitchCode = 0; pitchCode < kPitchCodes; ++pitchCode) {
        VoiceEncoder encoder;
        const VoiceParameters parameters = GentleFrame(pitchCode, 7.0);
        for (int frame = 0; frame < 6; ++frame) {
            encoder.Encode(parameters);
        }
        EXPECT_LT(RmsError(parameters, encoder.Reconstructed()), 0.33) << "pitch code " << pitchCode;
    }
}

TEST(VoiceEncoder, DoesNotDrift) {
    VoiceEncoder encoder;
    double largest = 0.0;
    for (int frame = 0; frame < 2000; ++frame) {
        const VoiceParameters parameters =
            GentleFrame((frame / 3) % kPitchCodes, 7.0 + std::sin(0.1 * frame));
        encoder.Encode(parameters);
        largest = std::max(largest, frame < 5 ? 0.0 : RmsError(parameters, encoder.Reconstructed()));
    }
    EXPECT_LT(largest, 0.5);
}

TEST(VoiceEncoder, ResetStartsAFreshStream) {
    VoiceEncoder encoder;
    const VoiceBits first = encoder.Encode(GentleFrame(90, 7.0));
    EXPECT_NE(encoder.Encode(GentleFrame(90, 7.0)), first);
    encoder.Reset();
    EXPECT_EQ(encoder.Encode(GentleFrame(90, 7.0)), first);
}

} // namespace
} // namespace orva::test
