/// Where a wave output device reports to.
#pragma once

#include "toolkit/TmyComponent.h"

namespace orva::audio {

class CtbWaveOut;

/// A hidden window, whose handle is the address of the device's notifications.
class CtbWaveOutMsgHandlerWnd : public toolkit::TmyComponent {
public:
    /// \param waveOutput  gets the notifications; must outlive the window
    explicit CtbWaveOutMsgHandlerWnd(CtbWaveOut* waveOutput);

    LRESULT WndProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    CtbWaveOut* output;
};

} // namespace orva::audio
