#include "p25/ChannelTable.h"

#include <algorithm>
#include <iterator>

namespace orva::p25 {

namespace {

constexpr std::uint64_t kPlainLimit = 0x80000000U;
constexpr std::uint32_t kTensFlag = 0x80000000U;
constexpr std::uint64_t kCodedUnit = 10;
constexpr std::uint32_t kRetuneHz = 5000;

} // namespace

std::uint32_t CodeFrequency(std::uint64_t hz) {
    if (hz < kPlainLimit) {
        return static_cast<std::uint32_t>(hz);
    }
    return static_cast<std::uint32_t>(hz / kCodedUnit) | kTensFlag;
}

std::uint64_t DecodeFrequency(std::uint32_t coded) {
    return (coded & kTensFlag) != 0 ? (coded & ~kTensFlag) * kCodedUnit : coded;
}

void ChannelTable::CheckValidity() {
    if (tunedFrequency == kUnknownFrequency) {
        return;
    }
    // In 32 bits: from an unknown table frequency the lower bound wraps to a high value, and the table is
    // taken over.
    const std::uint32_t lowest = tableFrequency - kRetuneHz;
    const std::uint32_t highest = tableFrequency + kRetuneHz;
    if (tunedFrequency < lowest || tunedFrequency > highest) {
        std::fill(std::begin(identifiers), std::end(identifiers), ChannelIdentifier{});
        tableFrequency = tunedFrequency;
    }
}

void ChannelTable::Learn(std::uint32_t identifier, const ChannelIdentifier& plan) {
    identifiers[identifier % kIdentifiers] = plan;
}

const ChannelIdentifier& ChannelTable::Get(std::uint32_t identifier) const {
    return identifiers[identifier % kIdentifiers];
}

std::uint32_t ChannelTable::CodedFrequency(std::uint32_t identifier, std::uint32_t channel) const {
    const ChannelIdentifier& plan = Get(identifier);
    return plan.baseFrequency == 0 ? 0 : CodeFrequency(plan.baseFrequency + channel * plan.channelSpacing);
}

} // namespace orva::p25
