/// Recording and playback of files of either kind: intermediate frequency as it came in, or audio as it goes
/// out.

#include "plugin/COrvaPlugin.h"
#include "plugin/RecordingPath.h"
#include "toolkit/TmyApplication.h"
#include "toolkit/TmyMsgBox.h"
#include "ui/COrvaPluginWindow.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace orva::plugin {

namespace {

/// Bits of `pauseFlags`: why nothing is written, or read, at the moment.
enum PauseReason : std::uint32_t { kPausedByUser = 1, kPausedBySquelch = 2, kPausedByNoSignal = 4 };

constexpr std::uint32_t kBitsPerSample = 16;
constexpr std::uint32_t kSmallestData = 2;      // bytes: a sample
constexpr std::uint32_t kHighestRate = 64000;   // [Hz]
constexpr std::uint32_t kStreamFromFile = 2048; // what the host is told while a file is played

/// Signal is taken for present until a block without any has come.
constexpr std::int32_t kSignalPresumed = 100;

/// A quotient that is not whole is raised to the next whole number; single precision's 0.999.
constexpr double kRoundingUp = 0.9990000128746033;

constexpr std::uint32_t kSpectrumOfFile = 0; // no flag: the samples are not live

constexpr char kOverwriteTitle[] = "Overwrite existing file?";
constexpr int kOverwriteYes = 0; // indices of the buttons
constexpr int kOverwriteNo = 1;
constexpr int kOverwriteButtons = 2;

/// What `SetFileMode` takes.
enum FileMode : std::int32_t { kNoFile = 0, kIfPlayed = 1, kAudioPlayed = 2 };

} // namespace

bool COrvaPlugin::IsFileSupported() const {
    return waveFile.IsOpen() && waveFile.GetBitsPerSample() == kBitsPerSample &&
           waveFile.GetDataSize() >= kSmallestData && waveFile.GetChannels() == 1 &&
           waveFile.GetSampleRate() <= kHighestRate;
}

/// While idle a file is open only as long as the host is told of a playback that begins.
bool COrvaPlugin::IsAtRest() const {
    return fileState == FileState::Idle && !waveFile.IsOpen();
}

void COrvaPlugin::SelectFile(const char* path) {
    const bool isAtRest = IsAtRest();
    if (isAtRest) {
        waveFile.Open(path);
    }
    if (window) {
        window->SetFile(&waveFile, isAtRest ? IsFileSupported() : true);
    }
    if (isAtRest) {
        waveFile.Close();
    }
}

// --- recording ---------------------------------------------------------------------------------------------

void COrvaPlugin::StartRecording() {
    const Frame frame(*this);
    if (restartingOutput || !IsAtRest()) {
        return; // a stop, or a playback's start, is still under way
    }
    const auto choice = window ? window->GetRecordingChoice() : std::nullopt;
    if (!choice) {
        return;
    }
    const bool isAudio = !choice->isIntermediateFrequency;
    const std::string path = RecordingPath(choice->folder, choice->name, isAudio);
    if (Exists(path) && !AskOverwrite(path)) {
        return;
    }
    // Messages ran while the question stood.
    if (closing || !IsAtRest()) {
        return;
    }
    fileIsAudio = isAudio;
    if (!waveFile.Create(path.c_str(), isAudio ? audioSampleRate : inputSampleRate)) {
        return;
    }
    if (window) {
        window->SetRecording();
    }
    fileState = FileState::Recording;
    if (pauseUnderSquelch != 0 && squelchBits != 0) {
        PauseFor(kPausedBySquelch);
    }
    if (pauseNoOrva != 0 && orvaSignalLatch == 0 && demodulationMode != DemodulationMode::Fm) {
        PauseFor(kPausedByNoSignal);
    }
}

bool COrvaPlugin::Exists(const std::string& path) const {
    const audio::FileHandle file = platform.files->openForReading(path.c_str());
    if (file == audio::kNoFile) {
        return false;
    }
    platform.files->close(file);
    return true;
}

bool COrvaPlugin::AskOverwrite(const std::string& path) {
    if (!window) {
        return false;
    }
    if (overwriteBox == nullptr) {
        overwriteBox = new toolkit::TmyMsgBox(window.get(), kOverwriteButtons);
        overwriteBox->SetButtonText(kOverwriteYes, "Yes");
        overwriteBox->SetButtonText(kOverwriteNo, "No");
        overwriteBox->SetKey(VK_RETURN, kOverwriteYes);
        overwriteBox->onDestroy.Bind<&COrvaPlugin::OnOverwriteBoxDestroyed>(this);
    }
    return platform.ask(*overwriteBox, OverwriteQuestion(path).c_str(), kOverwriteTitle) == kOverwriteYes;
}

/// A question that is still open when the host closes the instance is answered with no.
void COrvaPlugin::DismissOverwriteBox() {
    if (overwriteBox != nullptr && overwriteBox->IsInModal()) {
        overwriteBox->EndModal(kOverwriteNo + 1);
    }
}

/// Its window went, and the object with it: it is a window of the host's process like any other.
void COrvaPlugin::OnOverwriteBoxDestroyed(toolkit::TmyControl* /*sender*/) {
    overwriteBox = nullptr;
}

