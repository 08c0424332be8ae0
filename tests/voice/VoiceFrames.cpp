#include "tests/voice/VoiceFrames.h"

#include "voice/BitAllocation.h"

#include <algorithm>
#include <bit>
#include <span>

namespace orva::voice::test {

std::uint32_t EncodeGolay(std::uint32_t information) {
    // x^11 + x^10 + x^6 + x^5 + x^4 + x^2 + 1
    constexpr std::uint32_t kGenerator = 0xC75;
    std::uint32_t remainder = information << 11;
    for (int bit = 22; bit >= 11; --bit) {
        if (((remainder >> bit) & 1U) != 0) {
            remainder ^= kGenerator << (bit - 11);
        }
    }
    return (information << 11) | remainder;
}

std::uint32_t EncodeHamming(std::uint32_t information) {
    // Row i of the generator matrix: unit vector, then a nibble of weight two or more, in falling order.
    constexpr std::array<std::uint32_t, 11> kRows{15, 14, 13, 12, 11, 10, 9, 7, 6, 5, 3};
    std::uint32_t parity = 0;
    for (std::size_t i = 0; i < kRows.size(); ++i) {
        if (((information >> (10 - i)) & 1U) != 0) {
            parity ^= kRows[i];
        }
    }
    return (information << 4) | parity;
}

std::array<int, kCodedBits> InterleavingMap() {
    // Six rows of 24 positions; a group takes two positions of each row, the second three in other order.
    constexpr std::array<int, 12> kOffsets{0, 24, 48, 72, 96, 120, 25, 1, 73, 49, 121, 97};
    std::array<int, kCodedBits> received{};
    for (int index = 0; index < kCodedBits; ++index) {
        const int position = 2 * (index / 12) + kOffsets[static_cast<std::size_t>(index % 12)];
        received[static_cast<std::size_t>(position)] = index;
    }
    return received;
}

CodedBits EncodeFrame(const InformationBits& information) {
    std::vector<std::uint8_t> coded;
    const std::uint8_t* next = information.data();
    std::uint32_t seed = 0;
    const auto append = [&](std::uint32_t word, int length) {
        for (int bit = length - 1; bit >= 0; --bit) {
            coded.push_back(static_cast<std::uint8_t>((word >> bit) & 1U));
        }
    };
    const auto take = [&](int count) {
        std::uint32_t value = 0;
        for (int i = 0; i < count; ++i) {
            value = 2 * value + *next++;
        }
        return value;
    };
    for (int word = 0; word < 4; ++word) {
        const std::uint32_t value = take(12);
        seed = word == 0 ? value : seed;
        append(EncodeGolay(value), 23);
    }
    for (int word = 0; word < 3; ++word) {
        append(EncodeHamming(take(11)), 15);
    }
    append(take(7), 7);

    std::uint32_t p = 16 * seed;
    for (std::size_t i = 23; i < 23 + 114; ++i) {
        p = (173 * p + 13849) % 65536;
        coded[i] ^= static_cast<std::uint8_t>(p / 32768);
    }
    CodedBits received{};
    const auto map = InterleavingMap();
    for (std::size_t i = 0; i < coded.size(); ++i) {
        received[static_cast<std::size_t>(map[i])] = coded[i];
    }
    return received;
}

int HarmonicsOfPitchCode(int pitchCode) {
    // 0.9254 of half the pitch period; the two lowest bits of the code do not count.
    const int halfPeriod = pitchCode / 4 + 10;
    return static_cast<int>(60648.0 / 65536.0 * halfPeriod);
}

VoiceFields PlainFields(int pitchCode, int gainCode, int voicing) {
    const int harmonics = HarmonicsOfPitchCode(pitchCode);
    VoiceFields fields;
    fields.pitchCode = pitchCode;
    fields.gainCode = gainCode;
    for (const int bits : AllocationRow(harmonics)) {
        fields.coefficients.push_back(bits == 0 ? 0 : 1 << (bits - 1));
    }
    fields.voicing.assign(static_cast<std::size_t>(std::min(12, (harmonics + 2) / 3)), voicing);
    return fields;
}

InformationBits PackFields(const VoiceFields& fields) {
    // Coefficient bits in order of their weight, fields in order within one weight.
    const auto lengths = AllocationRow(HarmonicsOfPitchCode(fields.pitchCode));
    std::vector<std::uint8_t> weighted;
    for (int weight = 10; weight >= 1; --weight) {
        for (std::size_t j = 0; j < fields.coefficients.size(); ++j) {
            if (lengths[j] >= weight) {
                weighted.push_back(static_cast<std::uint8_t>((fields.coefficients[j] >> (weight - 1)) & 1));
            }
        }
    }
    std::vector<std::uint8_t> bits;
    const auto append = [&](int value, int from, int to) {
        for (int bit = from; bit >= to; --bit) {
            bits.push_back(static_cast<std::uint8_t>((value >> bit) & 1));
        }
    };
    append(fields.pitchCode, 7, 2);
    append(fields.gainCode, 5, 3);
    bits.insert(bits.end(), weighted.begin(), weighted.begin() + 39);
    for (const int decision : fields.voicing) {
        bits.push_back(static_cast<std::uint8_t>(decision));
    }
    append(fields.gainCode, 2, 1);
    bits.insert(bits.end(), weighted.begin() + 39, weighted.end());
    append(fields.gainCode, 0, 0);
    append(fields.pitchCode, 1, 0);
    append(fields.spare, 0, 0);
    InformationBits information{};
    std::copy_n(bits.begin(), information.size(), information.begin());
    return information;
}

ImbeFrameBlock ReceivedBlock(const InformationBits& information) {
    ImbeFrameBlock block{};
    std::ranges::copy(EncodeFrame(information), block.bits);
    block.sampleCount = kNominalFrameLength;
    block.softBits = 1;
    return block;
}

ImbeFrameBlock CorrectedBlock(const InformationBits& information) {
    ImbeFrameBlock block{};
    std::ranges::copy(information, block.bits);
    block.sampleCount = kNominalFrameLength;
    block.softBits = 1;
    return block;
}

void Digest::Add(std::int64_t value) {
    for (int byte = 0; byte < 8; ++byte) {
        hash ^= static_cast<std::uint64_t>(value >> (8 * byte)) & 0xFFU;
        hash *= 0x100000001B3U;
    }
}

void Digest::Add(const ImbeFrameParameters& record) {
    Add(record.kind);
    Add(record.harmonics);
    Add(record.pitchGate);
    Add(record.fundamental);
    for (const std::int16_t amplitude : record.amplitudes) {
        Add(amplitude);
    }
    Add(record.amplitudeExponent);
    for (const std::int16_t voiced : record.voiced) {
        Add(voiced);
    }
}

void Digest::Add(const ImbeDecoderState& state) {
    const auto addAll = [this](const auto& values) {
        for (const std::int16_t value : values) {
            Add(value);
        }
    };
    Add(state.frameHistory);
    Add(state.pitchAverage);
    Add(state.energyMantissa);
    Add(state.energyExponent);
    Add(state.lastFrame);
    Add(state.silenceFrame);
    Add(state.noiseSeed);
    addAll(state.noiseCarry);
    addAll(state.unvoicedTail);
    Add(state.unvoicedTailExponent);
    Add(state.unvoicedLength);
    Add(state.voicedLength);
    Add(state.fundamentalPhase);
    addAll(state.lowPhases);
    addAll(state.phaseDispersion);
    Add(state.waveTableExponent);
    addAll(state.waveTable);
    addAll(state.wordErrors);
    Add(state.errorTotal);
    Add(state.softMetricTotal);
    Add(state.errorRate);
    addAll(state.previousLogAmplitudes);
    Add(state.previousHarmonics);
}

} // namespace orva::voice::test
