/// Encoders of the air interface's binary block codes (TIA-102.BAAA and TIA-102.BABA), all systematic: the
/// information in the high bits, the parity in the low ones, the first bit on the air being the most
/// significant.
#pragma once

#include <cstdint>

namespace orva::test {

constexpr int kNidBits = 64;            ///< network identifier on the air: 63 bits of BCH and a parity bit
constexpr int kNidInformationBits = 16; ///< network access code and data unit identifier
constexpr int kGolay23Bits = 23;        ///< voice words c0 .. c3
constexpr int kGolay24Bits = 24;        ///< terminator link control
constexpr int kGolay18Bits = 18;        ///< header
constexpr int kHamming15Bits = 15;      ///< voice words c4 .. c6
constexpr int kHamming10Bits = 10;      ///< link control and encryption sync
constexpr int kLowSpeedDataWordBits = 16;

/// Generator polynomial of BCH(63,16): the least polynomial over GF(2) with the roots alpha^1 .. alpha^22.
/// Bit i is the coefficient of x^i.
std::uint64_t BchGenerator();

/// The 64 bits of a network identifier: BCH(63,16) of the 12-bit `networkAccessCode` and the 4-bit
/// `dataUnit`, then the parity bit as the standard lists it by data unit and as it is seen on the air: 1 for
/// LDU1 and LDU2, 0 for the others, whatever the parity of the word. The first bit on the air is bit 63.
std::uint64_t EncodeNid(unsigned networkAccessCode, unsigned dataUnit);

/// Golay(23,12), generator x^11 + x^10 + x^6 + x^5 + x^4 + x^2 + 1, of 12 information bits.
std::uint32_t EncodeGolay23(unsigned information);

/// Extended Golay(24,12): Golay(23,12) and the bit that makes the number of ones even.
std::uint32_t EncodeGolay24(unsigned information);

/// Extended Golay shortened to (18,6), of 6 information bits.
std::uint32_t EncodeGolay18(unsigned information);

/// Hamming(15,11) of 11 information bits.
std::uint32_t EncodeHamming15(unsigned information);

/// Hamming(10,6) of 6 information bits.
std::uint32_t EncodeHamming10(unsigned information);

/// Shortened cyclic code (16,8) of an octet of low-speed data, generator x^8 + x^5 + x^4 + x^3 + 1.
std::uint32_t EncodeLowSpeedData(unsigned octet);

} // namespace orva::test
