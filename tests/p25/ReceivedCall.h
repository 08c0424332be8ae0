#pragma once

#include "tests/p25/DecodedStream.h"
#include "tests/support/C4fmModulator.h"
#include "tests/support/Transmission.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orva::test {

/// A call sent over the air to a receiver that has just been switched on: a short call on the centre
/// frequency, a warm-up call at the carrier's offset, then the call that counts.
class ReceivedCall {
public:
    /// settings  of the signal; its carrier offset is that of the second and the third call. superframes  of
    /// the third call.
    ReceivedCall(const ModulatorSettings& settings, int superframes);

    /// What the third call must make a receiver tell, and what it told.
    std::vector<std::string> expectedEvents;
    std::vector<std::string> events;

    /// Of the frames of the third call whose network identifier was heard.
    std::size_t dibits = 0;
    std::size_t wrongDibits = 0;
    std::size_t voiceFrames = 0;
    std::size_t exactVoiceFrames = 0; ///< all 88 bits as they were sent

    double DibitErrorPercent() const;
    double ExactVoicePercent() const;

private:
    void Compare(const std::string& text, const DecodedStream& stream, const Transmission& call,
                 const CallDescription& description);
};

} // namespace orva::test
