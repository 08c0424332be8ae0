// Playback: files of intermediate frequency through the decoder, files of audio straight to the output.
#include "tests/p25/COrvaDemodulatorInspector.h"
#include "tests/plugin/PluginSignals.h"
#include "tests/plugin/RecordingFixture.h"
#include "tests/support/AllocationProbe.h"
#include "tests/support/Transmission.h"
#include "tests/support/TrunkingMessage.h"
#include "tests/tools/EventLines.h"
#include "tests/tools/ProgramRun.h"

#include <algorithm>
#include <atomic>
#include <initializer_list>
#include <map>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

namespace orva::plugin {

namespace {

using Samples = std::vector<std::int16_t>;
using Shown = std::vector<std::string>;
using Values = std::vector<std::uint32_t>;

constexpr std::uint32_t kBlock = 2400;

/// Samples that count up from `first`.
Samples Ramp(std::size_t count, std::int16_t first = 0) {
    Samples samples(count);
    std::iota(samples.begin(), samples.end(), first);
    return samples;
}

test::WaveFormat AtRate(std::uint32_t rate) {
    return {1, 1, rate, 16};
}

bool IsSilent(const Samples& samples) {
    return std::all_of(samples.begin(), samples.end(), [](std::int16_t sample) { return sample == 0; });
}

class PluginPlayback : public test::RecordingFixture {
protected:
    /// So many blocks of live input, which are only a clock.
    void Tick(int blocks = 1) {
        static const Samples silence(kBlock);
        for (int i = 0; i < blocks; ++i) {
            Process(silence);
        }
    }

    /// Leaves traces in both decoders, which a reset removes.
    void MarkDecoders() {
        p25::COrvaDemodulatorInspector{Inside().Demodulator()}.MixFrequency() = kMarkedFrequency;
        Inside().FrameDecoder().Decode(dibits.data(), static_cast<std::int32_t>(dibits.size()));
        ASSERT_NE(Inside().FrameDecoder().GetTransmission(), 0U);
    }
    [[nodiscard]] bool AreDecodersReset() const {
        p25::COrvaDemodulatorInspector demodulator{Inside().Demodulator()};
        const bool isDemodulatorReset = demodulator.MixFrequency() != kMarkedFrequency;
        EXPECT_EQ(Inside().FrameDecoder().GetTransmission() == 0, isDemodulatorReset) << "both or none";
        return isDemodulatorReset;
    }

private:
    static constexpr double kMarkedFrequency = 12345.0; // [Hz]

    /// A control channel's, without an end.
    const std::string dibits = [] {
        test::Transmission transmission;
        const std::vector<test::TrunkingData> messages = {test::GroupGrant({1, 8}, 1234, 56789, 0)};
        transmission.AddTrunking(test::kCallNac, messages);
        return transmission.Dibits();
    }();
};

class PluginPlaybackRates : public PluginPlayback, public testing::WithParamInterface<int> {
protected:
    static int Rate() { return GetParam(); }
};

} // namespace

// --- starting ----------------------------------------------------------------------------------------------

TEST_F(PluginPlayback, AsksForTheStreamValueAndGivesItBackAtTheEnd) {
    StartAtRate(48000);
    host.queries[kStreamValue] = 77;
    Play("x.if.wav", Ramp(9));
    ASSERT_EQ(host.calls.size(), 2U);
    EXPECT_EQ(host.calls[0].code, 16386);
    EXPECT_EQ(host.calls[0].param, kStreamValue);
    EXPECT_EQ(StreamValues(), Values{2048});
    Plugin().StopFile();
    EXPECT_EQ(StreamValues(), (Values{2048, 77}));
    // A host that does not say leaves what was saved before.
    host.queries.clear();
    Plugin().StartPlayback();
    Plugin().StopFile();
    EXPECT_EQ(StreamValues(), (Values{2048, 77, 2048, 77}));
    Notify(0, 0);
    Plugin().StartPlayback();
    Plugin().StopFile();
    EXPECT_EQ(StreamValues().back(), 0U) << "a reset forgets it";
}

TEST_F(PluginPlayback, ShowsTheStartOfAnIfFile) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    Process(test::FmTone(48000, 0.5));
    ASSERT_FALSE(IsGathering());
    Notify(2818, 1);
    spectrum.squelchedShown.clear();
    Play("x.if.wav", Ramp(9));
    EXPECT_EQ(panel.Take(), (Shown{"file x.if", "playing"}));
    EXPECT_EQ(spectrum.squelchedShown, std::vector<bool>{false});
    EXPECT_EQ(spectrum.playbackModes, std::vector<std::int32_t>{1});
    EXPECT_EQ(ui::COrvaPluginWindowInspector{*Inside().Window()}.FileMode(), 1);
    EXPECT_TRUE(spectrum.audioModes.empty());
    EXPECT_TRUE(IsPlaying());
    EXPECT_FALSE(Inside().FileIsAudio());
    EXPECT_EQ(Inside().FileSampleRate(), 48000U);
    EXPECT_TRUE(IsGathering());
}

TEST_F(PluginPlayback, OpensTheNameLastGiven) {
    StartAtRate(48000);
    Plugin().StartPlayback();
    EXPECT_TRUE(IsIdle()) << "none was given";
    EXPECT_TRUE(panel.Take().empty());
    const std::string path = folder.Write("x.if.wav", test::FileBytes({}, Ramp(9)));
    Plugin().SelectFile(path.c_str());
    std::filesystem::remove(path);
    panel.Take();
    host.Clear();
    Plugin().StartPlayback();
    EXPECT_TRUE(IsIdle()) << "it has gone";
    EXPECT_TRUE(panel.Take().empty());
    EXPECT_TRUE(host.calls.empty());
    RecordIf("new");
    Process(Ramp(kBlock));
    Plugin().StopFile();
    Plugin().StartPlayback();
    EXPECT_TRUE(IsPlaying()) << "the file just recorded";
    EXPECT_EQ(Inside().WaveFile().GetDataSize(), 2 * kBlock);
}

