#include "ui/CallReadout.h"

#include <gtest/gtest.h>

namespace orva::ui {

namespace {

constexpr std::uint32_t kStart = 10000; // [ms]
constexpr std::int32_t kNone = 0;
constexpr std::int32_t kDigital = 1;
constexpr std::int32_t kFm = 2;

/// A read-out with the digital lamp lit.
class DigitalReadout : public testing::Test {
protected:
    DigitalReadout() { readout.SetSignal(kDigital, kStart); }

    CallReadout readout;
};

void ExpectDashes(const CallReadout& readout) {
    EXPECT_EQ(readout.Ber(), "0.0 %");
    EXPECT_EQ(readout.Nac(), "---");
    EXPECT_EQ(readout.Tgid(), "----");
    EXPECT_EQ(readout.Sid(), "------");
    EXPECT_EQ(readout.Did(), "------");
    EXPECT_EQ(readout.TransmissionShown(), CallReadout::kNothing);
    EXPECT_EQ(readout.EncryptionShown(), 0);
    EXPECT_FALSE(readout.EncryptionEnabled());
}

} // namespace

TEST(CallReadout, StartsWithDashes) {
    const CallReadout readout;
    ExpectDashes(readout);
    EXPECT_EQ(readout.Signal(), kNone);
}

// --- bit error rate ----------------------------------------------------------------------------------------

TEST(CallReadout, BerHasOneDecimal) {
    CallReadout readout;
    EXPECT_TRUE(readout.SetBer(3.4F, kStart));
    EXPECT_EQ(readout.Ber(), "3.4 %");
    EXPECT_TRUE(readout.SetBer(100.0, kStart + 250));
    EXPECT_EQ(readout.Ber(), "100.0 %");
    EXPECT_TRUE(readout.SetBer(0.0, kStart + 500));
    EXPECT_EQ(readout.Ber(), "0.0 %");
}

TEST(CallReadout, BerChangesFourTimesASecondAtMost) {
    CallReadout readout;
    readout.SetBer(1.0, kStart);
    EXPECT_FALSE(readout.SetBer(2.0, kStart + 100));
    EXPECT_FALSE(readout.SetBer(2.0, kStart + 249));
    EXPECT_EQ(readout.Ber(), "1.0 %");
    EXPECT_TRUE(readout.SetBer(2.0, kStart + 250)) << "the same value, later";
    EXPECT_EQ(readout.Ber(), "2.0 %");
}

TEST(CallReadout, AnEqualBerDoesNotDelayTheNext) {
    CallReadout readout;
    readout.SetBer(1.0, kStart);
    EXPECT_FALSE(readout.SetBer(1.0, kStart + 300));
    EXPECT_TRUE(readout.SetBer(2.0, kStart + 310));
}

TEST(CallReadout, BerBearsAClockThatWraps) {
    CallReadout readout;
    readout.SetBer(1.0, 0xFFFFFFF0U);
    EXPECT_FALSE(readout.SetBer(2.0, 0xE9U)) << "249 ms later";
    EXPECT_TRUE(readout.SetBer(2.0, 0xEAU));
}

// --- identifiers -------------------------------------------------------------------------------------------

TEST(CallReadout, IdentifiersAreMasked) {
    CallReadout readout;
    EXPECT_TRUE(readout.SetNac(0x1293));
    EXPECT_EQ(readout.Nac(), "659");
    EXPECT_TRUE(readout.SetTgid(0x11234));
    EXPECT_EQ(readout.Tgid(), "4660");
    EXPECT_TRUE(readout.SetSid(0x1FFFFFF));
    EXPECT_EQ(readout.Sid(), "16777215");
}

TEST(CallReadout, IdentifiersThatDifferAboveTheMaskAreEqual) {
    CallReadout readout;
    readout.SetNac(0x293);
    readout.SetTgid(5);
    readout.SetSid(6);
    EXPECT_FALSE(readout.SetNac(0xF293));
    EXPECT_FALSE(readout.SetTgid(0x70005));
    EXPECT_FALSE(readout.SetSid(0x7000006));
    EXPECT_FALSE(readout.SetNac(0x293));
}

TEST(CallReadout, NoIdentifierIsDashes) {
    CallReadout readout;
    EXPECT_FALSE(readout.SetNac(-1)) << "it is what is shown at the start";
    readout.SetNac(1);
    EXPECT_TRUE(readout.SetNac(-1));
    EXPECT_EQ(readout.Nac(), "---");
    readout.SetTgid(1);
    EXPECT_TRUE(readout.SetTgid(-1));
    EXPECT_EQ(readout.Tgid(), "----");
    readout.SetSid(1);
    EXPECT_TRUE(readout.SetSid(-1));
    EXPECT_EQ(readout.Sid(), "--------") << "eight, where a reset shows six";
}

TEST(CallReadout, AllOnesWithinTheMaskIsANumber) {
    CallReadout readout;
    readout.SetNac(0xFFF);
    EXPECT_EQ(readout.Nac(), "4095");
    readout.SetTgid(0xFFFF);
    EXPECT_EQ(readout.Tgid(), "65535");
    readout.SetNac(-2);
    EXPECT_EQ(readout.Nac(), "4094") << "only -1 is not masked";
}

TEST(CallReadout, ZerosAreShownAtFirstOnlyForTheAccessCode) {
    CallReadout readout;
    EXPECT_TRUE(readout.SetNac(0));
    EXPECT_EQ(readout.Nac(), "0");
    EXPECT_FALSE(readout.SetTgid(0)) << "the others begin as 0 behind their dashes";
    EXPECT_FALSE(readout.SetSid(0));
    EXPECT_FALSE(readout.SetDid(0));
    EXPECT_EQ(readout.Tgid(), "----");
    // After a reset they do not.
    readout.SetSignal(kFm, kStart);
    EXPECT_TRUE(readout.SetTgid(0));
    EXPECT_EQ(readout.Tgid(), "0");
}

TEST(CallReadout, TheDestinationIsWrittenOverTheSource) {
    CallReadout readout;
    readout.SetSid(111);
    EXPECT_TRUE(readout.SetDid(222));
    EXPECT_EQ(readout.Sid(), "222");
    EXPECT_EQ(readout.Did(), "------");
    EXPECT_FALSE(readout.SetSid(111)) << "compared with the source shown last";
    EXPECT_EQ(readout.Sid(), "222");
    EXPECT_TRUE(readout.SetDid(-1));
    EXPECT_EQ(readout.Sid(), "--------");
}

// --- signal ------------------------------------------------------------------------------------------------

TEST(CallReadout, TheSignalChangesTwiceASecondAtMost) {
    CallReadout readout;
    EXPECT_TRUE(readout.SetSignal(kDigital, kStart));
    EXPECT_FALSE(readout.SetSignal(kFm, kStart + 499));
    EXPECT_EQ(readout.Signal(), kDigital);
    EXPECT_TRUE(readout.SetSignal(kFm, kStart + 500));
    EXPECT_EQ(readout.Signal(), kFm);
}

TEST(CallReadout, AnEqualSignalDoesNotDelayTheNext) {
    CallReadout readout;
    readout.SetSignal(kDigital, kStart);
    EXPECT_FALSE(readout.SetSignal(kDigital, kStart + 490));
    EXPECT_TRUE(readout.SetSignal(kFm, kStart + 500));
}

TEST(CallReadout, TheSignalBearsAClockThatWraps) {
    CallReadout readout;
    readout.SetSignal(kDigital, 0xFFFFFFFFU);
    EXPECT_FALSE(readout.SetSignal(kNone, 498));
    EXPECT_TRUE(readout.SetSignal(kNone, 499));
}

TEST_F(DigitalReadout, AnyOtherSignalResetsEverything) {
    for (const std::int32_t signal : {kNone, kFm}) {
        CallReadout other;
        other.SetSignal(kDigital, kStart);
        other.SetBer(5.0, kStart);
        other.SetNac(1);
        other.SetTgid(2);
        other.SetSid(3);
        other.SetDid(4);
        other.SetTransmission(CallReadout::kVoice);
        other.SetEncryption(0x84);
        ASSERT_EQ(other.EncryptionShown(), 0x84);
        other.SetSignal(signal, kStart + 500);
        ExpectDashes(other);
    }
}

TEST_F(DigitalReadout, DigitalResetsNothing) {
    CallReadout other;
    other.SetNac(1);
    other.SetSignal(kDigital, kStart);
    EXPECT_EQ(other.Nac(), "1");
}

TEST_F(DigitalReadout, AfterAResetAnEqualBerIsNotShownAgain) {
    readout.SetBer(5.0, kStart);
    readout.SetSignal(kNone, kStart + 500);
    EXPECT_FALSE(readout.SetBer(5.0, kStart + 1000)) << "the reset writes the label alone";
    EXPECT_EQ(readout.Ber(), "0.0 %");
}

// --- transmission ------------------------------------------------------------------------------------------

TEST(CallReadout, TransmissionAndEncryptionNeedADigitalSignal) {
    CallReadout readout;
    for (const std::int32_t signal : {kNone, kFm}) {
        readout.SetSignal(signal, kStart);
        EXPECT_FALSE(readout.SetTransmission(CallReadout::kVoice));
        EXPECT_FALSE(readout.SetEncryption(0x84));
        EXPECT_EQ(readout.TransmissionShown(), CallReadout::kNothing);
        EXPECT_EQ(readout.EncryptionShown(), 0);
    }
}

TEST_F(DigitalReadout, NothingAndUnknownAreLeftAtOnce) {
    EXPECT_TRUE(readout.SetTransmission(CallReadout::kUnknown));
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(readout.SetTransmission(CallReadout::kUnknown));
    }
    EXPECT_TRUE(readout.SetTransmission(CallReadout::kVoice));
    EXPECT_EQ(readout.TransmissionShown(), CallReadout::kVoice);
}

