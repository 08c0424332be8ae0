#pragma once

#include "tests/support/FrameBuilder.h"
#include "tests/support/FrameFields.h"
#include "tests/support/TrunkingPacket.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orva::test {

/// Gives voice frame `index` of a call, counted from 0.
using VoiceSource = std::function<VoiceBits(std::size_t index)>;

/// How a call ends.
enum class CallEnding { None, Terminator, TerminatorWithLinkControl };

/// A voice call from the header to the terminator.
struct CallDescription {
    unsigned networkAccessCode = 0x293;
    bool withHeader = true;
    HeaderFields header = {};
    LinkControl link = {};
    EncryptionSync encryption = {};
    LowSpeedData lowSpeedData = {};
    int superframes = 1; ///< LDU1 and LDU2 each; 360 ms
    CallEnding ending = CallEnding::Terminator;
};

/// What one frame of a transmission says. A field is there when the frame's type has it.
struct SentFrame {
    unsigned networkAccessCode = 0;
    unsigned dataUnit = 0;
    std::size_t firstDibit = 0; ///< place of its sync in the transmission
    std::size_t dibitCount = 0; ///< with sync and status symbols
    std::optional<HeaderFields> header = {};
    std::optional<LinkControl> link = {};
    std::optional<EncryptionSync> encryption = {};
    std::vector<VoiceBits> voice = {};
    std::vector<TrunkingData> trunking = {}; ///< blocks, last block flags as sent
};

/// Frames one behind the other as dibit text, with a list of what was sent.
class Transmission {
public:
    explicit Transmission(const ErrorInjector& errors = ErrorInjector()) : builder(errors) {}

    void AddHeader(unsigned networkAccessCode, const HeaderFields& fields);
    void AddLdu1(unsigned networkAccessCode, const LinkControl& link, const VoiceWords& voice,
                 const LowSpeedData& lowSpeedData = {});
    void AddLdu2(unsigned networkAccessCode, const EncryptionSync& sync, const VoiceWords& voice,
                 const LowSpeedData& lowSpeedData = {});
    void AddTerminator(unsigned networkAccessCode);
    void AddTerminatorWithLinkControl(unsigned networkAccessCode, const LinkControl& link);

    /// A trunking signalling packet of one to three blocks; their last block flags are set as they must be.
    void AddTrunking(unsigned networkAccessCode, std::span<const TrunkingData> blocks);

    /// A packet data unit of `blocks` blocks of 196 random bits.
    void AddPacket(unsigned networkAccessCode, int blocks, std::uint64_t seed = 1);

    /// A frame of a type that has no meaning, with `bits` random bits behind its network identifier; even.
    void AddUnknown(unsigned networkAccessCode, unsigned dataUnit, int bits, std::uint64_t seed = 1);

    /// Header, superframes, ending; `voice` is asked for 18 frames a superframe.
    void AddCall(const CallDescription& call, const VoiceSource& voice);

    /// Dibits of no frame, as a receiver slices them from noise.
    void AddRandomDibits(std::size_t count, std::uint64_t seed = 1);

    /// Dibits of no frame, all alike.
    void AddIdle(std::size_t count, char dibit = '0');

    const std::string& Dibits() const { return dibits; }
    const std::vector<SentFrame>& Frames() const { return frames; }

private:
    void Append(unsigned networkAccessCode, unsigned dataUnit, const std::string& frame);

    FrameBuilder builder;
    std::string dibits;
    std::vector<SentFrame> frames;
};

} // namespace orva::test
