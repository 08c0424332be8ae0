/// Codes from the host and to it.

#include "plugin/COrvaPlugin.h"
#include "plugin/HostNotification.h"
#include "ui/COrvaPluginWindow.h"

#include <utility>

namespace orva::plugin {

namespace {

constexpr auto kModeDigital = static_cast<std::uint32_t>(ModeNumber::Digital);
constexpr auto kModeFm = static_cast<std::uint32_t>(ModeNumber::Fm);

/// Ends the protection from the host's echo with the call, whatever its code and however it ends: a call
/// inside a call ends the outer one's protection too.
struct ModeCallEnd {
    bool& inHostModeCall;
    ~ModeCallEnd() { inHostModeCall = false; }
};

} // namespace

/// The one road to the host. It may call back into the instance before it answers.
std::uint32_t COrvaPlugin::CallHost(PluginCode code, std::uint32_t param, std::uint32_t size, void* data) {
    if (hostCallback == nullptr) {
        return kUnsupported;
    }
    if (code == PluginCode::Mode) {
        inHostModeCall = true;
    }
    const ModeCallEnd end{inHostModeCall};
    return hostCallback(GetWindowHandle(), static_cast<std::int32_t>(code), param, size, data);
}

std::uint32_t COrvaPlugin::QueryHost(QueryCode code) {
    return CallHost(PluginCode::Query, static_cast<std::uint32_t>(code), 0, nullptr);
}

void COrvaPlugin::SendMode() {
    const std::uint32_t mode = signalIndicator == SignalIndicator::Digital ? kModeDigital : kModeFm;
    if (demodulationMode == DemodulationMode::Auto) {
        std::uint32_t pair[2] = {kModeFm, kModeDigital};
        CallHost(PluginCode::Mode, mode, sizeof pair, pair);
    } else {
        CallHost(PluginCode::Mode, mode, 0, nullptr);
    }
}

void COrvaPlugin::Notify(std::int32_t code, std::uint32_t param, std::uint32_t size, void* data) {
    const Frame frame(*this);
    HostNotification{code, param, size, data}.Perform(*this);
}

// --- what the plug-in offers -------------------------------------------------------------------------------

void COrvaPlugin::AnnounceCapabilities() {
    const Frame frame(*this);
    SendAndKeep(receiverRecord.MakeAnnouncement());
}

bool COrvaPlugin::BeginClosing() {
    const bool first = !closing;
    closing = true;
    DismissOverwriteBox();
    DismissErrorBox();
    return first;
}

void COrvaPlugin::WithdrawCapabilities() {
    const Frame frame(*this);
    SendAndKeep(receiverRecord.MakeWithdrawal());
}

/// What is kept is a clone of what was sent: the host may have written into it.
void COrvaPlugin::SendAndKeep(OwnedReceiverRecord record) {
    if (record) {
        CallHost(PluginCode::ReceiverRecord, 0, record.Size(), record.Get());
        receiverRecord = record.Clone();
    }
}

/// The scanner is offered the squelch types only while FM can be decoded. The stored record stays as it was.
void COrvaPlugin::PublishSquelchTypes(bool offered) {
    OwnedReceiverRecord offer = receiverRecord.MakeSquelchOffer(offered);
    if (offer) {
        CallHost(PluginCode::ReceiverRecord, 0, kReceiverRecordHeaderSize, offer.Get());
    }
}

// --- start -------------------------------------------------------------------------------------------------

void COrvaPlugin::DeferredStart() {
    if (closing) {
        return;
    }
    const Frame frame(*this);
    analogDemodulator.SetGain(1.0F);
    const std::uint32_t frequency = QueryHost(QueryCode::Frequency);
    receiverFrequency = frequency != kUnsupported ? frequency : receiverFrequency;
    const std::uint32_t scanner = QueryHost(QueryCode::Scanner);
    scannerActive = scanner != kUnsupported ? scanner != 0 : scannerActive;
    PublishSquelchTypes(demodulationMode != DemodulationMode::Digital);
    SendSquelchSetup();
    const std::uint32_t squelch = QueryHost(QueryCode::SquelchState);
    if (squelch != kUnsupported) {
        SetHostSquelch(squelch);
    }
    const std::uint32_t power = QueryHost(QueryCode::Power);
    if (power != kUnsupported) {
        SetPower(power != 0);
    }
    if (closing) {
        return; // from inside one of the calls above
    }
    if (!receiverStreaming) {
        OpenWaveInOrTell();
    }
    CallHost(PluginCode::VolumeChanged, waveOut ? waveOut->GetVolume() : 0, 0, nullptr);
    CallHost(PluginCode::MuteChanged, waveOut && waveOut->GetMute() ? 1 : 0, 0, nullptr);
    startupDone = true;
}

void COrvaPlugin::SendSquelchSetup() {
    SquelchValues values{};
    values.level = levelThreshold;
    values.noise = noiseThreshold;
    values.ctcss = ctcssTone;
    values.voice = voiceThreshold;
    values.dcs = dcsCode;
    CallHost(PluginCode::SquelchSetup, hostSquelchType, sizeof values, &values);
}

// --- end ---------------------------------------------------------------------------------------------------

COrvaPlugin::Frame::~Frame() {
    if (--plugin.frames == 0 && plugin.destroyAfterwards) {
        delete &plugin;
    }
}

void COrvaPlugin::Destroy() {
    closing = true;
    if (frames > 0) {
        // What is still under way further out must not tell the host anything after its last message.
        hostCallback = nullptr;
        destroyAfterwards = true;
    } else {
        delete this;
    }
}

} // namespace orva::plugin
