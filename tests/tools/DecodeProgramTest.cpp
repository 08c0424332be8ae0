/// Whole runs of orva-decode that succeed.
#include "tests/audio/RiffBytes.h"
#include "tests/support/ImbeWord.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WavFile.h"
#include "tests/tools/EventLines.h"
#include "tests/tools/ProgramRun.h"
#include "tests/tools/RecordedCalls.h"

#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orva::test {

namespace {

using nlohmann::json;

class DecodeProgram : public testing::Test {
protected:
    std::string WriteSignal(const std::string& name = "call.if.wav") const {
        return folder.Write(name, WavBytes(RecordedSignal(), 48000));
    }

    std::string WriteDibits() const { return folder.Write("calls.txt", RecordedCalls().Dibits()); }

    ProgramResult Run(const std::vector<std::string>& arguments,
                      const std::string& standardInput = {}) const {
        ProgramResult result = RunOrvaDecode(folder, arguments, standardInput);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
        return result;
    }

    Events ReadEvents(const std::string& name = "events.jsonl") const {
        return ParseEvents(ReadWholeFile(folder.Path(name)));
    }

    TemporaryFolder folder;
};

/// Names and types of an event's fields beside its name and time.
struct EventShape {
    std::set<std::string> integers;
    std::set<std::string> numbers;
    std::set<std::string> texts;
};

const std::map<std::string, EventShape> kShapes = {
    {"nid", {{"nac", "duid", "corrected"}, {}, {"frame"}}},
    {"header", {{"algorithm", "talkgroup"}, {}, {}}},
    {"link_control", {{"format", "talkgroup", "source", "destination"}, {}, {}}},
    {"encryption_sync", {{"algorithm"}, {}, {}}},
    {"voice", {{"errors", "flags"}, {"error_rate"}, {"bits"}}},
    {"record", {{"type"}, {}, {"bytes"}}},
    {"terminator", {}},
    {"lost", {}},
};

void ExpectShape(const json& event, const EventShape& shape) {
    EXPECT_TRUE(event["time"].is_number_float()) << event;
    for (const std::string& name : shape.integers) {
        EXPECT_TRUE(event.contains(name) && event[name].is_number_integer()) << name << " of " << event;
    }
    for (const std::string& name : shape.numbers) {
        EXPECT_TRUE(event.contains(name) && event[name].is_number()) << name << " of " << event;
    }
    for (const std::string& name : shape.texts) {
        EXPECT_TRUE(event.contains(name) && event[name].is_string()) << name << " of " << event;
    }
    // Records have more to say, depending on their type.
    if (event["event"] != "record") {
        EXPECT_EQ(event.size(), 2 + shape.integers.size() + shape.numbers.size() + shape.texts.size())
            << event;
    }
}

TEST_F(DecodeProgram, WritesEachEventWithItsFieldsAndTypes) {
    Run({"--from-dibits", WriteDibits(), "--events", folder.Path("events.jsonl")});
    const Events events = ReadEvents();
    std::map<std::string, int> seen;
    for (const json& event : events) {
        const std::string name = event["event"];
        ++seen[name];
        if (name != "summary") {
            ASSERT_TRUE(kShapes.contains(name)) << event;
            ExpectShape(event, kShapes.at(name));
        }
    }
    for (const auto& [name, shape] : kShapes) {
        EXPECT_GT(seen[name], 0) << name;
    }
    EXPECT_EQ(seen["summary"], 1);
    EXPECT_EQ(events.back()["event"], "summary");
}

TEST_F(DecodeProgram, TellsEveryFrameAsItWasSent) {
    Run({"--from-dibits", WriteDibits(), "--events", folder.Path("events.jsonl")});
    const Events identifiers = Named(ReadEvents(), "nid");
    const auto& sent = RecordedCalls().Frames();
    ASSERT_EQ(identifiers.size(), sent.size());
    const std::map<int, std::string> names = {{0, "HDU"}, {3, "TDU"}, {5, "LDU1"}, {10, "LDU2"}};
    for (std::size_t i = 0; i < sent.size(); ++i) {
        EXPECT_EQ(identifiers[i]["nac"], sent[i].networkAccessCode) << "frame " << i;
        EXPECT_EQ(identifiers[i]["duid"], sent[i].dataUnit) << "frame " << i;
        EXPECT_EQ(identifiers[i]["frame"], names.at(static_cast<int>(sent[i].dataUnit))) << "frame " << i;
        EXPECT_EQ(identifiers[i]["corrected"], 0) << "frame " << i;
    }
}

TEST_F(DecodeProgram, TellsAllSignallingAsItWasSent) {
    Run({"--from-dibits", WriteDibits(), "--events", folder.Path("events.jsonl")});
    const Events events = ReadEvents();

    const Events headers = Named(events, "header");
    ASSERT_EQ(headers.size(), 2U);
    EXPECT_EQ(headers[0]["algorithm"], 0x80);
    EXPECT_EQ(headers[0]["talkgroup"], kRecordedTalkGroup);
    EXPECT_EQ(headers[1]["algorithm"], 0x84);
    EXPECT_EQ(headers[1]["talkgroup"], 0);

    const Events links = Named(events, "link_control");
    ASSERT_EQ(links.size(), 3U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(links[i]["format"], 0);
        EXPECT_EQ(links[i]["talkgroup"], kRecordedTalkGroup);
        EXPECT_EQ(links[i]["source"], kRecordedSource);
        EXPECT_EQ(links[i]["destination"], -1);
    }
    EXPECT_EQ(links[2]["format"], 3);
    EXPECT_EQ(links[2]["source"], kRecordedUnitSource);
    EXPECT_EQ(links[2]["destination"], kRecordedUnitDestination);

    const Events syncs = Named(events, "encryption_sync");
    ASSERT_EQ(syncs.size(), 3U);
    EXPECT_EQ(syncs[0]["algorithm"], 0x80);
    EXPECT_EQ(syncs[1]["algorithm"], 0x80);
    EXPECT_EQ(syncs[2]["algorithm"], 0x84);

    EXPECT_EQ(Named(events, "terminator").size(), 1U);
    EXPECT_EQ(Named(events, "lost").size(), 1U);

    const Events records = Named(events, "record");
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0]["type"], 5);
    EXPECT_EQ(records[0]["bytes"], "05ffffffa3050000ffffffffcdab0000341200800080");
    EXPECT_EQ(records[1]["type"], 129);
    EXPECT_EQ(records[1]["bytes"], "81a30500000000000000000000000000000000000000");
    EXPECT_EQ(records[2]["type"], 5);
    EXPECT_EQ(records[2]["bytes"], "05ffffffa3050000ffffffff32547600563412000080");
}