TEST_F(DigitalReadout, TrunkingDataAndVoiceAreLeftAfterTenBlocksOfAnother) {
    for (const std::uint32_t from : {CallReadout::kTrunking, CallReadout::kData, CallReadout::kVoice}) {
        CallReadout other;
        other.SetSignal(kDigital, kStart);
        other.SetTransmission(from);
        other.SetTransmission(from);
        for (int i = 0; i < 9; ++i) {
            EXPECT_FALSE(other.SetTransmission(CallReadout::kUnknown)) << i;
        }
        EXPECT_EQ(other.TransmissionShown(), from);
        EXPECT_TRUE(other.SetTransmission(CallReadout::kUnknown));
        EXPECT_EQ(other.TransmissionShown(), CallReadout::kUnknown);
    }
}

TEST_F(DigitalReadout, AFreshTransmissionHoldsForFiveBlocks) {
    readout.SetTransmission(CallReadout::kVoice);
    for (int i = 0; i < 4; ++i) {
        EXPECT_FALSE(readout.SetTransmission(CallReadout::kData));
    }
    EXPECT_TRUE(readout.SetTransmission(CallReadout::kData));
}

TEST_F(DigitalReadout, ARepetitionHoldsTheTransmissionAnew) {
    readout.SetTransmission(CallReadout::kVoice);
    readout.SetTransmission(CallReadout::kVoice);
    for (int i = 0; i < 9; ++i) {
        readout.SetTransmission(CallReadout::kData);
    }
    readout.SetTransmission(CallReadout::kVoice);
    for (int i = 0; i < 9; ++i) {
        EXPECT_FALSE(readout.SetTransmission(CallReadout::kData));
    }
    EXPECT_TRUE(readout.SetTransmission(CallReadout::kData));
}

