#include "tests/support/Transmission.h"

#include "tests/support/BlockCodes.h"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

// A voice frame that tells its index in the first 16 bits.
VoiceBits NumberedVoice(std::size_t index) {
    VoiceBits bits = {};
    for (std::size_t bit = 0; bit < 16; ++bit) {
        bits[bit] = static_cast<std::uint8_t>(index >> (15 - bit) & 1);
    }
    return bits;
}

std::vector<unsigned> DataUnits(const Transmission& transmission) {
    std::vector<unsigned> units;
    for (const SentFrame& frame : transmission.Frames()) {
        units.push_back(frame.dataUnit);
    }
    return units;
}

TEST(Transmission, CallRunsFromHeaderToTerminator) {
    Transmission transmission;
    transmission.AddCall({.superframes = 2}, NumberedVoice);
    EXPECT_EQ(DataUnits(transmission), (std::vector<unsigned>{0x0, 0x5, 0xA, 0x5, 0xA, 0x3}));
    EXPECT_EQ(transmission.Dibits().size(), kHeaderDibits + 4 * kLduDibits + kTerminatorDibits);
}

TEST(Transmission, CallMayLackHeaderAndTerminator) {
    Transmission transmission;
    transmission.AddCall({.withHeader = false, .ending = CallEnding::None}, NumberedVoice);
    EXPECT_EQ(DataUnits(transmission), (std::vector<unsigned>{0x5, 0xA}));
}

TEST(Transmission, CallMayEndWithLinkControl) {
    Transmission transmission;
    CallDescription call;
    call.link.talkGroup = 77;
    call.ending = CallEnding::TerminatorWithLinkControl;
    transmission.AddCall(call, NumberedVoice);
    EXPECT_EQ(transmission.Frames().back().dataUnit, 0xFu);
    EXPECT_EQ(transmission.Frames().back().link->talkGroup, 77);
}

TEST(Transmission, VoiceIsAskedForInOrder) {
    Transmission transmission;
    transmission.AddCall({.superframes = 3}, NumberedVoice);
    std::size_t index = 0;
    for (const SentFrame& frame : transmission.Frames()) {
        for (const VoiceBits& word : frame.voice) {
            EXPECT_EQ(word, NumberedVoice(index++));
        }
    }
    EXPECT_EQ(index, 54u);
}

TEST(Transmission, RemembersWhereEveryFrameStands) {
    Transmission transmission;
    transmission.AddRandomDibits(101);
    transmission.AddCall({}, NumberedVoice);
    transmission.AddIdle(7);
    transmission.AddPacket(0x123, 3);
    std::size_t next = 101;
    for (const SentFrame& frame : transmission.Frames()) {
        EXPECT_EQ(frame.firstDibit, frame.dataUnit == 0xC ? next + 7 : next);
        EXPECT_EQ(transmission.Dibits().substr(frame.firstDibit, 24), kSyncDibits);
        next = frame.firstDibit + frame.dibitCount;
    }
    EXPECT_EQ(next, transmission.Dibits().size());
}

TEST(Transmission, FieldsBelongToTheirFrames) {
    Transmission transmission;
    transmission.AddCall({}, NumberedVoice);
    transmission.AddUnknown(5, 0x9, 40);
    for (const SentFrame& frame : transmission.Frames()) {
        EXPECT_EQ(frame.header.has_value(), frame.dataUnit == 0x0);
        EXPECT_EQ(frame.link.has_value(), frame.dataUnit == 0x5);
        EXPECT_EQ(frame.encryption.has_value(), frame.dataUnit == 0xA);
        EXPECT_EQ(frame.voice.size(), frame.dataUnit == 0x5 || frame.dataUnit == 0xA ? 9u : 0u);
    }
    EXPECT_EQ(transmission.Frames().back().networkAccessCode, 5u);
}

TEST(Transmission, PacketHoldsWholeBlocks) {
    Transmission transmission;
    transmission.AddPacket(0x293, 3);
    // 24 of sync, 32 of network identifier and 3 blocks of 98, with a status symbol behind every 35.
    EXPECT_EQ(transmission.Dibits().size(), 360u);
    EXPECT_EQ(transmission.Frames().front().dataUnit, 0xCu);
}

TEST(Transmission, RandomDibitsAreAllFourClasses) {
    Transmission transmission;
    transmission.AddRandomDibits(200);
    const std::string& dibits = transmission.Dibits();
    EXPECT_EQ(std::set<char>(dibits.begin(), dibits.end()), (std::set<char>{'0', '1', '2', '3'}));
}

} // namespace
} // namespace orva::test
