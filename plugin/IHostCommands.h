/// What the host can have an instance do.
#pragma once

#include "plugin/HostInterface.h"

#include <cstdint>

namespace orva::plugin {

/// The receiving end of the host's codes. [window thread]
class IHostCommands {
public:
    virtual void ClearSavedStreamValue() = 0;
    virtual void SetPower(bool isOn) = 0;
    virtual void SetReceiverFrequency(std::uint32_t hertz) = 0;

    /// True while the instance itself is telling the host its mode: the host's echo is not to be obeyed.
    [[nodiscard]] virtual bool IsInHostModeCall() const = 0;
    virtual void SetDemodulationMode(std::int32_t mode) = 0;

    /// `values` may be null.
    virtual void SetSquelchSetup(std::uint32_t type, const SquelchValues* values) = 0;
    virtual void SetHostSquelch(std::uint32_t closed) = 0;
    virtual void SetVolume(std::int32_t volume) = 0;
    virtual void SetMute(std::int32_t isMuted) = 0;
    virtual void SetScanner(std::uint32_t isOn) = 0;

protected:
    ~IHostCommands() = default;
};

} // namespace orva::plugin