TEST_F(PluginPlayback, AFileThatTheHostStopsAtOnceIsNotPlayed) {
    StartAtRate(48000);
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 16385 && call.param == 2048) {
            Plugin().StopFile();
        }
    };
    Play("x.wav", Ramp(9), AtRate(8000));
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(panel.Take(), (Shown{"file x", "playing", "stopped"}));
    EXPECT_EQ(Inside().WaveOut()->GetSampleRate(), 16000U);
    EXPECT_EQ(StreamValues(), (Values{2048, 0}));
}

TEST_F(PluginPlayback, AFileThatTheHostStopsFromInsideTheQueryIsNeverTold) {
    StartAtRate(48000);
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 16386) {
            Plugin().StopFile();
        }
    };
    Play("x.if.wav", Ramp(9));
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(panel.Take(), (Shown{"file x.if", "playing", "stopped"}));
    EXPECT_EQ(StreamValues(), Values{0}) << "of the stop";
}

TEST_F(PluginPlayback, NoClickInsideTheStartsCallsTakesTheFileAway) {
    StartAtRate(48000);
    const std::string other = folder.Write("other.if.wav", test::FileBytes(AtRate(64000), Ramp(5)));
    int calls = 0;
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 16386 || call.code == 16385) {
            ++calls;
            Plugin().SelectFile(other.c_str());
            RecordAudio("new");
        }
    };
    Play("x.if.wav", Ramp(9 * kBlock));
    EXPECT_EQ(calls, 2);
    EXPECT_TRUE(IsPlaying());
    EXPECT_EQ(panel.Take(), (Shown{"file x.if", "playing", "file x.if", "file x.if"}));
    EXPECT_FALSE(Exists("new.wav"));
    host.onCall = nullptr;
    Tick();
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 2 * kBlock);
    EXPECT_EQ(Inside().WaveFile().GetDataSize(), 9 * 2 * kBlock);
}

// --- intermediate frequency --------------------------------------------------------------------------------

namespace {

/// Notes what the frame decoder makes of a signal, a line for each item.
class DecodingNotes : public p25::IFrameObserver {
public:
    void OnNid(std::int32_t nac, std::int32_t duid, std::int32_t corrected) override {
        Add("nid", {nac, duid, corrected});
    }
    void OnHeader(std::int32_t algorithm, std::int32_t talkGroup) override {
        Add("header", {algorithm, talkGroup});
    }
    void OnLinkControl(std::int32_t format, std::int32_t talkGroup, std::int32_t source,
                       std::int32_t destination) override {
        Add("link_control", {format, talkGroup, source, destination});
    }
    void OnEncryptionSync(std::int32_t algorithm) override { Add("encryption_sync", {algorithm}); }
    void OnVoiceBits(const voice::ImbeFrameBlock& frame) override {
        std::string line = "voice ";
        for (int i = 0; i < kVoiceBits; i += 4) {
            const int digit =
                8 * frame.bits[i] + 4 * frame.bits[i + 1] + 2 * frame.bits[i + 2] + frame.bits[i + 3];
            line += "0123456789abcdef"[digit];
        }
        lines.push_back(line);
    }
    void OnTerminator() override { Add("terminator", {}); }
    void OnLost() override { Add("lost", {}); }

    [[nodiscard]] long VoiceFrames() const {
        return std::count_if(lines.begin(), lines.end(),
                             [](const std::string& line) { return line.starts_with("voice"); });
    }

    std::vector<std::string> lines;

private:
    static constexpr int kVoiceBits = 88;

    void Add(std::string line, std::initializer_list<std::int32_t> numbers) {
        for (const std::int32_t number : numbers) {
            line += ' ' + std::to_string(number);
        }
        lines.push_back(line);
    }
};

/// The same lines from an event file of orva-decode, for one of its inputs.
std::vector<std::string> LinesOf(const test::Events& events, const std::string& file) {
    const std::map<std::string, std::vector<std::string>> fields = {
        {"nid", {"nac", "duid", "corrected"}},
        {"header", {"algorithm", "talkgroup"}},
        {"link_control", {"format", "talkgroup", "source", "destination"}},
        {"encryption_sync", {"algorithm"}},
        {"terminator", {}},
        {"lost", {}}};
    std::vector<std::string> lines;
    for (const nlohmann::json& event : events) {
        const auto found = fields.find(event["event"]);
        if (event["file"] != file) {
            continue;
        }
        if (found != fields.end()) {
            lines.push_back(found->first);
            for (const std::string& field : found->second) {
                lines.back() += ' ' + event[field].dump();
            }
        } else if (event["event"] == "voice") {
            lines.push_back("voice " + event["bits"].get<std::string>());
        }
    }
    return lines;
}

} // namespace

TEST_F(PluginPlayback, OrvaDecodeFindsInAnIfFileWhatWasFoundLive) {
    std::vector<DecodingNotes> live(2);
    std::vector<std::string> arguments;
    for (std::size_t i = 0; i < live.size(); ++i) {
        const int rate = i == 0 ? 48000 : 64000;
        StartAtRate(rate);
        Inside().FrameDecoder().SetObserver(&live[i]);
        const std::string name = std::to_string(rate);
        RecordIf(name);
        Process(test::CallSignal(rate));
        Close();
        Pump();
        arguments.push_back(folder.Path(name + ".if.wav"));
    }
    std::vector<std::string> all = arguments;
    all.insert(all.end(), {"--events", folder.Path("events.jsonl")});
    const test::ProgramResult decoded = test::RunOrvaDecode(folder, all);
    ASSERT_EQ(decoded.exitCode, 0) << decoded.errors;
    const test::Events events = test::ParseEvents(test::ReadWholeFile(folder.Path("events.jsonl")));
    for (std::size_t i = 0; i < live.size(); ++i) {
        EXPECT_GE(live[i].VoiceFrames(), 54) << arguments[i];
        EXPECT_EQ(LinesOf(events, arguments[i]), live[i].lines);
    }
}

