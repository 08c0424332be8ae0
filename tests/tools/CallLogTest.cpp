#include "tools/orva-decode/CallLog.h"

#include <vector>

#include <gtest/gtest.h>

namespace orva::tools {

namespace {

constexpr std::int32_t kAlgorithmClear = 0x80;
constexpr std::int32_t kAlgorithmAes = 0x84;

voice::ImbeFrameBlock VoiceFrame(std::int16_t errors, std::int16_t status = 0) {
    voice::ImbeFrameBlock frame{};
    frame.errorTotal = errors;
    frame.status = status;
    return frame;
}

class CallLogTest : public testing::Test {
protected:
    void NoteLdu(double time, std::int32_t nac = 5) { log.NoteNid(time, nac, "LDU1", true, true); }

    std::vector<Call> calls;
    CallLog log{[this](const Call& call) { calls.push_back(call); }};
};

TEST_F(CallLogTest, ReportsACallWithAllThatWasSaid) {
    log.NoteNid(1.0, 0x293, "HDU", true, true);
    log.NoteHeader(1.0);
    log.NoteAlgorithm(kAlgorithmAes);
    log.NoteTalkGroup(7);
    NoteLdu(1.1, 0x293);
    log.NoteVoice(1.2, VoiceFrame(3));
    log.NoteAddresses(true, 8, 99, -1);
    log.NoteVoice(1.3, VoiceFrame(4, voice::kImbeFlagConcealed | voice::kImbeFlagMute));
    EXPECT_TRUE(calls.empty());
    log.NoteTerminator(1.5);

    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].start, 1.0);
    EXPECT_EQ(calls[0].end, 1.5);
    EXPECT_EQ(calls[0].networkAccessCode, 0x293);
    EXPECT_EQ(calls[0].talkGroup, 8);
    EXPECT_EQ(calls[0].source, 99);
    EXPECT_EQ(calls[0].destination, -1);
    EXPECT_EQ(calls[0].algorithm, kAlgorithmAes);
    EXPECT_TRUE(calls[0].IsEncrypted());
    EXPECT_EQ(calls[0].voiceFrames, 2U);
    EXPECT_EQ(calls[0].correctedBits, 7U);
    EXPECT_EQ(calls[0].concealedFrames, 1U);
    EXPECT_TRUE(calls[0].terminated);
    EXPECT_DOUBLE_EQ(calls[0].VoiceSeconds(), 0.04);
    EXPECT_DOUBLE_EQ(calls[0].ErrorRatePercent(), 100.0 * 7 / 288);
}

TEST_F(CallLogTest, KnowsNothingOfACallUnlessTold) {
    NoteLdu(2.0);
    log.Finish(2.5);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].talkGroup, -1);
    EXPECT_EQ(calls[0].source, -1);
    EXPECT_EQ(calls[0].destination, -1);
    EXPECT_EQ(calls[0].algorithm, -1);
    EXPECT_FALSE(calls[0].IsEncrypted());
    EXPECT_FALSE(calls[0].terminated);
    EXPECT_EQ(calls[0].ErrorRatePercent(), 0.0);
}

TEST_F(CallLogTest, CallsTheClearAlgorithmUnencrypted) {
    NoteLdu(0.0);
    log.NoteAlgorithm(kAlgorithmClear);
    log.Finish(1.0);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_FALSE(calls[0].IsEncrypted());
}

TEST_F(CallLogTest, KeepsADestinationOfAUnitToUnitCallOnly) {
    NoteLdu(0.0);
    log.NoteAddresses(false, 4, 11, 12);
    log.Finish(1.0);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].talkGroup, -1);
    EXPECT_EQ(calls[0].source, 11);
    EXPECT_EQ(calls[0].destination, 12);
}

TEST_F(CallLogTest, EndsALostCallWithoutATerminator) {
    NoteLdu(1.0);
    log.NoteLost(2.0);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].end, 2.0);
    EXPECT_FALSE(calls[0].terminated);
    EXPECT_EQ(log.GetTotals().lost, 1U);
}

