#include "tests/p25/ExpectedEvents.h"

#include "tests/p25/DecodedStream.h"

namespace orva::test {

namespace {

constexpr int kVoiceBeforeLink = 7; ///< voice frames of an LDU that come before its last link word

/// The decoder's memory of a call, and the events so far.
class EventWriter {
public:
    explicit EventWriter(int nidErrors) : corrected(nidErrors) {}

    void Write(const SentFrame& frame);
    void Pause() { talkGroup = source = destination = -1; }

    std::vector<std::string> events;

private:
    void WriteHeader(const HeaderFields& header);
    void WriteLinkControl(const LinkControl& link);
    void WriteVoice(int frames) {
        events.insert(events.end(), static_cast<std::size_t>(frames), kVoiceEvent);
    }
    void WriteNewSpeaker(std::uint32_t address);

    std::int32_t corrected;
    std::int32_t networkAccessCode = -1;
    std::int32_t talkGroup = -1;
    std::int32_t source = -1;
    std::int32_t destination = -1;
};

void EventWriter::Write(const SentFrame& frame) {
    networkAccessCode = static_cast<std::int32_t>(frame.networkAccessCode);
    events.push_back(NidEvent(networkAccessCode, static_cast<std::int32_t>(frame.dataUnit), corrected));
    switch (static_cast<DataUnit>(frame.dataUnit)) {
    case DataUnit::Header:
        WriteHeader(*frame.header);
        break;
    case DataUnit::Ldu1:
        WriteVoice(kVoiceBeforeLink);
        WriteLinkControl(*frame.link);
        WriteVoice(kVoiceWordsPerFrame - kVoiceBeforeLink);
        break;
    case DataUnit::Ldu2:
        WriteVoice(kVoiceBeforeLink);
        events.push_back(EncryptionSyncEvent(frame.encryption->algorithm));
        WriteVoice(kVoiceWordsPerFrame - kVoiceBeforeLink);
        break;
    case DataUnit::Terminator:
    case DataUnit::TerminatorWithLinkControl:
        events.push_back(RecordEvent(p25::TrunkingRecord::MakeEndOfCall(frame.networkAccessCode)));
        events.push_back(kTerminatorEvent);
        break;
    case DataUnit::Trunking:
    case DataUnit::Packet:
        break;
    }
}

void EventWriter::WriteHeader(const HeaderFields& header) {
    talkGroup = header.talkGroup;
    source = -1;
    destination = -1;
    events.push_back(HeaderEvent(header.algorithm, talkGroup));
}

void EventWriter::WriteLinkControl(const LinkControl& link) {
    constexpr std::uint32_t kGroup = 0x80000000U;
    const std::int32_t previous = source;
    std::uint32_t address = 0;
    if (link.format == LinkControl::kGroupVoice) {
        talkGroup = link.talkGroup;
        source = static_cast<std::int32_t>(link.source);
        address = link.talkGroup | kGroup;
    } else if (link.format == LinkControl::kUnitToUnitVoice) {
        destination = static_cast<std::int32_t>(link.destination);
        source = static_cast<std::int32_t>(link.source);
        address = link.destination;
    }
    events.push_back(LinkControlEvent(link.format, talkGroup, source, destination));
    if (source != previous) {
        WriteNewSpeaker(address);
    }
}

void EventWriter::WriteNewSpeaker(std::uint32_t address) {
    p25::TrunkingRecord record(p25::TrunkingRecordType::NewSpeaker);
    record.SetChannel(0xFF, 0xFFFF);
    record.SetNetworkAccessCode(static_cast<std::uint32_t>(networkAccessCode));
    record.SetFrequency(0xFFFFFFFFU);
    record.SetSource(static_cast<std::uint32_t>(source));
    record.SetDestination(address);
    record.SetServiceOptions(32768);
    events.push_back(RecordEvent(record));
}

} // namespace

std::vector<std::string> ExpectedEvents(const std::vector<SentFrame>& frames, int nidErrors) {
    EventWriter writer(nidErrors);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        writer.Write(frames[i]);
        const bool followed =
            i + 1 < frames.size() && frames[i + 1].firstDibit == frames[i].firstDibit + frames[i].dibitCount;
        const auto unit = static_cast<DataUnit>(frames[i].dataUnit);
        if (!followed && (unit == DataUnit::Terminator || unit == DataUnit::TerminatorWithLinkControl)) {
            writer.Pause();
        }
    }
    return writer.events;
}

} // namespace orva::test
