// The events of control channels and of the squelch, to the letter.
#include "tests/support/TemporaryFolder.h"
#include "tools/orva-decode/EventWriter.h"

#include <functional>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orva::tools {
namespace {

using p25::TrunkingRecord;
using p25::TrunkingRecordType;

class ControlChannelEvents : public testing::Test {
protected:
    /// What `write` leaves in a file.
    std::string Written(const std::function<void()>& write) {
        const std::string path = folder.Path("events.jsonl");
        EXPECT_TRUE(writer.Open(path));
        write();
        EXPECT_TRUE(writer.Close());
        return test::ReadWholeFile(path);
    }

    std::string Written(const TrunkingRecord& record) {
        return Written([&] { writer.Record(5.0, record); });
    }

    test::TemporaryFolder folder;
    EventWriter writer;
};

TEST_F(ControlChannelEvents, GoodBlock) {
    const p25::TrunkingBlock block{{0xB4, 0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0, 0x0F, 0xED}};
    EXPECT_EQ(Written([&] { writer.TrunkingBlock(1.25, block, true, 3); }),
              "{\"event\":\"tsbk\",\"time\":1.25,\"bytes\":\"b400123456789abcdef00fed\",\"crc\":true,"
              "\"errors\":3,\"opcode\":52,\"name\":\"Identifier Update for VHF/UHF Bands "
              "[IDEN_UP_VU]\"}\n");
}

TEST_F(ControlChannelEvents, BadBlockOfAnUnknownOpcode) {
    const p25::TrunkingBlock block{{0x41}};
    EXPECT_EQ(Written([&] { writer.TrunkingBlock(0.5, block, false, 60); }),
              "{\"event\":\"tsbk\",\"time\":0.5,\"bytes\":\"410000000000000000000000\",\"crc\":false,"
              "\"errors\":60,\"opcode\":1,\"name\":\"Unknown\"}\n");
}

TEST_F(ControlChannelEvents, GroupGrant) {
    TrunkingRecord record(TrunkingRecordType::GroupGrant);
    record.SetChannel(1, 100);
    record.SetNetworkAccessCode(0x293);
    record.SetFrequency(851637500);
    record.SetSource(0x56789A);
    record.SetDestination(p25::kGroupAddress | 0x1234);
    record.SetServiceOptions(0x85);
    EXPECT_EQ(Written(record),
              "{\"event\":\"record\",\"time\":5.0,\"type\":1,"
              "\"bytes\":\"0101640093020000fcf4c2329a785600341200808500\",\"nac\":659,\"identifier\":1,"
              "\"channel\":100,\"frequency\":851637500,\"source_group\":-1,\"source\":5666970,"
              "\"talkgroup\":4660,\"destination\":-1,\"options\":133}\n");
}

TEST_F(ControlChannelEvents, GroupGrantUpdateNamesTheGroupTwice) {
    TrunkingRecord record(TrunkingRecordType::GroupGrantUpdate);
    record.SetChannel(15, 4095);
    record.SetNetworkAccessCode(1);
    record.SetFrequency(p25::CodeFrequency(2150000000));
    record.SetSource(p25::kGroupAddress | 7);
    record.SetDestination(p25::kGroupAddress | 7);
    record.SetServiceOptions(p25::kDefaultServiceOptions);
    EXPECT_EQ(Written(record),
              "{\"event\":\"record\",\"time\":5.0,\"type\":2,"
              "\"bytes\":\"020fff0f01000000c0a3d08c07000080070000800080\",\"nac\":1,\"identifier\":15,"
              "\"channel\":4095,\"frequency\":2150000000,\"source_group\":7,\"source\":-1,\"talkgroup\":7,"
              "\"destination\":-1,\"options\":32768}\n");
}

TEST_F(ControlChannelEvents, UnitGrant) {
    TrunkingRecord record(TrunkingRecordType::UnitGrant);
    record.SetNetworkAccessCode(1);
    record.SetSource(8);
    record.SetDestination(9);
    record.SetServiceOptions(p25::kDefaultServiceOptions);
    EXPECT_EQ(Written(record),
              "{\"event\":\"record\",\"time\":5.0,\"type\":3,"
              "\"bytes\":\"03000000010000000000000008000000090000000080\",\"nac\":1,\"identifier\":0,"
              "\"channel\":0,\"frequency\":0,\"source_group\":-1,\"source\":8,\"talkgroup\":-1,"
              "\"destination\":9,\"options\":32768}\n");
}

TEST_F(ControlChannelEvents, IdentifierUpdate) {
    TrunkingRecord record(TrunkingRecordType::IdentifierUpdate);
    record.SetChannel(13, 0xFD70);
    record.SetNetworkAccessCode(0x293);
    record.SetFrequency(6250);
    record.SetSource(851012500);
    EXPECT_EQ(Written(record),
              "{\"event\":\"record\",\"time\":5.0,\"type\":128,"
              "\"bytes\":\"800d70fd930200006a180000946bb932000000000000\",\"nac\":659,\"identifier\":13,"
              "\"base_frequency\":851012500,\"spacing\":6250,\"offset\":-656}\n");
}

TEST_F(ControlChannelEvents, NewSpeaker) {
    TrunkingRecord record(TrunkingRecordType::NewSpeaker);
    record.SetChannel(p25::kNoChannelIdentifier, p25::kNoChannelNumber);
    record.SetNetworkAccessCode(0x293);
    record.SetFrequency(p25::kNoFrequency);
    record.SetSource(0xFFFFFFFF);
    record.SetDestination(p25::kGroupAddress | 1);
    record.SetServiceOptions(p25::kDefaultServiceOptions);
    EXPECT_EQ(Written(record),
              "{\"event\":\"record\",\"time\":5.0,\"type\":5,"
              "\"bytes\":\"05ffffff93020000ffffffffffffffff010000800080\",\"nac\":659,\"source_group\":-1,"
              "\"source\":-1,\"talkgroup\":1,\"destination\":-1,\"options\":32768}\n");
}

TEST_F(ControlChannelEvents, EndOfCall) {
    EXPECT_EQ(Written(TrunkingRecord::MakeEndOfCall(0x293)),
              "{\"event\":\"record\",\"time\":5.0,\"type\":129,"
              "\"bytes\":\"81930200000000000000000000000000000000000000\",\"nac\":659}\n");
}

TEST_F(ControlChannelEvents, Squelch) {
    SquelchReading reading;
    reading.ctcss = 64699;
    reading.dcs = {19, -39};
    reading.voice = 87;
    reading.noise = 12;
    EXPECT_EQ(Written([&] { writer.Squelch(0.5, reading); }),
              "{\"event\":\"squelch\",\"time\":0.5,\"ctcss\":64699,\"dcs\":[-39,19],\"voice\":87,"
              "\"noise\":12}\n");
    EXPECT_EQ(Written([&] { writer.Squelch(1.0, SquelchReading()); }),
              "{\"event\":\"squelch\",\"time\":1.0,\"ctcss\":0,\"dcs\":[],\"voice\":0,\"noise\":0}\n");
}

TEST_F(ControlChannelEvents, SummaryListsWhatTheControlChannelTold) {
    ControlChannelLog log;
    p25::TrunkingBlock block;
    log.NoteBlock(block, true);
    block.bytes[0] = 1;
    log.NoteBlock(block, true);
    log.NoteBlock(block, true);
    log.NoteBlock(block, false);
    TrunkingRecord identifier(TrunkingRecordType::IdentifierUpdate);
    identifier.SetChannel(2, 0);
    identifier.SetFrequency(6250);
    identifier.SetSource(380000000);
    log.NoteRecord(identifier);
    TrunkingRecord grant(TrunkingRecordType::GroupGrant);
    grant.SetDestination(p25::kGroupAddress | 77);
    grant.SetFrequency(380006250);
    log.NoteRecord(grant);
    TrunkingRecord unit(TrunkingRecordType::UnitGrant);
    unit.SetDestination(9);
    log.NoteRecord(unit);
    log.NoteRecord(unit);
    const std::string line = Written([&] { writer.Summary(1.0, 100.0, Totals(), {}, log, nullptr); });
    EXPECT_NE(line.find("\"control_channel\":{\"blocks\":4,\"bad_blocks\":1,\"crc_failure_rate\":25.0,"
                        "\"identifiers\":[{\"identifier\":2,\"base_frequency\":380000000,"
                        "\"spacing\":6250}],"
                        "\"grants\":[{\"destination\":9,\"frequency\":0,\"count\":2},"
                        "{\"talkgroup\":77,\"frequency\":380006250,\"count\":1}],"
                        "\"messages\":[{\"opcode\":0,\"name\":\"Group Voice Channel Grant "
                        "[GRP_V_CH_GRANT]\",\"count\":1},"
                        "{\"opcode\":1,\"name\":\"Unknown\",\"count\":2}]}"),
              std::string::npos)
        << line;
}

TEST_F(ControlChannelEvents, SummaryIsSilentAboutWhatWasNotThere) {
    const std::string line =
        Written([&] { writer.Summary(1.0, 100.0, Totals(), {}, ControlChannelLog(), nullptr); });
    EXPECT_EQ(line.find("control_channel"), std::string::npos);
    EXPECT_EQ(line.find("squelch"), std::string::npos);
}

TEST_F(ControlChannelEvents, SummaryCountsTheSquelchReadings) {
    SquelchTotals totals;
    SquelchReading reading;
    reading.ctcss = 100000;
    reading.dcs = {-39, 19};
    reading.voice = 50;
    reading.noise = 3;
    totals.Add(reading);
    reading.voice = 40;
    reading.noise = 4;
    totals.Add(reading);
    const std::string line =
        Written([&] { writer.Summary(1.0, 100.0, Totals(), {}, ControlChannelLog(), &totals); });
    EXPECT_NE(line.find("\"squelch\":{\"readings\":2,\"ctcss\":[{\"tone\":100000,\"readings\":2}],"
                        "\"dcs\":[{\"code\":-39,\"readings\":2},{\"code\":19,\"readings\":2}],"
                        "\"highest_voice\":50,\"mean_noise\":3.5}"),
              std::string::npos)
        << line;
}

} // namespace
} // namespace orva::tools
