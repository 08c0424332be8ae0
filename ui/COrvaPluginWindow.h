/// The top window of an instance.
#pragma once

#include "toolkit/TmyComponent.h"
#include "ui/CallReadout.h"
#include "ui/FileCommandDoor.h"
#include "ui/IPlayRecView.h"
#include "ui/IPluginWindowOwner.h"
#include "ui/ISetupView.h"
#include "ui/ISpectrumView.h"

#include <cstdint>
#include <optional>

namespace orva::toolkit {
class TmyMsgBox;
}

namespace orva::ui {

/// The window whose handle the host holds. It keeps display state only: what the user does goes to the
/// plug-in as an event, values come from there by setters.
///
/// | message       | action                             |
/// |---------------|------------------------------------|
/// | `WM_USER`     | the deferred start of the instance |
/// | `WM_USER` + 1 | fires `onInputBlock`               |
/// | `WM_COPYDATA` | a `FileCommand` of the own thread  |
///
/// The retry timer fires `onRetryTimer`.
class COrvaPluginWindow : public toolkit::TmyComponent {
public:
    COrvaPluginWindow();
    ~COrvaPluginWindow() override;

    LRESULT WndProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnTimer(UINT_PTR id) override;
    void SetEnabled(bool enabled) override; ///< the spectrum first

    /// The instance that the window belongs to; not owned.
    void SetOwner(IPluginWindowOwner* instance) { owner = instance; }

    /// Begins, and ends, to fire `onRetryTimer` each second.
    void StartRetryTimer();
    void StopRetryTimer();

    void OnPaint(HDC dc) override;

    // Values to show, once for each block of samples. A window without the view concerned ignores them.

    void ProcessSamples(float* samples, std::uint32_t count, std::uint32_t flags);
    void SetSpectrumRate(std::uint32_t rate);
    void SetSpectrumShape(const std::int8_t* values, std::uint32_t count);
    void SetSquelched(bool squelched);
    void SetFileMode(std::int32_t mode); ///< 0 no file, 1 intermediate frequency is played, 2 audio is
    void SetAudioMode(bool isAudio);     ///< the spectrum is one of audio
    void SetBer(float percent);
    void SetNac(std::int32_t nac);
    void SetTgid(std::int32_t talkGroup);
    void SetSid(std::int32_t source);
    void SetDid(std::int32_t destination);
    void SetTransmission(std::uint32_t transmission);
    void SetEncryption(std::uint8_t algorithm);
    void SetSignal(std::int32_t signal);
    void SetDemodulationMode(std::int32_t mode); ///< a change fires `onDemodulationMode`
    void SetSelectiveMask(std::uint32_t mask);   ///< a change fires `onSelectiveMask`
    void SetVolume(std::int32_t newVolume) { volume = newVolume; }
    [[nodiscard]] std::int32_t GetVolume() const { return volume; }
    void SetMuteDown(bool down) { muteDown = down; }
    [[nodiscard]] bool GetMuteDown() const { return muteDown; }
    void SetAFEnabled(std::int32_t enabled);
    void ListDevices();
    void ShowReceiverInput();
    void ShowWaveInDevice(std::uint32_t id);
    void ShowMuteEncrypted(bool mute);
    void ShowOrvaGain(std::int32_t decibels);
    void ShowAudioFilter(dsp::TFIR_F32& filter);

    // The play and record panel.

    /// \param file  not kept
    void SetFile(const audio::CtbWaveFile* file, bool supported);
    void SetPlaying();
    void SetRecording();
    void SetStopped();
    void SetPaused(bool paused);
    void ShowFilePosition(std::uint32_t bytes, std::uint32_t seconds); ///< of a file that is played
    void ShowFileSize(std::uint32_t bytes, std::uint32_t seconds);     ///< of a file that grows
    /// What to record and where; nothing if there is nobody to say so.
    [[nodiscard]] std::optional<RecordingChoice> GetRecordingChoice();
    void SelectNextFile();

    [[nodiscard]] const CallReadout& Readout() const { return readout; }

    /// For errors that the user must know of: one button, "OK". Null if its window went away by itself.
    [[nodiscard]] toolkit::TmyMsgBox* ErrorBox() const { return errorBox; }

    toolkit::TmyEvent<> onInputBlock;
    toolkit::TmyEvent<> onRetryTimer;
    toolkit::TmyEvent<std::int32_t> onDemodulationMode;
    toolkit::TmyEvent<std::int32_t> onAFFreqLow;
    toolkit::TmyEvent<std::int32_t> onAFFreqHigh;
    toolkit::TmyEvent<std::int32_t> onAFLowpass;
    toolkit::TmyEvent<std::int32_t> onAFDeemphasis;
    toolkit::TmyEvent<std::int32_t> onAFFilterLength;
    toolkit::TmyEvent<std::int32_t> onAFEnabled;
    toolkit::TmyEvent<std::int32_t> onSelectiveMask;
    toolkit::TmyEvent<std::int32_t> onMuteEncrypted;
    toolkit::TmyEvent<std::int32_t> onOrvaGain;

private:
    friend struct COrvaPluginWindowInspector;

    void Refresh();
    void OnErrorBoxDestroyed(toolkit::TmyControl* sender);
    bool PerformFileCommand(const COPYDATASTRUCT& data);

    IPluginWindowOwner* owner = nullptr;
    toolkit::TmyMsgBox* errorBox;         ///< a child
    ISpectrumView* spectrum = nullptr;    ///< a child; null while there is none
    ISetupView* setupDialog = nullptr;    ///< the same
    IPlayRecView* playRecPanel = nullptr; ///< the same
    FileCommandDoor fileCommands;
    std::int32_t fileMode = 0;
    CallReadout readout;
    std::int32_t demodulationModeShown = 0;
    std::uint32_t selectiveMaskShown = 0;
    std::int32_t afEnabledShown = 0;
    std::int32_t volume = 8;
    bool muteDown = false;
    UINT_PTR retryTimer = 0; ///< 0: not running
};

} // namespace orva::ui
