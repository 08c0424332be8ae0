// Whole runs of orva-decode on control channels and on FM.
#include "audio/WaveFileReader.h"
#include "tests/support/DcsEncoder.h"
#include "tests/support/FmModulator.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ToneSource.h"
#include "tests/support/TrunkingMessage.h"
#include "tests/support/WavFile.h"
#include "tests/tools/EventLines.h"
#include "tests/tools/ProgramRun.h"
#include "tests/tools/XmlCheck.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orva::test {
namespace {

using nlohmann::json;

class AnalysisProgram : public testing::Test {
protected:
    ProgramResult Run(const std::vector<std::string>& arguments) const {
        ProgramResult result = RunOrvaDecode(folder, arguments);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
        return result;
    }

    Events RunForEvents(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--events", folder.Path("events.jsonl")});
        Run(arguments);
        return ParseEvents(ReadWholeFile(folder.Path("events.jsonl")));
    }

    /// A band plan, grants that use it, a message without a record, and a block with a bad CRC.
    std::string WriteControlChannel() const {
        constexpr unsigned kNac = 0x140;
        std::string dibits = TrunkingPacket(
            kNac, std::vector<TrunkingData>{
                      IdentifierUpdate({.identifier = 1, .spacing = 50, .baseFrequency = 170202500}),
                      GroupGrant({1, 100}, 0x1234, 77, 4), OtherMessage(59)});
        dibits += TrunkingPacket(
            kNac, std::vector<TrunkingData>{GroupGrant({1, 100}, 0x1234, 77, 4), UnitGrant({2, 1}, 5, 6)});
        TrunkingData last = OtherMessage(58);
        last[0] |= 0x80;
        dibits += TrunkingPacket(kNac, std::vector<BitString>{EncodeTrunkingBlock(last, 0x8000)});
        return folder.Write("control.txt", dibits);
    }

    /// Two seconds of an FM carrier.
    std::string WriteFm(int rate, const std::function<double()>& audio, double deviation) const {
        FmModulator modulator({.sampleRate = rate, .deviation = deviation});
        std::vector<double> levels(static_cast<std::size_t>(2 * rate));
        std::generate(levels.begin(), levels.end(), audio);
        return folder.Write("fm.if.wav", WavBytes(modulator.Modulate(levels), rate));
    }

    TemporaryFolder folder;
};

TEST_F(AnalysisProgram, TellsEveryBlock) {
    const Events blocks = Named(RunForEvents({"--from-dibits", WriteControlChannel()}), "tsbk");
    ASSERT_EQ(blocks.size(), 6U);
    const std::vector<int> opcodes = {52, 0, 59, 0, 4, 58};
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        EXPECT_EQ(blocks[i]["opcode"], opcodes[i]) << "block " << i;
        EXPECT_EQ(blocks[i]["crc"], i != 5) << "block " << i;
        EXPECT_EQ(blocks[i]["errors"], 0) << "block " << i;
        EXPECT_EQ(blocks[i]["bytes"].get<std::string>().size(), 24U);
    }
    EXPECT_EQ(blocks[2]["name"], "Network Status Broadcast [NET_STS_BCST]");
    // 56 + 98 data dibits and the four status symbols among them.
    EXPECT_NEAR(blocks[0]["time"].get<double>(), 158.0 / 4800.0, 1.5 / 4800.0);
}

TEST_F(AnalysisProgram, TellsEveryRecordBehindItsBlock) {
    const Events events = RunForEvents({"--from-dibits", WriteControlChannel()});
    std::vector<std::string> order;
    for (const json& event : events) {
        order.push_back(event["event"]);
    }
    EXPECT_EQ(order,
              (std::vector<std::string>{"nid", "tsbk", "record", "tsbk", "record", "tsbk", "nid", "tsbk",
                                        "record", "tsbk", "record", "nid", "tsbk", "summary"}));
    const Events records = Named(events, "record");
    EXPECT_EQ(records[0]["type"], 128);
    EXPECT_EQ(records[0]["base_frequency"], 851012500);
    EXPECT_EQ(records[0]["spacing"], 6250);
    EXPECT_EQ(records[1]["type"], 1);
    EXPECT_EQ(records[1]["frequency"], 851637500);
    EXPECT_EQ(records[1]["talkgroup"], 0x1234);
    EXPECT_EQ(records[1]["source"], 77);
    EXPECT_EQ(records[3]["type"], 3);
    EXPECT_EQ(records[3]["frequency"], 0) << "the identifier is not known";
}

