// What each trunking message becomes: the records byte for byte, for every opcode and manufacturer.
#include "p25/TrunkingMessages.h"

#include "tests/p25/ControlChannelStream.h"
#include "tests/support/TrunkingMessage.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using test::ChannelField;
using test::ControlChannelStream;
using test::OfManufacturer;
using test::OtherMessage;
using test::Packed;
using test::TrunkingData;

using Records = std::vector<std::string>;

constexpr unsigned kManufacturers = 256;

// 851.0125 MHz and 6.25 kHz: channel 100 is 851.6375 MHz, which is fc f4 c2 32 in little-endian.
constexpr test::BandPlan kPlan{
    .identifier = 1, .transmitOffset = -720, .spacing = 50, .baseFrequency = 170202500};
constexpr ChannelField kChannel{1, 100};
constexpr ChannelField kOtherChannel{1, 0x0ABC};

/// A control channel that has told its band plan.
class TrunkingMessages : public testing::Test {
protected:
    TrunkingMessages() {
        stream.Send({test::IdentifierUpdate(kPlan)});
        stream.TakeRecords();
    }

    Records RecordsOf(const TrunkingData& message) {
        stream.Send({message});
        return stream.TakeRecords();
    }

    void ExpectNothingFrom(const TrunkingData& message) {
        EXPECT_EQ(RecordsOf(message), Records{})
            << "opcode " << (message[0] & 63) << " manufacturer " << static_cast<unsigned>(message[1]);
    }

    ControlChannelStream stream;
};

TEST_F(TrunkingMessages, GroupGrant) {
    EXPECT_EQ(RecordsOf(test::GroupGrant(kChannel, 0x1234, 0x56789A, 0x85)),
              Records{Packed("01 01 6400 93020000 fcf4c232 9a785600 34120080 8500")});
}

TEST_F(TrunkingMessages, GroupGrantOfAnotherManufacturerIsNoGrant) {
    for (unsigned manufacturer = 1; manufacturer < kManufacturers; ++manufacturer) {
        ExpectNothingFrom(OfManufacturer(test::GroupGrant(kChannel, 1, 2, 3), manufacturer));
    }
}

TEST_F(TrunkingMessages, RegroupedGrant) {
    EXPECT_EQ(RecordsOf(test::RegroupedGrant(kChannel, 0x1234, 0x56789A)),
              Records{Packed("01 01 6400 93020000 fcf4c232 34120080 34120080 0000")});
}

TEST_F(TrunkingMessages, GroupGrantUpdateIsOneRecordAChannel) {
    // 851012500 + 2748 * 6250 Hz is 868187500, 6c 7d bf 33.
    const Records expected = {Packed("02 01 6400 93020000 fcf4c232 34120080 34120080 0080"),
                              Packed("02 01 bc0a 93020000 6c7dbf33 cdab0080 cdab0080 0080")};
    const TrunkingData message = test::GroupGrantUpdate(kChannel, 0x1234, kOtherChannel, 0xABCD);
    EXPECT_EQ(RecordsOf(message), expected);
    EXPECT_EQ(RecordsOf(OfManufacturer(message, 1)), expected);
}

TEST_F(TrunkingMessages, GroupGrantUpdateOfTheSameChannelTwiceIsTwoRecords) {
    const std::string record = Packed("02 01 6400 93020000 fcf4c232 34120080 34120080 0080");
    EXPECT_EQ(RecordsOf(test::GroupGrantUpdate(kChannel, 0x1234, kChannel, 0x1234)),
              (Records{record, record}));
}

TEST_F(TrunkingMessages, GroupGrantUpdateOfAnyOtherManufacturerIsNothing) {
    for (unsigned manufacturer = 2; manufacturer < kManufacturers; ++manufacturer) {
        if (manufacturer != test::kRegroupingManufacturer) {
            ExpectNothingFrom(
                OfManufacturer(test::GroupGrantUpdate(kChannel, 1, kOtherChannel, 2), manufacturer));
        }
    }
}

TEST_F(TrunkingMessages, RegroupedGrantUpdateIsOneRecordAChannel) {
    EXPECT_EQ(RecordsOf(test::RegroupedGrantUpdate(kChannel, 0x1234, kOtherChannel, 0xABCD)),
              (Records{Packed("02 01 6400 93020000 fcf4c232 34120080 34120080 0000"),
                       Packed("02 01 bc0a 93020000 6c7dbf33 cdab0080 cdab0080 0000")}));
}