TEST_P(PluginPlaybackRates, AnIfFileDecodesAsItDidLive) {
    StartAtRate(Rate());
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::CallSignal(Rate());
    // The live signal is to find the demodulator as the playback does: just reset, with what a reset leaves
    // of it, such as its knowledge of the noise.
    Process(signal);
    Play("before.if.wav", Ramp(9));
    Plugin().StopFile();
    waveOut.played.clear();
    host.Clear();
    DecodingNotes live;
    Inside().FrameDecoder().SetObserver(&live);
    RecordIf();
    Process(signal);
    Plugin().StopFile();
    EXPECT_EQ(live.VoiceFrames(), 72) << "the whole call";
    ASSERT_GE(live.lines.size(), 90U);
    const Samples livePlayed = Played();
    const auto liveReports = host.Of(4365);
    waveOut.played.clear();
    host.Clear();

    DecodingNotes played;
    Inside().FrameDecoder().SetObserver(&played);
    Plugin().StartPlayback();
    while (IsPlaying()) {
        Tick();
    }
    EXPECT_EQ(played.lines, live.lines);
    const auto reports = host.Of(4365);
    ASSERT_EQ(reports.size(), liveReports.size());
    for (std::size_t i = 0; i < reports.size(); ++i) {
        EXPECT_EQ(reports[i].bytes, liveReports[i].bytes);
    }
    // The speech itself may differ: its noise goes on from where it was.
    EXPECT_EQ(Played().size(), livePlayed.size());
    EXPECT_FALSE(IsSilent(Played()));
    Inside().FrameDecoder().SetObserver(nullptr);
}

TEST_P(PluginPlaybackRates, AFileOfTheOtherRateDecodesToo) {
    const int fileRate = 112000 - Rate();
    StartAtRate(Rate());
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::CallSignal(fileRate);
    DecodingNotes notes;
    Inside().FrameDecoder().SetObserver(&notes);
    Play("x.if.wav", signal, AtRate(static_cast<std::uint32_t>(fileRate)));
    EXPECT_EQ(Inside().ProcessingRate(), static_cast<std::uint32_t>(fileRate));
    EXPECT_EQ(spectrum.rates, Values{static_cast<std::uint32_t>(fileRate)});
    while (IsPlaying()) {
        Tick();
    }
    EXPECT_GE(notes.VoiceFrames(), 54);
    EXPECT_EQ(Inside().ProcessingRate(), static_cast<std::uint32_t>(Rate())) << "and back at the end";
    EXPECT_EQ(spectrum.rates.back(), static_cast<std::uint32_t>(Rate()));
    Inside().FrameDecoder().SetObserver(nullptr);
}

TEST_F(PluginPlayback, TheRateTellsHowManySamplesABlockTakes) {
    struct Case {
        int live;
        std::uint32_t file;
        std::uint32_t count;
        std::uint32_t taken;
    };
    for (const Case& c : {Case{48000, 48000, 2400, 2400},
                          {48000, 64000, 2400, 3200},
                          {64000, 48000, 2400, 1800},
                          {48000, 32000, 2400, 1600},
                          {48000, 11025, 2400, 552},  // 551.25
                          {48000, 44100, 2400, 2205}, // a whole quotient stays
                          {48000, 48001, 1000, 1001}, // 1000.021
                          {48000, 48001, 48, 49},     // 48.001 is raised just so
                          {48000, 48001, 47, 47}}) {  // 47.00098 is not
        StartAtRate(c.live);
        Play("x.if.wav", Ramp(9 * kBlock), AtRate(c.file));
        const Samples live(c.count);
        Plugin().ProcessData(live.data(), c.count);
        EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 2 * c.taken) << c.file << ' ' << c.count;
        EXPECT_EQ(spectrum.counts, Values{c.taken});
        EXPECT_EQ(panel.position, 2 * c.taken);
        spectrum.counts.clear();
        Close();
        Pump();
    }
}

TEST_F(PluginPlayback, PlayedSamplesAreNotInvertedAndNotLive) {
    StartAtRate(64000);
    Inside().SpectrumCrossover() = 100000000;
    Play("x.if.wav", Samples(9 * kBlock, 16384), AtRate(64000));
    Tick();
    EXPECT_TRUE(library.inversions.empty());
    EXPECT_EQ(Inside().FloatSamples()[0], 0.5F);
    Notify(2048, 100000001);
    Tick();
    EXPECT_EQ(spectrum.allFlags, (Values{0, 4}));
    Plugin().StopFile();
    Tick();
    EXPECT_EQ(library.inversions.size(), 1U);
    EXPECT_EQ(spectrum.allFlags.back(), 6U);
}

TEST_F(PluginPlayback, AStateThatIsNeverSetDoesNotInvertEither) {
    StartAtRate(64000);
    Inside().FileState() = FileState::Reserved;
    Tick();
    EXPECT_TRUE(library.inversions.empty());
    EXPECT_EQ(spectrum.allFlags, Values{2}) << "but the samples are live";
    Inside().FileState() = FileState::Recording;
    Inside().PauseFlags() = 1;
    Tick();
    EXPECT_EQ(library.inversions.size(), 1U);
    Inside().FileState() = FileState::Idle;
}

TEST_F(PluginPlayback, TheEndOfTheFileEndsThePlayback) {
    StartAtRate(48000);
    Play("x.if.wav", Ramp(kBlock + 100));
    panel.Take();
    host.Clear();
    Tick();
    EXPECT_EQ(panel.seconds, 0U);
    Tick();
    EXPECT_EQ(spectrum.counts, (Values{kBlock, 100})) << "what is left, in its number";
    EXPECT_TRUE(IsPlaying());
    const Samples live(kBlock);
    EXPECT_TRUE(Plugin().ProcessData(live.data(), kBlock));
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(spectrum.counts.size(), 2U) << "the block is lost";
    EXPECT_EQ(panel.Take(), Shown{"stopped"});
    EXPECT_EQ(spectrum.playbackModes, (std::vector<std::int32_t>{1, 0}));
    EXPECT_EQ(panel.position, 0U);
    EXPECT_EQ(StreamValues(), Values{0});
    EXPECT_FALSE(Inside().WaveFile().IsOpen());
    Tick();
    EXPECT_EQ(spectrum.allFlags.back(), 2U) << "live again";
}

