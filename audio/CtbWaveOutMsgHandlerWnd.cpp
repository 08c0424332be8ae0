#include "audio/CtbWaveOutMsgHandlerWnd.h"

#include "audio/CtbWaveOut.h"

namespace orva::audio {

CtbWaveOutMsgHandlerWnd::CtbWaveOutMsgHandlerWnd(CtbWaveOut* waveOutput)
    : TmyComponent(nullptr, "", WS_POPUP, 0, {0, 0, 1, 1}), output(waveOutput) {}

LRESULT CtbWaveOutMsgHandlerWnd::WndProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == MM_WOM_CLOSE) {
        output->OnDeviceClosed();
    } else if (message == MM_WOM_DONE) {
        output->OnBlockDone(reinterpret_cast<WAVEHDR*>(lParam));
    }
    return TmyComponent::WndProc(message, wParam, lParam);
}

} // namespace orva::audio