TEST_F(AnalysisProgram, SumsUpAControlChannel) {
    const std::string path = WriteControlChannel();
    const json summary = RunForEvents({"--from-dibits", path}).back()["control_channel"];
    EXPECT_EQ(summary["blocks"], 6);
    EXPECT_EQ(summary["bad_blocks"], 1);
    EXPECT_NEAR(summary["crc_failure_rate"].get<double>(), 100.0 / 6.0, 1e-5);
    EXPECT_EQ(summary["grants"].size(), 2U);
    const std::string text = Run({"--from-dibits", path}).output;
    for (const char* line :
         {"trunking  6 blocks, 16.7 % with a bad CRC",
          "identifier 1   base 851.012500 MHz, spacing 6.250 kHz",
          "talk group 4660     on 851.637500 MHz, 2 times", "on an unknown frequency, 1 time",
          "2   0 Group Voice Channel Grant [GRP_V_CH_GRANT]"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
    }
}

TEST_F(AnalysisProgram, TakesTheTunedFrequency) {
    // The first check of the table is that of the band plan itself, which is learned behind it.
    const Events records =
        Named(RunForEvents({"--from-dibits", WriteControlChannel(), "--tuned", "851000000"}), "record");
    ASSERT_EQ(records.size(), 4U);
    EXPECT_EQ(records[1]["frequency"], 851637500);
}

TEST_F(AnalysisProgram, DrawsAControlChannel) {
    Run({"--from-dibits", WriteControlChannel(), "--plot", folder.Path("plot.svg")});
    const std::string svg = ReadWholeFile(folder.Path("plot.svg"));
    EXPECT_EQ(XmlFault(svg), "");
    EXPECT_EQ(svg.find("nan"), std::string::npos);
}

class AnalysisProgramOnFm : public AnalysisProgram, public testing::WithParamInterface<int> {};

TEST_P(AnalysisProgramOnFm, HearsATone) {
    ToneSource tone(100.0, GetParam());
    const Events events = RunForEvents({WriteFm(
                                            GetParam(), [&] { return tone.Next(); }, 700.0),
                                        "--squelch"});
    const Events readings = Named(events, "squelch");
    ASSERT_EQ(readings.size(), 4U);
    for (std::size_t i = 0; i < readings.size(); ++i) {
        EXPECT_NEAR(readings[i]["time"].get<double>(), 0.5 * static_cast<double>(i + 1), 0.0501);
        EXPECT_EQ(readings[i].size(), 6U) << readings[i];
    }
    EXPECT_EQ(readings[2]["ctcss"], 100000);
    EXPECT_EQ(readings[3]["ctcss"], 100000);
    EXPECT_EQ(events.back()["squelch"]["readings"], 4);
}

TEST_P(AnalysisProgramOnFm, HearsACodeOfEitherPolarity) {
    constexpr unsigned kCode = 0754;
    for (const bool inverted : {false, true}) {
        DcsEncoder code(kCode, inverted, GetParam());
        const Events readings = Named(RunForEvents({WriteFm(
                                                        GetParam(), [&] { return code.NextLevel(); }, 600.0),
                                                    "--squelch"}),
                                      "squelch");
        ASSERT_EQ(readings.size(), 4U);
        const int expected = inverted ? -static_cast<int>(kCode) : static_cast<int>(kCode);
        for (std::size_t i = 1; i < readings.size(); ++i) {
            const auto& codes = readings[i]["dcs"];
            EXPECT_EQ(codes.size(), 2U) << readings[i];
            EXPECT_NE(std::find(codes.begin(), codes.end(), json(expected)), codes.end()) << readings[i];
        }
    }
}

TEST_P(AnalysisProgramOnFm, WritesAudioAt16000Hz) {
    constexpr double kTone = 1000.0;
    constexpr double kDeviation = 1000.0;
    ToneSource tone(kTone, GetParam());
    Run({WriteFm(
             GetParam(), [&] { return tone.Next(); }, kDeviation),
         "--fm", folder.Path("fm.wav")});
    audio::WaveFileReader reader;
    ASSERT_EQ(reader.Open(folder.Path("fm.wav")), audio::WaveFault::None);
    EXPECT_EQ(reader.GetSampleRate(), 16000U);
    std::vector<std::int16_t> samples(40000);
    const std::size_t count = reader.Read(samples.data(), samples.size());
    EXPECT_EQ(count, 32000U);
    // The step of the phase at the peak, pi being full scale, and little else than the tone.
    std::complex<double> sum = 0.0;
    double power = 0.0;
    for (std::size_t n = 16000; n < count; ++n) {
        sum += std::polar(static_cast<double>(samples[n]),
                          -2.0 * std::numbers::pi * kTone * static_cast<double>(n) / 16000.0);
        power += static_cast<double>(samples[n]) * samples[n];
    }
    const double amplitude = 2.0 * std::abs(sum) / 16000.0;
    EXPECT_NEAR(amplitude, 2.0 * kDeviation / GetParam() * 32767.0, 0.02 * amplitude);
    EXPECT_NEAR(power / 16000.0, amplitude * amplitude / 2.0, 0.001 * amplitude * amplitude);
}

TEST_P(AnalysisProgramOnFm, WritesTheSameReadingsWithAndWithoutAudio) {
    ToneSource tone(123.0, GetParam());
    const std::string path = WriteFm(
        GetParam(), [&] { return tone.Next(); }, 700.0);
    const Events alone = Named(RunForEvents({path, "--squelch"}), "squelch");
    const Events beside = Named(RunForEvents({path, "--squelch", "--fm", folder.Path("fm.wav")}), "squelch");
    EXPECT_EQ(alone, beside);
    EXPECT_TRUE(Named(RunForEvents({path, "--fm", folder.Path("fm.wav")}), "squelch").empty());
}

INSTANTIATE_TEST_SUITE_P(Rates, AnalysisProgramOnFm, testing::Values(48000, 64000));

} // namespace
} // namespace orva::test
