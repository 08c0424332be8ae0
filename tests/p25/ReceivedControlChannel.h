#pragma once

#include "tests/p25/ControlChannelStream.h"
#include "tests/support/C4fmModulator.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orva::test {

/// A control channel sent over the air to a receiver that has just been switched on: a short call on the
/// centre frequency, a warm-up call at the carrier's offset, then packets of three blocks of which no two are
/// alike.
class ReceivedControlChannel {
public:
    /// settings  of the signal; its carrier offset is that of all but the first call
    ReceivedControlChannel(const ModulatorSettings& settings, int packets);

    std::vector<HeardBlock> sentBlocks; ///< as a perfect receiver hears them
    std::vector<std::string> sentRecords;
    std::vector<HeardBlock> heardBlocks; ///< of the control channel
    std::vector<std::string> heardRecords;

    std::size_t rightBlocks = 0;  ///< good ones that were sent, in the order in which they were sent
    std::size_t wrongBlocks = 0;  ///< other good ones
    std::size_t wrongRecords = 0; ///< that the blocks which were heard right do not make

    double RightPercent() const;

private:
    void Compare();
};

} // namespace orva::test