TEST_P(PluginPlaybackRates, SquelchSilencesNoPlayback) {
    StartAtRate(Rate());
    const Samples signal = test::CallSignal(Rate());
    for (const bool isClosed : {false, true}) {
        Notify(2818, isClosed ? 1 : 0);
        spectrum.squelchedShown.clear();
        waveOut.played.clear();
        Play("x.if.wav", signal, AtRate(static_cast<std::uint32_t>(Rate())));
        Tick(30);
        EXPECT_EQ(spectrum.squelchedShown, std::vector<bool>{false}) << "hidden at the start and left so";
        EXPECT_FALSE(IsSilent(Played())) << isClosed;
        Plugin().StopFile();
        EXPECT_EQ(spectrum.squelchedShown.back(), isClosed);
    }
    // FM audio too.
    SetMode(DemodulationMode::Fm);
    waveOut.played.clear();
    Play("fm.if.wav", test::FmTone(Rate(), 0.6), AtRate(static_cast<std::uint32_t>(Rate())));
    Tick(8);
    EXPECT_FALSE(IsSilent(Played()));
}

TEST_F(PluginPlayback, PauseReadsNothing) {
    StartAtRate(48000);
    Play("x.if.wav", Ramp(9 * kBlock));
    Plugin().SetPause(true);
    const Samples live(kBlock);
    EXPECT_TRUE(Plugin().ProcessData(live.data(), kBlock));
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 0U);
    EXPECT_TRUE(spectrum.counts.empty());
    Plugin().SetPause(false);
    Tick();
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 2 * kBlock);
}

TEST_F(PluginPlayback, AFileThatIsNotOpenAbandonsTheBlock) {
    StartAtRate(48000);
    Play("x.if.wav", Ramp(9 * kBlock));
    Inside().WaveFile().Close();
    const Samples live(kBlock);
    EXPECT_FALSE(Plugin().ProcessData(live.data(), kBlock));
    EXPECT_TRUE(spectrum.counts.empty());
}

TEST_F(PluginPlayback, TheScannerPlaysNothing) {
    StartAtRate(48000);
    Play("x.if.wav", Ramp(9 * kBlock));
    Notify(3840, 1);
    Tick();
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 0U);
    Notify(3840, 0);
    Tick();
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 2 * kBlock);
}

TEST_F(PluginPlayback, ABlockWithoutMemoryIsDropped) {
    StartAtRate(48000);
    Tick();
    Play("x.if.wav", Ramp(9 * kBlock), AtRate(64000));
    const Samples live(kBlock);
    {
        const test::AllocationFailure failure(0);
        EXPECT_FALSE(Plugin().ProcessData(live.data(), kBlock));
        EXPECT_TRUE(failure.HasStruck());
    }
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 0U);
    {
        const test::AllocationFailure failure(1);
        EXPECT_FALSE(Plugin().ProcessData(live.data(), kBlock)) << "no room for the audio of a larger block";
        EXPECT_TRUE(failure.HasStruck());
    }
    EXPECT_TRUE(Plugin().ProcessData(live.data(), kBlock));
}

TEST_F(PluginPlayback, AnyRateOfAFileIsBorne) {
    StartAtRate(48000);
    const Samples signal = test::FmTone(48000, 0.5);
    for (const std::uint32_t rate : {0U, 1U, 2U, 3U, 7U, 100U, 199U, 201U, 2400U, 4800U, 8000U, 11999U,
                                     12001U, 23999U, 24000U, 44100U, 63999U, 64000U}) {
        Play("x.if.wav", signal, AtRate(rate));
        EXPECT_TRUE(IsPlaying());
        EXPECT_EQ(panel.seconds, 0U);
        Tick(3);
        Plugin().SeekFile(100);
        Plugin().StepFile(1);
        Plugin().StepFile(-1);
        Tick(1);
        Plugin().StopFile();
        Play("x.wav", signal, AtRate(rate));
        Tick(3);
        Plugin().StepFile(1);
        Tick(1);
        Plugin().StopFile();
        EXPECT_TRUE(IsIdle()) << rate;
        EXPECT_EQ(Inside().ProcessingRate(), 48000U);
    }
}

TEST_F(PluginPlayback, ARateOfNothingEndsAtTheFirstBlock) {
    StartAtRate(48000);
    for (const char* name : {"x.if.wav", "x.wav"}) {
        Play(name, Ramp(9), AtRate(0));
        EXPECT_TRUE(IsPlaying());
        Tick();
        EXPECT_TRUE(IsIdle()) << name;
    }
}

TEST_F(PluginPlayback, AnUnsupportedRateYieldsAQuarter) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    Play("x.if.wav", test::FmTone(32000, 2.0), AtRate(32000));
    Tick(20);
    // A second of 8000 samples under the label of 16000.
    EXPECT_EQ(Played().size(), 7U * 1024U);
    EXPECT_EQ(Inside().AudioBlockFill(), 8000U - 7U * 1024U);
}

// --- seeking -----------------------------------------------------------------------------------------------

TEST_F(PluginPlayback, TheDecodersStartAnewWithAFileAndBehindIt) {
    StartAtRate(48000);
    MarkDecoders();
    Play("x.wav", Ramp(200000), AtRate(16000));
    EXPECT_FALSE(AreDecodersReset()) << "nothing of audio comes to them";
    Plugin().StopFile();
    EXPECT_TRUE(AreDecodersReset());
    MarkDecoders();
    Play("x.if.wav", Ramp(200000));
    EXPECT_TRUE(AreDecodersReset());
    MarkDecoders();
    Plugin().StepFile(1);
    EXPECT_FALSE(AreDecodersReset()) << "a step goes on";
    Plugin().SeekFile(50000);
    EXPECT_TRUE(AreDecodersReset());
    MarkDecoders();
    Plugin().StopFile();
    EXPECT_TRUE(AreDecodersReset());
    EXPECT_EQ(Inside().FileSampleRate(), 0U);
    // A recording is no break in what comes in.
    MarkDecoders();
    RecordIf("new");
    Plugin().StopFile();
    EXPECT_FALSE(AreDecodersReset());
}

