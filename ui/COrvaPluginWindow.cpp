#include "ui/COrvaPluginWindow.h"

#include "toolkit/TmyMsgBox.h"

#include <mmsystem.h>
#include <string>

namespace orva::ui {

namespace {

constexpr toolkit::Placement kPlacement{0, 0, 326, 282};
constexpr DWORD kStyle = WS_POPUP | WS_CLIPCHILDREN | WS_CLIPSIBLINGS;
constexpr COLORREF kTextColor = 0x00FFFF;
constexpr COLORREF kBackground = 0x404040;
constexpr UINT kDeferredStart = WM_USER;
constexpr UINT kInputBlock = WM_USER + 1;
constexpr UINT_PTR kRetryTimer = 1;
constexpr UINT kRetryInterval = 1000; // [ms]
constexpr int kTextMargin = 8;        // [pixels]

const char* NameOfSignal(std::int32_t signal) {
    switch (signal) {
    case 1:
        return "ORVA";
    case 2:
        return "FM";
    default:
        return "-";
    }
}

const char* NameOfTransmission(std::uint32_t transmission) {
    switch (transmission) {
    case CallReadout::kVoice:
        return "Voice";
    case CallReadout::kData:
        return "Data";
    case CallReadout::kTrunking:
        return "Trunking";
    case CallReadout::kUnknown:
        return "Unknown";
    default:
        return "-";
    }
}

} // namespace

COrvaPluginWindow::COrvaPluginWindow()
    : TmyComponent(nullptr, "ORVA", kStyle, 0, kPlacement), errorBox(new toolkit::TmyMsgBox(this, 1)) {
    SetTextColor(kTextColor);
    SetWindowColor(kBackground);
    SetDoubleBuffered(true);
    errorBox->SetButtonText(0, "OK");
    errorBox->SetKey(VK_RETURN, 0);
    errorBox->SetKey(VK_ESCAPE, 0);
    errorBox->onDestroy.Bind<&COrvaPluginWindow::OnErrorBoxDestroyed>(this);
}

COrvaPluginWindow::~COrvaPluginWindow() {
    if (errorBox != nullptr) {
        errorBox->onDestroy.Clear();
    }
}

void COrvaPluginWindow::OnErrorBoxDestroyed(toolkit::TmyControl* /*sender*/) {
    errorBox = nullptr;
}

LRESULT COrvaPluginWindow::WndProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const LifeGuard life(this);
    if (message == kDeferredStart && owner != nullptr) {
        owner->DeferredStart();
    } else if (message == kInputBlock) {
        onInputBlock.Fire(this);
    } else if (message == WM_COPYDATA && lParam != 0 && InSendMessage() == FALSE) {
        return PerformFileCommand(*reinterpret_cast<const COPYDATASTRUCT*>(lParam)) ? TRUE : FALSE;
    }
    // The instance may have been closed, and the window with it.
    return life.IsAlive() ? TmyComponent::WndProc(message, wParam, lParam) : 0;
}

void COrvaPluginWindow::OnTimer(UINT_PTR id) {
    const LifeGuard life(this);
    if (id == kRetryTimer) {
        onRetryTimer.Fire(this);
    }
    if (life.IsAlive()) {
        TmyComponent::OnTimer(id);
    }
}

void COrvaPluginWindow::SetEnabled(bool enabled) {
    if (spectrum != nullptr) {
        spectrum->SetEnabled(enabled);
    }
    TmyComponent::SetEnabled(enabled);
}

void COrvaPluginWindow::StartRetryTimer() {
    retryTimer = SetTimer(Window(), kRetryTimer, kRetryInterval, nullptr);
}

void COrvaPluginWindow::StopRetryTimer() {
    if (retryTimer != 0) {
        KillTimer(Window(), retryTimer);
        retryTimer = 0;
    }
}