TEST_F(DecodeProgram, TellsEveryVoiceBit) {
    Run({"--from-dibits", WriteDibits(), "--events", folder.Path("events.jsonl")});
    const Events voice = Named(ReadEvents(), "voice");
    const std::vector<VoiceBits> sent = RecordedVoice();
    ASSERT_EQ(voice.size(), sent.size());
    for (std::size_t i = 0; i < sent.size(); ++i) {
        EXPECT_EQ(voice[i]["bits"], ToHex(sent[i])) << "voice frame " << i;
        EXPECT_EQ(voice[i]["errors"], 0) << "voice frame " << i;
        EXPECT_EQ(voice[i]["flags"], 0) << "voice frame " << i;
        EXPECT_EQ(voice[i]["error_rate"], 0.0) << "voice frame " << i;
    }
}

TEST_F(DecodeProgram, SumsUpAtTheEnd) {
    const ProgramResult result =
        Run({"--from-dibits", WriteDibits(), "--events", folder.Path("events.jsonl")});
    const json summary = ReadEvents().back();
    EXPECT_NEAR(summary["seconds"].get<double>(),
                static_cast<double>(RecordedCalls().Dibits().size()) / 4800.0, 1e-6);
    EXPECT_EQ(summary["nacs"], json::array({kRecordedNac}));
    EXPECT_EQ(summary["frames"], (json{{"HDU", 2}, {"LDU1", 3}, {"LDU2", 3}, {"TDU", 1}}));
    EXPECT_EQ(summary["voice_frames"], 54);
    EXPECT_NEAR(summary["voice_seconds"].get<double>(), 1.08, 1e-9);
    EXPECT_EQ(summary["lost"], 1);
    EXPECT_EQ(summary["call_count"], 2);
    ASSERT_EQ(summary["calls"].size(), 2U);
    EXPECT_EQ(summary["calls"][0]["talkgroup"], kRecordedTalkGroup);
    EXPECT_EQ(summary["calls"][0]["terminated"], true);
    EXPECT_EQ(summary["calls"][1]["destination"], kRecordedUnitDestination);
    EXPECT_EQ(summary["calls"][1]["encrypted"], true);
    EXPECT_EQ(summary["calls"][1]["terminated"], false);

    static_assert(kRecordedTalkGroup == 4660);
    EXPECT_NE(result.output.find("talk group 4660"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("0x5A3 (1443)"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("times real time"), std::string::npos) << result.output;
}

TEST_F(DecodeProgram, WritesTheSpeechOfTheFrameDecoderToTheLastSample) {
    Run({"--from-dibits", WriteDibits(), "-o", folder.Path("speech.wav")});
    const auto expected = DecodeSpeech(RecordedCalls().Dibits());
    EXPECT_EQ(expected.size(), 160 * RecordedVoice().size());
    EXPECT_EQ(ReadSpeechFile(folder.Path("speech.wav")), expected);
}

TEST_F(DecodeProgram, WritesTheSpeechOfTheDibitsItWrites) {
    Run({WriteSignal(), "-o", folder.Path("speech.wav"), "--dibits", folder.Path("dibits.txt")});
    const auto expected = DecodeSpeech(ReadWholeFile(folder.Path("dibits.txt")));
    EXPECT_GE(expected.size(), 160 * RecordedVoice().size());
    EXPECT_EQ(expected.size() % 160, 0U);
    EXPECT_EQ(ReadSpeechFile(folder.Path("speech.wav")), expected);
}

TEST_F(DecodeProgram, DecodesARecordingToTheSignallingThatWasSent) {
    Run({WriteSignal(), "--events", folder.Path("events.jsonl")});
    const Events events = ReadEvents();
    // The warm-up call's identifiers come first, those of them that were found.
    const Events identifiers = Named(events, "nid");
    const auto& sent = RecordedCalls().Frames();
    ASSERT_GE(identifiers.size(), sent.size());
    for (std::size_t i = 0; i < sent.size(); ++i) {
        const json& identifier = identifiers[identifiers.size() - sent.size() + i];
        EXPECT_EQ(identifier["nac"], kRecordedNac) << "frame " << i;
        EXPECT_EQ(identifier["duid"], sent[i].dataUnit) << "frame " << i;
    }
    const json calls = events.back()["calls"];
    ASSERT_GE(calls.size(), 2U);
    const json& group = calls[calls.size() - 2];
    EXPECT_EQ(group["talkgroup"], kRecordedTalkGroup);
    EXPECT_EQ(group["source"], kRecordedSource);
    const json& unit = calls[calls.size() - 1];
    EXPECT_EQ(unit["source"], kRecordedUnitSource);
    EXPECT_EQ(unit["destination"], kRecordedUnitDestination);
    EXPECT_EQ(unit["algorithm"], 0x84);
}

TEST_F(DecodeProgram, TakesItsOwnDibitsBackToTheSameEventsAndSpeech) {
    Run({WriteSignal(), "--dibits", folder.Path("dibits.txt"), "--events", folder.Path("first.jsonl"), "-o",
         folder.Path("first.wav")});
    Run({"--from-dibits", folder.Path("dibits.txt"), "--dibits", folder.Path("again.txt"), "--events",
         folder.Path("second.jsonl"), "-o", folder.Path("second.wav")});
    EXPECT_EQ(ReadWholeFile(folder.Path("again.txt")), ReadWholeFile(folder.Path("dibits.txt")));
    EXPECT_EQ(ReadWholeFile(folder.Path("second.wav")), ReadWholeFile(folder.Path("first.wav")));
    const Events first = Without(ReadEvents("first.jsonl"), "time");
    EXPECT_FALSE(first.empty());
    EXPECT_EQ(Without(ReadEvents("second.jsonl"), "time"), first);
}

TEST_F(DecodeProgram, PassesOverWhiteSpaceInDibitText) {
    std::string spaced;
    for (std::size_t i = 0; i < RecordedCalls().Dibits().size(); ++i) {
        spaced += RecordedCalls().Dibits()[i];
        if (i % 80 == 79) {
            spaced += "\r\n";
        } else if (i % 8 == 7) {
            spaced += " \t";
        }
    }
    Run({"--from-dibits", folder.Write("spaced.txt", spaced), "--dibits", folder.Path("plain.txt")});
    EXPECT_EQ(ReadWholeFile(folder.Path("plain.txt")), RecordedCalls().Dibits());
}

TEST_F(DecodeProgram, TakesDibitTextFromStandardInput) {
    Run({"--from-dibits", "-", "--dibits", folder.Path("copy.txt")}, WriteDibits());
    EXPECT_EQ(ReadWholeFile(folder.Path("copy.txt")), RecordedCalls().Dibits());
}

TEST_F(DecodeProgram, TakesRawSamplesAsItTakesARecording) {
    const std::string raw = folder.Write("raw.bin", SampleBytes(RecordedSignal()));
    Run({WriteSignal(), "--events", folder.Path("file.jsonl"), "-o", folder.Path("file.wav")});
    Run({"--rate", "48000", "--events", folder.Path("raw.jsonl"), "-o", folder.Path("raw.wav")}, raw);
    EXPECT_EQ(ReadWholeFile(folder.Path("raw.wav")), ReadWholeFile(folder.Path("file.wav")));
    const Events events = ReadEvents("file.jsonl");
    ASSERT_GT(events.size(), 1U);
    EXPECT_EQ(Without(ReadEvents("raw.jsonl"), ""), Without(events, ""));
    json summary = ReadEvents("raw.jsonl").back();
    json expected = events.back();
    summary.erase("times_real_time");
    expected.erase("times_real_time");
    EXPECT_EQ(summary, expected);
}

TEST_F(DecodeProgram, LeavesTheHalfSampleAtTheEndOfRawInput) {
    std::vector<std::uint8_t> bytes = SampleBytes(std::vector<std::int16_t>(4800, 1));
    bytes.push_back(1);
    Run({"--rate", "48000", "--events", folder.Path("events.jsonl")}, folder.Write("raw.bin", bytes));
    EXPECT_NEAR(ReadEvents().back()["seconds"].get<double>(), 0.1, 1e-9);
}

TEST_F(DecodeProgram, TakesARecordingFromStandardInput) {
    Run({"-", "-o", folder.Path("piped.wav")}, WriteSignal());
    Run({WriteSignal(), "-o", folder.Path("file.wav")});
    EXPECT_EQ(ReadWholeFile(folder.Path("piped.wav")), ReadWholeFile(folder.Path("file.wav")));
}

TEST_F(DecodeProgram, TakesARateOf64000) {
    const std::vector<std::int16_t> silence(64000);
    Run({folder.Write("quiet.wav", WavBytes(silence, 64000)), "--events", folder.Path("events.jsonl")});
    EXPECT_NEAR(ReadEvents().back()["seconds"].get<double>(), 1.0, 1e-9);
}

TEST_F(DecodeProgram, DecodesSeveralRecordingsEachOnItsOwn) {
    const std::string first = WriteSignal("first.if.wav");
    const std::string second = WriteSignal("second.if.wav");
    Run({first, "-o", folder.Path("one.wav"), "--events", folder.Path("one.jsonl")});
    Run({first, second, "-o", folder.Path("two.wav"), "--events", folder.Path("two.jsonl")});

    std::vector<std::int16_t> twice = ReadSpeechFile(folder.Path("one.wav"));
    const std::vector<std::int16_t> once = twice;
    twice.insert(twice.end(), once.begin(), once.end());
    EXPECT_EQ(ReadSpeechFile(folder.Path("two.wav")), twice);

    const Events expected = Without(ReadEvents("one.jsonl"), "file");
    const Events events = ReadEvents("two.jsonl");
    for (const std::string& file : {first, second}) {
        Events own;
        for (const json& event : events) {
            if (event.at("file") == file) {
                own.push_back(event);
            }
        }
        EXPECT_EQ(Without(own, "file"), expected) << file;
        ASSERT_FALSE(own.empty());
        EXPECT_EQ(own.back()["event"], "summary");
    }
}

TEST_F(DecodeProgram, KeepsTheSummaryOutOfEventsOnStandardOutput) {
    const ProgramResult result = RunOrvaDecode(folder, {"--from-dibits", WriteDibits(), "--events", "-"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.errors.find("times real time"), std::string::npos) << result.errors;
    Run({"--from-dibits", WriteDibits(), "--events", folder.Path("events.jsonl")});
    const Events events = ParseEvents(result.output);
    EXPECT_EQ(Without(events, ""), Without(ReadEvents(), ""));
    EXPECT_EQ(events.back()["event"], "summary");
    EXPECT_EQ(result.output.find('\r'), std::string::npos);
}

/// A recorder that was killed leaves sizes of 0, one that wrote into a pipe all ones.
struct UnfinishedRecording : DecodeProgram, testing::WithParamInterface<std::uint32_t> {};

TEST_P(UnfinishedRecording, IsDecodedToItsEndAndToldInOneLine) {
    const std::string whole = WriteSignal();
    const auto bytes = RiffBytes()
                           .Chunk("fmt ", FormatBytes(18))
                           .ChunkOfSize("data", GetParam(), SampleBytes(RecordedSignal()))
                           .BytesOfSize(GetParam());
    const std::string unfinished = folder.Write("live.if.wav", bytes);
    Run({whole, "-o", folder.Path("whole.wav"), "--events", folder.Path("whole.jsonl")});
    for (const bool piped : {false, true}) {
        const ProgramResult result = RunOrvaDecode(
            folder,
            {piped ? "-" : unfinished, "-o", folder.Path("live.wav"), "--events", folder.Path("live.jsonl")},
            piped ? unfinished : std::string());
        EXPECT_EQ(result.exitCode, 0);
        ASSERT_EQ(result.ErrorLines().size(), 1U) << result.errors;
        EXPECT_NE(result.errors.find("never completed"), std::string::npos) << result.errors;
        EXPECT_NE(result.errors.find(piped ? "standard input" : "live.if.wav"), std::string::npos);
        EXPECT_EQ(ReadWholeFile(folder.Path("live.wav")), ReadWholeFile(folder.Path("whole.wav")));
        EXPECT_EQ(Without(ReadEvents("live.jsonl"), ""), Without(ReadEvents("whole.jsonl"), ""));
    }
}

INSTANTIATE_TEST_SUITE_P(DecodeProgram, UnfinishedRecording, testing::Values(0U, 0xFFFFFFFFU));

TEST_F(DecodeProgram, ExplainsItself) {
    const ProgramResult result = Run({"--help"});
    for (const char* option :
         {"FILE", "--rate", "--from-dibits", "--output", "--events", "--dibits", "--help"}) {
        EXPECT_NE(result.output.find(option), std::string::npos) << option;
    }
}

} // namespace

} // namespace orva::test
