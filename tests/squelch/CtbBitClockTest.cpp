#include "squelch/CtbBitClock.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::squelch {

struct CtbBitClockInspector {
    static double SinceTick(const CtbBitClock& c) { return c.sinceTick; }
    static double ToTick(const CtbBitClock& c) { return c.toTick; }
    static double BitRate(const CtbBitClock& c) { return c.bitRate; }
    static double Gain(const CtbBitClock& c) { return c.gain; }
    static double RateGain(const CtbBitClock& c) { return c.rateGain; }
    static double SampleRate(const CtbBitClock& c) { return c.clockSampleRate; }
};

namespace {

using Inspector = CtbBitClockInspector;
using Samples = std::vector<std::int32_t>;

void Append(void* text, std::uint32_t bit) {
    static_cast<std::string*>(text)->push_back(bit == 1 ? '1' : '0');
}

/// A clock of 20 samples a bit that writes its bits down.
struct RecordingClock {
    RecordingClock() {
        clock.SetCallback(Append, &bits);
        clock.SetBitRate(100.0);
        clock.SetSampleRate(2000.0);
        clock.SetGain(0.1);
    }
    RecordingClock(const RecordingClock&) = delete;
    RecordingClock& operator=(const RecordingClock&) = delete;

    void Take(const Samples& samples) {
        clock.Process(samples.data(), static_cast<std::uint32_t>(samples.size()));
    }

    std::string bits;
    CtbBitClock clock;
};

} // namespace

TEST(CtbBitClock, Defaults) {
    const CtbBitClock clock;
    EXPECT_EQ(Inspector::BitRate(clock), 1000.0);
    EXPECT_EQ(Inspector::Gain(clock), 0.01);
    EXPECT_EQ(Inspector::RateGain(clock), 0.0008);
    EXPECT_EQ(Inspector::SampleRate(clock), 44100.0);
}

TEST(CtbBitClock, WithoutCrossingsBitsComeAtTheNominalRate) {
    RecordingClock positive;
    positive.Take(Samples(200, 5));
    EXPECT_EQ(positive.bits, "1111111111");
    RecordingClock negative;
    negative.Take(Samples(1, -5));
    // The first sample crosses down from 0 and moves the first bit to half a bit later.
    negative.bits.clear();
    negative.Take(Samples(200, -5));
    EXPECT_EQ(negative.bits, "0000000000");
}

TEST(CtbBitClock, ZeroIsAOne) {
    RecordingClock clock;
    clock.Take(Samples(20, 0));
    EXPECT_EQ(clock.bits, "1");
}

TEST(CtbBitClock, FractionalBitsKeepTheirRate) {
    RecordingClock clock;
    clock.clock.SetBitRate(134.4);
    clock.clock.SetSampleRate(2704.2253);
    clock.Take(Samples(27042, 1));
    EXPECT_EQ(clock.bits.size(), 1344U); // 10 s of 134.4 bits
}

TEST(CtbBitClock, CrossingHalfABitAfterTheTickChangesNothing) {
    RecordingClock clock;
    clock.Take(Samples(1, 5)); // a bit at once
    clock.Take(Samples(9, 5));
    const double before = Inspector::ToTick(clock.clock);
    clock.Take(Samples(1, -5)); // ten samples after the bit
    EXPECT_NEAR(Inspector::ToTick(clock.clock), before - 1.0, 1e-6);
}

TEST(CtbBitClock, EarlyCrossingPullsTheNextBitByTheGain) {
    RecordingClock clock;
    clock.Take(Samples(1, 5));
    clock.Take(Samples(4, 5));
    clock.Take(Samples(1, -5)); // 5 samples after the bit: 5 too early
    // (1 - 0.1) x -5 + (1 - 0.05) x 20, less the sample taken
    EXPECT_NEAR(Inspector::ToTick(clock.clock), 13.5, 1e-6);
    EXPECT_EQ(Inspector::SinceTick(clock.clock), -6.0);
}

TEST(CtbBitClock, LateCrossingPushesTheNextBitByTheGain) {
    RecordingClock clock;
    clock.Take(Samples(1, 5));
    clock.Take(Samples(14, 5));
    clock.Take(Samples(1, -5));
    EXPECT_NEAR(Inspector::ToTick(clock.clock), 4.5, 1e-6);
}

