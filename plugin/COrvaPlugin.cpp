#include "plugin/COrvaPlugin.h"

#include "squelch/NoiseMeasure.h"
#include "toolkit/TmyApplication.h"
#include "toolkit/TmyMsgBox.h"
#include "toolkit/Trace.h"
#include "ui/COrvaPluginWindow.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <new>

namespace orva::plugin {

namespace {

constexpr std::uint32_t kWaveInRate = audio::CtbWaveIn::kSampleRate; // [Hz]

constexpr std::uint32_t kVoiceBlockSamples = 512;
constexpr std::uint32_t kVoiceRate = 8000; // [Hz]
constexpr std::uint32_t kWaveInBuffers = 32;
constexpr std::uint32_t kPrebufferBlocks = 3;
constexpr char kReceiverType[] = "K7USB"; // and whatever comes behind it

constexpr std::uint32_t kDecimatorTaps = 256;
constexpr std::uint32_t kInterpolatorTaps = 64;
constexpr double kAudioEdge =
    7900.0; // [Hz]; the interpolator's own limit brings it down to half its input rate

constexpr double kDbPerDeemphasis = 0.1;
constexpr double kVoltageExponentPerDb = 0.05;
constexpr std::int32_t kMostGain = 100; // [dB]

constexpr char kErrorTitle[] = "ORVA Error";
constexpr char kNoWaveIn[] = "Failed to open WaveIn device.";

} // namespace

COrvaPlugin::COrvaPlugin(std::uint32_t hostHandle, const ReceiverRecord* record,
                         const PluginPlatform& pluginPlatform)
    : platform(pluginPlatform),
      receiverLibrary(pluginPlatform.library),
      waveFile(*pluginPlatform.files),
      receiverRecord(OwnedReceiverRecord::CloneOf(record)) {
    try {
        Construct(hostHandle);
    } catch (...) {
        Dismantle(); // the receiver's thread may be calling already
        throw;
    }
}

COrvaPlugin::~COrvaPlugin() {
    closing = true;
    // The devices let messages run while they close: a frame that such a message enters must not delete the
    // instance once more.
    destroyAfterwards = false;
    SaveSettings();
    Dismantle();
}

void COrvaPlugin::Construct(std::uint32_t hostHandle) {
    FillAudioPool();
    BuildNoiseHighPass();
    BuildInputDecimator();
    MakeWindow();
    BuildVoiceInterpolator();
    MakeWaveIn();
    if (receiverRecord.DeviceType().starts_with(kReceiverType)) {
        ConnectReceiver(hostHandle);
    }
    receiverHandle = hostHandle;
    MakeWaveOut();
    frameDecoder.SetBlockSize(kVoiceBlockSamples);
    if (receiverStreaming) {
        StartStream();
    }
    if (window) {
        window->ListDevices();
    }
    LoadSettings();
    ReadReceiverMemory(hostHandle);
}

/// Ends what the construction has begun, as far as it came.
void COrvaPlugin::Dismantle() {
    closing = true;
    DeleteOverwriteBox();
    EndStream();
    receiverLibrary.Unload();
    waveIn.reset();
    waveOut.reset();
    windowHandle = nullptr;
    window.reset();
}

void COrvaPlugin::FillAudioPool() {
    for (dsp::CtbSampleBlock& block : audioBlocks) {
        if (block.Acquire(kAudioBlockSamples) == nullptr || !freeAudioBlocks.Push(&block)) { // zeroed
            throw std::bad_alloc();
        }
    }
}

// --- filters -----------------------------------------------------------------------------------------------

void COrvaPlugin::BuildNoiseHighPass() {
    noiseHighPass.SetSampleRate(processingRate);
    noiseHighPass.SetFilterType(dsp::kFilterHighPass);
    noiseHighPass.SetLength(squelch::kNoiseHighPassTaps);
    noiseHighPass.SetLowCut(squelch::kNoiseHighPassHz);
}

void COrvaPlugin::BuildInputDecimator() {
    inputDecimator.SetSampleRate(inputSampleRate);
    if (inputSampleRate != kWaveInRate && inputSampleRate != kReceiverRate) {
        toolkit::PrintDebug("K728ORVA: Unsupported receiver sample rate.\n");
    }
    SetDecimatorRatio(inputSampleRate);
    inputDecimator.SetFilterType(dsp::kFilterLowPass);
    inputDecimator.SetLength(kDecimatorTaps);
    inputDecimator.SetHighCut(kAudioEdge);
}

/// Lands on 16000 Hz for both live rates.
void COrvaPlugin::SetDecimatorRatio(std::uint32_t rate) {
    inputDecimator.SetRateRatio(1, rate == kWaveInRate ? 3 : 4);
}

void COrvaPlugin::BuildVoiceInterpolator() {
    voiceInterpolator.SetSampleRate(kVoiceRate);
    voiceInterpolator.SetRateRatio(2, 1);
    voiceInterpolator.SetFilterType(dsp::kFilterLowPass);
    voiceInterpolator.SetLength(kInterpolatorTaps);
    voiceInterpolator.SetHighCut(kAudioEdge);
}

void COrvaPlugin::RebuildAudioFilter() {
    audioFilter.SetSampleRate(audioSampleRate);
    audioFilter.SetLength(static_cast<std::uint32_t>(afFilterLength));
    audioFilter.SetSlope(afDeemphasis * kDbPerDeemphasis);
    if (afLowpass == 0) {
        audioFilter.SetFilterType(dsp::kFilterBandPass);
        audioFilter.SetLowCut(afFreqLow);
    } else {
        audioFilter.SetFilterType(dsp::kFilterLowPass);
    }
    audioFilter.SetHighCut(afFreqHigh);
    ShowAudioFilter();
}

void COrvaPlugin::ShowAudioFilter() {
    if (window) {
        window->ShowAudioFilter(audioFilter);
    }
}

/// Gives one of the filter's settings a value.
///
/// \return whether it is another one
bool COrvaPlugin::ChangeAudioFilter(std::int32_t& setting, std::int32_t value) {
    if (setting == value) {
        return false;
    }
    setting = value;
    RebuildAudioFilter();
    return true;
}

// --- window and devices ------------------------------------------------------------------------------------

void COrvaPlugin::MakeWindow() {
    window = std::make_unique<ui::COrvaPluginWindow>();
    windowHandle = window->Window();
    window->SetOwner(this);
    window->onInputBlock.Bind<&COrvaPlugin::OnInputBlockEvent>(this);
    window->onRetryTimer.Bind<&COrvaPlugin::OnRetryTimerEvent>(this);
    window->onDemodulationMode.Bind<&COrvaPlugin::OnDemodulationModeEvent>(this);
    window->onAFFreqLow.Bind<&COrvaPlugin::OnAFFreqLowEvent>(this);
    window->onAFFreqHigh.Bind<&COrvaPlugin::OnAFFreqHighEvent>(this);
    window->onAFLowpass.Bind<&COrvaPlugin::OnAFLowpassEvent>(this);
    window->onAFDeemphasis.Bind<&COrvaPlugin::OnAFDeemphasisEvent>(this);
    window->onAFFilterLength.Bind<&COrvaPlugin::OnAFFilterLengthEvent>(this);
    window->onAFEnabled.Bind<&COrvaPlugin::OnAFEnabledEvent>(this);
    window->onSelectiveMask.Bind<&COrvaPlugin::OnSelectiveMaskEvent>(this);
    window->onMuteEncrypted.Bind<&COrvaPlugin::OnMuteEncryptedEvent>(this);
    window->onOrvaGain.Bind<&COrvaPlugin::OnOrvaGainEvent>(this);
    window->onDestroy.Bind<&COrvaPlugin::OnWindowDestroyedEvent>(this);
}

void COrvaPlugin::MakeWaveIn() {
    waveIn = std::make_unique<audio::CtbWaveIn>(kWaveInBuffers, kInputBlockSamples, *platform.waveIn);
    waveIn->SetOwner(this);
    waveIn->SetDevice(waveInDevice);
}

void COrvaPlugin::MakeWaveOut() {
    waveOut = std::make_unique<audio::CtbWaveOut>(audioSampleRate, *platform.waveOut, *platform.deviceSetup);
    waveOut->SetDataSource(this);
    waveOut->SetPrebufferBlocks(kPrebufferBlocks);
    waveOut->Start();
}

void COrvaPlugin::StartStream() {
    constexpr double kReceiverFactor = 1.5;
    if (window) {
        window->ShowReceiverInput();
    }
    if (receiverLibrary.CodecStart != nullptr && !TryCodecStart() && window) {
        window->StartRetryTimer();
    }
    scanSettleSamples = static_cast<std::int32_t>(scanSettleSamples * kReceiverFactor);
}

void COrvaPlugin::EndStream() {
    if (receiverStreaming) {
        receiverStreaming = false;
        receiverLibrary.CodecStop(receiverHandle);
        DeleteCriticalSection(&*inputLock);
        inputLock.reset();
    }
}

// --- settings ----------------------------------------------------------------------------------------------

/// Each receiver has settings of its own.
std::string COrvaPlugin::SettingsKey() const {
    constexpr char kNoReceiver[] = "unknown";
    return receiverRecord ? std::string(receiverRecord.SerialNumber()) : kNoReceiver;
}

void COrvaPlugin::LoadSettings() {
    if (platform.settings != nullptr) {
        platform.settings->Load(*this, SettingsKey());
    }
    RebuildAudioFilter(); // once for all of its settings
}

void COrvaPlugin::SaveSettings() {
    try {
        if (platform.settings != nullptr) {
            platform.settings->Save(*this, SettingsKey());
        }
    } catch (const std::exception& error) {
        toolkit::PrintDebug("ORVA: settings were not saved: %s\n", error.what());
    }
}

// --- error boxes -------------------------------------------------------------------------------------------

void COrvaPlugin::ShowError(const char* text) {
    toolkit::TmyMsgBox* box = window ? window->ErrorBox() : nullptr;
    if (box != nullptr) {
        platform.ask(*box, text, kErrorTitle);
    }
}

/// One that is still open when the host closes the instance is out of date.
void COrvaPlugin::DismissErrorBox() {
    toolkit::TmyMsgBox* box = window ? window->ErrorBox() : nullptr;
    if (box != nullptr && box->IsInModal()) {
        box->EndModal(1);
    }
}

void COrvaPlugin::OpenWaveInOrTell() {
    if (waveIn && !waveIn->Open()) {
        ShowError(kNoWaveIn);
    }
}

void COrvaPlugin::SetWaveInDevice(std::uint32_t id) {
    if (!waveIn) {
        return;
    }
    const Frame frame(*this); // the host may close the instance while messages run
    const std::string name = waveIn->GetDeviceName(id);
    if (name == waveInName) {
        return;
    }
    waveInName = name;
    waveIn->Stop();
    toolkit::TmyApplication::ProcessPendingMessages();
    waveIn->Close();
    toolkit::TmyApplication::ProcessPendingMessages();
    waveIn->SetDevice(id);
    waitingWaveInBuffers.Clear(); // the old device's; the new one gets the same memory
    if (!receiverStreaming && startupDone && !closing) {
        OpenWaveInOrTell();
    }
    waveInDevice = id;
    if (window) {
        window->ShowWaveInDevice(id);
    }
}

void COrvaPlugin::SetWaveOutDevice(std::uint32_t id) {
    if (!waveOut) {
        return;
    }
    const Frame frame(*this);
    const std::string name = waveOut->GetDeviceName(id);
    if (name == waveOutName) {
        return;
    }
    waveOutName = name;
    waveOutDevice = id;
    ReopenWaveOut(&audio::CtbWaveOut::SetDevice, id);
    if (stopWanted) {
        StopFile();
    }
}

/// Opens the output anew, with another rate or device. The user's clicks are among the messages that run
/// meanwhile: a start is refused, a stop waits.
void COrvaPlugin::ReopenWaveOut(void (audio::CtbWaveOut::*set)(std::uint32_t), std::uint32_t value) {
    stopWanted = false;
    if (!waveOut) {
        return;
    }
    restartingOutput = true;
    waveOut->Stop();
    toolkit::TmyApplication::ProcessPendingMessages();
    waveOut->Close();
    toolkit::TmyApplication::ProcessPendingMessages();
    (waveOut.get()->*set)(value);
    waveOut->Start();
    restartingOutput = false;
}

// --- modes -------------------------------------------------------------------------------------------------

void COrvaPlugin::SetProcessingRate(std::uint32_t rate, bool force) {
    if (rate == processingRate && !force) {
        return;
    }
    processingRate = rate;
    if (window) {
        window->SetSpectrumRate(rate);
    }
    demodulator.SetSampleRate(rate);
    analogDemodulator.SetSampleRate(rate);
    // The rate before the ratio: at the old ratio a lower rate pulls the edge down, and it stays there.
    inputDecimator.SetSampleRate(rate);
    if (rate != kWaveInRate && rate != kReceiverRate) {
        toolkit::PrintDebug("K728ORVA: Unsupported sample rate: %u", rate);
    }
    SetDecimatorRatio(rate);
    RebuildAudioFilter();
    noiseHighPass.SetSampleRate(rate);
}

void COrvaPlugin::SetDemodulationMode(std::int32_t mode) {
    const auto wanted = static_cast<DemodulationMode>(mode);
    if (wanted == demodulationMode) {
        return;
    }
    demodulationMode = wanted;
    if (window) {
        window->SetDemodulationMode(mode);
    }
    if (wanted == DemodulationMode::Fm) {
        analogHoldoff = kHoldoffBlocks; // audio passes at once
    }
    PauseByMode();
    PublishSquelchTypes(wanted != DemodulationMode::Digital);
    if (waveOut) {
        waveOut->RequestPrebuffer();
    }
    EvaluateSelectiveSquelch();
    SendMode();
}

void COrvaPlugin::SetAFFreqLow(std::int32_t hertz) {
    if (ChangeAudioFilter(afFreqLow, hertz)) {
        ShowAudioFilter(); // a new edge gives the window the filter twice
    }
}

void COrvaPlugin::SetAFFreqHigh(std::int32_t hertz) {
    if (ChangeAudioFilter(afFreqHigh, hertz)) {
        ShowAudioFilter(); // a new edge gives the window the filter twice
    }
}

void COrvaPlugin::SetAFLowpass(std::int32_t lowpass) {
    ChangeAudioFilter(afLowpass, lowpass);
}

void COrvaPlugin::SetAFDeemphasis(std::int32_t tenthsOfDbPerOctave) {
    ChangeAudioFilter(afDeemphasis, tenthsOfDbPerOctave);
}

void COrvaPlugin::SetAFFilterLength(std::int32_t taps) {
    ChangeAudioFilter(afFilterLength, taps);
}

void COrvaPlugin::SetAFEnabled(std::int32_t enabled) {
    if (afEnabled != enabled) {
        afEnabled = enabled;
        if (window) {
            window->SetAFEnabled(enabled);
        }
    }
}

void COrvaPlugin::SetMuteEncrypted(std::int32_t mute) {
    if (muteEncrypted != (mute != 0)) {
        muteEncrypted = mute != 0;
        if (window) {
            window->ShowMuteEncrypted(muteEncrypted);
        }
    }
}

void COrvaPlugin::SetOrvaGain(std::int32_t decibels) {
    decibels = std::clamp(decibels, -kMostGain, kMostGain);
    if (orvaGain != decibels) {
        orvaGain = decibels;
        if (window) {
            window->ShowOrvaGain(decibels);
        }
        orvaGainFactor = std::pow(10.0, orvaGain * kVoltageExponentPerDb);
    }
}

void COrvaPlugin::SetVolume(std::int32_t volume) {
    if (!waveOut || static_cast<std::int32_t>(waveOut->GetVolume()) == volume) {
        return;
    }
    waveOut->SetVolume(volume);
    const std::uint32_t taken = waveOut->GetVolume();
    if (window) {
        window->SetVolume(static_cast<std::int32_t>(taken));
    }
    CallHost(PluginCode::VolumeChanged, taken, 0, nullptr);
}

void COrvaPlugin::SetMute(std::int32_t isMuted) {
    const bool muted = isMuted != 0;
    if (waveOut) {
        waveOut->SetMute(muted);
    }
    if (window) {
        window->SetMuteDown(muted);
    }
    CallHost(PluginCode::MuteChanged, static_cast<std::uint32_t>(isMuted), 0, nullptr);
}

void COrvaPlugin::SetPower(bool isOn) {
    decoderEnabled = isOn;
    if (window) {
        window->SetEnabled(decoderEnabled);
    }
}

// --- events of the window ----------------------------------------------------------------------------------

void COrvaPlugin::OnInputBlockEvent(toolkit::TmyControl* /*sender*/) {
    ProcessNextInputBlock();
}
void COrvaPlugin::OnRetryTimerEvent(toolkit::TmyControl* /*sender*/) {
    RetryCodecStart();
}
void COrvaPlugin::OnDemodulationModeEvent(toolkit::TmyControl* /*sender*/, std::int32_t mode) {
    const Frame frame(*this);
    SetDemodulationMode(mode);
}

void COrvaPlugin::OnSelectiveMaskEvent(toolkit::TmyControl* /*sender*/, std::int32_t value) {
    const Frame frame(*this);
    SetSelectiveSquelchMask(static_cast<std::uint32_t>(value));
}

// These never reach the host.
void COrvaPlugin::OnAFFreqLowEvent(toolkit::TmyControl* /*sender*/, std::int32_t value) {
    SetAFFreqLow(value);
}
void COrvaPlugin::OnAFFreqHighEvent(toolkit::TmyControl* /*sender*/, std::int32_t value) {
    SetAFFreqHigh(value);
}
void COrvaPlugin::OnAFLowpassEvent(toolkit::TmyControl* /*sender*/, std::int32_t value) {
    SetAFLowpass(value);
}
void COrvaPlugin::OnAFDeemphasisEvent(toolkit::TmyControl* /*sender*/, std::int32_t value) {
    SetAFDeemphasis(value);
}
void COrvaPlugin::OnAFFilterLengthEvent(toolkit::TmyControl* /*sender*/, std::int32_t value) {
    SetAFFilterLength(value);
}
void COrvaPlugin::OnAFEnabledEvent(toolkit::TmyControl* /*sender*/, std::int32_t value) {
    SetAFEnabled(value);
}
void COrvaPlugin::OnMuteEncryptedEvent(toolkit::TmyControl* /*sender*/, std::int32_t value) {
    SetMuteEncrypted(value);
}
void COrvaPlugin::OnOrvaGainEvent(toolkit::TmyControl* /*sender*/, std::int32_t value) {
    SetOrvaGain(value);
}

/// The host destroyed the window, and it deletes itself; the instance lives on without one.
void COrvaPlugin::OnWindowDestroyedEvent(toolkit::TmyControl* /*sender*/) {
    windowHandle = nullptr;
    overwriteBox = nullptr; // goes with its parent
    static_cast<void>(window.release());
}

} // namespace orva::plugin