void COrvaPlugin::DeleteOverwriteBox() {
    delete std::exchange(overwriteBox, nullptr);
}

/// Writes samples to the recording under way, which a failure ends.
void COrvaPlugin::Record(const std::int16_t* samples, std::uint32_t count) {
    if (!waveFile.Write(samples, count)) {
        StopFile();
    }
    if (window) {
        window->ShowFileSize(waveFile.GetFileSize(), waveFile.GetDurationSeconds());
    }
}

bool COrvaPlugin::IsRecording(bool audio) const {
    return fileState == FileState::Recording && pauseFlags == 0 && fileIsAudio == audio;
}

// --- playback ----------------------------------------------------------------------------------------------

void COrvaPlugin::StartPlayback() {
    const Frame frame(*this);
    if (restartingOutput || (!waveFile.IsOpen() && !waveFile.Open(nullptr))) {
        return;
    }
    const bool isAudio = !waveFile.IsIF();
    if (window) {
        window->SetSquelched(false);
        window->SetFileMode(isAudio ? kAudioPlayed : kIfPlayed);
        window->SetPlaying();
    }
    const std::uint32_t streamValue = QueryHost(QueryCode::StreamValue);
    savedStreamValue = streamValue != kUnsupported ? streamValue : savedStreamValue;
    // The host may have the file stopped from inside either call, and is told of no playback after that.
    if (waveFile.IsOpen()) {
        CallHost(PluginCode::StreamValue, kStreamFromFile, 0, nullptr);
    }
    if (!waveFile.IsOpen()) {
        return;
    }
    fileSampleRate = waveFile.GetSampleRate();
    fileIsAudio = isAudio;
    if (isAudio) {
        StartAudioPlayback();
    } else {
        SetProcessingRate(fileSampleRate, false);
        fileState = FileState::Playing;
        ResetDecoders();
        if (waveOut) {
            waveOut->RequestPrebuffer();
        }
    }
}

void COrvaPlugin::StartAudioPlayback() {
    fileState = FileState::Playing;
    ReopenWaveOut(&audio::CtbWaveOut::SetSampleRate, fileSampleRate);
    if (window) {
        window->SetSpectrumRate(fileSampleRate);
        window->SetAudioMode(true);
        SetSignalIndicator(SignalIndicator::None);
    }
    if (stopWanted) {
        StopFile();
    }
}

/// Frames do not go on across a jump in the samples.
void COrvaPlugin::ResetDecoders() {
    demodulator.Reset();
    frameDecoder.Reset();
}

/// Takes the file's next samples in the place of a live block, for as long as that lasted.
bool COrvaPlugin::PlayBlock(std::uint32_t liveCount) {
    if (pauseFlags != 0) {
        return true;
    }
    if (!waveFile.IsOpen()) {
        return false;
    }
    const std::uint32_t wanted = CountToPlay(liveCount);
    std::int16_t* samples = fileSamples.Acquire(wanted);
    if (samples == nullptr) {
        return false;
    }
    const std::uint32_t count = waveFile.Read(samples, wanted);
    if (count == 0) {
        StopFile();
        return true;
    }
    if (fileIsAudio) {
        // All that was asked for, with what the memory held behind the file's last samples: kept.
        return PlayAudio(samples, wanted);
    }
    ShowFilePosition();
    // A file of a higher rate makes larger blocks than the live ones.
    return decimatedSamples.Acquire(2 * count) != nullptr && RunStages(samples, count, kSpectrumOfFile);
}

/// Samples of the file that last as long as `liveCount` of live input.
std::uint32_t COrvaPlugin::CountToPlay(std::uint32_t liveCount) const {
    if (fileIsAudio) {
        return static_cast<std::uint32_t>(std::uint64_t{liveCount} * fileSampleRate / inputSampleRate);
    }
    if (processingRate == inputSampleRate) {
        return liveCount;
    }
    return static_cast<std::uint32_t>(static_cast<double>(processingRate) * liveCount / inputSampleRate +
                                      kRoundingUp);
}

/// Audio goes straight to the output: the decoder sees nothing of it.
bool COrvaPlugin::PlayAudio(const std::int16_t* samples, std::uint32_t count) {
    if (!ToFloats(samples, count)) {
        return false;
    }
    if (window) {
        window->ProcessSamples(floatSamples.Data(), count, kSpectrumOfFile);
    }
    ShowFilePosition();
    return CutIntoAudioBlocks(samples, count, AudioBlockUse::Play);
}

void COrvaPlugin::ShowFilePosition() {
    if (window) {
        window->ShowFilePosition(waveFile.GetPositionBytes(), waveFile.GetPositionSeconds());
    }
}

void COrvaPlugin::SeekFile(std::uint32_t position) {
    if (!waveFile.IsOpen() || !waveFile.Seek(position)) {
        return;
    }
    ShowFilePosition();
    ResetDecoders();
}

