/// Plays blocks of samples on one wave output device.
#pragma once

#include "audio/DeviceSetupPlatform.h"
#include "audio/ItbWaveOutputDataSource.h"
#include "audio/VirtualSoundCard.h"
#include "audio/WaveOutPlatform.h"
#include "audio/WindowsMultimedia.h"
#include "dsp/CtbSampleBlock.h"
#include "dsp/Fifo.h"

#include <cstdint>
#include <memory>
#include <string>

namespace orva::toolkit {
class TmyControl;
}

namespace orva::audio {

class CtbWaveOutMsgHandlerWnd;

/// The last stage of the audio path: scales blocks of 16-bit mono samples by the volume, sends them to the
/// device, and gives each back to its owner when the device is done with it.
///
/// Pacing is the flow of blocks alone: the owner has so many, and what he gets back he may fill again.
///
/// | state              | is left by                                                                       |
/// |--------------------|----------------------------------------------------------------------------------|
/// | closed             | `Open`, `Start`                                                                  |
/// | open and stopped   | `Close`                                                                          |
/// | running, gathering | the block that makes up `prebufferBlocks`: all are sent, in order                |
/// | running, flowing   | `RequestPrebuffer`: gathers again, while the device plays on                     |
/// | running            | `Stop`                                                                           |
///
/// An underrun is no state: the device runs dry and plays the next block when it comes.
///
/// Order of calls: `SetDataSource`, `SetPrebufferBlocks`, `Start`, any number of `Write`. To change the
/// device or the rate: `Stop`, drain the pending messages, `Close`, drain again, the setter, `Start`. The
/// first drain brings all blocks home, the second the device's last word. While the messages are drained
/// others run too, and a `Write` among them gets its block back.
///
/// All calls on the thread that made the object; the device's notifications are messages on the same thread.
/// Once as many blocks as ever have been at the device, nothing is allocated.
class CtbWaveOut {
public:
    static constexpr std::uint32_t kAlreadyOpen = 4; ///< result of opening an open device
    static constexpr std::uint32_t kNotRunning = 100;
    static constexpr std::uint32_t kNoDevice = 102;
    static constexpr std::uint32_t kMaxVolume = 32;

    /// \param rate   samples per second [Hz]
    /// \param waveOut, setup   calls to the platform; must outlive the object
    explicit CtbWaveOut(std::uint32_t rate, const WaveOutPlatform& waveOut = SystemWaveOut(),
                        const DeviceSetupPlatform& setup = SystemDeviceSetup());
    CtbWaveOut(const CtbWaveOut&) = delete;
    CtbWaveOut& operator=(const CtbWaveOut&) = delete;

    /// Stops and closes the device, and gives back all blocks. Those that a device still has which cannot be
    /// closed are left to it, with their headers: it may still read them.
    ~CtbWaveOut();

    /// \param source  gets the blocks back; not owned, must outlive the object; null for none
    void SetDataSource(ItbWaveOutputDataSource* source) { dataSource = source; }

    /// Blocks to gather before the first is sent; raises the most blocks at the device to `count` + 2 if they
    /// are not above it. Ignored while running.
    void SetPrebufferBlocks(std::uint32_t count);

    /// Most blocks at the device; at or below the blocks to gather, it becomes two more than these. Ignored
    /// while running.
    void SetMaxBlocks(std::uint32_t count);

    /// [Hz]; ignored while a device is open.
    void SetSampleRate(std::uint32_t rate);
    [[nodiscard]] std::uint32_t GetSampleRate() const { return sampleRate; }

    /// Number of the device to open next, from 0; ignored while running.
    void SetDevice(std::uint32_t id);

    /// Devices of the machine; their numbers are below it.
    [[nodiscard]] std::uint32_t GetDeviceCount() const;
    /// Product name of any device, open or not; empty when there is none of that number.
    [[nodiscard]] std::string GetDeviceName(std::uint32_t id) const;

