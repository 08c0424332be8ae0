#pragma once

#include "tests/support/Transmission.h"
#include "tests/support/TrunkingPacket.h"

namespace orva::test {

/// Message `number`, from 0, of a control channel with much to say: band plans of the identifiers 1 and 2,
/// every kind of grant on them, and messages of no interest to a listener. No two below 4096 are alike.
TrunkingData BusyMessage(unsigned number);

/// Packets of such messages.
class BusyControlChannel {
public:
    explicit BusyControlChannel(unsigned nac) : networkAccessCode(nac) {}

    /// Appends a packet of the next `blocks` messages, 1..3.
    void AddPacket(Transmission& transmission, unsigned blocks);

    /// Appends packets of one, two and three blocks by turns until there are at least `seconds` of them.
    void AddSeconds(Transmission& transmission, double seconds);

private:
    unsigned networkAccessCode;
    unsigned number = 0;
};

} // namespace orva::test