TEST_F(PluginPlayback, SeekingShowsThePlaceAndStartsTheDecoderAnew) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::CallSignal(48000);
    Play("x.if.wav", signal);
    Tick(14);
    ASSERT_NE(Inside().FrameDecoder().GetTransmission(), 0U);
    Plugin().SeekFile(96001);
    EXPECT_EQ(panel.position, 96000U);
    EXPECT_EQ(panel.seconds, 1U);
    EXPECT_EQ(Inside().FrameDecoder().GetTransmission(), 0U);
    Tick();
    EXPECT_EQ(Inside().FloatSamples()[0], static_cast<float>(signal[48000]) / 32768.0F);
    Plugin().SeekFile(0xFFFFFFFF);
    EXPECT_EQ(panel.position, 2 * signal.size());
}

TEST_F(PluginPlayback, ASeekThatDoesNotMoveDoesNothing) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Digital);
    Play("x.if.wav", test::CallSignal(48000));
    Tick(14);
    const std::uint32_t transmission = Inside().FrameDecoder().GetTransmission();
    ASSERT_NE(transmission, 0U);
    panel.positionsShown = 0;
    Plugin().SeekFile(14 * 2 * kBlock);
    EXPECT_EQ(panel.positionsShown, 0);
    EXPECT_EQ(Inside().FrameDecoder().GetTransmission(), transmission);
    Plugin().StopFile();
    panel.positionsShown = 0;
    Plugin().SeekFile(10);
    Plugin().StepFile(1);
    EXPECT_EQ(panel.positionsShown, 0) << "no file is open";
}

TEST_F(PluginPlayback, ARecordingCannotBeSought) {
    StartAtRate(48000);
    RecordIf();
    Process(Ramp(kBlock));
    panel.positionsShown = 0;
    Plugin().SeekFile(10);
    Plugin().StepFile(-1);
    EXPECT_EQ(panel.positionsShown, 0);
    Process(Ramp(kBlock));
    Plugin().StopFile();
    EXPECT_EQ(File("rec.if.wav").samples.size(), 2 * kBlock);
}

TEST_F(PluginPlayback, AStepIsASecond) {
    StartAtRate(48000);
    Play("x.if.wav", Ramp(200000));
    Plugin().SetPause(true);
    panel.positionsShown = 0;
    Plugin().StepFile(1);
    EXPECT_EQ(panel.position, 96000U);
    EXPECT_EQ(panel.seconds, 1U);
    Plugin().StepFile(1);
    Plugin().StepFile(-1);
    EXPECT_EQ(panel.position, 96000U);
    Plugin().SeekFile(50000);
    Plugin().StepFile(-1);
    EXPECT_EQ(panel.position, 0U) << "at the lowest the start";
    Plugin().StepFile(-1);
    EXPECT_EQ(panel.positionsShown, 5) << "it is there already";
    for (int i = 0; i < 5; ++i) {
        Plugin().StepFile(1);
    }
    EXPECT_EQ(panel.position, 400000U) << "at the highest the end";
}

TEST_F(PluginPlayback, AStepWhilePlayingIsShownByTheNextBlock) {
    StartAtRate(48000);
    Play("x.if.wav", Ramp(200000));
    Tick();
    panel.positionsShown = 0;
    Plugin().StepFile(1);
    EXPECT_EQ(panel.positionsShown, 0);
    Tick();
    EXPECT_EQ(panel.position, 96000U + 4 * kBlock);
}

// --- audio -------------------------------------------------------------------------------------------------

TEST_P(PluginPlaybackRates, AudioIsPlayedAtItsOwnRate) {
    StartAtRate(Rate());
    const Samples audio = Ramp(9 * kBlock, -9000);
    Play("x.wav", audio, AtRate(8000));
    EXPECT_EQ(panel.Take(), (Shown{"file x", "playing"}));
    EXPECT_TRUE(Inside().FileIsAudio());
    EXPECT_EQ(Inside().FileSampleRate(), 8000U);
    EXPECT_EQ(waveOut.openings.back().format.nSamplesPerSec, 8000U);
    EXPECT_EQ(Inside().ProcessingRate(), static_cast<std::uint32_t>(Rate()));
    EXPECT_EQ(spectrum.playbackModes, std::vector<std::int32_t>{2});
    EXPECT_EQ(spectrum.audioModes, std::vector<bool>{true});
    EXPECT_EQ(spectrum.rates, Values{8000});
    EXPECT_EQ(Inside().SignalIndicator(), SignalIndicator::None);

    const std::uint32_t part = kBlock * 8000 / static_cast<unsigned>(Rate());
    Tick();
    EXPECT_EQ(spectrum.counts, Values{part});
    EXPECT_EQ(spectrum.allFlags, Values{0});
    EXPECT_EQ(panel.position, 2 * part);
    EXPECT_EQ(Inside().FloatSamples()[0], -9000.0F / 32768.0F);
    Tick(20);
    const Samples played = Played();
    ASSERT_GE(played.size(), 3U * 1024U);
    EXPECT_EQ(played, test::AtVolume(Samples(audio.begin(), audio.begin() + static_cast<int>(played.size())),
                                     kVolume));
    EXPECT_TRUE(host.Of(4362).empty()) << "the host is offered nothing";
    EXPECT_TRUE(library.inversions.empty());
}

TEST_F(PluginPlayback, TheOutputIsOpenedAnewInItsOrder) {
    StartAtRate(48000);
    log.Clear();
    Play("x.wav", Ramp(9), AtRate(8000));
    EXPECT_EQ(log.calls, (Shown{"reset", "close", "open"}));
    log.Clear();
    Plugin().StopFile();
    EXPECT_EQ(log.calls, (Shown{"reset", "close", "open"}));
    EXPECT_EQ(waveOut.openings.back().format.nSamplesPerSec, 16000U);
    EXPECT_EQ(spectrum.rates, (Values{8000, 48000}));
    EXPECT_EQ(spectrum.audioModes, (std::vector<bool>{true, false}));
    EXPECT_FALSE(Inside().FileIsAudio());
    // At the rate of all decoded audio the output stays open at the end.
    log.Clear();
    Play("y.wav", Ramp(9), AtRate(16000));
    EXPECT_EQ(log.calls, (Shown{"reset", "close", "open"}));
    log.Clear();
    Plugin().StopFile();
    EXPECT_TRUE(log.calls.empty());
}