    /// Opens the device. Blocks that an earlier device never gave back are given back now.
    ///
    /// \return 0, `kAlreadyOpen`, or the platform's error
    std::uint32_t Open();

    /// Opens the device and begins to gather blocks.
    ///
    /// \return as `Open`; nothing is begun unless it is 0
    std::uint32_t Start();

    /// Plays the block, or gives it back: at once if the output is not running, the block is empty, or there
    /// are as many at the device as may be; otherwise when the device is done with it. The whole capacity is
    /// played, whatever the used count, and scaled in place: 2.5 times for each step of the volume, clipped
    /// to -32767 .. 32767. Null is ignored.
    void Write(dsp::CtbSampleBlock* block);

    /// Gathers again before the next block is sent. For a stream that begins anew.
    void RequestPrebuffer() { prebuffering = true; }

    /// Stops, and makes the device report all of its blocks done. What was being gathered stays.
    ///
    /// \return 0, `kNotRunning`, `kNoDevice`, or the platform's error
    std::uint32_t Stop();

    /// Closes the device; if that fails it stays open.
    ///
    /// \return 0, `kNoDevice`, or the platform's error
    std::uint32_t Close();

    void SetVolume(std::int32_t steps); ///< clamped to 0 .. `kMaxVolume`
    [[nodiscard]] std::uint32_t GetVolume() const { return volume; }
    /// Blocks are played as silence: the pace is kept.
    void SetMute(bool muted) { mute = muted; }
    [[nodiscard]] bool GetMute() const { return mute; }

    // For the message window.

    /// The device was closed, by us or by itself.
    void OnDeviceClosed() { handle = nullptr; }
    /// The device is done with a block. A header that is not at the device is ignored: the notification is
    /// doubled, or came after its block was given back.
    void OnBlockDone(WAVEHDR* header);

private:
    friend struct CtbWaveOutInspector;

    void LeaveReserve();
    static void Silence(dsp::CtbSampleBlock& block);
    void Scale(dsp::CtbSampleBlock& block) const;
    void Gather(dsp::CtbSampleBlock* block);
    void Send(dsp::CtbSampleBlock* block);
    [[nodiscard]] bool SendWith(WAVEHDR* header, dsp::CtbSampleBlock* block);
    [[nodiscard]] WAVEHDR* TakeHeader();
    void Recycle(WAVEHDR* header);
    [[nodiscard]] bool TakeFromDevice(const WAVEHDR* header);
    void GiveBack(dsp::CtbSampleBlock* block);
    void GiveBackLostBlocks();
    void GiveBackGatheredBlocks();
    void FreeHeaders();
    void ForgetMessageWindow(toolkit::TmyControl* sender);

    const WaveOutPlatform& platform;
    std::uint32_t prebufferBlocks = 2; ///< to gather before the first one is sent
    std::uint32_t maxBlocks = 6;       ///< most that may be at the device
    bool running = false;              ///< started and accepting samples
    std::uint32_t sampleRate;          ///< [Hz]
    std::uint32_t deviceId = 0;
    HWAVEOUT handle = nullptr; ///< null when no device is open
    bool prebuffering = false; ///< blocks are gathered, not sent
    dsp::Fifo<dsp::CtbSampleBlock*> prebufferQueue;
    dsp::Fifo<WAVEHDR*> freeHeaders; ///< owned
    /// Headers written and not yet reported done, oldest first; owned. Each has its block in the user word.
    dsp::Fifo<WAVEHDR*> blocksInDevice;
    std::uint32_t volume = 8; ///< 0 .. `kMaxVolume`
    bool mute = false;
    ItbWaveOutputDataSource* dataSource = nullptr;
    std::unique_ptr<CtbWaveOutMsgHandlerWnd> messageWindow; ///< null once the platform destroyed it
    VirtualSoundCard virtualCard;
};

} // namespace orva::audio