/// The read-out as lines of text.
void COrvaPluginWindow::OnPaint(HDC dc) {
    const std::string text =
        "Signal: " + std::string(NameOfSignal(readout.Signal())) + "\nBER: " + readout.Ber() +
        "\nNAC: " + readout.Nac() + "   TGID: " + readout.Tgid() + "\nSID: " + readout.Sid() +
        "   DID: " + readout.Did() + "\nTransmission: " + NameOfTransmission(readout.TransmissionShown());
    RECT area{kTextMargin, kTextMargin, GetClientWidth() - kTextMargin, GetClientHeight() - kTextMargin};
    const HGDIOBJ before = SelectObject(dc, EffectiveFont());
    SetBkMode(dc, TRANSPARENT);
    ::SetTextColor(dc, kTextColor);
    DrawTextA(dc, text.c_str(), -1, &area, DT_LEFT | DT_TOP);
    SelectObject(dc, before);
    TmyComponent::OnPaint(dc);
}

void COrvaPluginWindow::Refresh() {
    Invalidate();
}

// --- the call ----------------------------------------------------------------------------------------------

void COrvaPluginWindow::SetBer(float percent) {
    if (readout.SetBer(percent, timeGetTime())) {
        Refresh();
    }
}

void COrvaPluginWindow::SetNac(std::int32_t nac) {
    if (readout.SetNac(nac)) {
        Refresh();
    }
}

void COrvaPluginWindow::SetTgid(std::int32_t talkGroup) {
    if (readout.SetTgid(talkGroup)) {
        Refresh();
    }
}

void COrvaPluginWindow::SetSid(std::int32_t source) {
    if (readout.SetSid(source)) {
        Refresh();
    }
}

void COrvaPluginWindow::SetDid(std::int32_t destination) {
    if (readout.SetDid(destination)) {
        Refresh();
    }
}

void COrvaPluginWindow::SetTransmission(std::uint32_t transmission) {
    if (readout.SetTransmission(transmission)) {
        Refresh();
    }
}

void COrvaPluginWindow::SetEncryption(std::uint8_t algorithm) {
    if (readout.SetEncryption(algorithm)) {
        Refresh();
    }
}

void COrvaPluginWindow::SetSignal(std::int32_t signal) {
    if (readout.SetSignal(signal, timeGetTime())) {
        Refresh();
    }
}

// --- modes and views ---------------------------------------------------------------------------------------

void COrvaPluginWindow::SetDemodulationMode(std::int32_t mode) {
    if (demodulationModeShown != mode) {
        demodulationModeShown = mode;
        onDemodulationMode.Fire(this, mode);
    }
}

void COrvaPluginWindow::SetSelectiveMask(std::uint32_t mask) {
    if (selectiveMaskShown != mask) {
        selectiveMaskShown = mask;
        onSelectiveMask.Fire(this, static_cast<std::int32_t>(mask));
    }
}

void COrvaPluginWindow::ProcessSamples(float* samples, std::uint32_t count, std::uint32_t flags) {
    if (spectrum != nullptr) {
        spectrum->ProcessSamples(samples, count, flags);
    }
}

void COrvaPluginWindow::SetSpectrumRate(std::uint32_t rate) {
    if (spectrum != nullptr) {
        spectrum->SetSampleRate(rate);
    }
}

void COrvaPluginWindow::SetSpectrumShape(const std::int8_t* values, std::uint32_t count) {
    if (spectrum != nullptr) {
        spectrum->SetShape(values, count);
    }
}

void COrvaPluginWindow::SetSquelched(bool squelched) {
    if (spectrum != nullptr) {
        spectrum->SetSquelched(squelched);
    }
}

void COrvaPluginWindow::SetFileMode(std::int32_t mode) {
    fileMode = mode;
    if (spectrum != nullptr) {
        spectrum->SetPlaybackMode(mode);
    }
}

void COrvaPluginWindow::SetAudioMode(bool isAudio) {
    if (spectrum != nullptr) {
        spectrum->SetAudioMode(isAudio);
    }
}

void COrvaPluginWindow::SetAFEnabled(std::int32_t enabled) {
    afEnabledShown = enabled;
    if (setupDialog != nullptr) {
        setupDialog->ShowAudioFilterEnabled(enabled != 0);
    }
}