TEST_F(PluginPlayback, AStopWhileTheOutputIsOpenedWaitsForIt) {
    StartAtRate(48000);
    const std::string path = folder.Write("x.wav", test::FileBytes(AtRate(8000), Ramp(9000)));
    Plugin().SelectFile(path.c_str());
    panel.Take();
    spectrum.notch = [&](float*, std::uint32_t) { Plugin().StopFile(); };
    waveIn.PostFilled(2 * kBlock); // comes when messages run
    Plugin().StartPlayback();
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(panel.Take(), (Shown{"playing", "stopped"}));
    EXPECT_EQ(StreamValues(), (Values{2048, 0}));
    EXPECT_EQ(Inside().WaveOut()->GetSampleRate(), 16000U);
    EXPECT_TRUE(audio::CtbWaveOutInspector{*Inside().WaveOut()}.Running());
}

TEST_F(PluginPlayback, NothingStartsBeforeAStopIsOver) {
    StartAtRate(48000);
    Play("x.wav", Ramp(9000), AtRate(8000));
    panel.Take();
    int walked = 0;
    spectrum.notch = [&](float*, std::uint32_t) {
        ++walked;
        RecordAudio("new");
        Plugin().StartPlayback();
        Plugin().StopFile();
    };
    waveIn.PostFilled(2 * kBlock);
    Plugin().StopFile();
    EXPECT_EQ(walked, 1);
    EXPECT_TRUE(IsIdle());
    EXPECT_FALSE(Exists("new.wav"));
    EXPECT_EQ(panel.Take(), Shown{"stopped"});
    EXPECT_EQ(StreamValues(), (Values{2048, 0}));
    spectrum.notch = nullptr;
    RecordAudio("new");
    EXPECT_TRUE(IsRecording());
}

TEST_F(PluginPlayback, NothingStartsWhileTheOutputChangesItsDevice) {
    waveOut.deviceNames = {"First", "Second"};
    StartAtRate(48000);
    const std::string path = folder.Write("x.wav", test::FileBytes(AtRate(8000), Ramp(9000)));
    Plugin().SelectFile(path.c_str());
    panel.Take();
    int walked = 0;
    spectrum.notch = [&](float*, std::uint32_t) {
        ++walked;
        Plugin().StartPlayback();
    };
    waveIn.PostFilled(2 * kBlock);
    Plugin().SetWaveOutDevice(1);
    EXPECT_EQ(walked, 1);
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(waveOut.openings.back().deviceId, 1U);
    EXPECT_EQ(Inside().WaveOut()->GetSampleRate(), 16000U);
    spectrum.notch = nullptr;
    Plugin().StartPlayback();
    EXPECT_EQ(panel.Take(), Shown{"playing"});
}

TEST_F(PluginPlayback, AStopWhileTheOutputChangesItsDeviceWaitsForIt) {
    waveOut.deviceNames = {"First", "Second"};
    StartAtRate(48000);
    RecordAudio("new");
    ASSERT_TRUE(IsRecording());
    spectrum.notch = [&](float*, std::uint32_t) { Plugin().StopFile(); };
    waveIn.PostFilled(2 * kBlock);
    log.Clear();
    Plugin().SetWaveOutDevice(1);
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(log.calls, (Shown{"reset", "close", "open"}));
    EXPECT_TRUE(Exists("new.wav"));
}

TEST_F(PluginPlayback, TheIndicatorGoesOutForAudio) {
    StartAtRate(48000);
    Inside().SetSignalIndicator(SignalIndicator::Digital);
    host.Clear();
    Play("x.wav", Ramp(9), AtRate(8000));
    const auto modes = host.Of(2304);
    ASSERT_EQ(modes.size(), 1U);
    EXPECT_EQ(modes[0].param, 2U);
}

TEST_F(PluginPlayback, AudioBlocksSayHowMuchIsUsed) {
    StartAtRate(48000);
    Play("x.wav", Ramp(9 * kBlock), AtRate(16000));
    Tick(3);
    ASSERT_EQ(waveOut.played.size() + audio::CtbWaveOutInspector{*Inside().WaveOut()}.Gathered(), 2U);
    for (const dsp::CtbSampleBlock& block : Inside().AudioBlocks()) {
        if (&block != Inside().CurrentAudioBlock()) {
            EXPECT_TRUE(block.Used() == 0 || block.Used() == 1024);
        }
    }
    EXPECT_EQ(std::count_if(Inside().AudioBlocks().begin(), Inside().AudioBlocks().end(),
                            [](const dsp::CtbSampleBlock& block) { return block.Used() == 1024; }),
              2);
}

TEST_F(PluginPlayback, AShortLastReadIsNotNoticed) {
    StartAtRate(48000);
    // 800 samples for each live block; the third read finds 100.
    const Samples audio = Ramp(1700, 1);
    Play("x.wav", audio, AtRate(16000));
    Tick(3);
    EXPECT_EQ(spectrum.counts, (Values{800, 800, 800}));
    EXPECT_EQ(Inside().FileSamples()[99], 1700);
    EXPECT_EQ(Inside().FileSamples()[100], 901) << "what the read before left there";
    EXPECT_EQ(Inside().AudioBlockFill(), 2400U - 2048U);
    EXPECT_EQ(Inside().FloatSamples()[799], 1600.0F / 32768.0F);
    EXPECT_TRUE(IsPlaying());
    Tick();
    EXPECT_TRUE(IsIdle());
}

TEST_F(PluginPlayback, AudioWithoutAnOutputBlockIsAbandoned) {
    StartAtRate(48000);
    Play("x.wav", Ramp(9 * kBlock), AtRate(16000));
    dsp::CtbSampleBlock* block = nullptr;
    std::vector<dsp::CtbSampleBlock*> held;
    while (Inside().FreeAudioBlocks().Pop(block)) {
        held.push_back(block);
    }
    const Samples live(kBlock);
    EXPECT_FALSE(Plugin().ProcessData(live.data(), kBlock));
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 1600U) << "the file goes on";
    for (dsp::CtbSampleBlock* one : held) {
        Inside().FreeAudioBlocks().Push(one);
    }
    EXPECT_TRUE(Plugin().ProcessData(live.data(), kBlock));
}

