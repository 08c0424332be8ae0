// Demodulator and frame decoder on off-air recordings.
#include "audio/WaveFileReader.h"
#include "p25/COrvaDemodulator.h"
#include "tests/p25/DecodedStream.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

constexpr std::size_t kBlockSamples = 2400;
constexpr float kFullScale = 3.0517578125e-5F;

/// What a receiver hears of a recording, and when.
struct HeardRecording {
    DecodedStream stream;
    std::vector<double> times; ///< of each event, to the end of its block [s]
    bool opened = false;
};

void Listen(const std::string& file, HeardRecording& heard) {
    audio::WaveFileReader reader;
    heard.opened = reader.Open(std::string(ORVA_RECORDINGS) + "/" + file) == audio::WaveFault::None;
    if (!heard.opened) {
        return;
    }
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
        heard.times.resize(heard.stream.events.size(),
                           static_cast<double>(reader.GetReadSamples()) / reader.GetSampleRate());
    }
}

std::size_t CountEvents(const DecodedStream& stream, const std::string& beginning) {
    return static_cast<std::size_t>(
        std::count_if(stream.events.begin(), stream.events.end(),
                      [&](const std::string& event) { return event.starts_with(beginning); }));
}

TEST(Recordings, VoiceCallIsHeard) {
    HeardRecording heard;
    Listen("voice.if.wav", heard);
    ASSERT_TRUE(heard.opened);
    const DecodedStream& stream = heard.stream;
    EXPECT_EQ(CountEvents(stream, "nid "), CountEvents(stream, "nid 659 "));
    EXPECT_EQ(CountEvents(stream, HeaderEvent(0x80, 1)), 1U);
    EXPECT_EQ(CountEvents(stream, "nid 659 duid 5 ") + CountEvents(stream, "nid 659 duid 10 "), 10U);
    EXPECT_GE(CountEvents(stream, LinkControlEvent(0, 1, 1, -1)), 4U);
    EXPECT_EQ(CountEvents(stream, LinkControlEvent(0, 1, 1, -1)), CountEvents(stream, "link "));
    EXPECT_GE(CountEvents(stream, EncryptionSyncEvent(0x80)), 4U);
    EXPECT_EQ(CountEvents(stream, EncryptionSyncEvent(0x80)), CountEvents(stream, "encryption "));
    EXPECT_EQ(CountEvents(stream, "record 05"), 1U);

    EXPECT_GE(stream.voice.size(), 88U);
    const auto clean = std::count_if(stream.errorTotals.begin(), stream.errorTotals.end(),
                                     [](std::int16_t errors) { return errors <= 3; });
    EXPECT_GE(static_cast<double>(clean), 0.9 * static_cast<double>(stream.voice.size()));
}

TEST(Recordings, ControlChannelIsHeardOnceTheFrequencyHasSettled) {
    HeardRecording heard;
    Listen("control.if.wav", heard);
    ASSERT_TRUE(heard.opened);
    constexpr double kSettled = 0.41;
    constexpr double kBlockSeconds = 0.05;
    int packets = 0;
    for (std::size_t i = 0; i < heard.times.size(); ++i) {
        const std::string& event = heard.stream.events[i];
        if (event.starts_with("nid ") && heard.times[i] - kBlockSeconds >= kSettled) {
            EXPECT_TRUE(event.starts_with("nid 320 duid 7 ")) << event << " at " << heard.times[i] << " s";
            ++packets;
        }
    }
    EXPECT_GE(packets, 15);
}

} // namespace
} // namespace orva::test
