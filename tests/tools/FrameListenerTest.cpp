#include "tools/orva-decode/FrameListener.h"

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
constexpr double kMicrosecond = 1e-6;
constexpr std::size_t kDibitsToNid = 57; ///< sync, 32 dibits of identifier, and a status symbol among them

/// Events of `dibits`, given to the decoder in stretches of `slice` that take `secondsPerDibit` each.
test::Events Listen(const std::string& dibits, std::size_t slice, double secondsPerDibit = 1 / kSymbolRate) {
    const test::TemporaryFolder folder;
    const std::string path = folder.Path("events.jsonl");
    EventWriter writer;
    EXPECT_TRUE(writer.Open(path));
    CallLog calls([](const Call&) {});
    ControlChannelLog channel;
    p25::COrvaFrameDecoder decoder;
    FrameListener listener(decoder, calls, channel, &writer);
    decoder.SetObserver(&listener);
    for (std::size_t first = 0; first < dibits.size(); first += slice) {
        const auto count = static_cast<std::int32_t>(std::min(slice, dibits.size() - first));
        const double start = static_cast<double>(first) * secondsPerDibit;
        listener.SetStretch(start, start + count * secondsPerDibit, count);
        decoder.Decode(dibits.data() + first, count);
    }
    EXPECT_TRUE(writer.Close());
    return test::ParseEvents(test::ReadWholeFile(path));
}

TEST(FrameListener, TimesIdentifiersByTheirLastDibit) {
    const auto& calls = test::RecordedCalls();
    const test::Events identifiers = test::Named(Listen(calls.Dibits(), 240), "nid");
    ASSERT_EQ(identifiers.size(), calls.Frames().size());
    for (std::size_t i = 0; i < identifiers.size(); ++i) {
        const auto end = static_cast<double>(calls.Frames()[i].firstDibit + kDibitsToNid);
        EXPECT_NEAR(identifiers[i]["time"].get<double>(), end / kSymbolRate, kMicrosecond) << "frame " << i;
    }
}

TEST(FrameListener, GivesTheSameTimesHoweverTheDibitsAreCut) {
    const std::string& dibits = test::RecordedCalls().Dibits();
    const test::Events whole = Listen(dibits, dibits.size());
    ASSERT_FALSE(whole.empty());
    for (const std::size_t slice : {1U, 7U, 240U, 1000U}) {
        const test::Events cut = Listen(dibits, slice);
        ASSERT_EQ(cut.size(), whole.size()) << "slices of " << slice;
        EXPECT_EQ(test::Without(cut, "time"), test::Without(whole, "time")) << "slices of " << slice;
        for (std::size_t i = 0; i < cut.size(); ++i) {
            EXPECT_NEAR(cut[i]["time"].get<double>(), whole[i]["time"].get<double>(), 2 * kMicrosecond)
                << "event " << i << ", slices of " << slice;
        }
    }
}

TEST(FrameListener, TakesTheLengthOfAStretchFromWhatItIsTold) {
    const auto& calls = test::RecordedCalls();
    const test::Events identifiers = test::Named(Listen(calls.Dibits(), 100, 1.0), "nid");
    ASSERT_FALSE(identifiers.empty());
    EXPECT_NEAR(identifiers[0]["time"].get<double>(),
                static_cast<double>(calls.Frames()[0].firstDibit + kDibitsToNid), kMicrosecond);
}

TEST(FrameListener, FeedsTheCallLogWithoutAnEventFile) {
    std::vector<Call> reported;
    CallLog calls([&](const Call& call) { reported.push_back(call); });
    ControlChannelLog channel;
    p25::COrvaFrameDecoder decoder;
    FrameListener listener(decoder, calls, channel, nullptr);
    decoder.SetObserver(&listener);
    const std::string& dibits = test::RecordedCalls().Dibits();
    listener.SetStretch(0.0, static_cast<double>(dibits.size()) / kSymbolRate,
                        static_cast<std::int32_t>(dibits.size()));
    decoder.Decode(dibits.data(), static_cast<std::int32_t>(dibits.size()));

    ASSERT_EQ(reported.size(), 2U);
    EXPECT_EQ(reported[0].networkAccessCode, static_cast<std::int32_t>(test::kRecordedNac));
    EXPECT_EQ(reported[0].talkGroup, test::kRecordedTalkGroup);
    EXPECT_EQ(reported[0].source, static_cast<std::int32_t>(test::kRecordedSource));
    EXPECT_EQ(reported[0].voiceFrames, 36U);
    EXPECT_TRUE(reported[0].terminated);
    EXPECT_FALSE(reported[0].IsEncrypted());
    EXPECT_EQ(reported[1].source, static_cast<std::int32_t>(test::kRecordedUnitSource));
    EXPECT_EQ(reported[1].destination, static_cast<std::int32_t>(test::kRecordedUnitDestination));
    EXPECT_EQ(reported[1].voiceFrames, 18U);
    EXPECT_FALSE(reported[1].terminated);
    EXPECT_TRUE(reported[1].IsEncrypted());
}

TEST(FrameListener, KeepsFormatsWithoutAddressesOutOfTheCall) {
    test::Transmission transmission;
    test::CallDescription description;
    description.link.format = 0x13;
    transmission.AddCall(description, [](std::size_t) { return test::VoiceBits{}; });
    std::vector<Call> reported;
    CallLog calls([&](const Call& call) { reported.push_back(call); });
    ControlChannelLog channel;
    p25::COrvaFrameDecoder decoder;
    FrameListener listener(decoder, calls, channel, nullptr);
    decoder.SetObserver(&listener);
    decoder.Decode(transmission.Dibits().data(), static_cast<std::int32_t>(transmission.Dibits().size()));
    ASSERT_EQ(reported.size(), 1U);
    EXPECT_EQ(reported[0].source, -1);
    EXPECT_EQ(reported[0].destination, -1);
}

TEST(FrameName, IsTheStandardsNameOfEachDataUnit) {
    const char* const names[16] = {"HDU",     "unknown", "unknown", "TDU",     "unknown", "LDU1",
                                   "unknown", "TSBK",    "unknown", "unknown", "LDU2",    "unknown",
                                   "PDU",     "unknown", "unknown", "TDULC"};
    for (std::int32_t duid = 0; duid < 16; ++duid) {
        EXPECT_STREQ(FrameName(duid), names[duid]) << "identifier " << duid;
    }
}

} // namespace

} // namespace orva::tools