TEST_F(PluginPlayback, TheDecoderSeesNothingOfAnAudioFile) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Digital);
    DecodingNotes notes;
    Inside().FrameDecoder().SetObserver(&notes);
    Play("x.wav", test::CallSignal(48000), AtRate(48000));
    Tick(30);
    EXPECT_TRUE(notes.lines.empty());
    Inside().FrameDecoder().SetObserver(nullptr);
}

TEST_F(PluginPlayback, AnAudioFilePausesAndIsSought) {
    StartAtRate(48000);
    Play("x.wav", Ramp(32000), AtRate(16000));
    Plugin().SetPause(true);
    Tick();
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 0U);
    Plugin().StepFile(1);
    EXPECT_EQ(panel.position, 32000U);
    EXPECT_EQ(panel.seconds, 1U);
    Plugin().SetPause(false);
    Tick();
    EXPECT_EQ(panel.position, 33600U);
}

TEST_F(PluginPlayback, ARecordingIsPlayedAsItWasHeard) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    RecordAudio();
    Process(test::FmTone(48000, 1.0));
    Plugin().StopFile();
    const Samples heard = Played();
    waveOut.played.clear();
    const std::uint32_t fill = Inside().AudioBlockFill();
    Plugin().StartPlayback();
    while (IsPlaying()) {
        Tick();
    }
    // The block that live audio had begun is played to its end first.
    const Samples played = Played();
    ASSERT_GT(played.size(), heard.size());
    EXPECT_EQ(Samples(played.begin() + fill, played.begin() + fill + static_cast<int>(heard.size())), heard);
}

// --- the end -----------------------------------------------------------------------------------------------

TEST_F(PluginPlayback, TheNextFileIsChosenInPlaceOfTheEndWhenAsked) {
    StartAtRate(48000);
    Play("x.if.wav", Ramp(9), AtRate(64000));
    Inside().PlayNextFile() = true;
    panel.Take();
    host.Clear();
    Plugin().StopFile();
    EXPECT_EQ(panel.Take(), (Shown{"stopped", "next"}));
    EXPECT_TRUE(host.calls.empty());
    EXPECT_EQ(Inside().ProcessingRate(), 64000U) << "nothing is put back";
    EXPECT_TRUE(IsIdle());
    // A recording has no next file.
    button = 0;
    RecordIf();
    panel.Take();
    Plugin().StopFile();
    EXPECT_EQ(panel.Take(), (Shown{"file rec.if", "stopped"}));
    EXPECT_EQ(Inside().ProcessingRate(), 48000U);
}

TEST_F(PluginPlayback, PlaysWithoutAWindow) {
    StartAtRate(48000);
    const Samples signal = test::CallSignal(48000);
    const std::string path = folder.Write("x.if.wav", test::FileBytes({}, signal));
    const std::string audio = folder.Write("x.wav", test::FileBytes(AtRate(8000), Ramp(1000)));
    Inside().Window().reset();
    Plugin().SelectFile(path.c_str());
    Plugin().StartPlayback();
    ASSERT_TRUE(IsPlaying());
    Tick(3);
    Plugin().SeekFile(0);
    Plugin().StepFile(1);
    while (IsPlaying()) {
        Tick();
    }
    EXPECT_FALSE(IsSilent(Played()));
    Plugin().SelectFile(audio.c_str());
    Inside().SetSignalIndicator(SignalIndicator::Digital);
    Plugin().StartPlayback();
    EXPECT_EQ(Inside().SignalIndicator(), SignalIndicator::Digital) << "the window's lamps are none";
    while (IsPlaying()) {
        Tick();
    }
    EXPECT_EQ(Inside().WaveOut()->GetSampleRate(), 16000U);
}

TEST_F(PluginPlayback, ClosingTheInstanceEndsThePlayback) {
    StartAtRate(48000);
    Play("x.wav", Ramp(9), AtRate(8000));
    Close();
    EXPECT_TRUE(IsDestroyed());
    EXPECT_TRUE(std::filesystem::remove(folder.Path("x.wav"))) << "nothing holds the file";
}

TEST_F(PluginPlayback, AHostThatClosesAtTheEndOfAFileIsBorne) {
    StartAtRate(48000);
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 16385 && call.param == 0) {
            Close();
        }
    };
    Play("x.wav", Ramp(9), AtRate(8000));
    const Samples live(kBlock);
    Plugin().ProcessData(live.data(), kBlock);
    Plugin().ProcessData(live.data(), kBlock);
    EXPECT_TRUE(IsDestroyed());
}

TEST_P(PluginPlaybackRates, AWarmPlaybackAllocatesNothing) {
    StartAtRate(Rate());
    const int fileRate = 112000 - Rate();
    Samples signal;
    for (int i = 0; i < 4; ++i) {
        const Samples call = test::CallSignal(fileRate, test::kAlgorithmClear, 1);
        signal.insert(signal.end(), call.begin(), call.end());
    }
    host.keeps = false;
    library.keepsReads = false;
    waveOut.keepsPlayed = false;
    spectrum.keeps = false;
    panel.keeps = false;
    std::uint64_t reports = 0; // each is a block of memory given away
    host.onCall = [&](const test::FakeHost::Call& sent, void*) { reports += sent.code == 4365 ? 1 : 0; };
    Tick();
    for (const char* name : {"x.if.wav", "x.wav"}) {
        Play(name, signal, AtRate(static_cast<std::uint32_t>(fileRate)));
        while (Inside().WaveFile().GetPositionBytes() < signal.size()) {
            Tick();
        }
        const std::uint64_t before = test::CountAllocations() - reports;
        while (Inside().WaveFile().GetPositionBytes() < 2 * signal.size() - 20000) {
            Tick();
        }
        EXPECT_EQ(test::CountAllocations() - reports - before, 0U) << name;
        Plugin().StopFile();
    }
}

// --- commands of a program ---------------------------------------------------------------------------------

namespace {

class FileCommands : public PluginPlayback {
protected:
    bool Send(ui::FileCommand command, const std::string& text = "") const {
        COPYDATASTRUCT data{};
        data.dwData = static_cast<ULONG_PTR>(command);
        data.cbData = static_cast<DWORD>(text.size());
        data.lpData = const_cast<char*>(text.data());
        return SendMessageA(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data)) == 1;
    }
};

} // namespace

