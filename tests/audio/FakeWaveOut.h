/// A wave output device for tests.
#pragma once

#include "audio/WaveOutPlatform.h"
#include "audio/WindowsMultimedia.h"
#include "dsp/CtbSampleBlock.h"
#include "tests/audio/CallFault.h"
#include "tests/audio/CallLog.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orva::test {

/// Takes blocks, and is done with one when the test says so. Behaves as the platform documents it, with test
/// failures for calls that the platform would not bear, and can be told to misbehave. One at a time exists.
class FakeWaveOut {
public:
    explicit FakeWaveOut(CallLog& callLog);
    ~FakeWaveOut();
    FakeWaveOut(const FakeWaveOut&) = delete;
    FakeWaveOut& operator=(const FakeWaveOut&) = delete;

    [[nodiscard]] const audio::WaveOutPlatform& Platform() const { return platform; }

    // What the test says.

    /// Reports the oldest block done, by a message that is sent.
    void FinishBlock();
    void FinishAllBlocks();
    /// The same for a block that need not be the oldest.
    void FinishHeader(WAVEHDR* header);
    /// Is unplugged: every call fails from now on, and the blocks in it are never reported.
    void Vanish();
    /// Reports a header once more, by a message that is sent, without touching it.
    void ReportAgain(WAVEHDR* header) const;
    /// Sends any message to the window that the device reports to.
    void Report(UINT message, LPARAM lParam) const;
    /// The oldest block's header is marked as done and its report left in the message queue.
    void PostFinishedBlock();

    std::vector<std::string> deviceNames{"Loudspeaker"}; ///< by device number
    MMRESULT openResult = MMSYSERR_NOERROR;
    MMRESULT closeResult = MMSYSERR_NOERROR;
    MMRESULT resetResult = MMSYSERR_NOERROR;
    CallFault prepareFault;
    CallFault writeFault;
    bool isStalled = false;        ///< finishes nothing, not even by a reset
    bool isGone = false;           ///< every call fails, and nothing is reported
    bool keepsPlayed = true;       ///< off for tests that count allocations
    std::function<void()> onClose; ///< when the device is told to close
    bool logsTraffic = false;      ///< prepare, write, unprepare go to the log too

    // What the device saw.

    struct Opening {
        UINT deviceId;
        WAVEFORMATEX format;
        HWND window;
        DWORD_PTR instance;
        DWORD flags;
    };
    struct Block {
        dsp::CtbSampleBlock* block;
        std::vector<std::int16_t> samples;
    };

    [[nodiscard]] bool IsOpen() const { return isOpen; }
    [[nodiscard]] std::size_t BlocksInside() const { return queue.size(); }
    [[nodiscard]] WAVEHDR* OldestHeader() const { return queue.front(); }
    [[nodiscard]] WAVEHDR* NewestHeader() const { return queue.back(); }

    std::vector<Opening> openings;
    std::vector<Block> played;     ///< blocks written, in order
    std::vector<WAVEHDR> prepared; ///< headers as they came to be prepared
    std::vector<WAVEHDR*> written; ///< headers, in order
    std::size_t mostInside = 0;

private:
    static UINT WINAPI GetNumDevs();
    static MMRESULT WINAPI GetDevCaps(UINT_PTR id, LPWAVEOUTCAPSA capabilities, UINT size);
    static MMRESULT WINAPI Open(LPHWAVEOUT handle, UINT id, LPCWAVEFORMATEX format, DWORD_PTR callback,
                                DWORD_PTR instance, DWORD flags);
    static MMRESULT WINAPI PrepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size);
    static MMRESULT WINAPI Write(HWAVEOUT handle, LPWAVEHDR header, UINT size);
    static MMRESULT WINAPI UnprepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size);
    static MMRESULT WINAPI Reset(HWAVEOUT handle);
    static MMRESULT WINAPI Close(HWAVEOUT handle);

    [[nodiscard]] MMRESULT CheckHandle(HWAVEOUT handle) const;
    [[nodiscard]] HWAVEOUT Handle() const;
    WAVEHDR* TakeOldest();

    CallLog& log;
    audio::WaveOutPlatform platform;
    bool isOpen = false;
    std::uintptr_t generation = 0; ///< each opening has a handle of its own
    std::vector<WAVEHDR*> queue;   ///< oldest first
};

} // namespace orva::test
