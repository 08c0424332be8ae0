#include "tools/orva-decode/EventWriter.h"

#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orva::tools {

namespace {

class EventWriterTest : public testing::Test {
protected:
    /// What `write` leaves in a file.
    std::string Written(const std::function<void()>& write) {
        const std::string path = folder.Path("events.jsonl");
        EXPECT_TRUE(writer.Open(path));
        write();
        EXPECT_TRUE(writer.Close());
        return test::ReadWholeFile(path);
    }

    test::TemporaryFolder folder;
    EventWriter writer;
};

TEST_F(EventWriterTest, WritesANetworkIdentifier) {
    EXPECT_EQ(
        Written([&] { writer.Nid(1.25, 659, 10, "LDU2", 3); }),
        "{\"event\":\"nid\",\"time\":1.25,\"nac\":659,\"duid\":10,\"frame\":\"LDU2\",\"corrected\":3}\n");
}

TEST_F(EventWriterTest, WritesAnUncorrectableNetworkIdentifier) {
    EXPECT_EQ(
        Written([&] { writer.Nid(0.0, 0, 1, "unknown", -1); }),
        "{\"event\":\"nid\",\"time\":0.0,\"nac\":0,\"duid\":1,\"frame\":\"unknown\",\"corrected\":-1}\n");
}

TEST_F(EventWriterTest, WritesAHeader) {
    EXPECT_EQ(Written([&] { writer.Header(2.5, 128, 65535); }),
              "{\"event\":\"header\",\"time\":2.5,\"algorithm\":128,\"talkgroup\":65535}\n");
}

TEST_F(EventWriterTest, WritesLinkControl) {
    EXPECT_EQ(Written([&] { writer.LinkControl(3.0, 3, -1, 16777215, 1); }),
              "{\"event\":\"link_control\",\"time\":3.0,\"format\":3,\"talkgroup\":-1,\"source\":16777215,"
              "\"destination\":1}\n");
}

TEST_F(EventWriterTest, WritesAnEncryptionSync) {
    EXPECT_EQ(Written([&] { writer.EncryptionSync(3.5, 132); }),
              "{\"event\":\"encryption_sync\",\"time\":3.5,\"algorithm\":132}\n");
}

TEST_F(EventWriterTest, WritesAVoiceFrame) {
    voice::ImbeFrameBlock frame{};
    frame.errorTotal = 17;
    frame.status = voice::kImbeFlagRepeat | voice::kImbeFlagConcealed;
    EXPECT_EQ(
        Written([&] { writer.Voice(4.0, "0123456789abcdef012345", frame, 1.5F); }),
        "{\"event\":\"voice\",\"time\":4.0,\"bits\":\"0123456789abcdef012345\",\"errors\":17,\"flags\":36,"
        "\"error_rate\":1.5}\n");
}

TEST_F(EventWriterTest, WritesTypeAndBytesOfARecord) {
    const auto json = nlohmann::json::parse(
        Written([&] { writer.Record(5.0, p25::TrunkingRecord::MakeEndOfCall(0x293)); }));
    EXPECT_EQ(json["event"], "record");
    EXPECT_EQ(json["time"], 5.0);
    EXPECT_EQ(json["type"], 129);
    EXPECT_EQ(json["bytes"], "81930200000000000000000000000000000000000000");
}

TEST_F(EventWriterTest, WritesATerminator) {
    EXPECT_EQ(Written([&] { writer.Terminator(6.0); }), "{\"event\":\"terminator\",\"time\":6.0}\n");
}

TEST_F(EventWriterTest, WritesALoss) {
    EXPECT_EQ(Written([&] { writer.Lost(6.5); }), "{\"event\":\"lost\",\"time\":6.5}\n");
}

TEST_F(EventWriterTest, WritesASummary) {
    CallLog log([](const Call&) {});
    log.NoteNid(0.25, 0x293, "LDU1", true, true);
    log.NoteNid(0.25, 0, "TDU", false, false);
    voice::ImbeFrameBlock frame{};
    frame.errorTotal = 36;
    frame.status = voice::kImbeFlagConcealed;
    log.NoteVoice(0.5, frame);
    log.NoteLost(0.5);
    Call call;
    call.start = 0.25;
    call.end = 0.5;
    call.networkAccessCode = 0x293;
    call.talkGroup = 1;
    call.source = 2;
    call.algorithm = 0x84;
    call.voiceFrames = 1;
    call.correctedBits = 36;
    call.concealedFrames = 1;
    EXPECT_EQ(
        Written([&] { writer.Summary(10.0, 200.5, log.GetTotals(), {call}, ControlChannelLog(), nullptr); }),
        "{\"event\":\"summary\",\"time\":10.0,\"seconds\":10.0,\"times_real_time\":200.5,\"nacs\":[659],"
        "\"frames\":{\"LDU1\":1,\"TDU\":1},\"uncorrectable_nids\":1,\"voice_frames\":1,"
        "\"voice_seconds\":0.02,\"concealed_frames\":1,\"error_rate\":25.0,\"lost\":1,\"call_count\":1,"
        "\"calls\":[{\"start\":0.25,\"end\":0.5,\"nac\":659,\"talkgroup\":1,\"source\":2,"
        "\"destination\":-1,\"algorithm\":132,\"encrypted\":true,\"voice_seconds\":0.02,"
        "\"voice_frames\":1,\"concealed_frames\":1,\"error_rate\":25.0,\"terminated\":false}]}\n");
}

TEST_F(EventWriterTest, RoundsTimesToMicroseconds) {
    EXPECT_EQ(Written([&] { writer.Lost(1.0 / 3.0); }), "{\"event\":\"lost\",\"time\":0.333333}\n");
}

TEST_F(EventWriterTest, NamesTheInputOnceToldTo) {
    EXPECT_EQ(Written([&] {
                  writer.SetInput("a \"quoted\" name");
                  writer.Lost(1.0);
                  writer.SetInput("");
                  writer.Lost(2.0);
              }),
              "{\"event\":\"lost\",\"time\":1.0,\"file\":\"a \\\"quoted\\\" name\"}\n"
              "{\"event\":\"lost\",\"time\":2.0}\n");
}

TEST_F(EventWriterTest, ReplacesWhatIsNoUtf8InANameOfAnInput) {
    EXPECT_EQ(Written([&] {
                  writer.SetInput("caf\xE9");
                  writer.Lost(1.0);
              }),
              "{\"event\":\"lost\",\"time\":1.0,\"file\":\"caf\xEF\xBF\xBD\"}\n");
}

TEST_F(EventWriterTest, StaysClosedWhenTheFileCannotBeMade) {
    EXPECT_FALSE(writer.Open(folder.Path("no such folder/events.jsonl")));
    EXPECT_FALSE(writer.IsOpen());
    EXPECT_TRUE(writer.Close());
}

#ifdef __linux__
TEST_F(EventWriterTest, TellsAFullDisk) {
    ASSERT_TRUE(writer.Open("/dev/full"));
    writer.Lost(1.0);
    EXPECT_FALSE(writer.Close());
}
#endif

TEST(HexDigits, AreLowerCaseTwoAByte) {
    const std::uint8_t bytes[] = {0x00, 0x9F, 0xAB, 0xFF};
    EXPECT_EQ(HexDigits(bytes, 4), "009fabff");
    EXPECT_EQ(HexDigits(bytes, 0), "");
}

TEST(HexOfBits, PutsTheFirstBitIntoTheHighestPlace) {
    for (std::size_t bit = 0; bit < voice::kInformationBits; ++bit) {
        std::uint8_t bits[voice::kCodedBits] = {};
        bits[bit] = 1;
        std::string expected(22, '0');
        expected[bit / 4] = "8421"[bit % 4];
        EXPECT_EQ(HexOfBits(bits), expected) << "bit " << bit;
    }
}

TEST(HexOfBits, LeavesOutWhatIsBehindTheInformationBits) {
    std::uint8_t bits[voice::kCodedBits] = {};
    std::fill(bits + voice::kInformationBits, bits + voice::kCodedBits, std::uint8_t{1});
    EXPECT_EQ(HexOfBits(bits), std::string(22, '0'));
}

} // namespace

} // namespace orva::tools
