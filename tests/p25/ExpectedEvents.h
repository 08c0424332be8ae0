/// What a receiver must hear of a transmission, worked out from what was sent.
#pragma once

#include "tests/support/Transmission.h"

#include <string>
#include <vector>

namespace orva::test {

/// Events in the words of `DecodedStream`. nidErrors  wrong bits in every network identifier. Frames that do
/// not follow each other at once are taken to be so far apart that the sync in between fails.
std::vector<std::string> ExpectedEvents(const std::vector<SentFrame>& frames, int nidErrors);

} // namespace orva::test
