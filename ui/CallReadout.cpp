#include "ui/CallReadout.h"

#include <array>
#include <cstdio>

namespace orva::ui {

namespace {

constexpr std::uint32_t kBerInterval = 250;    // [ms]
constexpr std::uint32_t kSignalInterval = 500; // [ms]
constexpr std::int32_t kDigitalSignal = 1;
constexpr std::int32_t kTransmissionRepeatHold = 10; // blocks
constexpr std::int32_t kTransmissionChangeHold = 5;
constexpr std::int32_t kEncryptionRepeatHold = 3;

constexpr std::uint32_t kNacMask = 0xFFF;
constexpr std::uint32_t kTgidMask = 0xFFFF;
constexpr std::uint32_t kUnitMask = 0xFFFFFF;

template <std::size_t size, class Value>
std::string Format(const char* format, Value value) {
    std::array<char, size> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

/// Shows a number, masked, or dashes for -1.
bool ShowNumber(std::int32_t value, std::uint32_t mask, const char* dashes, std::uint32_t& shown,
                std::string& text) {
    const std::uint32_t masked = value == -1 ? 0xFFFFFFFF : static_cast<std::uint32_t>(value) & mask;
    if (masked == shown) {
        return false;
    }
    shown = masked;
    constexpr std::size_t kDigits = 16;
    text = value == -1 ? dashes : Format<kDigits>("%u", masked);
    return true;
}

} // namespace

bool CallReadout::SetBer(double percent, std::uint32_t now) {
    if (now - lastBerTime < kBerInterval || percent == berShown) {
        return false;
    }
    berShown = percent;
    constexpr std::size_t kRoom = 32;
    berText = Format<kRoom>("%.01f %%", percent);
    lastBerTime = now;
    return true;
}

bool CallReadout::SetNac(std::int32_t nac) {
    return ShowNumber(nac, kNacMask, "---", nacShown, nacText);
}

bool CallReadout::SetTgid(std::int32_t talkGroup) {
    return ShowNumber(talkGroup, kTgidMask, "----", tgidShown, tgidText);
}

bool CallReadout::SetSid(std::int32_t source) {
    return ShowNumber(source, kUnitMask, "--------", sidShown, sidText);
}

/// Writes into the source's text: kept.
bool CallReadout::SetDid(std::int32_t destination) {
    return ShowNumber(destination, kUnitMask, "--------", didShown, sidText);
}

bool CallReadout::SetSignal(std::int32_t signal, std::uint32_t now) {
    if (signal == signalShown || now - lastSignalChange < kSignalInterval) {
        return false;
    }
    lastSignalChange = now;
    signalShown = signal;
    if (signal != kDigitalSignal) {
        Reset();
    }
    return true;
}

void CallReadout::Reset() {
    nacShown = tgidShown = sidShown = didShown = 0xFFFFFFFF;
    nacText = "---";
    tgidText = "----";
    sidText = "------";
    didText = "------";
    berText = "0.0 %";
    transmissionShown = kNothing;
    transmissionHold = 0;
    encryptionShown = 0;
    encryptionEnabled = false;
}

bool CallReadout::SetTransmission(std::uint32_t transmission) {
    if (signalShown != kDigitalSignal) {
        return false;
    }
    if (transmission == transmissionShown) {
        transmissionHold = kTransmissionRepeatHold;
        return false;
    }
    --transmissionHold;
    if (transmissionHold > 0 && transmissionShown > kUnknown) {
        return false;
    }
    transmissionHold = kTransmissionChangeHold;
    transmissionShown = transmission;
    encryptionEnabled = transmission == kVoice;
    return true;
}

bool CallReadout::SetEncryption(std::uint8_t algorithm) {
    if (signalShown != kDigitalSignal) {
        return false;
    }
    if (algorithm == encryptionShown) {
        encryptionHold = kEncryptionRepeatHold;
        return false;
    }
    --encryptionHold;
    if (encryptionHold >= 1 || !encryptionEnabled) {
        return false;
    }
    encryptionShown = algorithm;
    return true;
}

} // namespace orva::ui
