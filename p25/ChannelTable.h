/// Channel identifiers learned from a control channel, and the frequencies they give.
#pragma once

#include <cstdint>

namespace orva::p25 {

/// A frequency of any size in 32 bits: hertz below 0x80000000, otherwise tens of hertz with bit 31 set.
std::uint32_t CodeFrequency(std::uint64_t hz);

/// The frequency [Hz] that a coded one stands for; of tens of hertz the last digit is lost.
std::uint64_t DecodeFrequency(std::uint32_t coded);

/// One identifier's band plan.
struct ChannelIdentifier {
    std::uint64_t baseFrequency = 0;  ///< Hz; 0 for an identifier not yet heard
    std::uint32_t channelSpacing = 0; ///< Hz
};

/// Sixteen identifiers, valid for one control channel: learned on another one they are dropped.
class ChannelTable {
public:
    static constexpr std::uint32_t kIdentifiers = 16;
    static constexpr std::uint32_t kUnknownFrequency = 0xFFFFFFFFU;

    /// Where the receiver is tuned [Hz], all ones when not known.
    void SetTunedFrequency(std::uint32_t hz) { tunedFrequency = hz; }

    /// Empties the table if the receiver has been tuned away from where it was learned, by more than 5000 Hz.
    void CheckValidity();

    /// `identifier` 0..15.
    void Learn(std::uint32_t identifier, const ChannelIdentifier& plan);
    const ChannelIdentifier& Get(std::uint32_t identifier) const;

    /// Coded frequency of a channel, 0 while the identifier is unknown. `identifier` 0..15, `channel`
    /// 0..4095.
    std::uint32_t CodedFrequency(std::uint32_t identifier, std::uint32_t channel) const;

private:
    friend struct ChannelTableInspector;

    ChannelIdentifier identifiers[kIdentifiers];
    std::uint32_t tableFrequency = kUnknownFrequency; ///< for which the table holds
    std::uint32_t tunedFrequency = kUnknownFrequency;
};

} // namespace orva::p25
