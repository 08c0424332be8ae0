#include "tests/support/BusyControlChannel.h"

#include "tests/support/C4fmPulse.h"
#include "tests/support/TrunkingMessage.h"

#include <array>
#include <cstdint>
#include <vector>

namespace orva::test {

namespace {

constexpr unsigned kMostBlocks = 3;
constexpr std::uint32_t kBase = 170202500; ///< 851.0125 MHz
constexpr unsigned kSpacing = 50;          ///< 6.25 kHz
constexpr unsigned kStatusBroadcast = 58;
constexpr unsigned kNetworkBroadcast = 59;

/// Arguments of a message that only its number tells from others of its kind.
std::array<std::uint8_t, 8> NumberedArguments(unsigned number) {
    return {0, 1, 2, 3, 4, 5, static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
}

} // namespace

TrunkingData BusyMessage(unsigned number) {
    constexpr unsigned kKinds = 10;
    const ChannelField channel{1 + number % 2, number % 4096};
    const unsigned group = (1000 + number) % 65536;
    switch (number % kKinds) {
    case 0:
        return IdentifierUpdate({.identifier = 1 + number / kKinds % 2,
                                 .transmitOffset = static_cast<int>(number % 8192),
                                 .spacing = kSpacing,
                                 .baseFrequency = kBase});
    case 1:
        return GroupGrant(channel, group, 70000 + number, 4);
    case 2:
        return GroupGrantUpdate(channel, group, {1, 5}, group + 1);
    case 3:
        return OtherMessage(kNetworkBroadcast, 0, NumberedArguments(number));
    case 4:
        return GroupGrantUpdateExplicit({2, 7}, channel, group, 0);
    case 5:
        return UnitGrant(channel, 80000 + number, 90000 + number);
    case 6:
        return RegroupedGrantUpdate(channel, group, {2, 9}, group + 7);
    case 7:
        return OtherMessage(kStatusBroadcast, 0, NumberedArguments(number));
    case 8:
        return UnitGrantUpdate(channel, 80000 + number, 90000 + number);
    default:
        return RegroupedGrant(channel, group, 70000 + number);
    }
}

void BusyControlChannel::AddPacket(Transmission& transmission, unsigned blocks) {
    std::vector<TrunkingData> messages;
    while (messages.size() < blocks) {
        messages.push_back(BusyMessage(number++));
    }
    transmission.AddTrunking(networkAccessCode, messages);
}

void BusyControlChannel::AddSeconds(Transmission& transmission, double seconds) {
    const std::size_t begin = transmission.Dibits().size();
    for (unsigned packet = 0;
         static_cast<double>(transmission.Dibits().size() - begin) < seconds * kSymbolRate; ++packet) {
        AddPacket(transmission, 1 + packet % kMostBlocks);
    }
}

} // namespace orva::test
