/// A look inside an instance.
#pragma once

#include "plugin/COrvaPlugin.h"

#include <vector>

namespace orva::plugin {

/// Fields by their own names, and the steps that have no other door.
struct COrvaPluginInspector {
    COrvaPlugin& plugin;

    [[nodiscard]] auto& ReceiverStreaming() const { return plugin.receiverStreaming; }
    [[nodiscard]] auto& InHostModeCall() const { return plugin.inHostModeCall; }
    [[nodiscard]] auto& InputSampleRate() const { return plugin.inputSampleRate; }
    [[nodiscard]] auto& SignalIndicator() const { return plugin.signalIndicator; }
    [[nodiscard]] auto& ReceiverHandle() const { return plugin.receiverHandle; }
    [[nodiscard]] auto& ReceiverLibrary() const { return plugin.receiverLibrary; }
    [[nodiscard]] auto& WaveFile() const { return plugin.waveFile; }
    [[nodiscard]] auto& FileState() const { return plugin.fileState; }
    [[nodiscard]] auto& PauseFlags() const { return plugin.pauseFlags; }
    [[nodiscard]] auto& FileSamples() const { return plugin.fileSamples; }
    [[nodiscard]] auto& FileIsAudio() const { return plugin.fileIsAudio; }
    [[nodiscard]] auto& FileSampleRate() const { return plugin.fileSampleRate; }
    [[nodiscard]] auto& PauseUnderSquelch() const { return plugin.pauseUnderSquelch; }
    [[nodiscard]] auto& PauseNoOrva() const { return plugin.pauseNoOrva; }
    [[nodiscard]] auto& OrvaSignalLatch() const { return plugin.orvaSignalLatch; }
    [[nodiscard]] auto& OverwriteBox() const { return plugin.overwriteBox; }
    [[nodiscard]] auto& PlayNextFile() const { return plugin.playNextFile; }
    [[nodiscard]] auto& ProcessingRate() const { return plugin.processingRate; }
    [[nodiscard]] auto& WaveOut() const { return plugin.waveOut; }
    [[nodiscard]] auto& AudioSampleRate() const { return plugin.audioSampleRate; }
    [[nodiscard]] auto& DecoderEnabled() const { return plugin.decoderEnabled; }
    [[nodiscard]] auto& FloatSamples() const { return plugin.floatSamples; }
    [[nodiscard]] auto& AnalogSamples() const { return plugin.analogSamples; }
    [[nodiscard]] auto& WaveIn() const { return plugin.waveIn; }
    [[nodiscard]] auto& ReceiverRecord() const { return plugin.receiverRecord; }
    [[nodiscard]] auto& DemodulationMode() const { return plugin.demodulationMode; }
    [[nodiscard]] auto& Demodulator() const { return plugin.demodulator; }
    [[nodiscard]] auto& FrameDecoder() const { return plugin.frameDecoder; }
    [[nodiscard]] auto& AnalogDemodulator() const { return plugin.analogDemodulator; }
    [[nodiscard]] auto& FreeAudioBlocks() const { return plugin.freeAudioBlocks; }
    [[nodiscard]] auto& FreeInputBlocks() const { return plugin.freeInputBlocks; }
    [[nodiscard]] auto& FilledInputBlocks() const { return plugin.filledInputBlocks; }
    [[nodiscard]] auto& InputLock() const { return plugin.inputLock; }
    [[nodiscard]] auto& AudioBlockFill() const { return plugin.audioBlockFill; }
    [[nodiscard]] auto& CurrentAudioBlock() const { return plugin.currentAudioBlock; }
    [[nodiscard]] auto& SquelchBits() const { return plugin.squelchBits; }
    [[nodiscard]] auto& AfFreqLow() const { return plugin.afFreqLow; }
    [[nodiscard]] auto& AfFreqHigh() const { return plugin.afFreqHigh; }
    [[nodiscard]] auto& AfLowpass() const { return plugin.afLowpass; }
    [[nodiscard]] auto& AfDeemphasis() const { return plugin.afDeemphasis; }
    [[nodiscard]] auto& AfFilterLength() const { return plugin.afFilterLength; }
    [[nodiscard]] auto& AfEnabled() const { return plugin.afEnabled; }
    [[nodiscard]] auto& SelectiveSquelchMask() const { return plugin.selectiveSquelchMask; }
    [[nodiscard]] auto& AnalogHoldoff() const { return plugin.analogHoldoff; }
    [[nodiscard]] auto& HostSquelchType() const { return plugin.hostSquelchType; }
    [[nodiscard]] auto& VoiceThreshold() const { return plugin.voiceThreshold; }
    [[nodiscard]] auto& CtcssTone() const { return plugin.ctcssTone; }
    [[nodiscard]] auto& DcsCode() const { return plugin.dcsCode; }
    [[nodiscard]] auto& NoiseThreshold() const { return plugin.noiseThreshold; }
    [[nodiscard]] auto& LevelThreshold() const { return plugin.levelThreshold; }
    [[nodiscard]] auto& NoiseScratch() const { return plugin.noiseScratch; }
    [[nodiscard]] auto& HostCallback() const { return plugin.hostCallback; }
    [[nodiscard]] auto& NoiseLevel() const { return plugin.noiseLevel; }
    [[nodiscard]] auto& SpareInputBlock() const { return plugin.spareInputBlock; }
    [[nodiscard]] auto& InputBlocks() const { return plugin.inputBlocks; }
    [[nodiscard]] auto& DcBlock() const { return plugin.dcBlock; }
    [[nodiscard]] auto& FillingInputBlock() const { return plugin.fillingInputBlock; }
    [[nodiscard]] auto& InputBlockFill() const { return plugin.inputBlockFill; }
    [[nodiscard]] auto& SpectrumCrossover() const { return plugin.spectrumCrossover; }
    [[nodiscard]] auto& ReceiverFrequency() const { return plugin.receiverFrequency; }
    [[nodiscard]] auto& WaveInDevice() const { return plugin.waveInDevice; }
    [[nodiscard]] auto& WaveOutDevice() const { return plugin.waveOutDevice; }
    [[nodiscard]] auto& SavedStreamValue() const { return plugin.savedStreamValue; }
    [[nodiscard]] auto& ScannerActive() const { return plugin.scannerActive; }
    [[nodiscard]] auto& WaveOutName() const { return plugin.waveOutName; }
    [[nodiscard]] auto& WaveInName() const { return plugin.waveInName; }
    [[nodiscard]] auto& StartupDone() const { return plugin.startupDone; }
    [[nodiscard]] auto& ScanningSquelchSent() const { return plugin.m_bScanningSquelchSent; }
    [[nodiscard]] auto& ScanSampleCount() const { return plugin.scanSampleCount; }
    [[nodiscard]] auto& ScanSettleSamples() const { return plugin.scanSettleSamples; }
    [[nodiscard]] auto& AudioBlocks() const { return plugin.audioBlocks; }
    [[nodiscard]] auto& SkipInputSamples() const { return plugin.skipInputSamples; }
    [[nodiscard]] auto& MuteEncrypted() const { return plugin.muteEncrypted; }
    [[nodiscard]] auto& DecimatedSamples() const { return plugin.decimatedSamples; }
    [[nodiscard]] auto& OrvaGain() const { return plugin.orvaGain; }
    [[nodiscard]] auto& OrvaGainFactor() const { return plugin.orvaGainFactor; }
    [[nodiscard]] auto& DcsDetector() const { return plugin.dcsDetector; }
    [[nodiscard]] auto& ToneDetector() const { return plugin.toneDetector; }
    [[nodiscard]] auto& VoiceDetector() const { return plugin.voiceDetector; }
    [[nodiscard]] auto& SquelchNac() const { return plugin.squelchNac; }
    [[nodiscard]] auto& SquelchTgid() const { return plugin.squelchTgid; }
    [[nodiscard]] auto& SquelchSid() const { return plugin.squelchSid; }
    [[nodiscard]] auto& SquelchDid() const { return plugin.squelchDid; }
    [[nodiscard]] auto& SquelchBer() const { return plugin.squelchBer; }
    [[nodiscard]] auto& CurrentNac() const { return plugin.currentNac; }
    [[nodiscard]] auto& CurrentTgid() const { return plugin.currentTgid; }
    [[nodiscard]] auto& CurrentSid() const { return plugin.currentSid; }
    [[nodiscard]] auto& CurrentDid() const { return plugin.currentDid; }
    [[nodiscard]] auto& CurrentBer() const { return plugin.currentBer; }
    [[nodiscard]] auto& Window() const { return plugin.window; }
    [[nodiscard]] auto& InputDecimator() const { return plugin.inputDecimator; }
    [[nodiscard]] auto& VoiceInterpolator() const { return plugin.voiceInterpolator; }
    [[nodiscard]] auto& NoiseHighPass() const { return plugin.noiseHighPass; }
    [[nodiscard]] auto& AudioFilter() const { return plugin.audioFilter; }
    [[nodiscard]] auto& HostAudioBuffer() const { return plugin.hostAudioBuffer; }

