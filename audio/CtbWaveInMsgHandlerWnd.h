/// Where a wave input device reports to.
#pragma once

#include "toolkit/TmyComponent.h"

namespace orva::audio {

class CtbWaveIn;

/// A hidden window, whose handle is the address of the device's notifications.
class CtbWaveInMsgHandlerWnd : public toolkit::TmyComponent {
public:
    /// \param waveInput  gets the notifications; must outlive the window
    explicit CtbWaveInMsgHandlerWnd(CtbWaveIn* waveInput);

    LRESULT WndProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    CtbWaveIn* input;
};

} // namespace orva::audio
