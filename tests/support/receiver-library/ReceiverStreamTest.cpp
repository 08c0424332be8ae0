#include "tests/support/receiver-library/ReceiverStream.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/WavFile.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

using Samples = std::vector<std::int16_t>;
using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

Samples Ramp(std::size_t count) {
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<std::int16_t>(i * 31 - 32768);
    }
    return samples;
}

class ReceiverStreamTest : public testing::Test {
protected:
    void Record(const Samples& samples, int rate = 64000) {
        settings.recording = folder.Write("call.if.wav", WavBytes(samples, rate));
    }

    /// A reader that takes all there is at each callback, in pieces of `piece` bytes.
    bool StartReading(ReceiverStream& stream, std::size_t piece = 4800) {
        return stream.Start([this, &stream, piece] {
            std::vector<std::uint8_t> bytes(piece);
            for (std::size_t count = piece; count == piece;) {
                count = stream.Read(bytes.data(), piece);
                const std::lock_guard guard(lock);
                heard.insert(heard.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
            }
        });
    }

    Samples Heard() {
        const std::lock_guard guard(lock);
        Samples samples(heard.size() / 2);
        std::copy_n(heard.begin(), samples.size() * 2, reinterpret_cast<std::uint8_t*>(samples.data()));
        return samples;
    }

    bool WaitFor(std::size_t samples, double seconds = 10) {
        const Clock::time_point start = Clock::now();
        while (Heard().size() < samples && SecondsSince(start) < seconds) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return Heard().size() >= samples;
    }

    TemporaryFolder folder;
    ReceiverSettings settings;
    std::mutex lock;
    std::vector<std::uint8_t> heard;
};

TEST_F(ReceiverStreamTest, GivesEverySampleInOrder) {
    const Samples sent = Ramp(20001);
    Record(sent);
    settings.speed = 20;
    for (const std::size_t piece : {4800U, 1280U, 1U, 333U}) {
        heard.clear();
        ReceiverStream stream(settings);
        ASSERT_TRUE(StartReading(stream, piece));
        ASSERT_TRUE(WaitFor(sent.size()));
        stream.Stop();
        EXPECT_EQ(Heard(), sent);
        EXPECT_EQ(stream.Delivered(), sent.size());
        EXPECT_EQ(stream.Lost(), 0U);
    }
}

TEST_F(ReceiverStreamTest, KeepsRealTime) {
    Record(Ramp(64000));
    ReceiverStream stream(settings);
    const Clock::time_point start = Clock::now();
    ASSERT_TRUE(StartReading(stream));
    ASSERT_TRUE(WaitFor(32000));
    EXPECT_GE(SecondsSince(start), 0.49) << "not before its time";
}

TEST_F(ReceiverStreamTest, WaitsForProcessingAtSpeedZero) {
    const Samples sent = Ramp(96000);
    Record(sent);
    settings.speed = 0;
    settings.patience = 60;
    ReceiverStream stream(settings);
    ASSERT_TRUE(StartReading(stream));
    // All is processed as it comes, as by a plug-in's window thread.
    std::size_t processed = 0;
    Samples block(2400);
    const Clock::time_point start = Clock::now();
    while (processed < sent.size() && SecondsSince(start) < 20) {
        const std::size_t ready = Heard().size();
        ASSERT_LE(ready, processed + 19200 + ReceiverStream::kChunk) << "further ahead than a pool is deep";
        if (ready >= processed + block.size()) {
            stream.InvertSpectrum(block.data(), block.size());
            processed += block.size();
        }
    }
    EXPECT_EQ(processed, sent.size());
    EXPECT_EQ(stream.Processed(), sent.size());
    EXPECT_EQ(Heard(), sent);
}

TEST_F(ReceiverStreamTest, GoesOnAtSpeedZeroWhenSamplesAreNeverProcessed) {
    Record(Ramp(64000));
    settings.speed = 0;
    ReceiverStream stream(settings);
    ASSERT_TRUE(StartReading(stream));
    EXPECT_TRUE(WaitFor(64000));
}

TEST_F(ReceiverStreamTest, StopsWithoutAnotherCallback) {
    Record(Ramp(64000));
    std::atomic<int> callbacks{0};
    ReceiverStream stream(settings);
    ASSERT_TRUE(stream.Start([&] { ++callbacks; }));
    while (callbacks == 0) {
        std::this_thread::yield();
    }
    stream.Stop();
    const int before = callbacks;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(callbacks, before);
    std::int16_t sample = 0;
    EXPECT_EQ(stream.Read(&sample, sizeof(sample)), 0U);
    ASSERT_TRUE(StartReading(stream)) << "and starts again from the beginning";
    ASSERT_TRUE(WaitFor(640));
    EXPECT_EQ(Heard().front(), -32768);
}

TEST_F(ReceiverStreamTest, LosesWhatNobodyReads) {
    Record(Ramp(192000));
    settings.speed = 50;
    ReceiverStream stream(settings);
    ASSERT_TRUE(stream.Start([] {}));
    const Clock::time_point start = Clock::now();
    while (stream.Lost() < 128000 && SecondsSince(start) < 10) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(stream.Lost(), 128000U) << "all but one second";
    EXPECT_EQ(stream.Delivered(), 0U);
}

TEST_F(ReceiverStreamTest, EndsAsTold) {
    const Samples sent = Ramp(1000);
    Record(sent);
    settings.speed = 10;

    settings.end = ReceiverEnd::Silence;
    ReceiverStream silent(settings);
    ASSERT_TRUE(StartReading(silent));
    ASSERT_TRUE(WaitFor(3000));
    silent.Stop();
    Samples expected = sent;
    expected.resize(Heard().size());
    EXPECT_EQ(Heard(), expected);

    heard.clear();
    settings.end = ReceiverEnd::Loop;
    ReceiverStream looping(settings);
    ASSERT_TRUE(StartReading(looping));
    ASSERT_TRUE(WaitFor(3000));
    looping.Stop();
    const Samples looped = Heard();
    for (std::size_t i = 0; i < looped.size(); ++i) {
        ASSERT_EQ(looped[i], sent[i % sent.size()]) << i;
    }
}

TEST_F(ReceiverStreamTest, MirrorsTheSpectrumAndBack) {
    Samples sent = Ramp(9600);
    std::ranges::replace(sent, -32768, -32767); // has no positive counterpart
    Record(sent);
    settings.speed = 20;
    settings.isInverted = true;
    ReceiverStream stream(settings);
    ASSERT_TRUE(StartReading(stream));
    ASSERT_TRUE(WaitFor(sent.size()));
    Samples mirrored = Heard();
    for (std::size_t i = 0; i < sent.size(); ++i) {
        ASSERT_EQ(mirrored[i], i % 2 == 0 ? sent[i] : -sent[i]) << i;
    }
    for (std::size_t start = 0; start < mirrored.size(); start += 2400) {
        stream.InvertSpectrum(mirrored.data() + start, 2400);
    }
    EXPECT_EQ(mirrored, sent);
}

TEST_F(ReceiverStreamTest, StartsOnlyWithAGoodRecordingAndOnce) {
    settings.recording = folder.Path("missing.wav");
    EXPECT_FALSE(ReceiverStream(settings).Start([] {}));
    Record(Ramp(100), 48000);
    EXPECT_FALSE(ReceiverStream(settings).Start([] {}));
    Record(Ramp(100));
    ReceiverStream stream(settings);
    EXPECT_TRUE(stream.Start([] {}));
    EXPECT_FALSE(stream.Start([] {}));
}

} // namespace

} // namespace orva::test
