// Demodulator and frame decoder on the off-air recording of a control channel.
#include "audio/WaveFileReader.h"
#include "p25/COrvaDemodulator.h"
#include "p25/TrunkingMessages.h"
#include "tests/p25/ControlChannelStream.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

constexpr double kSettled = 0.41; ///< frequency control has settled [s]

struct HeardControlChannel {
    ControlChannelStream stream;
    std::vector<double> times; ///< of each block, to the begin of the stretch of samples with its end [s]
};

void Listen(HeardControlChannel& heard) {
    constexpr std::size_t kBlockSamples = 2400;
    constexpr float kFullScale = 3.0517578125e-5F;
    audio::WaveFileReader reader;
    ASSERT_EQ(reader.Open(std::string(ORVA_RECORDINGS) + "/control.if.wav"), audio::WaveFault::None);
    p25::COrvaDemodulator demodulator;
    demodulator.SetSampleRate(reader.GetSampleRate());
    std::vector<std::int16_t> samples(kBlockSamples);
    std::vector<float> block(kBlockSamples);
    while (const std::size_t count = reader.Read(samples.data(), kBlockSamples)) {
        std::transform(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(count), block.begin(),
                       [](std::int16_t sample) { return static_cast<float>(sample) * kFullScale; });
        const std::int32_t dibits = demodulator.Process(block.data(), static_cast<std::int32_t>(count));
        if (dibits > 0) {
            heard.stream.Feed({demodulator.GetDibits(), static_cast<std::size_t>(dibits)});
        }
        heard.times.resize(heard.stream.blocks.size(),
                           static_cast<double>(reader.GetReadSamples() - count) / reader.GetSampleRate());
    }
}

TEST(ControlChannelRecording, EveryBlockHasAGoodCrcOnceTheFrequencyHasSettled) {
    HeardControlChannel heard;
    ASSERT_NO_FATAL_FAILURE(Listen(heard));
    int settled = 0;
    for (std::size_t i = 0; i < heard.times.size(); ++i) {
        if (heard.times[i] >= kSettled) {
            ++settled;
            EXPECT_TRUE(heard.stream.blocks[i].good)
                << "block " << i << " at " << heard.times[i]
                << " s: " << testing::PrintToString(heard.stream.blocks[i]);
        }
    }
    std::cout << "[ measured ] " << settled << " blocks from " << kSettled << " s on\n";
    EXPECT_GE(settled, 55) << "1.59 s of three blocks in 75 ms";
}

TEST(ControlChannelRecording, IdentifierUpdatesTeachTheBandPlansAndNothingElseMakesARecord) {
    HeardControlChannel heard;
    ASSERT_NO_FATAL_FAILURE(Listen(heard));
    for (const std::string& record : heard.stream.records) {
        if (record.starts_with("81")) {
            continue; // a terminator, in the noise before the frequency has settled
        }
        EXPECT_EQ(record.substr(0, 2), "80");
        EXPECT_EQ(record.substr(8, 8), "40010000") << "the network is 0x140";
    }
    const std::map<std::uint32_t, p25::ChannelIdentifier> expected = {
        {2, {380000000, 6250}},  {3, {406000000, 6250}},  {7, {380000000, 12500}},
        {8, {136000000, 12500}}, {9, {136000000, 12500}}, {10, {380000000, 12500}}};
    for (std::uint32_t identifier = 0; identifier < p25::ChannelTable::kIdentifiers; ++identifier) {
        const p25::ChannelIdentifier& plan = heard.stream.decoder.GetChannelTable().Get(identifier);
        const auto told = expected.find(identifier);
        const p25::ChannelIdentifier known = told == expected.end() ? p25::ChannelIdentifier{} : told->second;
        EXPECT_EQ(plan.channelSpacing, known.channelSpacing) << "identifier " << identifier;
        EXPECT_EQ(plan.baseFrequency, known.baseFrequency) << "identifier " << identifier;
    }
}

} // namespace
} // namespace orva::test