TEST_F(FileCommands, RecordWithoutAPanel) {
    StartAtRate(48000);
    ui::COrvaPluginWindowInspector{*Inside().Window()}.SetPlayRecPanel(nullptr);
    EXPECT_TRUE(Send(ui::FileCommand::RecordIf, folder.Path("call")));
    const Samples samples = Ramp(3 * kBlock);
    Process(std::span(samples).first(kBlock));
    EXPECT_TRUE(Send(ui::FileCommand::Pause));
    Process(std::span(samples).subspan(kBlock, kBlock));
    EXPECT_TRUE(Send(ui::FileCommand::Resume));
    Process(std::span(samples).subspan(2 * kBlock, kBlock));
    EXPECT_TRUE(Send(ui::FileCommand::Stop));
    EXPECT_FALSE(Send(ui::FileCommand::Stop));
    EXPECT_EQ(File("call.if.wav").samples.size(), 2 * kBlock);
    EXPECT_FALSE(Send(ui::FileCommand::RecordAudio, folder.Path("no\\such\\folder"))) << "it did not begin";
    EXPECT_TRUE(Send(ui::FileCommand::RecordAudio, folder.Path("call")));
    EXPECT_TRUE(Inside().FileIsAudio());
}

TEST_F(FileCommands, PlaySeekAndStep) {
    StartAtRate(48000);
    const std::string path = folder.Write("x.if.wav", test::FileBytes({}, Ramp(200000)));
    const std::string stereo = folder.Write("s.wav", test::FileBytes({1, 2, 48000, 16}, Ramp(20)));
    EXPECT_FALSE(Send(ui::FileCommand::Play, stereo));
    EXPECT_TRUE(IsIdle());
    EXPECT_TRUE(Send(ui::FileCommand::Play, path));
    EXPECT_TRUE(IsPlaying());
    EXPECT_TRUE(Send(ui::FileCommand::Seek, "1000"));
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 1000U);
    EXPECT_TRUE(Send(ui::FileCommand::Step, "2"));
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 193000U);
    panel.Take();
    EXPECT_TRUE(Send(ui::FileCommand::Pause));
    EXPECT_EQ(panel.Take(), Shown{"paused"}) << "as if the user had pressed the button";
    EXPECT_EQ(Inside().PauseFlags(), 1U);
    EXPECT_TRUE(Send(ui::FileCommand::Resume));
    EXPECT_EQ(panel.Take(), Shown{"resumed"});
    EXPECT_TRUE(Send(ui::FileCommand::Stop));
}

TEST_F(FileCommands, TakeWholeDecimalNumbersOnly) {
    StartAtRate(48000);
    Play("x.if.wav", Ramp(200000));
    ASSERT_TRUE(Send(ui::FileCommand::Seek, "1000"));
    for (const char* text : {"", "-", "x", "0x100", "12a", " 5", "1.5", "+1", "-1"}) {
        EXPECT_FALSE(Send(ui::FileCommand::Seek, text)) << text;
    }
    for (const char* text : {"", "-", "x", "0x1", "1a", "--1"}) {
        EXPECT_FALSE(Send(ui::FileCommand::Step, text)) << text;
    }
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 1000U);
    EXPECT_TRUE(Send(ui::FileCommand::Seek, "99999999999999999999")) << "the end";
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 400000U);
    EXPECT_TRUE(Send(ui::FileCommand::Step, "-99999999999999999999")) << "the start";
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 0U);
    EXPECT_TRUE(Send(ui::FileCommand::Step, "2147483648"));
    EXPECT_EQ(Inside().WaveFile().GetPositionBytes(), 400000U);
}

TEST_F(FileCommands, ARefusedRecordingLeavesNothingForTheNext) {
    StartAtRate(48000);
    Play("x.wav", Ramp(9000), AtRate(8000));
    spectrum.notch = [&](float*, std::uint32_t) {
        EXPECT_FALSE(Send(ui::FileCommand::RecordIf, folder.Path("program"))) << "the output is opened anew";
    };
    waveIn.PostFilled(2 * kBlock); // comes when messages run
    Plugin().StopFile();
    spectrum.notch = nullptr;
    EXPECT_TRUE(IsIdle());
    RecordAudio("user");
    EXPECT_TRUE(IsRecording());
    EXPECT_TRUE(Exists("user.wav"));
    EXPECT_FALSE(Exists("program.if.wav"));
}

TEST_F(FileCommands, TheInstanceMayBeClosedFromInsideOne) {
    StartAtRate(48000);
    const std::string path = folder.Write("x.if.wav", test::FileBytes({}, Ramp(20)));
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 16385) {
            Close();
        }
    };
    EXPECT_TRUE(Send(ui::FileCommand::Play, path));
    EXPECT_TRUE(IsDestroyed());
}

TEST_F(FileCommands, AnotherThreadIsRefused) {
    StartAtRate(48000);
    const std::string path = folder.Write("x.if.wav", test::FileBytes({}, Ramp(20)));
    std::atomic<int> answer{-1};
    std::thread other([&] { answer = Send(ui::FileCommand::Play, path) ? 1 : 0; });
    while (answer < 0) {
        Pump();
        std::this_thread::yield();
    }
    other.join();
    EXPECT_EQ(answer, 0);
    EXPECT_TRUE(IsIdle());
}

TEST_F(FileCommands, OtherNumbersAndEmptyDataAreRefused) {
    StartAtRate(48000);
    EXPECT_FALSE(Send(static_cast<ui::FileCommand>(1), "x"));
    COPYDATASTRUCT empty{static_cast<ULONG_PTR>(ui::FileCommand::Play), 0, nullptr};
    EXPECT_EQ(SendMessageA(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&empty)), 0);
    EXPECT_EQ(SendMessageA(window, WM_COPYDATA, 0, 0), 0);
    EXPECT_TRUE(IsIdle());
}

INSTANTIATE_TEST_SUITE_P(Rates, PluginPlaybackRates, testing::Values(48000, 64000));

} // namespace orva::plugin
