/// The spectrum display, as the top window sees it.
#pragma once

#include <cstdint>

namespace orva::ui {

/// Takes the samples on their way: what it filters out, no later stage sees.
class ISpectrumView {
public:
    virtual ~ISpectrumView() = default;
    /// \param samples  worked on in place by the notch filter; `count` of them
    /// \param flags    2 live input, 4 the spectrum is mirrored
    virtual void ProcessSamples(float* samples, std::uint32_t count, std::uint32_t flags) = 0;
    virtual void SetSampleRate(std::uint32_t rate) = 0; ///< [Hz]
    /// Correction of the receiver's filter, `count` values around 0.
    virtual void SetShape(const std::int8_t* values, std::uint32_t count) = 0;
    virtual void SetSquelched(bool squelched) = 0;
    virtual void
    SetPlaybackMode(std::int32_t mode) = 0;      ///< 0 live, 1 intermediate frequency is played, 2 audio is
    virtual void SetAudioMode(bool isAudio) = 0; ///< the band begins at 0
    virtual void SetEnabled(bool enabled) = 0;
};

} // namespace orva::ui
