/// Systematic Reed-Solomon encoder over GF(64) with the roots alpha^1 .. alpha^n of the air interface
/// (TIA-102.BAAA): (36,20) for the header, (24,12) for link control, (24,16) for encryption sync.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace orva::test {

constexpr int kHeaderParitySymbols = 16;
constexpr int kLinkControlParitySymbols = 12;
constexpr int kEncryptionSyncParitySymbols = 8;

/// `message` (6-bit symbols, highest power first) followed by `paritySymbols` parity symbols.
std::vector<std::uint8_t> EncodeReedSolomon(std::span<const std::uint8_t> message, int paritySymbols);

} // namespace orva::test
