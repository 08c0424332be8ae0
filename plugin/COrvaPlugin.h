/// The central object of one plug-in instance.
#pragma once

#include "audio/CtbWaveFile.h"
#include "audio/CtbWaveIn.h"
#include "audio/CtbWaveOut.h"
#include "audio/IWaveInputOwner.h"
#include "audio/ItbWaveOutputDataSource.h"
#include "dsp/CtbSampleBlock.h"
#include "dsp/Fifo.h"
#include "dsp/TFIR_F32.h"
#include "p25/COrvaAnalogDemodulator.h"
#include "p25/COrvaDemodulator.h"
#include "p25/COrvaFrameDecoder.h"
#include "plugin/DemodulationMode.h"
#include "plugin/HostInterface.h"
#include "plugin/IHostCommands.h"
#include "plugin/IPluginInstance.h"
#include "plugin/OwnedReceiverRecord.h"
#include "plugin/PluginPlatform.h"
#include "plugin/ReceiverLibrary.h"
#include "squelch/CtbDcsDetector.h"
#include "squelch/CtbToneDetector.h"
#include "squelch/CtbVoiceDetector.h"
#include "squelch/DcBlock.h"
#include "ui/IPluginWindowOwner.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <windows.h>

namespace orva::toolkit {
class TmyControl;
class TmyMsgBox;
} // namespace orva::toolkit

namespace orva::ui {
class COrvaPluginWindow;
}