TEST_F(CallLogTest, ReportsNoCallForATerminatorAlone) {
    log.NoteNid(1.0, 5, "TDU", false, true);
    log.NoteTerminator(1.1);
    log.Finish(2.0);
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(log.GetTotals().calls, 0U);
}

TEST_F(CallLogTest, BeginsAnotherCallWithAHeaderAfterVoice) {
    NoteLdu(1.0);
    log.NoteAddresses(true, 1, 2, -1);
    log.NoteVoice(1.1, VoiceFrame(0));
    log.NoteHeader(3.0);
    log.NoteNid(3.0, 5, "HDU", true, true);
    log.Finish(4.0);
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].end, 3.0);
    EXPECT_EQ(calls[0].talkGroup, 1);
    EXPECT_FALSE(calls[0].terminated);
    EXPECT_EQ(calls[1].start, 3.0);
    EXPECT_EQ(calls[1].talkGroup, -1);
}

TEST_F(CallLogTest, TakesHeadersInARowForOneCall) {
    log.NoteHeader(1.0);
    log.NoteNid(1.0, 5, "HDU", true, true);
    log.NoteHeader(1.1);
    log.NoteNid(1.1, 5, "HDU", true, true);
    log.Finish(2.0);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].start, 1.0);
}

TEST_F(CallLogTest, LetsAGoodIdentifierReplaceAnUncorrectableOne) {
    log.NoteNid(1.0, 111, "LDU1", true, false);
    log.NoteNid(1.2, 222, "LDU2", true, true);
    log.NoteNid(1.4, 333, "LDU1", true, false);
    log.Finish(2.0);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].networkAccessCode, 222);
    EXPECT_EQ(log.GetTotals().uncorrectable, 2U);
    EXPECT_EQ(log.GetTotals().networkAccessCodes.count(), 1U);
    EXPECT_TRUE(log.GetTotals().networkAccessCodes.test(222));
}

TEST_F(CallLogTest, CountsAllVoiceAlsoOutsideOfCalls) {
    log.NoteVoice(0.5, VoiceFrame(2));
    NoteLdu(1.0);
    log.NoteVoice(1.5, VoiceFrame(3, voice::kImbeFlagConcealed));
    log.Finish(2.0);
    EXPECT_EQ(log.GetTotals().voiceFrames, 2U);
    EXPECT_EQ(log.GetTotals().correctedBits, 5U);
    EXPECT_EQ(log.GetTotals().concealedFrames, 1U);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].voiceFrames, 1U);
}

TEST_F(CallLogTest, CountsFramesByKind) {
    NoteLdu(1.0);
    NoteLdu(1.2);
    log.NoteNid(1.4, 5, "TSBK", false, true);
    log.NoteNid(1.5, 5, "TSBK", false, false);
    const auto& frames = log.GetTotals().frames;
    EXPECT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames.at("LDU1"), 2U);
    EXPECT_EQ(frames.at("TSBK"), 2U);
}

TEST_F(CallLogTest, LeavesOutIdentifiersThatAreNoTwelveBits) {
    log.NoteNid(0.0, -1, "LDU1", true, true);
    log.NoteNid(0.0, 4096, "LDU1", true, true);
    EXPECT_TRUE(log.GetTotals().networkAccessCodes.none());
    log.NoteNid(0.0, 0, "LDU1", true, true);
    log.NoteNid(0.0, 4095, "LDU1", true, true);
    EXPECT_EQ(log.GetTotals().networkAccessCodes.count(), 2U);
}

TEST_F(CallLogTest, FinishesOnce) {
    NoteLdu(1.0);
    log.Finish(2.0);
    log.Finish(3.0);
    EXPECT_EQ(calls.size(), 1U);
    EXPECT_EQ(log.GetTotals().calls, 1U);
}

} // namespace

} // namespace orva::tools
