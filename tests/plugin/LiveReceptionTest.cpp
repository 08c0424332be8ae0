/// What a host was told and what came out of the loudspeaker while the plug-in ran on real devices. A script
/// runs it; here its files are judged.
#include "audio/WaveFileReader.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/orva-heard/HostDiary.h"
#include "tools/orva-heard/SpeechMatch.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orva::test {

namespace {

using Json = nlohmann::json;
using tools::HostDiary;
using Codes = std::vector<std::string>;

constexpr std::uint32_t kNac = 0x293; // the transmitter's, unless told otherwise
constexpr std::uint32_t kTalkGroup = 1234;
constexpr std::uint32_t kSource = 56789;
constexpr double kToneDeviation = 1800;                    // [Hz]; 0.6 of the transmitter's 3000
constexpr double kPcmPerRadian = 32767 / std::numbers::pi; // of FM audio

std::string LivePath(const std::string& name) {
    const char* folder = std::getenv("ORVA_LIVE_FOLDER");
    return std::string(folder != nullptr ? folder : ".") + '/' + name;
}

HostDiary Diary(const std::string& run) {
    std::ifstream journal(LivePath(run + "/journal.jsonl"));
    EXPECT_TRUE(journal) << "is ORVA_LIVE_FOLDER the folder of the recordings?";
    return HostDiary(journal);
}

/// The codes of a start in their order, with their sizes and what is queried. Reports on the signal may come
/// between them; the other values are the user's settings.
Codes StartOf(const HostDiary& diary) {
    constexpr std::size_t kStartCodes = 9;
    Codes codes;
    for (const Json& line : diary.FromPlugin()) {
        const int code = line["code"];
        if (code == 2304 || code == 4362 || code == 4365 || codes.size() == kStartCodes) {
            continue;
        }
        codes.push_back(std::to_string(code) + ' ' + (code == 16386 ? line["param"] : line["size"]).dump());
    }
    return codes;
}

/// Records as the host got them, without what an end of call does not have.
Codes ToldRecords(const HostDiary& diary) {
    Codes records;
    for (const Json& record : diary.TrunkingRecords()) {
        std::string text;
        for (const char* field : {"type", "channelIdentifier", "channelNumber", "nac", "frequency", "source",
                                  "destination", "serviceOptions"}) {
            text += record.contains(field) ? record[field].dump() + ' ' : "";
        }
        records.push_back(text);
    }
    return records;
}

std::uint64_t LittleEndian(const std::string& hexadecimal, std::size_t offset, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = width; i-- > 0;) {
        value = value * 256 + std::stoul(hexadecimal.substr(2 * (offset + i), 2), nullptr, 16);
    }
    return value;
}

/// The same from the bytes that orva-decode wrote.
///
/// \param areChannelsKnown  otherwise as they are told while the identifier of a channel is not known
Codes DecodedRecords(const std::string& events, bool areChannelsKnown = true) {
    constexpr std::uint64_t kEndOfCall = 129;
    Codes records;
    std::istringstream text(ReadWholeFile(LivePath(events)));
    for (std::string line; std::getline(text, line);) {
        const Json event = Json::parse(line);
        if (event["event"] != "record") {
            continue;
        }
        const std::string bytes = event["bytes"];
        const auto field = [&](std::size_t offset, std::size_t width) {
            return std::to_string(LittleEndian(bytes, offset, width)) + ' ';
        };
        const std::string frequency = areChannelsKnown ? field(8, 4) : "0 ";
        records.push_back(LittleEndian(bytes, 0, 1) == kEndOfCall
                              ? field(0, 1) + field(1, 4)
                              : field(0, 1) + field(1, 1) + field(2, 2) + field(4, 4) + frequency +
                                    field(12, 4) + field(16, 4) + field(20, 2));
    }
    return records;
}

std::vector<std::int16_t> ReadWave(const std::string& name, std::uint32_t rate) {
    audio::WaveFileReader reader;
    EXPECT_EQ(reader.Open(LivePath(name)), audio::WaveFault::None) << name;
    EXPECT_EQ(reader.GetSampleRate(), rate) << name;
    std::vector<std::int16_t> samples;
    std::int16_t block[4096];
    while (const std::size_t count = reader.Read(block, std::size(block))) {
        samples.insert(samples.end(), block, block + count);
    }
    return samples;
}

/// A full start and a full end, in their order.
void ExpectWholeLife(const HostDiary& diary) {
    EXPECT_EQ(StartOf(diary), (Codes{"16390 456", "16386 2048", "16386 3840", "16390 400", "2816 28",
                                     "16386 2818", "16386 256", "4352 0", "4353 0"}));
    const std::vector<Json> all = diary.FromPlugin();
    ASSERT_GE(all.size(), 2U);
    EXPECT_EQ(all[all.size() - 2]["code"], 16390);
    EXPECT_EQ(all.back()["code"], 16384);
    EXPECT_TRUE(diary.IsComplete());
}

/// What the discriminator makes of the transmitter's tone: it takes the sine of the phase step for its
/// tangent.
double ToneRms(double rate) {
    constexpr int kPoints = 1000;
    double sum = 0;
    for (int i = 0; i < kPoints; ++i) {
        const double deviation = kToneDeviation * std::sin(2 * std::numbers::pi * i / kPoints);
        const double step = std::atan(std::sin(2 * std::numbers::pi * deviation / rate));
        sum += step * step;
    }
    return kPcmPerRadian * std::sqrt(sum / kPoints);
}

