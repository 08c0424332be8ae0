/// Runs of orva-decode that cannot do all they were asked to.
#include "tests/audio/RiffBytes.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WavFile.h"
#include "tests/tools/EventLines.h"
#include "tests/tools/ProgramRun.h"
#include "tests/tools/RecordedCalls.h"

#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kExitInputFailed = 1;
constexpr int kExitUsage = 2;
constexpr std::size_t kGoodSamples = 4800;

std::vector<std::int16_t> Quiet() {
    return std::vector<std::int16_t>(kGoodSamples);
}

Bytes Recording(const WaveFormat& format) {
    return RiffBytes().Chunk("fmt ", FormatBytes(18, format)).Chunk("data", SampleBytes(Quiet())).Bytes();
}

Bytes CutShort(std::size_t missing) {
    Bytes bytes = Recording({});
    bytes.resize(bytes.size() - missing);
    return bytes;
}

/// A file that cannot be decoded, or not all of it, and what is said of it.
struct BadFile {
    const char* name;
    std::function<Bytes()> contents; ///< none: no such file
    const char* complaint;
};

void PrintTo(const BadFile& file, std::ostream* stream) {
    *stream << file.name;
}

const BadFile kBadFiles[] = {
    {"missing", nullptr, "cannot be opened"},
    {"text", [] { return LittleEndianBytes().Text("no recording at all, but some text").Bytes(); },
     "is not a WAV file"},
    {"stereo", [] { return Recording({.channels = 2}); }, "more than one channel"},
    {"eightBit", [] { return Recording({.bits = 8}); }, "does not have 16 bits"},
    {"floating", [] { return Recording({.tag = 3, .bits = 32}); }, "plain PCM"},
    {"rate44100", [] { return Recording({.rate = 44100}); }, "44100 samples a second; 48000 or 64000"},
    {"rate8000", [] { return Recording({.rate = 8000}); }, "8000 samples a second; 48000 or 64000"},
    {"cutShort", [] { return CutShort(2000); }, "is cut short: 3800 of 4800 samples"},
    {"cutInHeader", [] { return CutShort(2 * kGoodSamples + 20); }, "cut short inside its header"},
    {"empty", [] { return Bytes(); }, "is empty"},
    {"noSamples", [] { return RiffBytes().Chunk("fmt ", FormatBytes(18)).Chunk("data", {}).Bytes(); },
     "is empty"},
};

struct DecodeBadFile : testing::TestWithParam<BadFile> {
    std::string WriteBadFile() const {
        const std::string name = std::string(GetParam().name) + ".if.wav";
        return GetParam().contents ? folder.Write(name, GetParam().contents()) : folder.Path(name);
    }

    void ExpectOneComplaint(const ProgramResult& result, const std::string& path) const {
        EXPECT_EQ(result.exitCode, kExitInputFailed);
        ASSERT_EQ(result.ErrorLines().size(), 1U) << result.errors;
        const std::string line = result.ErrorLines()[0];
        EXPECT_EQ(line.rfind("orva-decode: " + path + ": ", 0), 0U) << line;
        EXPECT_NE(line.find(GetParam().complaint), std::string::npos) << line;
    }

    TemporaryFolder folder;
};

TEST_P(DecodeBadFile, IsToldInOneLine) {
    const std::string path = WriteBadFile();
    ExpectOneComplaint(RunOrvaDecode(folder, {path}), path);
}

