#pragma once

#include "tests/support/BitString.h"
#include "tests/support/ErrorInjector.h"
#include "tests/support/FrameFields.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orva::test {

/// Frame sync as dibit classes.
constexpr std::string_view kSyncDibits = "111113113311333313133333";

/// Every 36th dibit of a frame, counted from the first of its sync, is a status symbol.
constexpr std::size_t kStatusPeriod = 36;

/// Frame lengths in dibits on the air, sync and status symbols included.
constexpr std::size_t kHeaderDibits = 396;
constexpr std::size_t kLduDibits = 864;
constexpr std::size_t kTerminatorDibits = 72;
constexpr std::size_t kTerminatorWithLinkControlDibits = 216;

/// Makes whole frames as dibit text: sync, network identifier, body, null padding to the next status symbol,
/// and the status symbols. A dibit is a character "0" (+1), "1" (+3), "2" (-1) or "3" (-3), its high bit
/// first on the air.
///
/// Every frame passes through the error injector, so that two frames made alike differ when errors were asked
/// for.
class FrameBuilder {
public:
    explicit FrameBuilder(const ErrorInjector& errorInjector = ErrorInjector()) : errors(errorInjector) {}

    std::string Header(unsigned networkAccessCode, const HeaderFields& fields);
    std::string Ldu1(unsigned networkAccessCode, const LinkControl& link, const VoiceWords& voice,
                     const LowSpeedData& lowSpeedData = {});
    std::string Ldu2(unsigned networkAccessCode, const EncryptionSync& sync, const VoiceWords& voice,
                     const LowSpeedData& lowSpeedData = {});
    std::string Terminator(unsigned networkAccessCode);
    std::string TerminatorWithLinkControl(unsigned networkAccessCode, const LinkControl& link);

    /// A frame of any type with `body` as it stands, an even number of bits: packet data, unknown types.
    std::string Frame(unsigned networkAccessCode, unsigned dataUnit, const BitString& body);

private:
    BitString CodeSymbolsByHamming(const BitString& content, int paritySymbols, int wrongSymbols);
    BitString LduBody(const BitString& codedLink, const VoiceWords& voice, const LowSpeedData& lowSpeedData);

    ErrorInjector errors;
};

/// The 72 bits of a link control word.
BitString LinkControlBits(const LinkControl& link);

} // namespace orva::test