/// FM audio is offered in whole blocks; from the hold-off on it is the tone of the transmitter.
void ExpectTone(const HostDiary& diary, double rate) {
    const double expected = ToneRms(rate);
    std::size_t loud = 0;
    for (const Json& offer : diary.FromPlugin(4362)) {
        const Json& audio = offer["data"];
        EXPECT_EQ(offer["param"], 3);
        EXPECT_EQ(offer["size"], 2 * 1024 + 19);
        EXPECT_EQ(audio["sampleRate"], 16000);
        EXPECT_EQ(audio["bitsPerSample"], 16);
        EXPECT_EQ(audio["channels"], 1);
        EXPECT_EQ(audio["sampleCount"], 1024);
        const double rms = audio["rms"];
        loud += std::abs(rms - expected) < 0.005 * expected ? 1 : 0;
    }
    EXPECT_GE(loud, 10U) << "blocks of 64 ms, rms " << expected;
}

TEST(LiveReception, PlaysTheSpeechOfACallFromTheReceiverLibrary) {
    const HostDiary diary = Diary("receiver");
    ExpectWholeLife(diary);
    EXPECT_EQ(diary.Speakers(), (std::vector<HostDiary::Speaker>{{kNac, kSource, kTalkGroup, true}}));
    EXPECT_EQ(ToldRecords(diary).back(), "129 " + std::to_string(kNac) + ' ');
    const Json mode = diary.FromPlugin(2304).back();
    EXPECT_EQ(mode["param"], 19);
    EXPECT_EQ(mode["size"], 0) << "only digital was asked for";

    const tools::SpeechMatch match(tools::AtTwiceTheRate(ReadWave("speech.wav", 8000)),
                                   ReadWave("receiver/heard.wav", 16000));
    std::printf("Heard: %.2f of %.2f s of speech, correlation %.5f, %zu breaks.\n",
                static_cast<double>(match.FoundAudibleSamples()) / 16000,
                static_cast<double>(match.AudibleSamples()) / 16000, match.Correlation(), match.Breaks());
    EXPECT_GT(match.Correlation(), 0.98);
}

TEST(LiveReception, ReportsACallAControlChannelAndFmFromTheWaveInput) {
    const HostDiary diary = Diary("wave-in");
    ExpectWholeLife(diary);
    const std::vector<HostDiary::Speaker> speakers = diary.Speakers();
    EXPECT_TRUE(std::ranges::count(speakers, HostDiary::Speaker{kNac, kSource, kTalkGroup, true}));

    const std::vector<Json> modes = diary.FromPlugin(2304);
    const auto isDigital = [](const Json& mode) { return mode["param"] == 19; };
    EXPECT_GE(std::ranges::count_if(modes, isDigital), 2) << "the call, and the control channel";
    ASSERT_FALSE(modes.empty());
    EXPECT_EQ(modes.back()["param"], 2);
    for (const Json& mode : modes) {
        EXPECT_EQ(mode["data"]["modes"], Json({2, 19})) << mode;
    }

    // A sound device may lose some of what the transmitter sent, but must not make anything of it.
    const Codes sent = DecodedRecords("wave-in.48000.jsonl");
    const Codes sentUnknown = DecodedRecords("wave-in.48000.jsonl", false);
    std::size_t arrived = 0;
    for (const std::string& record : ToldRecords(diary)) {
        const bool isOfCall = record.starts_with("5 ") || record.starts_with("129 ");
        EXPECT_TRUE(isOfCall ||
                    std::ranges::count(sent, record) + std::ranges::count(sentUnknown, record) > 0)
            << record;
        arrived += isOfCall ? 0 : 1;
    }
    std::printf("Told: %zu records of the control channel; orva-decode has %zu in all.\n", arrived,
                sent.size());
    EXPECT_GE(arrived, 1U);
    ExpectTone(diary, 48000);
}

TEST(LiveReception, TellsEveryRecordOfAControlChannelFromTheReceiverLibrary) {
    const HostDiary diary = Diary("control");
    ExpectWholeLife(diary);
    const Codes decoded = DecodedRecords("control.64000.jsonl");
    EXPECT_GE(decoded.size(), 5U);
    EXPECT_EQ(ToldRecords(diary), decoded);
    for (const Json& report : diary.FromPlugin(4365)) {
        const Json& data = report["data"];
        EXPECT_EQ(data["source"], "K728 ORVA");
        EXPECT_EQ(data["version"], 256);
        EXPECT_EQ(data["count"], data["records"].size());
        EXPECT_EQ(report["size"], 140 + 22 * data["count"].get<int>());
    }
}

TEST(LiveReception, OffersFmAudioFromTheReceiverLibrary) {
    const HostDiary diary = Diary("fm");
    ExpectWholeLife(diary);
    EXPECT_TRUE(diary.TrunkingRecords().empty());
    EXPECT_EQ(diary.FromPlugin(2304).back()["param"], 2);
    ExpectTone(diary, 64000);
}

} // namespace

} // namespace orva::test
