#include "tests/support/FrameBuilder.h"

#include "tests/support/BlockCodes.h"
#include "tests/support/ReedSolomonEncoder.h"

#include <vector>

namespace orva::test {

namespace {

constexpr int kOctetBits = 8;
constexpr int kAddressBits = 24;
constexpr int kGroupBits = 16;
constexpr int kKeyBits = 16;
constexpr int kSymbolBits = 6;

// An LDU carries link control or encryption sync in six groups of 40 bits, the first behind the second voice
// frame, the others behind the next five; low-speed data stands before the last voice frame.
constexpr std::size_t kFirstLinkGroup = 1;
constexpr std::size_t kLastLinkGroup = 6;
constexpr int kLinkGroupBits = 40;
constexpr std::size_t kLowSpeedDataAfter = 7;

BitString Octets(const MessageIndicator& octets) {
    BitString bits;
    for (const std::uint8_t octet : octets) {
        bits.Append(octet, kOctetBits);
    }
    return bits;
}

BitString HeaderBits(const HeaderFields& fields) {
    BitString bits = Octets(fields.messageIndicator);
    bits.Append(fields.manufacturer, kOctetBits);
    bits.Append(fields.algorithm, kOctetBits);
    bits.Append(fields.key, kKeyBits);
    bits.Append(fields.talkGroup, kGroupBits);
    return bits;
}

BitString EncryptionSyncBits(const EncryptionSync& sync) {
    BitString bits = Octets(sync.messageIndicator);
    bits.Append(sync.algorithm, kOctetBits);
    bits.Append(sync.key, kKeyBits);
    return bits;
}

void AppendVoice(BitString& bits, const ChannelBits& voice) {
    for (const std::uint8_t bit : voice) {
        bits.Append(bit, 1);
    }
}

} // namespace

BitString LinkControlBits(const LinkControl& link) {
    constexpr int kReservedBits = 8;
    BitString bits;
    bits.Append(link.format, kOctetBits);
    if (link.format != LinkControl::kGroupVoice && link.format != LinkControl::kUnitToUnitVoice) {
        for (const std::uint8_t octet : link.otherOctets) {
            bits.Append(octet, kOctetBits);
        }
        return bits;
    }
    bits.Append(link.manufacturer, kOctetBits);
    bits.Append(link.serviceOptions, kOctetBits);
    if (link.format == LinkControl::kGroupVoice) {
        bits.Append(0, kReservedBits);
        bits.Append(link.talkGroup, kGroupBits);
    } else {
        bits.Append(link.destination, kAddressBits);
    }
    bits.Append(link.source, kAddressBits);
    return bits;
}

std::string FrameBuilder::Frame(unsigned networkAccessCode, unsigned dataUnit, const BitString& body) {
    BitString nid;
    nid.Append(errors.SpoilNid(EncodeNid(networkAccessCode, dataUnit)), kNidBits);
    const std::string content = errors.SpoilSync(std::string(kSyncDibits)) + nid.Dibits() + body.Dibits();

    std::string frame;
    const auto append = [&](char dibit) {
        frame.push_back(dibit);
        if (frame.size() % kStatusPeriod == kStatusPeriod - 1) {
            frame.push_back(errors.StatusSymbol());
        }
    };
    for (const char dibit : content) {
        append(dibit);
    }
    while (frame.size() % kStatusPeriod != 0) {
        append('0');
    }
    return frame;
}

std::string FrameBuilder::Header(unsigned networkAccessCode, const HeaderFields& fields) {
    std::vector<std::uint8_t> symbols = EncodeReedSolomon(HeaderBits(fields).Symbols(), kHeaderParitySymbols);
    errors.ReplaceSymbols(symbols, errors.Plan().headerSymbols);
    BitString body;
    for (const std::uint8_t symbol : symbols) {
        body.Append(errors.FlipBits(EncodeGolay18(symbol), kGolay18Bits, errors.Plan().headerWordBits),
                    kGolay18Bits);
    }
    return Frame(networkAccessCode, static_cast<unsigned>(DataUnit::Header), body);
}

std::string FrameBuilder::Ldu1(unsigned networkAccessCode, const LinkControl& link, const VoiceWords& voice,
                               const LowSpeedData& lowSpeedData) {
    const BitString coded = CodeSymbolsByHamming(LinkControlBits(link), kLinkControlParitySymbols,
                                                 errors.Plan().linkControlSymbols);
    return Frame(networkAccessCode, static_cast<unsigned>(DataUnit::Ldu1),
                 LduBody(coded, voice, lowSpeedData));
}

std::string FrameBuilder::Ldu2(unsigned networkAccessCode, const EncryptionSync& sync,
                               const VoiceWords& voice, const LowSpeedData& lowSpeedData) {
    const BitString coded = CodeSymbolsByHamming(EncryptionSyncBits(sync), kEncryptionSyncParitySymbols,
                                                 errors.Plan().encryptionSyncSymbols);
    return Frame(networkAccessCode, static_cast<unsigned>(DataUnit::Ldu2),
                 LduBody(coded, voice, lowSpeedData));
}

std::string FrameBuilder::Terminator(unsigned networkAccessCode) {
    return Frame(networkAccessCode, static_cast<unsigned>(DataUnit::Terminator), {});
}

std::string FrameBuilder::TerminatorWithLinkControl(unsigned networkAccessCode, const LinkControl& link) {
    std::vector<std::uint8_t> symbols =
        EncodeReedSolomon(LinkControlBits(link).Symbols(), kLinkControlParitySymbols);
    errors.ReplaceSymbols(symbols, errors.Plan().linkControlSymbols);
    BitString body;
    for (std::size_t pair = 0; pair < symbols.size(); pair += 2) {
        const unsigned information = static_cast<unsigned>(symbols[pair]) << kSymbolBits | symbols[pair + 1];
        body.Append(
            errors.FlipBits(EncodeGolay24(information), kGolay24Bits, errors.Plan().terminatorWordBits),
            kGolay24Bits);
    }
    return Frame(networkAccessCode, static_cast<unsigned>(DataUnit::TerminatorWithLinkControl), body);
}

BitString FrameBuilder::CodeSymbolsByHamming(const BitString& content, int paritySymbols, int wrongSymbols) {
    std::vector<std::uint8_t> symbols = EncodeReedSolomon(content.Symbols(), paritySymbols);
    errors.ReplaceSymbols(symbols, wrongSymbols);
    BitString coded;
    for (const std::uint8_t symbol : symbols) {
        coded.Append(errors.FlipBits(EncodeHamming10(symbol), kHamming10Bits, errors.Plan().linkWordBits),
                     kHamming10Bits);
    }
    return coded;
}

BitString FrameBuilder::LduBody(const BitString& codedLink, const VoiceWords& voice,
                                const LowSpeedData& lowSpeedData) {
    BitString body;
    for (std::size_t frame = 0; frame < voice.size(); ++frame) {
        AppendVoice(body, EncodeImbeWord(voice[frame], errors.VoiceErrors()));
        if (frame >= kFirstLinkGroup && frame <= kLastLinkGroup) {
            body.Append(codedLink.Field((frame - kFirstLinkGroup) * kLinkGroupBits, kLinkGroupBits),
                        kLinkGroupBits);
        }
        if (frame == kLowSpeedDataAfter) {
            for (const std::uint8_t octet : lowSpeedData) {
                body.Append(EncodeLowSpeedData(octet), kLowSpeedDataWordBits);
            }
        }
    }
    return body;
}

} // namespace orva::test
