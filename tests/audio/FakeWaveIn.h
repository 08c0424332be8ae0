/// A wave input device for tests.
#pragma once

#include "audio/WaveInPlatform.h"
#include "audio/WindowsMultimedia.h"
#include "tests/audio/CallFault.h"
#include "tests/audio/CallLog.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orva::test {

/// Fills the buffers it is given when the test says so. Behaves as the platform documents it, with test
/// failures for calls that the platform would not bear, and can be told to misbehave. One at a time exists.
class FakeWaveIn {
public:
    explicit FakeWaveIn(CallLog& callLog);
    ~FakeWaveIn();
    FakeWaveIn(const FakeWaveIn&) = delete;
    FakeWaveIn& operator=(const FakeWaveIn&) = delete;

    [[nodiscard]] const audio::WaveInPlatform& Platform() const { return platform; }

    // What the test says.

    /// Fills the oldest buffer with samples that count up from `firstSample`, says that `bytes` bytes were
    /// recorded, and reports it by a message that is sent.
    void Fill(DWORD bytes, std::int16_t firstSample = 0);
    /// The same, but the report is left in the message queue.
    void PostFilled(DWORD bytes, std::int16_t firstSample = 0);
    /// Reports a header once more, by a message that is sent, without touching it.
    void ReportAgain(const WAVEHDR* header) const;
    /// Sends any message to the window that the device reports to.
    void Report(UINT message, LPARAM lParam) const;
    /// Is unplugged: every call fails from now on, and the buffers in it are never reported.
    void Vanish();

    std::vector<std::string> deviceNames{"Microphone"}; ///< by device number
    MMRESULT openResult = MMSYSERR_NOERROR;
    MMRESULT closeResult = MMSYSERR_NOERROR;
    MMRESULT startResult = MMSYSERR_NOERROR;
    CallFault prepareFault;
    CallFault addFault;
    bool isStalled = false;        ///< gives no buffer back, not even at a reset
    bool isGone = false;           ///< every call fails
    std::function<void()> onClose; ///< when the device is told to close
    bool logsTraffic = false;      ///< prepare, add, unprepare go to the log too

    // What the device saw.

    struct Opening {
        UINT deviceId;
        WAVEFORMATEX format;
        HWND window;
        DWORD_PTR instance;
        DWORD flags;
    };

    [[nodiscard]] bool IsOpen() const { return isOpen; }
    [[nodiscard]] bool IsRecording() const { return isRecording; }
    [[nodiscard]] std::size_t BuffersInside() const { return queue.size(); }
    [[nodiscard]] WAVEHDR* OldestHeader() const { return queue.front(); }
    [[nodiscard]] WAVEHDR* NewestHeader() const { return queue.back(); }
    [[nodiscard]] const std::vector<WAVEHDR*>& Headers() const { return queue; }

    std::vector<Opening> openings;
    std::vector<WAVEHDR> prepared; ///< headers as they came to be prepared
    std::vector<WAVEHDR> added;    ///< headers as they were queued

private:
    static UINT WINAPI GetNumDevs();
    static MMRESULT WINAPI GetDevCaps(UINT_PTR id, LPWAVEINCAPSA capabilities, UINT size);
    static MMRESULT WINAPI Open(LPHWAVEIN handle, UINT id, LPCWAVEFORMATEX format, DWORD_PTR callback,
                                DWORD_PTR instance, DWORD flags);
    static MMRESULT WINAPI PrepareHeader(HWAVEIN handle, LPWAVEHDR header, UINT size);
    static MMRESULT WINAPI AddBuffer(HWAVEIN handle, LPWAVEHDR header, UINT size);
    static MMRESULT WINAPI Start(HWAVEIN handle);
    static MMRESULT WINAPI Reset(HWAVEIN handle);
    static MMRESULT WINAPI UnprepareHeader(HWAVEIN handle, LPWAVEHDR header, UINT size);
    static MMRESULT WINAPI Close(HWAVEIN handle);

    [[nodiscard]] MMRESULT CheckHandle(HWAVEIN handle) const;
    [[nodiscard]] HWAVEIN Handle() const;
    WAVEHDR* TakeFilled(DWORD bytes, std::int16_t firstSample);

    CallLog& log;
    audio::WaveInPlatform platform;
    bool isOpen = false;
    bool isRecording = false;
    std::uintptr_t generation = 0; ///< each opening has a handle of its own
    std::vector<WAVEHDR*> queue;   ///< oldest first
};

} // namespace orva::test
