/// The setup dialog, as the top window sees it.
#pragma once

#include <cstdint>

namespace orva::dsp {
class TFIR_F32;
}

namespace orva::ui {

/// Shows settings that change by other means than the dialog itself.
class ISetupView {
public:
    virtual ~ISetupView() = default;
    virtual void ListDevices() = 0;       ///< of the machine, anew
    virtual void ShowReceiverInput() = 0; ///< the input is the receiver, not a sound card
    virtual void ShowWaveInDevice(std::uint32_t id) = 0;
    virtual void ShowMuteEncrypted(bool mute) = 0;
    virtual void ShowOrvaGain(std::int32_t decibels) = 0;
    virtual void ShowAudioFilterEnabled(bool enabled) = 0;
    virtual void ShowAudioFilter(dsp::TFIR_F32& filter) = 0;
};

} // namespace orva::ui
