/// Records from one wave input device.
#pragma once

#include "audio/IWaveInputOwner.h"
#include "audio/WaveInPlatform.h"
#include "audio/WindowsMultimedia.h"
#include "dsp/CtbSampleBlock.h"

#include <cstdint>
#include <memory>
#include <string>

namespace orva::toolkit {
class TmyControl;
}

namespace orva::audio {

class CtbWaveInMsgHandlerWnd;

/// Records 16-bit mono samples at 48000 Hz into buffers of a fixed size, and hands each to its owner where it
/// lies. A buffer goes back to the device when the owner asks for it; when he cannot keep up the device runs
/// out of buffers and drops samples.
///
/// | state            | is left by         |
/// |------------------|--------------------|
/// | closed           | `Open`, to started |
/// | open and started | `Stop`, `Close`    |
/// | open and stopped | `Start`, `Close`   |
///
/// To change the device: `Stop`, drain the pending messages, `Close`, drain again, `SetDevice`, `Open`. The
/// first drain brings the buffers home, the second the device's last word: until that has come, `Open` fails.
///
/// All calls on the thread that made the object; the device's notifications are messages on the same thread.
/// Nothing is allocated after construction.
class CtbWaveIn {
public:
    static constexpr std::uint32_t kSampleRate = 48000; ///< [Hz]
    static constexpr std::uint32_t kNoDevice = 0xFFFFFFFF;

    /// \param count    buffers
    /// \param samples  size of each
    /// \param waveIn   calls to the platform; must outlive the object
    CtbWaveIn(std::uint32_t count, std::uint32_t samples, const WaveInPlatform& waveIn = SystemWaveIn());
    CtbWaveIn(const CtbWaveIn&) = delete;
    CtbWaveIn& operator=(const CtbWaveIn&) = delete;

    /// Stops and closes the device. The buffers of a device that neither gave them back nor told that it is
    /// closed are left to it: it may still write to them.
    ~CtbWaveIn();

    /// \param receiver  gets the buffers; not owned, must outlive the object; null to record for nobody
    void SetOwner(IWaveInputOwner* receiver) { owner = receiver; }
    [[nodiscard]] IWaveInputOwner* GetOwner() const { return owner; }

    /// Stops and closes the device, and stores the number of the one to open next; `kNoDevice` for none.
    void SetDevice(std::uint32_t id);

    /// Devices of the machine; their numbers are below it.
    [[nodiscard]] std::uint32_t GetDeviceCount() const;
    /// Product name of any device, open or not; empty when there is none of that number.
    [[nodiscard]] std::string GetDeviceName(std::uint32_t id) const;

    /// Opens the device and starts it; an open device is only started.
    ///
    /// \return false without a device, until a former one has told that it is closed, and when the platform
    /// refuses to open or to start
    bool Open();

    /// Gives the device all buffers, and lets it record. Does nothing, successfully, when it does already.
    ///
    /// \return false when no device is open, or the platform refuses
    bool Start();

    /// Ends recording; the device reports all of its buffers, which then stay out of it.
    void Stop();

    void Close();

    /// Hands a buffer to the device.
    ///
    /// \return false for an index out of range, a buffer that the device has already, and when the platform
    /// refuses
    bool Requeue(std::int32_t index);

    /// The samples of a buffer, the used count telling how many were recorded; null for an index out of
    /// range.
    [[nodiscard]] dsp::CtbSampleBlock* GetBlock(std::int32_t index) const;

    // For the message window.

    /// The device was closed, by us or by itself.
    void OnDeviceClosed();
    /// The device is done with a buffer. One that is not ours or is still at the device is ignored.
    ///
    /// The object may be gone afterwards: see `IWaveInputOwner`.
    void OnBufferFilled(const WAVEHDR* header);

private:
    friend struct CtbWaveInInspector;

    void PrepareHeaders();
    [[nodiscard]] bool HasIndex(std::int32_t index) const;
    [[nodiscard]] bool IsOurs(const WAVEHDR* header) const;
    void ForgetMessageWindow(toolkit::TmyControl* sender);

    const WaveInPlatform& platform;
    HWAVEIN handle = nullptr; ///< null when no device is open
    std::uint32_t deviceId = kNoDevice;
    std::uint32_t bufferCount;
    std::uint32_t bufferSamples;
    std::uint32_t buffersQueued = 0; ///< at the device
    IWaveInputOwner* owner = nullptr;
    bool closing = false;                                  ///< the device has not yet told that it is closed
    bool stopping = false;                                 ///< buffers that come back stay out
    bool started = false;                                  ///< the device records
    std::unique_ptr<CtbWaveInMsgHandlerWnd> messageWindow; ///< null once the platform destroyed it
    std::unique_ptr<dsp::CtbSampleBlock[]> blocks;         ///< [bufferCount]
    std::unique_ptr<WAVEHDR[]> headers;                    ///< [bufferCount], the index in the user word
};

} // namespace orva::audio