TEST_F(TrunkingMessages, RegroupedGrantUpdateOfOneCallTwiceIsOneRecord) {
    EXPECT_EQ(RecordsOf(test::RegroupedGrantUpdate(kChannel, 0x1234, kChannel, 0x1234)),
              Records{Packed("02 01 6400 93020000 fcf4c232 34120080 34120080 0000")});
}

TEST_F(TrunkingMessages, RegroupedGrantUpdateThatDiffersInOneFieldIsTwoRecords) {
    EXPECT_EQ(RecordsOf(test::RegroupedGrantUpdate(kChannel, 0x1234, kChannel, 0xABCD)),
              (Records{Packed("02 01 6400 93020000 fcf4c232 34120080 34120080 0000"),
                       Packed("02 01 6400 93020000 fcf4c232 cdab0080 cdab0080 0000")}));
    EXPECT_EQ(RecordsOf(test::RegroupedGrantUpdate(kChannel, 0x1234, kOtherChannel, 0x1234)),
              (Records{Packed("02 01 6400 93020000 fcf4c232 34120080 34120080 0000"),
                       Packed("02 01 bc0a 93020000 6c7dbf33 34120080 34120080 0000")}));
}

TEST_F(TrunkingMessages, ExplicitUpdateOfEveryOtherManufacturerIsTheSecondChannel) {
    const TrunkingData message = test::GroupGrantUpdateExplicit(kOtherChannel, kChannel, 0x1234, 0x85);
    for (unsigned manufacturer = 0; manufacturer < kManufacturers; ++manufacturer) {
        if (manufacturer != test::kRegroupingManufacturer) {
            EXPECT_EQ(RecordsOf(OfManufacturer(message, manufacturer)),
                      Records{Packed("02 01 6400 93020000 fcf4c232 34120080 34120080 8500")})
                << "manufacturer " << manufacturer;
        }
    }
}

TEST_F(TrunkingMessages, UnitGrant) {
    EXPECT_EQ(RecordsOf(test::UnitGrant(kChannel, 0x123456, 0xFEDCBA)),
              Records{Packed("03 01 6400 93020000 fcf4c232 badcfe00 56341200 0080")});
}

TEST_F(TrunkingMessages, UnitGrantUpdate) {
    EXPECT_EQ(RecordsOf(test::UnitGrantUpdate(kChannel, 0x123456, 0xFEDCBA)),
              Records{Packed("04 01 6400 93020000 fcf4c232 badcfe00 56341200 0080")});
}

TEST_F(TrunkingMessages, UnitGrantsOfAnotherManufacturerAreNoGrants) {
    for (unsigned manufacturer = 1; manufacturer < kManufacturers; ++manufacturer) {
        ExpectNothingFrom(OfManufacturer(test::UnitGrant(kChannel, 1, 2), manufacturer));
        ExpectNothingFrom(OfManufacturer(test::UnitGrantUpdate(kChannel, 1, 2), manufacturer));
    }
}

TEST_F(TrunkingMessages, IdentifierUpdateOfAnyManufacturer) {
    // Spacing 6250 Hz, 6a 18; base 851012500 Hz, 94 6b b9 32. Offset -(5 << 7 | 16) = -656, 70 fd: the sign
    // and 13 bits of -(5 << 6 | 16), seven of them shifted by one more than they stand for.
    const test::BandPlan plan{
        .identifier = 13, .transmitOffset = -(5 * 64 + 16), .spacing = 50, .baseFrequency = 170202500};
    for (unsigned manufacturer = 0; manufacturer < kManufacturers; ++manufacturer) {
        EXPECT_EQ(RecordsOf(OfManufacturer(test::IdentifierUpdate(plan), manufacturer)),
                  Records{Packed("80 0d 70fd 93020000 6a180000 946bb932 00000000 0000")})
            << "manufacturer " << manufacturer;
    }
    const ChannelIdentifier& learned = stream.decoder.GetChannelTable().Get(13);
    EXPECT_EQ(learned.baseFrequency, 851012500U);
    EXPECT_EQ(learned.channelSpacing, 6250U);
}

