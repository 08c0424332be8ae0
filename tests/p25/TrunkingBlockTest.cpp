#include "p25/TrunkingBlock.h"

#include "p25/COrvaFrameDecoder.h"
#include "tests/support/RandomSource.h"
#include "tests/support/TrunkingPacket.h"

#include <algorithm>
#include <map>
#include <string>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

TrunkingBlock BlockOf(const test::TrunkingData& data) {
    const test::TrunkingBytes bytes = test::WithTrunkingCrc(data);
    TrunkingBlock block;
    std::copy(bytes.begin(), bytes.end(), block.bytes);
    return block;
}

TEST(TrunkingBlock, SplitsItsFirstByte) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        TrunkingBlock block;
        block.bytes[0] = static_cast<std::uint8_t>(byte);
        EXPECT_EQ(block.IsLast(), byte >= 128);
        EXPECT_EQ(block.IsProtected(), byte / 64 % 2 == 1);
        EXPECT_EQ(block.Opcode(), byte % 64);
    }
}

TEST(TrunkingBlock, ReadsNumbersHighByteFirst) {
    TrunkingBlock block;
    for (std::uint8_t i = 0; i < kTrunkingBlockBytes; ++i) {
        block.bytes[i] = static_cast<std::uint8_t>(0x10 + i);
    }
    EXPECT_EQ(block.Manufacturer(), 0x11);
    EXPECT_EQ(block.Pair(3), 0x1314U);
    EXPECT_EQ(block.Triple(7), 0x171819U);
}

TEST(TrunkingBlock, CheckValueOfTheCrc) {
    // CRC-16/XMODEM of "123456789" is 0x31C3; here a zero byte stands in front and the result is inverted.
    TrunkingBlock block{{0, '1', '2', '3', '4', '5', '6', '7', '8', '9', 0xCE, 0x3C}};
    EXPECT_TRUE(block.HasGoodCrc());
    EXPECT_TRUE((TrunkingBlock{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF}}.HasGoodCrc()));
    EXPECT_FALSE((TrunkingBlock{}.HasGoodCrc()));
}

TEST(TrunkingBlock, CrcAgreesWithTheTransmitters) {
    test::RandomSource random(1);
    for (int trial = 0; trial < 2000; ++trial) {
        test::TrunkingData data;
        std::generate(data.begin(), data.end(), [&] { return static_cast<std::uint8_t>(random.Next()); });
        ASSERT_TRUE(BlockOf(data).HasGoodCrc()) << "trial " << trial;
    }
}

TEST(TrunkingBlock, CrcNoticesEveryOneAndTwoWrongBits) {
    constexpr std::size_t kBits = std::size_t{8} * kTrunkingBlockBytes;
    const TrunkingBlock good = BlockOf({0x3A, 0, 1, 2, 3, 4, 5, 6, 7, 8});
    for (std::size_t a = 0; a < kBits; ++a) {
        TrunkingBlock one = good;
        one.bytes[a / 8] ^= static_cast<std::uint8_t>(0x80 >> a % 8);
        ASSERT_FALSE(one.HasGoodCrc()) << "bit " << a;
        for (std::size_t b = a + 1; b < kBits; ++b) {
            TrunkingBlock two = one;
            two.bytes[b / 8] ^= static_cast<std::uint8_t>(0x80 >> b % 8);
            ASSERT_FALSE(two.HasGoodCrc()) << "bits " << a << " and " << b;
        }
    }
}

