/// What the read-out of a call shows, and when it changes.
#pragma once

#include <cstdint>
#include <string>

namespace orva::ui {

/// Keeps the values on show steady: they arrive with every block of samples, twenty times a second and more,
/// with now and then a wrong one among them. Each setter tells whether what is shown has changed.
class CallReadout {
public:
    /// Lamps of the transmission row; the numbers are the frame decoder's.
    enum Transmission : std::uint32_t { kNothing = 0, kUnknown = 1, kTrunking = 2, kData = 3, kVoice = 4 };

    /// \param now  [ms], of a clock that only grows
    bool SetBer(double percent, std::uint32_t now);
    bool SetNac(std::int32_t nac);
    bool SetTgid(std::int32_t talkGroup);
    bool SetSid(std::int32_t source);
    bool SetDid(std::int32_t destination);
    /// 0 none, 1 digital, 2 FM. Within half a second of the last change refused; the caller repeats himself.
    bool SetSignal(std::int32_t signal, std::uint32_t now);
    /// Ignored unless the signal is digital. Another transmission must hold for ten blocks to replace
    /// trunking, data or voice.
    bool SetTransmission(std::uint32_t transmission);
    /// Ignored unless the signal is digital. Another algorithm must hold for three blocks.
    bool SetEncryption(std::uint8_t algorithm);

    [[nodiscard]] const std::string& Ber() const { return berText; }
    [[nodiscard]] const std::string& Nac() const { return nacText; }
    [[nodiscard]] const std::string& Tgid() const { return tgidText; }
    [[nodiscard]] const std::string& Sid() const { return sidText; }
    [[nodiscard]] const std::string& Did() const { return didText; }
    [[nodiscard]] std::int32_t Signal() const { return signalShown; }
    [[nodiscard]] std::uint32_t TransmissionShown() const { return transmissionShown; }
    [[nodiscard]] std::uint8_t EncryptionShown() const { return encryptionShown; }
    [[nodiscard]] bool EncryptionEnabled() const { return encryptionEnabled; }

private:
    void Reset();

    double berShown = 0.0;
    std::uint32_t lastBerTime = 0; ///< [ms]
    std::uint32_t nacShown = 0xFFFFFFFF;
    std::uint32_t tgidShown = 0;
    std::uint32_t sidShown = 0;
    std::uint32_t didShown = 0;
    std::int32_t signalShown = 0;
    std::uint32_t lastSignalChange = 0; ///< [ms]
    std::uint32_t transmissionShown = kNothing;
    std::int32_t transmissionHold = 0; ///< blocks
    std::uint8_t encryptionShown = 0;
    std::int32_t encryptionHold = 0; ///< blocks
    bool encryptionEnabled = false;
    std::string berText = "0.0 %";
    std::string nacText = "---";
    std::string tgidText = "----";
    std::string sidText = "------";
    std::string didText = "------";
};

} // namespace orva::ui