namespace orva::plugin {

/// What becomes of the one file.
enum class FileState : std::int32_t {
    Idle = 0,
    Playing = 1,
    Reserved = 2, ///< never set; the spectrum of live samples would not be inverted
    Recording = 3,
};

/// What the window's two lamps show.
enum class SignalIndicator : std::int32_t { Unknown = -1, None = 0, Digital = 1, Fm = 2 };

/// Owns every processing stage and every device of one instance, holds all the modes, and is the only object
/// that talks to the host. Its window keeps display state alone: what the user does arrives here as an event,
/// what is to be shown goes there by setters.
///
/// Blocks of input are the only clock. `ProcessData` takes one through all stages:
///
/// | step                                         | source file                |
/// |----------------------------------------------|----------------------------|
/// | receiver's thread, pool of input blocks      | COrvaPluginReceiver.cpp    |
/// | the walk of a block                          | COrvaPluginPipeline.cpp    |
/// | codes from and to the host                   | COrvaPluginHost.cpp        |
/// | squelch, scanner                             | COrvaPluginSquelch.cpp     |
/// | recording, playback                          | COrvaPluginRecording.cpp   |
/// | construction, filters, modes, devices        | COrvaPlugin.cpp            |
///
/// Everything runs on the thread of the windows, but for the reader of the receiver's stream, which touches
/// `fillingInputBlock`, `inputBlockFill`, the two input queues and `spareInputBlock` alone.
///
/// | file state  | is left by                                                                     |
/// |-------------|--------------------------------------------------------------------------------|
/// | `Idle`      | `StartPlayback`, `StartRecording`                                              |
/// | `Playing`   | `StopFile`, which the end of the file calls too                                |
/// | `Recording` | `StopFile`, which a failed write and the limit of a file's size call too       |
///
/// Once blocks of a size have been seen, `ProcessData` allocates nothing.
class COrvaPlugin final : public IPluginInstance,
                          public IHostCommands,
                          public audio::ItbWaveOutputDataSource,
                          public audio::IWaveInputOwner,
                          public ui::IPluginWindowOwner {
public:
    /// \param hostHandle  the host's number for this instance, and the receiver's handle
    /// \param record      the host's description of the receiver; copied; may be null
    /// \param platform    what the instance reaches of the machine; must outlive it
    COrvaPlugin(std::uint32_t hostHandle, const ReceiverRecord* record, const PluginPlatform& platform);
    COrvaPlugin(const COrvaPlugin&) = delete;
    COrvaPlugin& operator=(const COrvaPlugin&) = delete;
    ~COrvaPlugin();

    // --- the host (COrvaPluginHost.cpp) --------------------------------------------------------------------

    [[nodiscard]] WindowHandle GetWindowHandle() const override { return windowHandle; }
    void SetHostCallback(ZemHostCallback callback) override { hostCallback = callback; }
    void AnnounceCapabilities() override;
    void Notify(std::int32_t code, std::uint32_t param, std::uint32_t size, void* data) override;
    bool BeginClosing() override;
    void WithdrawCapabilities() override;
    void Destroy() override;
    /// The rest of the start, when the host's message loop delivers it.
    void DeferredStart() override;

    void ClearSavedStreamValue() override { savedStreamValue = 0; }
    [[nodiscard]] bool IsInHostModeCall() const override { return inHostModeCall; }

    // --- modes (COrvaPlugin.cpp) ---------------------------------------------------------------------------

    void SetDemodulationMode(std::int32_t mode) override;
    void SetProcessingRate(std::uint32_t rate, bool force);
    void SetAFFreqLow(std::int32_t hertz);
    void SetAFFreqHigh(std::int32_t hertz);
    void SetAFLowpass(std::int32_t lowpass);
    void SetAFDeemphasis(std::int32_t tenthsOfDbPerOctave);
    void SetAFFilterLength(std::int32_t taps);
    void SetAFEnabled(std::int32_t enabled);
    void SetMuteEncrypted(std::int32_t mute);
    void SetOrvaGain(std::int32_t decibels);      ///< -100 .. 100, clamped
    void SetVolume(std::int32_t volume) override; ///< 0 .. 32, clamped by the output
    void SetMute(std::int32_t isMuted) override;
    void SetWaveInDevice(std::uint32_t id);
    void SetWaveOutDevice(std::uint32_t id);
    /// Host power: 0 processes no samples and disables the window.
    void SetPower(bool isOn) override;

    // --- squelch (COrvaPluginSquelch.cpp) ------------------------------------------------------------------

    void SetSelectiveSquelchMask(std::uint32_t mask);
    void SetSelectiveSquelchValue(std::uint32_t bit, std::uint32_t value);
    void SetHostSquelch(std::uint32_t closed) override;
    void SetSquelchSetup(std::uint32_t type, const SquelchValues* values) override;
    void SetReceiverFrequency(std::uint32_t hertz) override;
    void SetScanner(std::uint32_t isOn) override;

    // --- recording and playback (COrvaPluginRecording.cpp) -------------------------------------------------

    /// While idle, looks at the file and tells the window whether it can be played; otherwise only shows the
    /// file under way once more.
    void SelectFile(const char* path) override;
    void StartPlayback() override;  ///< of the last file chosen, or recorded; from `Idle` only
    void StartRecording() override; ///< as the panel says; from `Idle` only
    void StopFile() override;
    void SetPause(bool isOn) override; ///< off: whatever the reasons were
    void SeekFile(std::uint32_t position) override;
    void StepFile(std::int32_t direction) override;
    void SetPauseUnderSquelch(std::int32_t isOn) override;
    void SetPauseNoOrva(std::int32_t isOn) override;

    // --- samples (COrvaPluginPipeline.cpp, COrvaPluginReceiver.cpp) ----------------------------------------

    /// Takes a block of input through all stages.
    ///
    /// \return false when work was abandoned for lack of memory or of an output block
    bool ProcessData(const std::int16_t* samples, std::uint32_t count);
    void ReturnBlock(dsp::CtbSampleBlock* block) override;
    void OnWaveInBuffer(std::int32_t index) override;
    /// Takes the next block off the receiver's queue.
    void ProcessNextInputBlock();
    /// Tries again to start the receiver's stream.
    void RetryCodecStart();

private:
    friend struct COrvaPluginInspector;

    /// What a block turned out to hold.
    struct BlockResult {
        std::uint32_t transmission;
        std::int32_t voiceBlocks; ///< ready ones; -1 after a failure of the decoder
    };

    /// Whether the host may hear, and change, a block before it is played.
    enum class AudioBlockUse { Offer, Play };

    /// A call into the instance that may lead to the host, which may close the instance from there: the
    /// outermost such frame deletes it then.
    class Frame {
    public:
        explicit Frame(COrvaPlugin& entered) : plugin(entered) { ++plugin.frames; }
        /// A function of its own: inlined, GCC 12 drops the count's decrement on the way of an exception.
        [[gnu::noinline]] ~Frame();
        Frame(const Frame&) = delete;
        Frame& operator=(const Frame&) = delete;

    private:
        COrvaPlugin& plugin;
    };

    // Construction, destruction.
    void Construct(std::uint32_t hostHandle);
    void Dismantle();
    void FillAudioPool();
    void BuildNoiseHighPass();
    void BuildInputDecimator();
    void BuildVoiceInterpolator();
    void MakeWindow();
    void MakeWaveIn();
    void MakeWaveOut();
    void StartStream();
    void EndStream();
    [[nodiscard]] std::string SettingsKey() const;
    void LoadSettings();
    void SaveSettings();
    void RebuildAudioFilter();
    void ShowAudioFilter();
    bool ChangeAudioFilter(std::int32_t& setting, std::int32_t value);
    void SetDecimatorRatio(std::uint32_t rate);
    void OpenWaveInOrTell();
    void ReopenWaveOut(void (audio::CtbWaveOut::*set)(std::uint32_t), std::uint32_t value);
    void ShowError(const char* text);
    void DismissErrorBox();

    // Events of the window; the sender is of no interest.
    void OnInputBlockEvent(toolkit::TmyControl* sender);
    void OnRetryTimerEvent(toolkit::TmyControl* sender);
    void OnDemodulationModeEvent(toolkit::TmyControl* sender, std::int32_t mode);
    void OnAFFreqLowEvent(toolkit::TmyControl* sender, std::int32_t value);
    void OnAFFreqHighEvent(toolkit::TmyControl* sender, std::int32_t value);
    void OnAFLowpassEvent(toolkit::TmyControl* sender, std::int32_t value);
    void OnAFDeemphasisEvent(toolkit::TmyControl* sender, std::int32_t value);
    void OnAFFilterLengthEvent(toolkit::TmyControl* sender, std::int32_t value);
    void OnAFEnabledEvent(toolkit::TmyControl* sender, std::int32_t value);
    void OnSelectiveMaskEvent(toolkit::TmyControl* sender, std::int32_t value);
    void OnMuteEncryptedEvent(toolkit::TmyControl* sender, std::int32_t value);
    void OnOrvaGainEvent(toolkit::TmyControl* sender, std::int32_t value);
    void OnWindowDestroyedEvent(toolkit::TmyControl* sender);
    void OnOverwriteBoxDestroyed(toolkit::TmyControl* sender);

    // Host.
    std::uint32_t CallHost(PluginCode code, std::uint32_t param, std::uint32_t size, void* data);
    std::uint32_t QueryHost(QueryCode code);
    void SendMode();
    void SendAndKeep(OwnedReceiverRecord record);
    void SendSquelchSetup();
    void PublishSquelchTypes(bool offered);

    // The walk of a block.
    bool Walk(const std::int16_t* samples, std::uint32_t count);
    bool RunStages(const std::int16_t* samples, std::uint32_t count, std::uint32_t spectrumFlags);
    void InvertSpectrum(const std::int16_t* samples, std::uint32_t count);
    bool ToFloats(const std::int16_t* samples, std::uint32_t count);
    BlockResult RunDigitalChain(std::uint32_t count);
    void SendTrunkingReport();
    void UpdateCallFields(std::uint32_t transmission);
    void RunVoicePath(const BlockResult& block);
    void ShowCallFields(std::uint32_t transmission);
    void PlayVoiceBlock();
    void WriteVoice(const std::int16_t* audio, std::size_t count);
    void ApplyOrvaGain(std::int16_t* samples, std::uint32_t count) const;
    bool RunFmChain(std::uint32_t count);
    bool ToAnalogSamples(const float* analog, std::uint32_t count);
    void HoldOff(std::uint32_t count);
    bool CutIntoAudioBlocks(const std::int16_t* samples, std::uint32_t count, AudioBlockUse use);
    void OfferAudioToHost(dsp::CtbSampleBlock* block);
    bool TakeAudioBlock();
    void WriteOut(dsp::CtbSampleBlock* block);
    void SetSignalIndicator(SignalIndicator value);

    // Squelch.
    void EvaluateSelectiveSquelch();
    void ShowSquelch();
    [[nodiscard]] bool IsSilencedBySquelch() const;
    bool ScanBlock(const std::int16_t* samples, std::uint32_t count);
    void EvaluateHostSquelch(std::int16_t* samples, std::uint32_t count);
    void EvaluateNoise(const std::int16_t* samples, std::uint32_t count);
    void EvaluateTone(const std::int16_t* samples, std::uint32_t count);
    void EvaluateCode(std::int16_t* samples, std::uint32_t count);
    void EvaluateVoiceSquelch(const std::int16_t* samples, std::uint32_t count);
    [[nodiscard]] bool IsSettling(std::uint32_t extraSamples) const;
    void ScanForVoice(std::uint32_t count);
    void AdvanceScan(std::uint32_t count);
    void SendSquelchResult(std::uint32_t result, SquelchValues values);

    // Recording and playback.
    [[nodiscard]] bool IsFileSupported() const;
    [[nodiscard]] bool IsAtRest() const;
    [[nodiscard]] bool IsRecording(bool audio) const;
    [[nodiscard]] bool Exists(const std::string& path) const;
    [[nodiscard]] bool AskOverwrite(const std::string& path);
    void DeleteOverwriteBox();
    void DismissOverwriteBox();
    void Record(const std::int16_t* samples, std::uint32_t count);
    void StartAudioPlayback();
    void ResetDecoders();
    bool PlayBlock(std::uint32_t liveCount);
    bool PlayAudio(const std::int16_t* samples, std::uint32_t count);
    [[nodiscard]] std::uint32_t CountToPlay(std::uint32_t liveCount) const;
    void ShowFilePosition();
    void ShowFileStopped();
    void PauseFor(std::uint32_t reason);
    void ResumeFrom(std::uint32_t reason);
    void PauseBySquelch();
    void PauseBySignal(const BlockResult& block, const std::int16_t* samples, std::uint32_t count);
    void PauseByMode();

    // Receiver.
    bool ConnectReceiver(std::uint32_t handle);
    static void WINAPI ReaderCallback(void* context);
    void ReadAvailableSamples();
    void TakeBlockToFill();
    void HandOverFilledBlock();
    bool TryCodecStart();
    void ReadReceiverMemory(std::uint32_t handle);
    void ProcessWaitingInput();
    void TakeInputBlock();
    void TakeWaveInBuffer(std::int32_t index);

    static constexpr std::uint32_t kReceiverRate = 64000;     ///< [Hz]
    static constexpr std::uint32_t kInputBlockSamples = 2400; ///< of either road
    static constexpr std::uint32_t kAudioBlockSamples = 1024; ///< of a block of the output
    static constexpr std::int32_t kHoldoffBlocks = 20;        ///< of FM audio silenced after a digital signal

    const PluginPlatform& platform;

    /// Samples come from the receiver library, not from the wave input.
    std::atomic<bool> receiverStreaming = false;
    bool inHostModeCall = false;           ///< inside a call to the host with the code of the mode
    std::uint32_t inputSampleRate = 48000; ///< of live input [Hz]: 48000 wave input, 64000 receiver
    SignalIndicator signalIndicator = SignalIndicator::Unknown;
    std::uint32_t receiverHandle = 0;
    ReceiverLibrary receiverLibrary;
    audio::CtbWaveFile waveFile; ///< the one for playback or recording
    FileState fileState = FileState::Idle;
    std::uint32_t processingRate = 48000; ///< of the samples now entering the demodulators [Hz]
    std::unique_ptr<audio::CtbWaveOut> waveOut;
    std::uint32_t audioSampleRate = 16000; ///< of all decoded audio [Hz]
    bool decoderEnabled = true;            ///< host power
    std::uint32_t pauseFlags = 0;          ///< 1 by the user, 2 by squelch, 4 for want of signal
    dsp::CtbFloatBlock floatSamples;   ///< the block, -1.0 to just under 1.0; the notch works on it in place
    dsp::CtbSampleBlock fileSamples;   ///< read from `waveFile`
    dsp::CtbSampleBlock analogSamples; ///< FM audio before decimation
    std::unique_ptr<audio::CtbWaveIn> waveIn;
    OwnedReceiverRecord receiverRecord; ///< own copy of the host's
    DemodulationMode demodulationMode = DemodulationMode::Auto;
    p25::COrvaDemodulator demodulator;
    p25::COrvaFrameDecoder frameDecoder;
    dsp::Fifo<dsp::CtbSampleBlock*> freeAudioBlocks;
    dsp::Fifo<dsp::CtbSampleBlock*> freeInputBlocks;
    dsp::Fifo<dsp::CtbSampleBlock*> filledInputBlocks;
    std::optional<CRITICAL_SECTION> inputLock; ///< guards the two queues above; made with a receiver only
    std::uint32_t audioBlockFill = 0;          ///< samples in `currentAudioBlock`
    dsp::CtbSampleBlock* currentAudioBlock = nullptr;
    std::uint32_t squelchBits = 0; ///< 1 host's squelch closed, 2 selective squelch closed
    std::int32_t afFreqLow = 0;    ///< audio filter [Hz]
    std::int32_t afFreqHigh = 4000;
    std::int32_t afLowpass = 0;    ///< 1 low-pass, 0 band-pass
    std::int32_t afDeemphasis = 0; ///< [0.1 dB per octave]
    std::int32_t afFilterLength = 512;
    std::int32_t afEnabled = 0;
    std::uint32_t selectiveSquelchMask = 0;
    std::int32_t analogHoldoff = 4;   ///< blocks of FM audio silenced so far, up to 20
    bool fileIsAudio = false;         ///< the file holds audio, not intermediate frequency
    std::uint32_t fileSampleRate = 0; ///< of the file that is played [Hz]
    std::int32_t pauseUnderSquelch = 0;
    std::int32_t pauseNoOrva = 0;
    std::int32_t orvaSignalLatch = 0; ///< non-zero while digital signal counts as present
    std::uint32_t hostSquelchType = 0;
    std::int32_t voiceThreshold = 0; ///< [percent]
    std::int32_t ctcssTone = -1;     ///< [0.001 Hz]
    std::int32_t dcsCode = 0;        ///< negative for an inverted one
    std::int32_t noiseThreshold = 1000;
    std::int32_t levelThreshold = 0;
    dsp::CtbSampleBlock noiseScratch;
    ZemHostCallback hostCallback = nullptr;
    float noiseLevel = 0.0F;
    dsp::CtbSampleBlock spareInputBlock; ///< takes what there is no block for
    static constexpr std::size_t kInputBlocks = 10;
    std::array<dsp::CtbSampleBlock, kInputBlocks> inputBlocks;
    squelch::DcBlockState dcBlock;
    dsp::CtbSampleBlock* fillingInputBlock = nullptr;
    std::uint32_t inputBlockFill = 0;
    std::uint32_t spectrumCrossover = 0xFFFFFFFF; ///< [Hz]; above it the spectrum is mirrored
    std::uint32_t receiverFrequency = 0;          ///< [Hz]
    std::uint32_t waveInDevice = 0;
    std::uint32_t waveOutDevice = 0;
    std::uint32_t savedStreamValue = 0; ///< the host's, from before a playback
    bool scannerActive = false;
    std::string waveOutName;
    std::string waveInName;
    bool startupDone = false;
    bool m_bScanningSquelchSent = false;
    std::int32_t scanSampleCount = 0;      ///< samples since the retune; 0 does not count
    std::int32_t scanSettleSamples = 1536; ///< 1.5 times as many with the receiver
    static constexpr std::size_t kAudioBlocks = 10;
    std::array<dsp::CtbSampleBlock, kAudioBlocks> audioBlocks;
    std::uint32_t skipInputSamples = 0; ///< to discard after a retune
    bool muteEncrypted = true;
    p25::COrvaAnalogDemodulator analogDemodulator;
    dsp::CtbSampleBlock decimatedSamples; ///< 16000 Hz samples of the block
    std::int32_t orvaGain = 0;            ///< of digital voice [dB]
    double orvaGainFactor = 1.0;
    squelch::CtbVoiceDetector voiceDetector;
    squelch::CtbToneDetector toneDetector;
    squelch::CtbDcsDetector dcsDetector;
    std::uint32_t squelchNac = 0;
    std::uint32_t squelchTgid = 0;
    std::uint32_t squelchSid = 0;
    std::uint32_t squelchDid = 0;
    std::uint32_t squelchBer = 0; ///< [percent]
    std::int32_t currentNac = -1; ///< of the call on the air; -1 none
    std::int32_t currentTgid = 0;
    std::int32_t currentSid = 0;
    std::int32_t currentDid = 0;
    std::int32_t currentBer = 0; ///< [0.1 %]
    bool playNextFile = false;   ///< tested when playback stops; never set
    std::unique_ptr<ui::COrvaPluginWindow> window;
    toolkit::TmyMsgBox* overwriteBox = nullptr; ///< a child of the window, which deletes it
    std::atomic<HWND> windowHandle = nullptr;   ///< for the receiver's thread
    dsp::TFIR_F32 inputDecimator;               ///< input rate to 16000
    dsp::TFIR_F32 voiceInterpolator;            ///< 8000 to 16000
    dsp::TFIR_F32 noiseHighPass;
    dsp::TFIR_F32 audioFilter;
    dsp::CtbByteBlock hostAudioBuffer; ///< of `AudioOffer`; only grows

    int frames = 0;                 ///< calls into the instance on the stack
    bool closing = false;           ///< nothing is started any more
    bool destroyAfterwards = false; ///< the outermost frame deletes the instance
    bool restartingOutput = false;  ///< messages run between two rates or devices of the output
    bool stopWanted = false;        ///< the file is to be stopped as soon as the output runs again
    bool walking = false;           ///< a block is under way; another one waits
    std::uint32_t waitingInputBlocks = 0;
    dsp::Fifo<std::int32_t> waitingWaveInBuffers;
};

} // namespace orva::plugin