void COrvaPlugin::StepFile(std::int32_t direction) {
    if (!waveFile.IsOpen()) {
        return;
    }
    const std::int64_t second = waveFile.GetBytesPerSecond();
    const std::int64_t position = waveFile.GetPositionBytes() + direction * second;
    const auto reached = static_cast<std::uint32_t>(
        std::clamp<std::int64_t>(position, 0, std::numeric_limits<std::uint32_t>::max()));
    if (waveFile.Seek(reached) && pauseFlags != 0) {
        ShowFilePosition(); // otherwise the next block does
    }
}

// --- the end -----------------------------------------------------------------------------------------------

void COrvaPlugin::StopFile() {
    const Frame frame(*this);
    stopWanted = restartingOutput;
    if (stopWanted) {
        return;
    }
    bool playsNext = false;
    if (fileState == FileState::Recording) {
        if (window) {
            window->SetFile(&waveFile, true); // so that the list shows it
        }
        waveFile.Close();
    } else {
        waveFile.Close();
        playsNext = playNextFile;
        ResetDecoders();
    }
    ShowFileStopped();
    fileSampleRate = 0;
    fileState = FileState::Idle;
    pauseFlags = 0;
    if (fileIsAudio && waveOut && waveOut->GetSampleRate() != audioSampleRate) {
        ReopenWaveOut(&audio::CtbWaveOut::SetSampleRate, audioSampleRate);
    }
    fileIsAudio = false;
    if (playsNext) {
        if (window) {
            window->SelectNextFile();
        }
        return;
    }
    SetProcessingRate(inputSampleRate, false);
    if (!receiverStreaming && waveIn) {
        waveIn->Start();
    }
    CallHost(PluginCode::StreamValue, savedStreamValue, 0, nullptr);
}

void COrvaPlugin::ShowFileStopped() {
    if (!window) {
        return;
    }
    window->SetStopped();
    window->ShowFilePosition(0, 0);
    window->SetFileMode(kNoFile);
    window->SetSquelched(squelchBits != 0);
    if (fileIsAudio) {
        window->SetSpectrumRate(inputSampleRate);
    }
    window->SetAudioMode(false);
}

// --- pause -------------------------------------------------------------------------------------------------

void COrvaPlugin::SetPause(bool isOn) {
    if (isOn) {
        pauseFlags |= kPausedByUser;
        return;
    }
    pauseFlags = 0; // whatever the reasons were: the next evaluation brings them back
    if (waveOut) {
        waveOut->RequestPrebuffer();
    }
}

/// A reason comes up, which presses the pause button.
void COrvaPlugin::PauseFor(std::uint32_t reason) {
    pauseFlags |= reason;
    if (window) {
        window->SetPaused(true);
    }
}

/// A reason goes, and the last one releases the pause button.
void COrvaPlugin::ResumeFrom(std::uint32_t reason) {
    pauseFlags &= ~reason;
    if (pauseFlags == 0 && window) {
        window->SetPaused(false);
    }
}

void COrvaPlugin::SetPauseUnderSquelch(std::int32_t isOn) {
    pauseUnderSquelch = isOn;
    if (isOn == 0) {
        ResumeFrom(kPausedBySquelch);
    } else if (squelchBits != 0 && fileState == FileState::Recording) {
        PauseFor(kPausedBySquelch);
    }
}

void COrvaPlugin::SetPauseNoOrva(std::int32_t isOn) {
    pauseNoOrva = isOn;
    if (isOn == 0) {
        ResumeFrom(kPausedByNoSignal);
    } else {
        orvaSignalLatch = kSignalPresumed; // pauses at the next block without signal, not before
    }
}

/// The squelch has been evaluated.
void COrvaPlugin::PauseBySquelch() {
    if (pauseUnderSquelch == 0 || fileState != FileState::Recording) {
        return;
    }
    if (squelchBits != 0) {
        PauseFor(kPausedBySquelch);
    } else {
        ResumeFrom(kPausedBySquelch);
    }
}

/// The decoder has looked at a block of live input.
void COrvaPlugin::PauseBySignal(const BlockResult& block, const std::int16_t* samples, std::uint32_t count) {
    if (block.transmission == 0 && block.voiceBlocks == 0) {
        if (orvaSignalLatch != 0 && demodulationMode != DemodulationMode::Fm) {
            orvaSignalLatch = 0;
            if (fileState == FileState::Recording && pauseNoOrva != 0) {
                PauseFor(kPausedByNoSignal);
            }
        }
        return;
    }
    if (orvaSignalLatch != 0) {
        return;
    }
    orvaSignalLatch = static_cast<std::int32_t>(block.transmission);
    if (fileState != FileState::Recording || (pauseFlags & kPausedByNoSignal) == 0) {
        return;
    }
    ResumeFrom(kPausedByNoSignal);
    if (IsRecording(false)) {
        Record(samples, count); // at its place the block was skipped
    }
}

/// The mode has changed.
void COrvaPlugin::PauseByMode() {
    if (demodulationMode != DemodulationMode::Fm) {
        orvaSignalLatch = kSignalPresumed;
    } else if (pauseNoOrva != 0 && fileState == FileState::Recording) {
        ResumeFrom(kPausedByNoSignal);
    }
}

} // namespace orva::plugin
