/// Squelch: the selective one on the signalling, and the host's, whose scanner gets one answer for each
/// channel.

#include "plugin/COrvaPlugin.h"
#include "squelch/NoiseMeasure.h"
#include "ui/COrvaPluginWindow.h"

#include <algorithm>
#include <limits>

namespace orva::plugin {

namespace {

/// Bits of the selective squelch, one for each comparison.
enum SelectiveBit : std::uint32_t { kNac = 1, kTgid = 2, kSid = 4, kDid = 8, kBer = 16 };

/// Bits of `squelchBits`.
enum ClosedBit : std::uint32_t { kClosedByHost = 1, kClosedBySelection = 2 };

constexpr std::uint32_t kTenthsPerPercent = 10;
constexpr std::uint32_t kSkipPartOfSecond = 20; // 50 ms of input after a retune
constexpr float kVoiceLevelFloor = 0.1F;
constexpr double kThresholdPerPercent = 0.01;
constexpr float kPercent = 100.0F;

bool Differs(std::int32_t current, std::uint32_t wanted) {
    return static_cast<std::uint32_t>(current) != wanted;
}

} // namespace

// --- selective squelch -------------------------------------------------------------------------------------

void COrvaPlugin::EvaluateSelectiveSquelch() {
    const std::uint32_t mask = selectiveSquelchMask;
    const bool mismatch =
        ((mask & kNac) != 0 && Differs(currentNac, squelchNac)) ||
        ((mask & kTgid) != 0 && Differs(currentTgid, squelchTgid)) ||
        ((mask & kSid) != 0 && Differs(currentSid, squelchSid)) ||
        ((mask & kDid) != 0 && Differs(currentDid, squelchDid)) ||
        ((mask & kBer) != 0 && static_cast<std::uint32_t>(currentBer) > squelchBer * kTenthsPerPercent);
    if (mismatch && demodulationMode != DemodulationMode::Fm) {
        squelchBits |= kClosedBySelection;
    } else {
        squelchBits &= ~static_cast<std::uint32_t>(kClosedBySelection);
    }
    ShowSquelch();
}

void COrvaPlugin::SetSelectiveSquelchMask(std::uint32_t mask) {
    if (selectiveSquelchMask == mask) {
        return;
    }
    selectiveSquelchMask = mask;
    if (window) {
        window->SetSelectiveMask(mask);
    }
    EvaluateSelectiveSquelch();
}

void COrvaPlugin::SetSelectiveSquelchValue(std::uint32_t bit, std::uint32_t value) {
    std::uint32_t* stored = nullptr;
    switch (bit) {
    case kNac:
        stored = &squelchNac;
        break;
    case kTgid:
        stored = &squelchTgid;
        break;
    case kSid:
        stored = &squelchSid;
        break;
    case kDid:
        stored = &squelchDid;
        break;
    case kBer:
        stored = &squelchBer;
        break;
    default:
        break;
    }
    if (stored != nullptr) {
        if (*stored == value) {
            return;
        }
        *stored = value;
    }
    EvaluateSelectiveSquelch();
}

void COrvaPlugin::ShowSquelch() {
    if (window && fileState != FileState::Playing) {
        window->SetSquelched(squelchBits != 0);
    }
    PauseBySquelch();
}

/// A file is played whatever the squelch says.
bool COrvaPlugin::IsSilencedBySquelch() const {
    return squelchBits != 0 && fileState != FileState::Playing;
}

// --- the host's squelch and scanner ------------------------------------------------------------------------

void COrvaPlugin::SetHostSquelch(std::uint32_t closed) {
    if (closed != 0) {
        squelchBits |= kClosedByHost;
    } else {
        squelchBits = 0; // the selection's bit too: it comes back with the next block
    }
    ShowSquelch();
}

void COrvaPlugin::SetSquelchSetup(std::uint32_t type, const SquelchValues* values) {
    hostSquelchType = type;
    if (values != nullptr) {
        levelThreshold = values->level;
        noiseThreshold = values->noise;
        voiceThreshold = values->voice;
        ctcssTone = values->ctcss;
        dcsCode = values->dcs;
    }
}

void COrvaPlugin::SetReceiverFrequency(std::uint32_t hertz) {
    receiverFrequency = hertz;
    frameDecoder.SetTunedFrequency(hertz);
    if (scannerActive) {
        scanSampleCount = 1;
        m_bScanningSquelchSent = false;
    } else {
        skipInputSamples = inputSampleRate / kSkipPartOfSecond;
    }
}

void COrvaPlugin::SetScanner(std::uint32_t isOn) {
    scannerActive = isOn != 0;
    if (scannerActive) {
        scanSampleCount = 1;
        m_bScanningSquelchSent = false;
    } else {
        scanSampleCount = 0;
    }
    if (window) {
        window->SetEnabled(!scannerActive);
    }
}

/// One block while the host scans: nothing but the test that the host asked for, until it is answered.
bool COrvaPlugin::ScanBlock(const std::int16_t* samples, std::uint32_t count) {
    if ((hostSquelchType & squelch_type::kAll) == 0 || m_bScanningSquelchSent) {
        return true;
    }
    if (!ToFloats(samples, count)) {
        return false;
    }
    const float* analog = analogDemodulator.Process(floatSamples.Data(), static_cast<std::int32_t>(count));
    if (analog == nullptr) {
        return false;
    }
    if (scanSampleCount > scanSettleSamples && !m_bScanningSquelchSent && ToAnalogSamples(analog, count)) {
        EvaluateHostSquelch(analogSamples.Data(), count);
        if ((hostSquelchType & squelch_type::kVoice) != 0) {
            ScanForVoice(count);
        }
    }
    AdvanceScan(count);
    return true;
}

void COrvaPlugin::ScanForVoice(std::uint32_t count) {
    if (afEnabled == 0) {
        EvaluateVoiceSquelch(analogSamples.Data(), count);
        return;
    }
    const auto samples = static_cast<std::int32_t>(count);
    inputDecimator.FilterI16(decimatedSamples.Data(), analogSamples.Data(), samples);
    // The filter runs over the undecimated number: kept.
    const std::int32_t filtered =
        audioFilter.FilterI16(decimatedSamples.Data(), decimatedSamples.Data(), samples);
    EvaluateVoiceSquelch(decimatedSamples.Data(), static_cast<std::uint32_t>(std::max(filtered, 0)));
}

void COrvaPlugin::AdvanceScan(std::uint32_t count) {
    if (scanSampleCount != 0) {
        const std::int64_t sum = std::int64_t{scanSampleCount} + count;
        scanSampleCount =
            static_cast<std::int32_t>(std::min<std::int64_t>(sum, std::numeric_limits<std::int32_t>::max()));
    }
}

/// Whether the channel has not been listened to for long enough: the settling time, and so much more.
bool COrvaPlugin::IsSettling(std::uint32_t extraSamples) const {
    return scanSampleCount != 0 &&
           std::int64_t{scanSampleCount} <= std::int64_t{scanSettleSamples} + extraSamples;
}

/// The one answer for this channel.
void COrvaPlugin::SendSquelchResult(std::uint32_t result, SquelchValues values) {
    // First: a host that tunes to the next channel from inside this call asks anew.
    m_bScanningSquelchSent = true;
    CallHost(PluginCode::SquelchResult, result, sizeof values, &values);
}

/// Outside of the scanner the samples are at 16000 Hz, the detectors' rate is the input's all the same: kept.
void COrvaPlugin::EvaluateHostSquelch(std::int16_t* samples, std::uint32_t count) {
    if (samples == nullptr || count == 0) {
        return;
    }
    switch (hostSquelchType & ~squelch_type::kLevel) {
    case squelch_type::kNoise:
        EvaluateNoise(samples, count);
        break;
    case squelch_type::kCtcss:
        EvaluateTone(samples, count);
        break;
    case squelch_type::kDcs:
        EvaluateCode(samples, count);
        break;
    default:
        break;
    }
}

void COrvaPlugin::EvaluateNoise(const std::int16_t* samples, std::uint32_t count) {
    SquelchValues values{};
    values.noise = squelch::MeasureNoise(noiseHighPass, noiseScratch.Acquire(count), noiseLevel,
                                         scannerActive, samples, count);
    if (IsSettling(0)) {
        return;
    }
    SendSquelchResult(values.noise >= noiseThreshold ? 0 : squelch_type::kNoise, values);
}

void COrvaPlugin::EvaluateTone(const std::int16_t* samples, std::uint32_t count) {
    toneDetector.SetSampleRate(static_cast<float>(processingRate));
    toneDetector.Process(samples, count, 1);
    if (IsSettling(processingRate)) {
        return;
    }
    SquelchValues values{};
    values.ctcss = squelch::ScaledCtcssTone(toneDetector.toneIndex);
    SendSquelchResult(values.ctcss != ctcssTone ? 0 : squelch_type::kCtcss, values);
}

void COrvaPlugin::EvaluateCode(std::int16_t* samples, std::uint32_t count) {
    squelch::DcBlock(dcBlock, samples, count, processingRate);
    dcsDetector.SetSampleRate(static_cast<float>(processingRate));
    dcsDetector.Process(samples, count, 1);
    if (IsSettling(processingRate / 2)) {
        return;
    }
    if (dcsDetector.matchCount != 0) {
        // The wait begins afresh, outside of the scanner too.
        scanSampleCount = scanSettleSamples;
    }
    SquelchValues values{};
    bool passed = false;
    for (std::uint32_t i = 0; i < dcsDetector.matchCount; ++i) {
        const std::int32_t code = squelch::SignedDcsCode(dcsDetector.matches[i]);
        if (code == dcsCode) {
            values.dcs = code;
            passed = true;
        }
    }
    dcsDetector.matchCount = 0;
    SendSquelchResult(passed ? squelch_type::kDcs : 0, values);
}

void COrvaPlugin::EvaluateVoiceSquelch(const std::int16_t* samples, std::uint32_t count) {
    if (samples == nullptr || count == 0) {
        return;
    }
    voiceDetector.SetSampleRate(static_cast<float>(processingRate));
    voiceDetector.SetBlockLength(inputSampleRate / 2);
    voiceDetector.SetLevelFloor(kVoiceLevelFloor);
    voiceDetector.SetVoiceThreshold(static_cast<float>(voiceThreshold * kThresholdPerPercent));
    voiceDetector.Process(samples, count, 1);
    if (IsSettling(processingRate / 2)) {
        return;
    }
    SquelchValues values{};
    values.voice = static_cast<std::int32_t>(voiceDetector.voiceMeasure * kPercent);
    SendSquelchResult(voiceDetector.result == squelch::kVoiceSpeech ? squelch_type::kVoice : 0, values);
}

} // namespace orva::plugin