TEST_F(TrunkingMessages, IdentifierUpdateOffsetsReachAllTheirBits) {
    const auto offsetOf = [this](int offset) {
        test::BandPlan plan = kPlan;
        plan.transmitOffset = offset;
        return RecordsOf(test::IdentifierUpdate(plan)).at(0).substr(4, 4);
    };
    EXPECT_EQ(offsetOf(0), "0000");
    EXPECT_EQ(offsetOf(63), "3f00");
    EXPECT_EQ(offsetOf(64), "8000");
    EXPECT_EQ(offsetOf(8191), "bf3f");
    EXPECT_EQ(offsetOf(-1), "ffff");
    EXPECT_EQ(offsetOf(-8191), "41c0");
}

TEST_F(TrunkingMessages, IdentifierUpdateSpacingHasTenBits) {
    test::BandPlan plan = kPlan;
    plan.spacing = 1023;
    EXPECT_EQ(RecordsOf(test::IdentifierUpdate(plan)).at(0).substr(16, 8), "83f30100"); // 127875 Hz
    plan.spacing = 0;
    EXPECT_EQ(RecordsOf(test::IdentifierUpdate(plan)).at(0).substr(16, 8), "00000000");
}

TEST_F(TrunkingMessages, IdentifierUpdateOfAHighBandTellsItCoded) {
    // 430000000 * 5 Hz is 2150000000 Hz: 215000000 tens of hertz, bit 31 set. Channel 2 is 25 kHz above.
    RecordsOf(test::IdentifierUpdate({.identifier = 7, .spacing = 100, .baseFrequency = 430000000}));
    EXPECT_EQ(stream.records.back(), Packed("80 07 0000 93020000 d4300000 c0a3d08c 00000000 0000"));
    EXPECT_EQ(RecordsOf(test::UnitGrant({7, 2}, 1, 2)),
              Records{Packed("03 07 0200 93020000 84add08c 02000000 01000000 0080")});
}

TEST_F(TrunkingMessages, NegativeBaseFieldIsANegativeFrequency) {
    // -1 * 5 Hz in 64 bits; the record has a tenth of it, cut to 32 bits: (2^64 - 5) / 10 is
    // 0x1999999999999999.
    RecordsOf(test::IdentifierUpdate({.identifier = 3, .spacing = 50, .baseFrequency = 0xFFFFFFFF}));
    EXPECT_EQ(stream.records.back(), Packed("80 03 0000 93020000 6a180000 99999999 00000000 0000"));
    EXPECT_EQ(stream.decoder.GetChannelTable().Get(3).baseFrequency, ~std::uint64_t{4});
    // The first channel above is 6245 Hz.
    EXPECT_EQ(RecordsOf(test::UnitGrant({3, 1}, 1, 2)),
              Records{Packed("03 03 0100 93020000 65180000 02000000 01000000 0080")});
}

TEST_F(TrunkingMessages, GrantOfAnUnknownIdentifierHasNoFrequency) {
    EXPECT_EQ(RecordsOf(test::GroupGrant({2, 100}, 0x1234, 0x56789A, 0)),
              Records{Packed("01 02 6400 93020000 00000000 9a785600 34120080 0000")});
    EXPECT_EQ(RecordsOf(test::UnitGrant({2, 100}, 1, 2)).at(0).substr(16, 8), "00000000");
}

TEST_F(TrunkingMessages, BaseFrequencyOfZeroIsUnknown) {
    RecordsOf(test::IdentifierUpdate({.identifier = 1, .spacing = 50, .baseFrequency = 0}));
    EXPECT_EQ(RecordsOf(test::UnitGrant(kChannel, 1, 2)).at(0).substr(16, 8), "00000000");
}

TEST_F(TrunkingMessages, HighestChannelAndIdentifier) {
    RecordsOf(test::IdentifierUpdate({.identifier = 15, .spacing = 100, .baseFrequency = 170202500}));
    // 851012500 + 4095 * 12500 Hz is 902200000, c0 7a c6 35.
    EXPECT_EQ(RecordsOf(test::GroupGrant({15, 4095}, 0xFFFF, 0xFFFFFF, 0xFF)),
              Records{Packed("01 0f ff0f 93020000 c07ac635 ffffff00 ffff0080 ff00")});
}

