#include "tests/support/VoiceEncoder.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace orva::test {
namespace {

constexpr int kBlocks = 6;

std::span<double> Block(LogSpectrum& values, int block, int harmonics) {
    const int start = BlockStart(block, harmonics);
    return std::span(values).subspan(static_cast<std::size_t>(start),
                                     static_cast<std::size_t>(BlockStart(block + 1, harmonics) - start));
}

int NearestGain(double gain) {
    int nearest = 0;
    for (int code = 1; code < kGainCodes; ++code) {
        if (std::abs(GainOf(code) - gain) < std::abs(GainOf(nearest) - gain)) {
            nearest = code;
        }
    }
    return nearest;
}

int NearestCode(double value, int bits, int deviation) {
    if (bits == 0) {
        return 0;
    }
    const double code = std::floor(value / QuantiserStep(bits, deviation) + std::ldexp(0.5, bits));
    return static_cast<int>(std::clamp(code, 0.0, std::ldexp(1.0, bits) - 1.0));
}

// Replaces `value` by the nearest value of its field and returns the code.
int Quantise(double& value, int bits, int deviation) {
    const int code = NearestCode(value, bits, deviation);
    value = Dequantise(code, bits, deviation);
    return code;
}

// Codes the difference of a spectrum and its prediction into `fields`; returns what the decoder will read
// from them.
LogSpectrum QuantiseResidual(LogSpectrum residual, int harmonics, VoiceFields& fields) {
    const auto allocation = AllocationOf(harmonics);
    std::array<double, kBlocks> gains{};
    for (int block = 0; block < kBlocks; ++block) {
        const auto values = Block(residual, block, harmonics);
        CosineTransform(values);
        gains[static_cast<std::size_t>(block)] = values.front();
    }

    CosineTransform(gains);
    fields.gainCode = NearestGain(gains[0]);
    gains[0] = GainOf(fields.gainCode);
    std::size_t field = 0;
    for (; field < kBlocks - 1; ++field) {
        fields.coefficientCodes[field] =
            Quantise(gains[field + 1], allocation[field], GainDeviation(static_cast<int>(field) + 1));
    }
    InverseCosineTransform(gains);

    for (int block = 0; block < kBlocks; ++block) {
        const auto values = Block(residual, block, harmonics);
        values.front() = gains[static_cast<std::size_t>(block)];
        for (std::size_t k = 1; k < values.size(); ++k, ++field) {
            fields.coefficientCodes[field] =
                Quantise(values[k], allocation[field], CoefficientDeviation(static_cast<int>(k) - 1));
        }
        InverseCosineTransform(values);
    }
    return residual;
}

} // namespace

VoiceBits PackVoiceFields(const VoiceFields& fields) {
    const int harmonics = HarmonicsOf(fields.pitchCode);
    std::array<std::uint8_t, kVoiceBits> vector{};
    std::size_t position = 0;
    const auto append = [&](int code, int bits) {
        for (int bit = bits - 1; bit >= 0; --bit) {
            vector[position++] = static_cast<std::uint8_t>((code >> bit) & 1);
        }
    };
    append(fields.pitchCode, 8);
    append(fields.gainCode, 6);
    const auto allocation = AllocationOf(harmonics);
    for (std::size_t field = 0; field < allocation.size(); ++field) {
        append(fields.coefficientCodes[field], allocation[field]);
    }
    for (int band = 0; band < BandsOf(harmonics); ++band) {
        append(fields.voicedBands[static_cast<std::size_t>(band)] ? 1 : 0, 1);
    }
    append(fields.spare ? 1 : 0, 1);

    VoiceBits bits{};
    const auto positions = ParameterPositions(harmonics);
    for (std::size_t i = 0; i < bits.size(); ++i) {
        bits[i] = vector[static_cast<std::size_t>(positions[i])];
    }
    return bits;
}

VoiceBits PackVoicelessFrame(int pitchCode) {
    VoiceBits bits{};
    for (std::size_t i = 0; i < 6; ++i) {
        bits[i] = static_cast<std::uint8_t>((pitchCode >> (7 - i)) & 1);
    }
    bits[85] = static_cast<std::uint8_t>((pitchCode >> 1) & 1);
    bits[86] = static_cast<std::uint8_t>(pitchCode & 1);
    return bits;
}

void VoiceEncoder::Reset() {
    *this = VoiceEncoder();
}

VoiceBits VoiceEncoder::Encode(const VoiceParameters& parameters) {
    const int harmonics = HarmonicsOf(parameters.pitchCode);
    VoiceFields fields;
    fields.pitchCode = parameters.pitchCode;
    fields.voicedBands = parameters.voicedBands;

    LogSpectrum residual = parameters.logAmplitudes;
    const LogSpectrum prediction = predictor.Predict(harmonics);
    for (std::size_t i = 0; i < static_cast<std::size_t>(harmonics); ++i) {
        residual[i] -= prediction[i];
    }
    reconstructed = predictor.Accept(QuantiseResidual(residual, harmonics, fields), harmonics);
    return PackVoiceFields(fields);
}

} // namespace orva::test
