#include "p25/TrunkingBlock.h"

#include <algorithm>
#include <iterator>

namespace orva::p25 {

namespace {

constexpr std::uint32_t kDataBytes = 10;
constexpr std::uint8_t kOpcodeMask = 63;

struct MessageName {
    std::uint8_t opcode;
    const char* name;
};

/// In order of the opcodes.
constexpr MessageName kMessageNames[] = {
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

} // namespace

bool TrunkingBlock::HasGoodCrc() const {
    constexpr std::uint32_t kPolynomial = 0x11021;
    constexpr std::uint32_t kCarry = 0x10000;
    constexpr std::uint32_t kMask = 0xFFFF;
    // The register starts with the first two bytes; 16 zero bits follow the data.
    std::uint32_t remainder = Pair(0);
    for (std::uint32_t i = 2; i < kDataBytes + 2; ++i) {
        const std::uint32_t byte = i < kDataBytes ? bytes[i] : 0;
        for (int bit = 7; bit >= 0; --bit) {
            remainder = remainder << 1 | (byte >> bit & 1U);
            if ((remainder & kCarry) != 0) {
                remainder ^= kPolynomial;
            }
        }
    }
    return ((remainder ^ kMask) & kMask) == Pair(kDataBytes);
}

const char* GetTrunkingMessageName(std::uint8_t opcode) {
    opcode &= kOpcodeMask;
    const auto* found =
        std::lower_bound(std::begin(kMessageNames), std::end(kMessageNames), opcode,
                         [](const MessageName& entry, std::uint8_t key) { return entry.opcode < key; });
    return found != std::end(kMessageNames) && found->opcode == opcode ? found->name : "Unknown";
}

} // namespace orva::p25