TEST_P(DecodeBadFile, DoesNotKeepOtherFilesFromBeingDecoded) {
    const std::string path = WriteBadFile();
    const std::string before = folder.Write("before.if.wav", WavBytes(Quiet(), 48000));
    const std::string after = folder.Write("after.if.wav", WavBytes(Quiet(), 48000));
    const std::string events = folder.Path("events.jsonl");
    ExpectOneComplaint(RunOrvaDecode(folder, {before, path, after, "--events", events}), path);
    const Events summaries = Named(ParseEvents(ReadWholeFile(events)), "summary");
    ASSERT_GE(summaries.size(), 2U);
    EXPECT_EQ(summaries.front()["file"], before);
    EXPECT_EQ(summaries.back()["file"], after);
    EXPECT_NEAR(summaries.back()["seconds"].get<double>(), 0.1, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(, DecodeBadFile, testing::ValuesIn(kBadFiles),
                         [](const auto& file) { return file.param.name; });

class DecodeFailure : public testing::Test {
protected:
    /// Runs and expects one line on standard error that holds `complaint`.
    void ExpectComplaint(int exitCode, std::string_view complaint, const std::vector<std::string>& arguments,
                         const std::string& standardInput = {}) const {
        const ProgramResult result = RunOrvaDecode(folder, arguments, standardInput);
        EXPECT_EQ(result.exitCode, exitCode) << result.errors;
        ASSERT_EQ(result.ErrorLines().size(), 1U) << result.errors;
        EXPECT_NE(result.errors.find(complaint), std::string::npos) << result.errors;
    }

    TemporaryFolder folder;
    const std::string good = folder.Write("good.if.wav", WavBytes(Quiet(), 48000));
};

TEST_F(DecodeFailure, DecodesWhatThereIsOfAFileCutShort) {
    const auto& signal = RecordedSignal();
    Bytes bytes = WavBytes(signal, 48000);
    bytes.resize(bytes.size() - 200);
    const std::string path = folder.Write("cut.if.wav", bytes);
    ExpectComplaint(kExitInputFailed, "is cut short", {path, "--events", folder.Path("events.jsonl")});
    const Events events = ParseEvents(ReadWholeFile(folder.Path("events.jsonl")));
    EXPECT_GE(Named(events, "voice").size(), RecordedVoice().size());
    EXPECT_EQ(events.back()["event"], "summary");
}

TEST_F(DecodeFailure, TellsEachBadFileInALineOfItsOwn) {
    const std::string text = folder.Write("text.wav", std::string_view("some text, but no recording"));
    const std::string missing = folder.Path("missing.wav");
    const ProgramResult result = RunOrvaDecode(folder, {missing, good, text});
    EXPECT_EQ(result.exitCode, kExitInputFailed);
    const std::vector<std::string> lines = result.ErrorLines();
    ASSERT_EQ(lines.size(), 2U) << result.errors;
    EXPECT_NE(lines[0].find(missing), std::string::npos) << lines[0];
    EXPECT_NE(lines[1].find(text), std::string::npos) << lines[1];
    EXPECT_NE(result.output.find(good), std::string::npos) << result.output;
}

TEST_F(DecodeFailure, TellsRawInputWithoutSamples) {
    ExpectComplaint(kExitInputFailed, "standard input: is empty", {"--rate", "48000"});
}

TEST_F(DecodeFailure, TellsStandardInputThatIsNoRecording) {
    ExpectComplaint(kExitInputFailed, "standard input: is not a WAV file", {"-"},
                    folder.Write("text.txt", std::string_view("some text, but no recording")));
}

TEST_F(DecodeFailure, TellsAMissingDibitFile) {
    ExpectComplaint(kExitInputFailed, "cannot be opened", {"--from-dibits", folder.Path("missing.txt")});
}

TEST_F(DecodeFailure, TellsDibitTextWithoutDibits) {
    ExpectComplaint(kExitInputFailed, "is empty",
                    {"--from-dibits", folder.Write("blank.txt", std::string_view(" \n"))});
}

TEST_F(DecodeFailure, TellsWhereDibitTextIsWrong) {
    ExpectComplaint(kExitInputFailed, "byte 5 is no dibit",
                    {"--from-dibits", folder.Write("wrong.txt", std::string_view("0123\n4"))});
}

TEST_F(DecodeFailure, TellsAnOutputThatCannotBeCreated) {
    for (const char* option : {"-o", "--events", "--dibits"}) {
        ExpectComplaint(kExitInputFailed, "cannot be created",
                        {good, option, folder.Path("no such folder/file")});
    }
}

#ifdef __linux__
TEST_F(DecodeFailure, TellsAFullDisk) {
    const std::string dibits = folder.Write("calls.txt", RecordedCalls().Dibits());
    for (const char* option : {"-o", "--events", "--dibits"}) {
        ExpectComplaint(kExitInputFailed, "could not be written whole",
                        {"--from-dibits", dibits, option, "/dev/full"});
    }
}
#endif

TEST_F(DecodeFailure, RefusesToOverwriteAnInput) {
    const std::string before = ReadWholeFile(good);
    for (const char* option : {"-o", "--events", "--dibits", "--fm", "--plot"}) {
        ExpectComplaint(kExitUsage, "is both read and written", {good, option, good});
        ExpectComplaint(kExitUsage, "is both read and written",
                        {good, option, folder.Path("../" + folder.Name() + "/good.if.wav")});
        EXPECT_EQ(ReadWholeFile(good), before);
    }
    const std::string dibits = folder.Write("calls.txt", std::string_view("0123"));
    ExpectComplaint(kExitUsage, "is both read and written", {"--from-dibits", dibits, "--dibits", dibits});
    EXPECT_EQ(ReadWholeFile(dibits), "0123");
}

TEST_F(DecodeFailure, RefusesTwoOutputsInOneFile) {
    const std::string path = folder.Path("output");
    ExpectComplaint(kExitUsage, "is written by two options", {good, "-o", path, "--events", path});
    ExpectComplaint(kExitUsage, "is written by two options", {good, "-o", path, "--dibits", path});
    ExpectComplaint(kExitUsage, "is written by two options", {good, "--events", path, "--dibits", path});
    ExpectComplaint(kExitUsage, "is written by two options", {good, "--fm", path, "--plot", path});
    folder.Write("output", std::string_view("old"));
    ExpectComplaint(kExitUsage, "is written by two options", {good, "-o", path, "--events", path});
    EXPECT_EQ(ReadWholeFile(path), "old");
}

TEST_F(DecodeFailure, RefusesContradictingOptions) {
    ExpectComplaint(kExitUsage, "--from-dibits", {good, "--from-dibits", good});
    ExpectComplaint(kExitUsage, "--from-dibits", {"--rate", "48000", "--from-dibits", good});
    ExpectComplaint(kExitUsage, "--rate", {"--rate", "48000", good});
    ExpectComplaint(kExitUsage, "only once", {"-", "-"});
    ExpectComplaint(kExitUsage, "nothing to decode", {});
}

TEST_F(DecodeFailure, RefusesWhatItDoesNotKnow) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--no-such-option", good},
                                                      {"--rate", "44100"},
                                                      {"--rate", "fast"},
                                                      {good, "-o"},
                                                      {good, "--events"}}) {
        const ProgramResult result = RunOrvaDecode(folder, arguments);
        EXPECT_EQ(result.exitCode, kExitUsage) << arguments[0];
        EXPECT_FALSE(result.errors.empty()) << arguments[0];
        EXPECT_EQ(result.output, "") << arguments[0];
    }
}

TEST(OrvaDecode, TakesWhatBeginsWithASlashForAFile) {
    const TemporaryFolder folder;
    const ProgramResult result = RunOrvaDecode(folder, {"/no-such-folder/call.if.wav"});
    EXPECT_EQ(result.exitCode, kExitInputFailed);
    EXPECT_NE(result.errors.find("cannot be opened"), std::string::npos) << result.errors;
}

} // namespace

} // namespace orva::test
