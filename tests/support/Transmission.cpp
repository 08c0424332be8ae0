#include "tests/support/Transmission.h"

#include "tests/support/RandomSource.h"

namespace orva::test {

namespace {

constexpr int kPacketBlockBits = 196;

BitString RandomBits(int count, std::uint64_t seed) {
    RandomSource random(seed);
    BitString bits;
    for (int bit = 0; bit < count; ++bit) {
        bits.Append(random.Next(), 1);
    }
    return bits;
}

VoiceWords NextVoiceWords(const VoiceSource& voice, std::size_t& index) {
    VoiceWords words;
    for (VoiceBits& word : words) {
        word = voice(index++);
    }
    return words;
}

} // namespace

void Transmission::AddHeader(unsigned networkAccessCode, const HeaderFields& fields) {
    Append(networkAccessCode, static_cast<unsigned>(DataUnit::Header),
           builder.Header(networkAccessCode, fields));
    frames.back().header = fields;
}

void Transmission::AddLdu1(unsigned networkAccessCode, const LinkControl& link, const VoiceWords& voice,
                           const LowSpeedData& lowSpeedData) {
    Append(networkAccessCode, static_cast<unsigned>(DataUnit::Ldu1),
           builder.Ldu1(networkAccessCode, link, voice, lowSpeedData));
    frames.back().link = link;
    frames.back().voice.assign(voice.begin(), voice.end());
}

void Transmission::AddLdu2(unsigned networkAccessCode, const EncryptionSync& sync, const VoiceWords& voice,
                           const LowSpeedData& lowSpeedData) {
    Append(networkAccessCode, static_cast<unsigned>(DataUnit::Ldu2),
           builder.Ldu2(networkAccessCode, sync, voice, lowSpeedData));
    frames.back().encryption = sync;
    frames.back().voice.assign(voice.begin(), voice.end());
}

void Transmission::AddTerminator(unsigned networkAccessCode) {
    Append(networkAccessCode, static_cast<unsigned>(DataUnit::Terminator),
           builder.Terminator(networkAccessCode));
}

void Transmission::AddTerminatorWithLinkControl(unsigned networkAccessCode, const LinkControl& link) {
    Append(networkAccessCode, static_cast<unsigned>(DataUnit::TerminatorWithLinkControl),
           builder.TerminatorWithLinkControl(networkAccessCode, link));
    frames.back().link = link;
}

void Transmission::AddTrunking(unsigned networkAccessCode, std::span<const TrunkingData> blocks) {
    constexpr auto kDataUnit = static_cast<unsigned>(DataUnit::Trunking);
    Append(networkAccessCode, kDataUnit,
           builder.Frame(networkAccessCode, kDataUnit, EncodeTrunkingBlocks(blocks)));
    frames.back().trunking = MarkLastBlock(blocks);
}

void Transmission::AddPacket(unsigned networkAccessCode, int blocks, std::uint64_t seed) {
    AddUnknown(networkAccessCode, static_cast<unsigned>(DataUnit::Packet), blocks * kPacketBlockBits, seed);
}

void Transmission::AddUnknown(unsigned networkAccessCode, unsigned dataUnit, int bits, std::uint64_t seed) {
    Append(networkAccessCode, dataUnit, builder.Frame(networkAccessCode, dataUnit, RandomBits(bits, seed)));
}

void Transmission::AddCall(const CallDescription& call, const VoiceSource& voice) {
    if (call.withHeader) {
        AddHeader(call.networkAccessCode, call.header);
    }
    std::size_t voiceIndex = 0;
    for (int superframe = 0; superframe < call.superframes; ++superframe) {
        AddLdu1(call.networkAccessCode, call.link, NextVoiceWords(voice, voiceIndex), call.lowSpeedData);
        AddLdu2(call.networkAccessCode, call.encryption, NextVoiceWords(voice, voiceIndex),
                call.lowSpeedData);
    }
    if (call.ending == CallEnding::Terminator) {
        AddTerminator(call.networkAccessCode);
    } else if (call.ending == CallEnding::TerminatorWithLinkControl) {
        AddTerminatorWithLinkControl(call.networkAccessCode, call.link);
    }
}

void Transmission::AddRandomDibits(std::size_t count, std::uint64_t seed) {
    RandomSource random(seed);
    for (std::size_t dibit = 0; dibit < count; ++dibit) {
        dibits.push_back(static_cast<char>('0' + random.Below(4)));
    }
}

void Transmission::AddIdle(std::size_t count, char dibit) {
    dibits.append(count, dibit);
}

void Transmission::Append(unsigned networkAccessCode, unsigned dataUnit, const std::string& frame) {
    SentFrame sent;
    sent.networkAccessCode = networkAccessCode;
    sent.dataUnit = dataUnit;
    sent.firstDibit = dibits.size();
    sent.dibitCount = frame.size();
    frames.push_back(sent);
    dibits += frame;
}

} // namespace orva::test
