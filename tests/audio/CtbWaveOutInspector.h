/// A look inside wave output.
#pragma once

#include "audio/CtbWaveOut.h"
#include "audio/CtbWaveOutMsgHandlerWnd.h"
#include "tests/audio/VirtualSoundCardInspector.h"

namespace orva::audio {

struct CtbWaveOutInspector {
    const CtbWaveOut& output;

    [[nodiscard]] std::uint32_t PrebufferBlocks() const { return output.prebufferBlocks; }
    [[nodiscard]] std::uint32_t MaxBlocks() const { return output.maxBlocks; }
    [[nodiscard]] bool Running() const { return output.running; }
    [[nodiscard]] std::uint32_t DeviceId() const { return output.deviceId; }
    [[nodiscard]] HWAVEOUT Handle() const { return output.handle; }
    [[nodiscard]] bool Prebuffering() const { return output.prebuffering; }
    [[nodiscard]] std::size_t Gathered() const { return output.prebufferQueue.Count(); }
    [[nodiscard]] std::size_t FreeHeaders() const { return output.freeHeaders.Count(); }
    [[nodiscard]] std::size_t BlocksInDevice() const { return output.blocksInDevice.Count(); }
    [[nodiscard]] bool Mute() const { return output.mute; }
    [[nodiscard]] ItbWaveOutputDataSource* DataSource() const { return output.dataSource; }
    [[nodiscard]] CtbWaveOutMsgHandlerWnd* MessageWindow() const { return output.messageWindow.get(); }
    [[nodiscard]] VirtualSoundCardInspector Card() const { return {output.virtualCard}; }
};

} // namespace orva::audio
