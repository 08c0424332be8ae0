/// Encoders for the voice tests: code words from their generators, information bits from field values.
#pragma once

#include "voice/ImbeDecoder.h"

#include <array>
#include <cstdint>
#include <vector>

namespace orva::voice::test {

using InformationBits = std::array<std::uint8_t, kInformationBits>;
using CodedBits = std::array<std::uint8_t, kCodedBits>;

/// Golay code word of 12 information bits, by division by the generator polynomial.
std::uint32_t EncodeGolay(std::uint32_t information);

/// Hamming code word of 11 information bits, by its generator matrix.
std::uint32_t EncodeHamming(std::uint32_t information);

/// Position in received order of each coded position.
std::array<int, kCodedBits> InterleavingMap();

/// 88 information bits to 144 channel bits in received order, one per byte.
CodedBits EncodeFrame(const InformationBits& information);

/// The fields of one frame.
struct VoiceFields {
    int pitchCode = 0;             ///< b0, 8 bits; below 208 in a voice frame
    int gainCode = 0;              ///< b2, 6 bits
    std::vector<int> coefficients; ///< L - 1 codes
    std::vector<int> voicing;      ///< K bits, band 1 first
    int spare = 0;
};

/// L of a pitch code below 208.
int HarmonicsOfPitchCode(int pitchCode);

/// Fields of the right sizes for a pitch code, coefficients at the middle of their range.
VoiceFields PlainFields(int pitchCode, int gainCode, int voicing);

/// Sorts fields into the 88 information bits.
InformationBits PackFields(const VoiceFields& fields);

/// A block ready for `ImbeDecodeCodeWords`.
ImbeFrameBlock ReceivedBlock(const InformationBits& information);

/// A block ready for `ImbeSynthesizeFrame`.
ImbeFrameBlock CorrectedBlock(const InformationBits& information);

/// A digest over a decoder's whole state, field by field.
class Digest {
public:
    void Add(std::int64_t value);
    void Add(const ImbeFrameParameters& record);
    void Add(const ImbeDecoderState& state);
    std::uint64_t Value() const { return hash; }

private:
    std::uint64_t hash = 0xCBF29CE484222325U; // FNV-1a, 64 bits
};

} // namespace orva::voice::test
