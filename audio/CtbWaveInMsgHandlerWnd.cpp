#include "audio/CtbWaveInMsgHandlerWnd.h"

#include "audio/CtbWaveIn.h"

namespace orva::audio {

CtbWaveInMsgHandlerWnd::CtbWaveInMsgHandlerWnd(CtbWaveIn* waveInput)
    : TmyComponent(nullptr, "", WS_POPUP, 0, {0, 0, 1, 1}), input(waveInput) {}

LRESULT CtbWaveInMsgHandlerWnd::WndProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const LifeGuard life(this);
    if (message == MM_WIM_CLOSE) {
        input->OnDeviceClosed();
    } else if (message == MM_WIM_DATA) {
        input->OnBufferFilled(reinterpret_cast<const WAVEHDR*>(lParam));
    }
    // Whoever processed the buffer may have deleted the input, and with it this window.
    return life.IsAlive() ? TmyComponent::WndProc(message, wParam, lParam) : 0;
}

} // namespace orva::audio