TEST_F(TrunkingMessages, AllOtherOpcodesDoNothing) {
    const ChannelIdentifier before = stream.decoder.GetChannelTable().Get(1);
    for (unsigned opcode = 0; opcode < 64; ++opcode) {
        if (opcode == 0 || (opcode >= 2 && opcode <= 4) || opcode == 6 || opcode == 52) {
            continue;
        }
        for (const unsigned manufacturer : {0U, 1U, 144U, 255U}) {
            ExpectNothingFrom(
                OtherMessage(opcode, manufacturer, {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}));
        }
    }
    EXPECT_EQ(stream.decoder.GetChannelTable().Get(1).baseFrequency, before.baseFrequency);
    for (std::uint32_t identifier = 0; identifier < ChannelTable::kIdentifiers; ++identifier) {
        if (identifier != 1) {
            EXPECT_EQ(stream.decoder.GetChannelTable().Get(identifier).baseFrequency, 0U) << identifier;
        }
    }
}

TEST_F(TrunkingMessages, PlainIdentifierUpdateTeachesNothing) {
    TrunkingData update = test::IdentifierUpdate({.identifier = 5, .spacing = 50, .baseFrequency = 1000});
    update[0] = 61;
    ExpectNothingFrom(update);
    EXPECT_EQ(stream.decoder.GetChannelTable().Get(5).baseFrequency, 0U);
}

TEST_F(TrunkingMessages, ProtectedMessageIsCountedAndNotHandled) {
    stream.blocks.clear();
    for (const TrunkingData& message :
         {test::GroupGrant(kChannel, 1, 2, 3), test::GroupGrantUpdate(kChannel, 1, kChannel, 2),
          test::UnitGrant(kChannel, 1, 2),
          test::IdentifierUpdate({.identifier = 5, .spacing = 50, .baseFrequency = 1000})}) {
        ExpectNothingFrom(test::Protected(message));
    }
    EXPECT_EQ(stream.decoder.GetChannelTable().Get(5).baseFrequency, 0U);
    ASSERT_EQ(stream.blocks.size(), 4U);
    EXPECT_TRUE(stream.blocks[0].good);
}

TEST_F(TrunkingMessages, RecordsCarryTheNetworkOfTheirPacket) {
    stream.Feed(test::TrunkingPacket(0xFED, std::vector<TrunkingData>{test::GroupGrant(kChannel, 1, 2, 3)}));
    EXPECT_EQ(stream.TakeRecords().at(0).substr(8, 8), "ed0f0000");
}

TEST_F(TrunkingMessages, RecordsOfAPacketComeInTheOrderOfItsBlocks) {
    stream.Send({test::UnitGrant(kChannel, 1, 2), test::GroupGrantUpdate(kChannel, 3, kChannel, 4),
                 test::GroupGrant(kChannel, 5, 6, 7)});
    EXPECT_EQ(stream.TakeRecords(), (Records{Packed("03 01 6400 93020000 fcf4c232 02000000 01000000 0080"),
                                             Packed("02 01 6400 93020000 fcf4c232 03000080 03000080 0080"),
                                             Packed("02 01 6400 93020000 fcf4c232 04000080 04000080 0080"),
                                             Packed("01 01 6400 93020000 fcf4c232 06000000 05000080 0700")}));
}

TEST(TrunkingRecord, EndOfCallHasItsNetworkAtOffsetOne) {
    const TrunkingRecord record = TrunkingRecord::MakeEndOfCall(0xABC);
    EXPECT_EQ(test::Hex(record.Bytes().data(), record.Bytes().size()),
              Packed("81 bc0a0000 000000 00000000 00000000 00000000 0000"));
    EXPECT_EQ(record.NetworkAccessCode(), 0xABCU);
}

TEST(TrunkingRecord, GivesBackWhatWasPutIn) {
    TrunkingRecord record(TrunkingRecordType::UnitGrant);
    record.SetChannel(0xF, 0xABC);
    record.SetNetworkAccessCode(0x293);
    record.SetFrequency(0x80000001);
    record.SetSource(0x123456);
    record.SetDestination(0x8000FFFF);
    record.SetServiceOptions(32768);
    EXPECT_EQ(record.Type(), TrunkingRecordType::UnitGrant);
    EXPECT_EQ(record.ChannelIdentifier(), 0xFU);
    EXPECT_EQ(record.ChannelNumber(), 0xABCU);
    EXPECT_EQ(record.NetworkAccessCode(), 0x293U);
    EXPECT_EQ(record.Frequency(), 0x80000001U);
    EXPECT_EQ(record.Source(), 0x123456U);
    EXPECT_EQ(record.Destination(), 0x8000FFFFU);
    EXPECT_EQ(record.ServiceOptions(), 32768U);
}

} // namespace
} // namespace orva::p25
