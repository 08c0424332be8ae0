#include "tools/orva-decode/Receiver.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/EventLines.h"
#include "tests/tools/RecordedCalls.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::tools {

namespace {

constexpr double kSymbolRate = 4800.0;

class ReceiverTest : public testing::Test {
protected:
    ReceiverTest() {
        EXPECT_TRUE(outputs.OpenSpeech(folder.Path("speech.wav")));
        EXPECT_TRUE(outputs.OpenDibits(folder.Path("dibits.txt")));
        EXPECT_TRUE(outputs.events.Open(folder.Path("events.jsonl")));
    }

    static void FeedAllDibits(Receiver& receiver, const std::string& dibits, std::size_t slice) {
        for (std::size_t first = 0; first < dibits.size(); first += slice) {
            const auto count = static_cast<std::int32_t>(std::min(slice, dibits.size() - first));
            ASSERT_TRUE(receiver.FeedDibits(dibits.data() + first, count));
        }
        receiver.Finish();
    }

    test::TemporaryFolder folder;
    Outputs outputs;
    CallLog calls{[](const Call&) {}};
    ControlChannelLog channel;
};

TEST_F(ReceiverTest, WritesTheSpeechOfTheFrameDecoderToTheLastSample) {
    Receiver receiver(outputs, calls, channel);
    FeedAllDibits(receiver, test::RecordedCalls().Dibits(), 240);
    ASSERT_TRUE(outputs.Close());
    const auto expected = test::DecodeSpeech(test::RecordedCalls().Dibits());
    EXPECT_EQ(expected.size(), 160 * test::RecordedVoice().size());
    EXPECT_EQ(test::ReadSpeechFile(folder.Path("speech.wav")), expected);
}

TEST_F(ReceiverTest, WritesTheDibitsItWasFed) {
    Receiver receiver(outputs, calls, channel);
    FeedAllDibits(receiver, test::RecordedCalls().Dibits(), 77);
    ASSERT_TRUE(outputs.Close());
    EXPECT_EQ(test::ReadWholeFile(folder.Path("dibits.txt")), test::RecordedCalls().Dibits());
}

TEST_F(ReceiverTest, KeepsTimeByDibits) {
    Receiver receiver(outputs, calls, channel);
    const std::string dibits(4800, '0');
    FeedAllDibits(receiver, dibits, 100);
    EXPECT_NEAR(receiver.GetSeconds(), 1.0, 1e-9);
}

TEST_F(ReceiverTest, KeepsTimeBySamplesAlsoWithoutASignal) {
    for (const std::uint32_t rate : {48000U, 64000U}) {
        Receiver receiver(outputs, calls, channel);
        receiver.SetSampleRate(rate);
        const std::vector<std::int16_t> silence(kBlockSamples);
        for (std::uint32_t fed = 0; fed < rate / 2; fed += 800) {
            ASSERT_TRUE(receiver.FeedSamples(silence.data(), 800));
        }
        receiver.Finish();
        EXPECT_NEAR(receiver.GetSeconds(), 0.5, 1e-9) << rate << " Hz";
    }
}

TEST_F(ReceiverTest, TimesEventsOfSamplesWhereTheyWereSent) {
    Receiver receiver(outputs, calls, channel);
    receiver.SetSampleRate(48000);
    const auto& signal = test::RecordedSignal();
    for (std::size_t first = 0; first < signal.size(); first += kBlockSamples) {
        ASSERT_TRUE(
            receiver.FeedSamples(signal.data() + first, std::min(kBlockSamples, signal.size() - first)));
    }
    receiver.Finish();
    EXPECT_NEAR(receiver.GetSeconds(), static_cast<double>(signal.size()) / 48000, 1e-9);
    ASSERT_TRUE(outputs.Close());

    // The decoder lags by its filters, and a block's dibits are spread over it evenly.
    constexpr double kLag = 0.02;
    constexpr std::size_t kDibitsToNid = 57;
    const auto& sent = test::RecordedCalls().Frames();
    const test::Events identifiers =
        test::Named(test::ParseEvents(test::ReadWholeFile(folder.Path("events.jsonl"))), "nid");
    ASSERT_GE(identifiers.size(), sent.size());
    // The transmission ends where the silence behind it begins.
    const double begin = receiver.GetSeconds() - 0.3 -
                         static_cast<double>(test::RecordedCalls().Dibits().size()) / kSymbolRate;
    for (std::size_t i = 0; i < sent.size(); ++i) {
        const auto& identifier = identifiers[identifiers.size() - sent.size() + i];
        EXPECT_EQ(identifier["duid"], sent[i].dataUnit) << "frame " << i;
        EXPECT_NEAR(identifier["time"].get<double>(),
                    begin + static_cast<double>(sent[i].firstDibit + kDibitsToNid) / kSymbolRate, kLag)
            << "frame " << i;
    }
}

TEST_F(ReceiverTest, WritesNothingButFramesWithoutOutputs) {
    Outputs none;
    Receiver receiver(none, calls, channel);
    FeedAllDibits(receiver, test::RecordedCalls().Dibits(), 240);
    EXPECT_EQ(calls.GetTotals().voiceFrames, test::RecordedVoice().size());
    EXPECT_TRUE(none.Close());
}

} // namespace

} // namespace orva::tools