void COrvaPluginWindow::ListDevices() {
    if (setupDialog != nullptr) {
        setupDialog->ListDevices();
    }
}

void COrvaPluginWindow::ShowReceiverInput() {
    if (setupDialog != nullptr) {
        setupDialog->ShowReceiverInput();
    }
}

void COrvaPluginWindow::ShowWaveInDevice(std::uint32_t id) {
    if (setupDialog != nullptr) {
        setupDialog->ShowWaveInDevice(id);
    }
}

void COrvaPluginWindow::ShowMuteEncrypted(bool mute) {
    if (setupDialog != nullptr) {
        setupDialog->ShowMuteEncrypted(mute);
    }
}

void COrvaPluginWindow::ShowOrvaGain(std::int32_t decibels) {
    if (setupDialog != nullptr) {
        setupDialog->ShowOrvaGain(decibels);
    }
}

void COrvaPluginWindow::ShowAudioFilter(dsp::TFIR_F32& filter) {
    if (setupDialog != nullptr) {
        setupDialog->ShowAudioFilter(filter);
    }
}

// --- recording and playback --------------------------------------------------------------------------------

/// What a program asks for in the user's place.
bool COrvaPluginWindow::PerformFileCommand(const COPYDATASTRUCT& data) {
    if (owner == nullptr) {
        return false;
    }
    const LifeGuard life(this);
    const auto command = static_cast<FileCommand>(data.dwData);
    const char* text = static_cast<const char*>(data.lpData);
    const bool wasAsked =
        fileCommands.Perform(command, text != nullptr ? std::string(text, data.cbData) : "", *owner);
    if (!wasAsked || !life.IsAlive()) {
        return wasAsked;
    }
    fileCommands.DropChoice();
    if (command == FileCommand::Pause || command == FileCommand::Resume) {
        SetPaused(command == FileCommand::Pause); // a user's press would have moved the button
    }
    return fileCommands.HasSucceeded(command);
}

void COrvaPluginWindow::SetFile(const audio::CtbWaveFile* file, bool supported) {
    fileCommands.SetSupported(supported);
    if (playRecPanel != nullptr) {
        playRecPanel->SetFile(file, supported);
    }
}

void COrvaPluginWindow::SetPlaying() {
    fileCommands.SetActivity(FileCommandDoor::Activity::Playing);
    if (playRecPanel != nullptr) {
        playRecPanel->SetPlaying();
    }
}

void COrvaPluginWindow::SetRecording() {
    fileCommands.SetActivity(FileCommandDoor::Activity::Recording);
    if (playRecPanel != nullptr) {
        playRecPanel->SetRecording();
    }
}

void COrvaPluginWindow::SetStopped() {
    fileCommands.SetActivity(FileCommandDoor::Activity::Rest);
    if (playRecPanel != nullptr) {
        playRecPanel->SetStopped();
    }
}

void COrvaPluginWindow::SetPaused(bool paused) {
    if (playRecPanel != nullptr) {
        playRecPanel->SetPaused(paused);
    }
}

void COrvaPluginWindow::ShowFilePosition(std::uint32_t bytes, std::uint32_t seconds) {
    if (playRecPanel != nullptr) {
        playRecPanel->SetSliderPosition(bytes);
        playRecPanel->SetPosition(seconds);
    }
}

void COrvaPluginWindow::ShowFileSize(std::uint32_t bytes, std::uint32_t seconds) {
    if (playRecPanel != nullptr) {
        playRecPanel->SetSize(bytes);
        playRecPanel->SetPosition(seconds);
    }
}

std::optional<RecordingChoice> COrvaPluginWindow::GetRecordingChoice() {
    if (std::optional<RecordingChoice> choice = fileCommands.TakeChoice()) {
        return choice;
    }
    if (playRecPanel != nullptr) {
        return playRecPanel->GetRecordingChoice();
    }
    return std::nullopt;
}

void COrvaPluginWindow::SelectNextFile() {
    if (playRecPanel != nullptr) {
        playRecPanel->SelectNext();
    }
}

} // namespace orva::ui