TEST(CtbBitClock, FactorsAreRoundedToSinglePrecision) {
    RecordingClock clock;
    clock.clock.SetBitRate(134.4);
    clock.clock.SetSampleRate(2704.2253);
    clock.Take(Samples(1, 5));
    clock.Take(Samples(4, 5));
    clock.Take(Samples(1, -5));
    const auto keep = static_cast<float>(0.9);
    const auto half = static_cast<float>(0.95 * (2704.2253 / 134.4));
    EXPECT_EQ(Inspector::ToTick(clock.clock), static_cast<double>(keep) * -5.0 + half - 1.0);
}

TEST(CtbBitClock, WhatCountsAsACrossing) {
    struct Row {
        std::int32_t before;
        std::int32_t now;
        bool crosses;
    };
    for (const Row& row : {Row{5, 6, false}, Row{5, -1, true}, Row{-5, 1, true}, Row{-5, -1, false},
                           Row{5, 0, true}, Row{-5, 0, true}, Row{0, 5, false}, Row{0, -5, true},
                           Row{0, 0, false}, Row{INT32_MAX, INT32_MIN, true}}) {
        RecordingClock clock;
        clock.Take(Samples(25, row.before));
        const double expected = Inspector::ToTick(clock.clock) - 1.0;
        clock.Take({row.now});
        EXPECT_EQ(Inspector::ToTick(clock.clock) != expected, row.crosses) << row.before << " " << row.now;
    }
}

TEST(CtbBitClock, LocksToAStreamOfAnyPhase) {
    const std::string sent = "0110100110010110100101100110100110010110";
    for (std::size_t shift = 0; shift < 20; ++shift) {
        Samples samples(shift, sent[0] == '1' ? 1 : -1);
        for (int round = 0; round < 3; ++round) {
            for (const char bit : sent) {
                samples.insert(samples.end(), 20, bit == '1' ? 1000 : -1000);
            }
        }
        RecordingClock clock;
        clock.Take(samples);
        EXPECT_NE(clock.bits.find(sent, sent.size() - 1), std::string::npos) << "shift " << shift;
    }
}

TEST(CtbBitClock, FollowsARateErrorOfOnePercent) {
    for (const double samplesPerBit : {19.8, 20.2}) {
        std::string sent;
        Samples samples;
        for (int bit = 0; bit < 400; ++bit) {
            sent.push_back((bit * bit / 3) % 2 == 0 ? '1' : '0');
            while (static_cast<double>(samples.size()) < (bit + 1) * samplesPerBit) {
                samples.push_back(sent.back() == '1' ? 1000 : -1000);
            }
        }
        RecordingClock clock;
        clock.Take(samples);
        EXPECT_NE(clock.bits.find(sent.substr(40, 350)), std::string::npos) << samplesPerBit;
    }
}

TEST(CtbBitClock, SplitsAnywhere) {
    Samples samples;
    for (int i = 0; i < 1000; ++i) {
        samples.push_back((i * 7919 % 61) - 30);
    }
    RecordingClock whole;
    whole.Take(samples);
    RecordingClock single;
    for (const std::int32_t sample : samples) {
        single.Take({sample});
    }
    EXPECT_EQ(single.bits, whole.bits);
}

TEST(CtbBitClock, ResetForgetsThePhaseAndKeepsTheSettings) {
    RecordingClock clock;
    clock.Take(Samples(7, 5));
    clock.clock.Reset();
    EXPECT_EQ(Inspector::ToTick(clock.clock), 0.0);
    EXPECT_EQ(Inspector::SinceTick(clock.clock), 0.0);
    EXPECT_EQ(Inspector::BitRate(clock.clock), 100.0);
}

TEST(CtbBitClock, IgnoresRatesThatAreNotAboveZero) {
    CtbBitClock clock;
    clock.SetBitRate(0.0);
    clock.SetBitRate(-1.0);
    clock.SetSampleRate(0.0);
    clock.SetSampleRate(-1.0);
    EXPECT_EQ(Inspector::BitRate(clock), 1000.0);
    EXPECT_EQ(Inspector::SampleRate(clock), 44100.0);
}

TEST(CtbBitClock, NeedsNoReceiver) {
    CtbBitClock clock;
    const Samples samples(1000, 1);
    clock.Process(samples.data(), 1000);
    EXPECT_LT(Inspector::SinceTick(clock), 0.0);
}

} // namespace orva::squelch