TEST_F(DigitalReadout, DifferentOthersCountTogether) {
    readout.SetTransmission(CallReadout::kVoice);
    readout.SetTransmission(CallReadout::kVoice);
    for (int i = 0; i < 9; ++i) {
        readout.SetTransmission(i % 2 == 0 ? CallReadout::kData : CallReadout::kTrunking);
    }
    EXPECT_TRUE(readout.SetTransmission(CallReadout::kUnknown));
}

TEST_F(DigitalReadout, EncryptionIsEnabledWhileVoiceIsShown) {
    EXPECT_FALSE(readout.EncryptionEnabled());
    readout.SetTransmission(CallReadout::kVoice);
    EXPECT_TRUE(readout.EncryptionEnabled());
    for (int i = 0; i < 5; ++i) {
        readout.SetTransmission(5); // the end of voice, which has no lamp
    }
    EXPECT_EQ(readout.TransmissionShown(), 5U);
    EXPECT_FALSE(readout.EncryptionEnabled());
}

// --- encryption --------------------------------------------------------------------------------------------

TEST_F(DigitalReadout, ANewAlgorithmTakesThreeBlocks) {
    readout.SetTransmission(CallReadout::kVoice);
    EXPECT_TRUE(readout.SetEncryption(0x80)) << "nothing is held at first";
    readout.SetEncryption(0x80);
    EXPECT_FALSE(readout.SetEncryption(0x84));
    EXPECT_FALSE(readout.SetEncryption(0x84));
    EXPECT_EQ(readout.EncryptionShown(), 0x80);
    EXPECT_TRUE(readout.SetEncryption(0x84));
    EXPECT_EQ(readout.EncryptionShown(), 0x84);
}

TEST_F(DigitalReadout, ARepetitionHoldsTheAlgorithmAnew) {
    readout.SetTransmission(CallReadout::kVoice);
    readout.SetEncryption(0x80);
    readout.SetEncryption(0x80);
    readout.SetEncryption(0x81);
    readout.SetEncryption(0x81);
    readout.SetEncryption(0x80);
    EXPECT_FALSE(readout.SetEncryption(0x81));
    EXPECT_FALSE(readout.SetEncryption(0x81));
    EXPECT_TRUE(readout.SetEncryption(0x81));
}

TEST_F(DigitalReadout, WithoutVoiceNoAlgorithmIsTaken) {
    readout.SetTransmission(CallReadout::kData);
    for (int i = 0; i < 10; ++i) {
        EXPECT_FALSE(readout.SetEncryption(0x84));
    }
    EXPECT_EQ(readout.EncryptionShown(), 0);
    // The blocks were counted all the same.
    for (int i = 0; i < 5; ++i) {
        readout.SetTransmission(CallReadout::kVoice);
    }
    ASSERT_TRUE(readout.EncryptionEnabled());
    EXPECT_TRUE(readout.SetEncryption(0x84));
}

} // namespace orva::ui