    void PauseBySignal(std::uint32_t transmission, std::int32_t voiceBlocks,
                       const std::vector<std::int16_t>& samples) const {
        plugin.PauseBySignal({transmission, voiceBlocks}, samples.data(),
                             static_cast<std::uint32_t>(samples.size()));
    }
    [[nodiscard]] bool IsFileSupported() const { return plugin.IsFileSupported(); }
    void BuildInputDecimator() const { plugin.BuildInputDecimator(); }
    void EvaluateSelectiveSquelch() const { plugin.EvaluateSelectiveSquelch(); }
    void EvaluateHostSquelch(std::int16_t* samples, std::uint32_t count) const {
        plugin.EvaluateHostSquelch(samples, count);
    }
    void EvaluateVoiceSquelch(const std::int16_t* samples, std::uint32_t count) const {
        plugin.EvaluateVoiceSquelch(samples, count);
    }
    void SetSignalIndicator(orva::plugin::SignalIndicator value) const { plugin.SetSignalIndicator(value); }
    void OfferAudioToHost(dsp::CtbSampleBlock* block) const { plugin.OfferAudioToHost(block); }
    [[nodiscard]] bool TakeAudioBlock() const { return plugin.TakeAudioBlock(); }
    void ReadReceiverMemory(std::uint32_t handle) const { plugin.ReadReceiverMemory(handle); }
    void ApplyOrvaGain(std::int16_t* samples, std::uint32_t count) const {
        plugin.ApplyOrvaGain(samples, count);
    }
};

} // namespace orva::plugin
