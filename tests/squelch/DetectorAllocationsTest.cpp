#include "squelch/CtbDcsDetector.h"
#include "squelch/CtbToneDetector.h"
#include "squelch/CtbVoiceDetector.h"
#include "squelch/DcBlock.h"
#include "tests/support/AllocationProbe.h"

#include <vector>

#include <gtest/gtest.h>

namespace orva::squelch {

TEST(SquelchDetectors, WarmBlocksAllocateNothing) {
    CtbToneDetector tone;
    CtbDcsDetector dcs;
    CtbVoiceDetector voice;
    DcBlockState dcBlock;
    std::vector<std::int16_t> block(2400, 1000);
    const auto take = [&] {
        DcBlock(dcBlock, block.data(), 2400, 64000);
        tone.SetSampleRate(64000.0F);
        tone.Process(block.data(), 2400, 1);
        dcs.SetSampleRate(64000.0F);
        dcs.Process(block.data(), 2400, 1);
        voice.SetSampleRate(64000.0F);
        voice.SetBlockLength(32000);
        voice.Process(block.data(), 2400, 1);
    };
    take();
    const std::uint64_t before = test::CountAllocations();
    for (int i = 0; i < 30; ++i) {
        take();
    }
    EXPECT_EQ(test::CountAllocations(), before);
}

} // namespace orva::squelch