const std::map<unsigned, std::string> kNames = {
    {0, "Group Voice Channel Grant [GRP_V_CH_GRANT]"},
    {2, "Group Voice Channel Grant Update [GRP_V_CH_GRANT_UPDT]"},
    {3, "Group Voice Channel Grant Update - Explicit [GRP_V_CH_GRANT_UPDT_EXP]"},
    {4, "Unit to Unit Voice Channel Grant [UU_V_CH_GRANT]"},
    {5, "Unit to Unit Answer Request [UU_ANS_REQ]"},
    {6, "Unit to Unit Voice Channel Grant Update [UU_V_CH_GRANT_UPDT]"},
    {8, "Telephone Interconnect Voice Channel Grant [TELE_INT_CH_GRANT]"},
    {9, "Telephone Interconnect Voice Channel Grant Update [TELE_INT_CH_GRANT_UPDT]"},
    {10, "Telephone Interconnect Answer Request [TELE_INT_ANS_REQ]"},
    {16, "Individual Data Channel Grant [IND_DATA_CH_GRANT] (OBSOLETE)"},
    {17, "Group Data Channel Grant [GRP_DATA_CH_GRANT] (OBSOLETE)"},
    {18, "Group Data Channel announcement [GRP_DATA_CH_ANN] (OBSOLETE)"},
    {19, "Group Data Channel Announcement Explicit [GRP_DATA_CH_ANN_EXP] (OBSOLETE)"},
    {20, "SNDCP Data Channel Grant [SNDATA_CHN_GNT]"},
    {21, "SNDCP Data Page Request [SNDATA_PAGE_REQ]"},
    {22, "SNDCP Data Channel Announcement - Explicit [SNDATA_CHN_ANN_EXP]"},
    {24, "Status Update [STS_UPDT]"},
    {26, "Status Query [STS_Q]"},
    {28, "Message Update [MSG_UPDT]"},
    {29, "Radio Unit Monitor Command [RAD_MON_CMD]"},
    {31, "Call Alert [CALL_ALRT]"},
    {32, "Acknowledge Response - FNE [ACK_RSP_FNE]"},
    {33, "Queued Response [QUE_RSP]"},
    {36, "Extended Function Command [EXT_FNCT_CMD]"},
    {39, "Deny Response [DENY_RSP]"},
    {40, "Group Affiliation Response [GRP_AFF_RSP]"},
    {41, "Secondary Control Channel Broadcast - Explicit [SCCB_EXP]"},
    {42, "Group Affiliation Query [GRP_AFF_Q]"},
    {43, "Location Registration Response [LOC_REG_RSP]"},
    {44, "Unit Registration Response [U_REG_RSP]"},
    {45, "Unit Registration Command [U_REG_CMD]"},
    {46, "Authentication Command [AUTH_CMD]"},
    {47, "De-Registration Acknowledge [U_DE_REG_ACK]"},
    {52, "Identifier Update for VHF/UHF Bands [IDEN_UP_VU]"},
    {53, "Time and Date Announcement [TIME_DATE_ANN]"},
    {54, "Roaming Address Command [ROAM_ADDR_CMD]"},
    {55, "Roaming Address Update [ROAM_ADDR_UPDT]"},
    {56, "System Service Broadcast [SYS_SRV_BCST]"},
    {57, "Secondary Control Channel Broadcast [SCCB]"},
    {58, "RFFS Status Broadcast [RFSS_STS_BCST]"},
    {59, "Network Status Broadcast [NET_STS_BCST]"},
    {60, "Adjacent Status Broadcast [ADJ_STS_BCST]"},
    {61, "Identifier Update [IDEN_UP]"},
    {62, "Protection Parameter Broadcast [P_PARM_BCST]"},
    {63, "Protection Parameter Update [P_PARM_UPDT]"},
};

TEST(TrunkingMessageNames, EveryOpcodeHasItsNameOrNone) {
    ASSERT_EQ(kNames.size(), 45U);
    for (unsigned opcode = 0; opcode < 64; ++opcode) {
        const auto named = kNames.find(opcode);
        EXPECT_EQ(COrvaFrameDecoder::GetMessageName(static_cast<std::uint8_t>(opcode)),
                  named == kNames.end() ? std::string("Unknown") : named->second)
            << "opcode " << opcode;
    }
}

TEST(TrunkingMessageNames, FlagsBesideTheOpcodeDoNotCount) {
    for (unsigned byte = 64; byte < 256; ++byte) {
        EXPECT_STREQ(COrvaFrameDecoder::GetMessageName(static_cast<std::uint8_t>(byte)),
                     COrvaFrameDecoder::GetMessageName(static_cast<std::uint8_t>(byte % 64)))
            << "byte " << byte;
    }
}

} // namespace
} // namespace orva::p25
