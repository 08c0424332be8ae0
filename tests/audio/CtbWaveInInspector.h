/// A look inside wave input.
#pragma once

#include "audio/CtbWaveIn.h"
#include "audio/CtbWaveInMsgHandlerWnd.h"

namespace orva::audio {

struct CtbWaveInInspector {
    const CtbWaveIn& input;

    [[nodiscard]] HWAVEIN Handle() const { return input.handle; }
    [[nodiscard]] std::uint32_t DeviceId() const { return input.deviceId; }
    [[nodiscard]] std::uint32_t BufferCount() const { return input.bufferCount; }
    [[nodiscard]] std::uint32_t BufferSamples() const { return input.bufferSamples; }
    [[nodiscard]] std::uint32_t BuffersQueued() const { return input.buffersQueued; }
    [[nodiscard]] bool Closing() const { return input.closing; }
    [[nodiscard]] bool Stopping() const { return input.stopping; }
    [[nodiscard]] bool Started() const { return input.started; }
    [[nodiscard]] CtbWaveInMsgHandlerWnd* MessageWindow() const { return input.messageWindow.get(); }
    [[nodiscard]] WAVEHDR* Headers() const { return input.headers.get(); }
};

} // namespace orva::audio
