#include "tests/support/FloatVoiceModel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace orva::test {
namespace {

constexpr int kMuteRate = 2867;         // 0.0875, Q15
constexpr int kFirstVoicelessCode = 52; // of the top six bits of the pitch code

// Reads the fields of a parameter vector, most significant bit first.
class FieldReader {
public:
    FieldReader(const VoiceBits& bits, int harmonics) {
        const auto positions = ParameterPositions(harmonics);
        for (std::size_t i = 0; i < bits.size(); ++i) {
            vector[static_cast<std::size_t>(positions[i])] = bits[i];
        }
    }

    int Next(int width) {
        int code = 0;
        for (int i = 0; i < width; ++i) {
            code = code << 1 | vector[next++];
        }
        return code;
    }

private:
    VoiceBits vector{};
    std::size_t next = 0;
};

int TopPitchBits(const VoiceBits& bits) {
    return std::accumulate(bits.begin(), bits.begin() + 6, 0,
                           [](int code, std::uint8_t bit) { return code << 1 | bit; });
}

// The spectrum that the coefficients stand for, without the prediction.
LogSpectrum ReadBlocks(FieldReader& reader, int harmonics) {
    const auto allocation = AllocationOf(harmonics);
    std::array<double, 6> gains{};
    gains[0] = GainOf(reader.Next(6));
    std::size_t field = 0;
    for (; field < 5; ++field) {
        const int width = allocation[field];
        gains[field + 1] = Dequantise(reader.Next(width), width, GainDeviation(static_cast<int>(field) + 1));
    }
    InverseCosineTransform(gains);

    LogSpectrum values{};
    for (int block = 0; block < 6; ++block) {
        const int start = BlockStart(block, harmonics);
        const int length = BlockStart(block + 1, harmonics) - start;
        const auto entries =
            std::span(values).subspan(static_cast<std::size_t>(start), static_cast<std::size_t>(length));
        entries[0] = gains[static_cast<std::size_t>(block)];
        for (int k = 1; k < length; ++k, ++field) {
            const int width = allocation[field];
            entries[static_cast<std::size_t>(k)] =
                Dequantise(reader.Next(width), width, CoefficientDeviation(k - 1));
        }
        InverseCosineTransform(entries);
    }
    return values;
}

std::int16_t RoundToSample(double value) {
    return static_cast<std::int16_t>(std::clamp(std::floor(value + 0.5), -32768.0, 32767.0));
}

} // namespace

void FloatVoiceModel::Init() {
    *this = FloatVoiceModel();
}

void FloatVoiceModel::DecodeCodeWords(std::span<const std::uint8_t> received) {
    corrected = CorrectVoiceWord(received);
    UpdateErrorFigures();
}

void FloatVoiceModel::TakeBits(const VoiceBits& informationBits) {
    corrected = {};
    corrected.bits = informationBits;
    UpdateErrorFigures();
}

void FloatVoiceModel::UpdateErrorFigures() {
    errorTotal = std::accumulate(corrected.wordErrors.begin(), corrected.wordErrors.end(), 0);
    const int limit = std::min((40 * (2 * errorRate + 16384)) >> 16, 12);
    flags = errorTotal >= limit && corrected.wordErrors[0] >= 2 ? kRepeat : 0;
    errorRate = static_cast<int>(
        (783744U * static_cast<unsigned>(errorTotal) + 62260U * static_cast<unsigned>(errorRate)) >> 16);
    flags |= errorRate > kMuteRate ? kMute : 0;
}

void FloatVoiceModel::SynthesizeFrame() {
    Synthesize(ChooseFrame());
}

FloatVoiceFrame FloatVoiceModel::ChooseFrame() {
    concealedHistory = static_cast<std::uint16_t>(concealedHistory << 1);
    const bool isRepeat = (flags & kRepeat) != 0;
    const bool isMuted = (flags & kMute) != 0;
    UnpackedFrame received;
    if (!isRepeat) {
        received = Unpack();
    }
    if (!isMuted && !isRepeat && received.frame.isVoice) {
        flags = 0;
        conditioner.Condition(received.frame, received.logAmplitudes,
                              {errorRate, errorTotal, corrected.wordErrors[4]});
        return received.frame;
    }
    const bool threeBefore = (concealedHistory & 0xE) == 0xE;
    concealedHistory |= 1;
    flags |= kConcealed;
    return isMuted || threeBefore ? FloatVoiceFrame() : lastFrame;
}

FloatVoiceModel::UnpackedFrame FloatVoiceModel::Unpack() {
    UnpackedFrame unpacked;
    FloatVoiceFrame& frame = unpacked.frame;
    const int topBits = TopPitchBits(corrected.bits);
    if (topBits >= kFirstVoicelessCode) {
        frame.isVoice = false;
        return unpacked;
    }
    frame.harmonics = HarmonicsOf(topBits << 2);
    FieldReader reader(corrected.bits, frame.harmonics);
    frame.fundamental = FundamentalOf(reader.Next(8));
    unpacked.logAmplitudes = predictor.Accept(ReadBlocks(reader, frame.harmonics), frame.harmonics);

    std::array<bool, kMostBands> bands{};
    for (int band = 0; band < BandsOf(frame.harmonics); ++band) {
        bands[static_cast<std::size_t>(band)] = reader.Next(1) != 0;
    }
    for (int l = 1; l <= frame.harmonics; ++l) {
        frame.voiced[static_cast<std::size_t>(l - 1)] = bands[static_cast<std::size_t>(BandOfHarmonic(l))];
    }
    return unpacked;
}

void FloatVoiceModel::Synthesize(const FloatVoiceFrame& frame) {
    unvoiced.Write(exactSamples, frame);
    voiced.Add(exactSamples, lastFrame, frame, conditioner.Phases());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        exactSamples[i] = std::clamp(exactSamples[i], -32768.0, 32767.0);
        samples[i] = RoundToSample(exactSamples[i]);
    }
    lastFrame = frame;
}

} // namespace orva::test
