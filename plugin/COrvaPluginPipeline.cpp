/// The walk of one block of samples through all stages.

#include "plugin/COrvaPlugin.h"
#include "toolkit/Trace.h"
#include "ui/COrvaPluginWindow.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>

namespace orva::plugin {

namespace {

constexpr float kSampleScale = 1.0F / 32768.0F;
constexpr double kAudioScale = 10430.060040584269; // 32767 / pi: FM audio is a phase step in radians
constexpr float kTenthsPerPercent = 10.0F;
constexpr double kPercentPerTenth = 0.1;
constexpr std::uint32_t kInvertBits = 16;
constexpr std::int32_t kClear = 0x80;
constexpr std::int32_t kUnknownAlgorithm = -1;

constexpr std::uint32_t kSpectrumLive = 2;
constexpr std::uint32_t kSpectrumMirrored = 4;

constexpr std::uint32_t kOfferBits = 16;
constexpr std::uint32_t kOfferChannels = 1;

} // namespace

bool COrvaPlugin::ProcessData(const std::int16_t* samples, std::uint32_t count) {
    if (!decoderEnabled || closing) {
        return false;
    }
    if (samples == nullptr || count == 0) {
        return true;
    }
    const Frame frame(*this);
    walking = true;
    bool done = false;
    try {
        done = Walk(samples, count);
    } catch (const std::exception& error) {
        // The block is lost, but neither its buffer nor the blocks that wait for it.
        toolkit::PrintDebug("ORVA: a block of samples was dropped: %s\n", error.what());
    } catch (...) {
        toolkit::PrintDebug("ORVA: a block of samples was dropped.\n");
    }
    walking = false;
    return done;
}

bool COrvaPlugin::Walk(const std::int16_t* samples, std::uint32_t count) {
    if (decimatedSamples.Acquire(2 * count) == nullptr) {
        return false;
    }
    if (scannerActive) {
        return ScanBlock(samples, count);
    }
    if (fileState == FileState::Playing) {
        return PlayBlock(count); // the live block is a clock
    }
    InvertSpectrum(samples, count);
    if (IsRecording(false)) {
        Record(samples, count);
    }
    return RunStages(samples, count, kSpectrumLive);
}

/// Live samples alone, in place.
void COrvaPlugin::InvertSpectrum(const std::int16_t* samples, std::uint32_t count) {
    if (fileState != FileState::Reserved && receiverLibrary.K7InvertSpectrum != nullptr) {
        receiverLibrary.K7InvertSpectrum(receiverHandle, const_cast<std::int16_t*>(samples), count,
                                         static_cast<float>(inputSampleRate), kInvertBits, 0);
    }
}

/// The stages from the spectrum on, for live samples and those of a file.
bool COrvaPlugin::RunStages(const std::int16_t* samples, std::uint32_t count, std::uint32_t spectrumFlags) {
    if (!ToFloats(samples, count)) {
        return false;
    }
    if (window) {
        spectrumFlags |= spectrumCrossover < receiverFrequency ? kSpectrumMirrored : 0;
        window->ProcessSamples(floatSamples.Data(), count, spectrumFlags); // the notch works in place
    }
    const BlockResult block = RunDigitalChain(count);
    EvaluateSelectiveSquelch();
    PauseBySignal(block, samples, count);
    const bool nothingDigital = block.transmission == 0 && block.voiceBlocks == 0;
    if (nothingDigital && demodulationMode != DemodulationMode::Digital) {
        return RunFmChain(count);
    }
    RunVoicePath(block);
    return true;
}

bool COrvaPlugin::ToFloats(const std::int16_t* samples, std::uint32_t count) {
    float* floats = floatSamples.Acquire(count);
    if (floats == nullptr) {
        return false;
    }
    std::transform(samples, samples + count, floats,
                   [](std::int16_t sample) { return static_cast<float>(sample) * kSampleScale; });
    return true;
}

// --- the digital chain -------------------------------------------------------------------------------------

COrvaPlugin::BlockResult COrvaPlugin::RunDigitalChain(std::uint32_t count) {
    BlockResult block{0, 0};
    // Whatever the mode: the demodulator must not lose its lock.
    const std::int32_t dibits = demodulator.Process(floatSamples.Data(), static_cast<std::int32_t>(count));
    if (demodulationMode != DemodulationMode::Fm) {
        block.voiceBlocks = frameDecoder.Decode(demodulator.GetDibits(), dibits);
        block.transmission = frameDecoder.GetTransmission();
        SendTrunkingReport();
    }
    UpdateCallFields(block.transmission);
    return block;
}

void COrvaPlugin::SendTrunkingReport() {
    std::uint32_t size = 0;
    const std::unique_ptr<std::uint8_t[]> report = frameDecoder.TakeRecords(&size);
    if (report) {
        CallHost(PluginCode::TrunkingReport, 0, size, report.get());
    }
}

void COrvaPlugin::UpdateCallFields(std::uint32_t transmission) {
    if (transmission == 0) {
        currentBer = 0;
        currentNac = currentTgid = currentSid = currentDid = -1;
        return;
    }
    currentBer = static_cast<std::int32_t>(frameDecoder.GetBitErrorRate() * kTenthsPerPercent);
    currentNac = frameDecoder.GetNetworkAccessCode();
    currentTgid = frameDecoder.GetTalkGroup();
    currentSid = frameDecoder.GetSourceId();
    currentDid = frameDecoder.GetDestinationId();
}

void COrvaPlugin::SetSignalIndicator(SignalIndicator value) {
    const bool changed = value != signalIndicator;
    signalIndicator = value;
    // Shown even when it did not change: the window takes no two changes within half a second.
    if (window) {
        window->SetSignal(static_cast<std::int32_t>(value));
    }
    if (changed) {
        SendMode();
    }
}

// --- the voice path ----------------------------------------------------------------------------------------

void COrvaPlugin::RunVoicePath(const BlockResult& block) {
    SetSignalIndicator(SignalIndicator::Digital);
    analogHoldoff = 0;
    if (currentAudioBlock != nullptr) {
        // The tail of FM audio is dropped, not played.
        freeAudioBlocks.Push(currentAudioBlock);
        currentAudioBlock = nullptr;
    }
    ShowCallFields(block.transmission);
    for (std::int32_t i = 0; i < block.voiceBlocks; ++i) {
        PlayVoiceBlock();
    }
}

void COrvaPlugin::ShowCallFields(std::uint32_t transmission) {
    if (!window) {
        return;
    }
    window->SetBer(static_cast<float>(currentBer * kPercentPerTenth));
    window->SetNac(currentNac);
    window->SetTgid(currentTgid);
    window->SetSid(currentSid);
    window->SetDid(currentDid);
    window->SetTransmission(transmission);
    window->SetEncryption(static_cast<std::uint8_t>(frameDecoder.GetAlgorithmId()));
}

/// Takes one block of decoded speech to the output, and to the recording.
void COrvaPlugin::PlayVoiceBlock() {
    dsp::CtbSampleBlock* voice = frameDecoder.PopVoiceBlock();
    if (voice == nullptr) {
        return;
    }
    const std::uint32_t count = frameDecoder.GetBlockSize();
    ApplyOrvaGain(voice->Data(), count);
    std::int16_t* audio = decimatedSamples.Acquire(kAudioBlockSamples);
    if (audio == nullptr) {
        frameDecoder.PushFreeBlock(voice);
        return;
    }
    const std::int32_t written =
        voiceInterpolator.FilterI16(audio, voice->Data(), static_cast<std::int32_t>(count));
    frameDecoder.PushFreeBlock(voice);
    const auto samples = static_cast<std::size_t>(std::max(written, 0));
    if (IsSilencedBySquelch()) {
        std::fill_n(audio, samples, std::int16_t{0});
    }
    if (IsRecording(true)) {
        Record(audio, static_cast<std::uint32_t>(samples)); // before the mute of encrypted calls
    }
    WriteVoice(audio, samples);
}

/// A voice block fills exactly one block of output, and is lost without a free one.
void COrvaPlugin::WriteVoice(const std::int16_t* audio, std::size_t count) {
    if (currentAudioBlock == nullptr) {
        TakeAudioBlock();
    }
    if (currentAudioBlock == nullptr || !waveOut) {
        return;
    }
    std::int16_t* target = currentAudioBlock->Acquire(kAudioBlockSamples);
    const std::int32_t algorithm = frameDecoder.GetAlgorithmId();
    const bool audible = algorithm == kClear || algorithm == kUnknownAlgorithm || !muteEncrypted;
    if (audible) {
        std::copy_n(audio, count, target);
    } else {
        std::fill_n(target, count, std::int16_t{0});
    }
    WriteOut(currentAudioBlock);
    currentAudioBlock = nullptr;
}

/// Overflow wraps: kept on purpose.
void COrvaPlugin::ApplyOrvaGain(std::int16_t* samples, std::uint32_t count) const {
    if (orvaGain == 0) {
        return;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto scaled = static_cast<std::int64_t>(samples[i] * orvaGainFactor);
        samples[i] = static_cast<std::int16_t>(scaled);
    }
}

// --- the FM chain ------------------------------------------------------------------------------------------

bool COrvaPlugin::RunFmChain(std::uint32_t count) {
    const float* analog = analogDemodulator.Process(floatSamples.Data(), static_cast<std::int32_t>(count));
    if (analog == nullptr) {
        return false;
    }
    if (!ToAnalogSamples(analog, count)) {
        return true;
    }
    const std::int32_t decimated = inputDecimator.FilterI16(decimatedSamples.Data(), analogSamples.Data(),
                                                            static_cast<std::int32_t>(count));
    const auto audioCount = static_cast<std::uint32_t>(std::max(decimated, 0));
    EvaluateHostSquelch(decimatedSamples.Data(), audioCount);
    if (afEnabled != 0) {
        audioFilter.FilterI16(decimatedSamples.Data(), decimatedSamples.Data(),
                              static_cast<std::int32_t>(audioCount));
    }
    if ((hostSquelchType & squelch_type::kVoice) != 0) {
        EvaluateVoiceSquelch(decimatedSamples.Data(), audioCount);
    }
    AdvanceScan(audioCount);
    HoldOff(audioCount);
    if (IsSilencedBySquelch()) {
        std::fill_n(decimatedSamples.Data(), audioCount, std::int16_t{0});
    }
    if (IsRecording(true)) {
        Record(decimatedSamples.Data(), audioCount);
    }
    return CutIntoAudioBlocks(decimatedSamples.Data(), audioCount, AudioBlockUse::Offer);
}

bool COrvaPlugin::ToAnalogSamples(const float* analog, std::uint32_t count) {
    std::int16_t* audio = analogSamples.Acquire(count);
    if (audio == nullptr) {
        return false;
    }
    std::transform(analog, analog + count, audio, [](float phaseStep) {
        return static_cast<std::int16_t>(std::lrint(static_cast<double>(phaseStep) * kAudioScale));
    });
    return true;
}

/// FM audio starts only after some time without a digital signal.
void COrvaPlugin::HoldOff(std::uint32_t count) {
    if (analogHoldoff >= kHoldoffBlocks) {
        SetSignalIndicator(SignalIndicator::Fm);
        return;
    }
    std::fill_n(decimatedSamples.Data(), count, std::int16_t{0});
    ++analogHoldoff;
    SetSignalIndicator(SignalIndicator::None);
}

/// Fills blocks of output across calls.
///
/// \return false if there was no block for the rest
bool COrvaPlugin::CutIntoAudioBlocks(const std::int16_t* samples, std::uint32_t count, AudioBlockUse use) {
    while (count > 0) {
        if (currentAudioBlock == nullptr && !TakeAudioBlock()) {
            return false;
        }
        const std::uint32_t part = std::min(count, currentAudioBlock->Capacity() - audioBlockFill);
        std::copy_n(samples, part, currentAudioBlock->Data() + audioBlockFill);
        audioBlockFill += part;
        samples += part;
        count -= part;
        if (audioBlockFill == currentAudioBlock->Capacity()) {
            // Detached first: the host may come back into the instance from the offer.
            dsp::CtbSampleBlock* full = currentAudioBlock;
            currentAudioBlock = nullptr;
            if (use == AudioBlockUse::Offer) {
                OfferAudioToHost(full);
            } else {
                full->SetUsed(audioBlockFill);
            }
            WriteOut(full);
        }
    }
    return true;
}

/// Lets the host hear, and change, the audio.
void COrvaPlugin::OfferAudioToHost(dsp::CtbSampleBlock* block) {
    const std::uint32_t sampleBytes = block->Capacity() * static_cast<std::uint32_t>(sizeof(std::int16_t));
    const std::uint32_t size = AudioOfferSize(block->Capacity());
    char* buffer = hostAudioBuffer.Acquire(size);
    if (buffer == nullptr) {
        return;
    }
    const AudioOffer head{audioSampleRate, kOfferBits, kOfferChannels, block->Capacity()};
    std::memcpy(buffer, &head, sizeof head);
    std::memcpy(buffer + sizeof head, block->Data(), sampleBytes);
    std::memset(buffer + sizeof head + sampleBytes, 0, size - sizeof head - sampleBytes);
    CallHost(PluginCode::AudioOffer, kAudioOfferParam, size, buffer);
    std::memcpy(block->Data(), buffer + sizeof head, sampleBytes);
}

// --- output blocks -----------------------------------------------------------------------------------------

bool COrvaPlugin::TakeAudioBlock() {
    if (!freeAudioBlocks.Pop(currentAudioBlock)) {
        return false;
    }
    audioBlockFill = 0;
    return true;
}

void COrvaPlugin::WriteOut(dsp::CtbSampleBlock* block) {
    if (waveOut) {
        waveOut->Write(block);
    } else {
        ReturnBlock(block);
    }
}

void COrvaPlugin::ReturnBlock(dsp::CtbSampleBlock* block) {
    if (block != nullptr) {
        freeAudioBlocks.Push(block);
    }
}

} // namespace orva::plugin
