/// Dibit text: one character "0" .. "3" for each symbol, status symbols in their places.
#pragma once

#include <cstdint>

namespace orva::p25 {

/// What reading gives once the text has run out.
constexpr char kEndOfInput = static_cast<char>(0xFF);

/// Of a dibit's character: its value.
constexpr std::uint32_t kDibitMask = 3;

/// Every 36th dibit, counted from the first of the sync, is a status symbol (TIA-102.BAAA).
constexpr std::int32_t kStatusPeriod = 36;

} // namespace orva::p25
