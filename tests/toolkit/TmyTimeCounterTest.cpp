#include "toolkit/TmyTimeCounter.h"

#include "tests/toolkit/FakeDiagnostics.h"

#include <stdexcept>

#include <climits>
#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using test::FakeDiagnostics;

TEST(TmyTimeCounter, RemembersFrequencyAndStart) {
    FakeDiagnostics platform;
    platform.ticks = 5000;
    platform.ticksPerSecond = 10000000;
    const TmyTimeCounter counter;
    platform.ticks = 7000;
    EXPECT_EQ(counter.Frequency(), 10000000);
    EXPECT_EQ(counter.Start(), 5000);
    EXPECT_EQ(counter.Now(), 7000);
}

TEST(TmyTimeCounter, ThrowsOnAMachineWithoutOne) {
    for (const std::int64_t frequency : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{INT64_MIN}}) {
        FakeDiagnostics platform;
        platform.ticksPerSecond = frequency;
        try {
            const TmyTimeCounter counter;
            FAIL() << "frequency " << frequency;
        } catch (const std::runtime_error& failure) {
            EXPECT_STREQ(failure.what(), "TimeCounter constructor failed");
        }
    }
}

TEST(TmyTimeCounter, ConvertsTowardsZero) {
    const struct {
        std::int64_t frequency, ticks, microseconds, milliseconds;
    } rows[] = {
        {1000, 0, 0, 0},
        {1000, 1, 1000, 1},
        {1000, -1, -1000, -1},
        {3, 1, 333333, 333},
        {3, 2, 666666, 666},
        {3, -2, -666666, -666},
        {1, 5, 5000000, 5000},
        {10000000, 9999, 999, 0},
        {10000000, 10000, 1000, 1},
        {3579545, 3579545, 1000000, 1000},
        {3579545, 3579544, 999999, 999},
        {2400000000, 2400, 1, 0},
        {2400000000, 2399, 0, 0},
        // 30 days of a clock of 10 MHz: ticks times a million are more than 64 bits hold.
        {10000000, 25920000000000, 2592000000000, 2592000000},
        {10000000, 25920000000019, 2592000000001, 2592000000},
    };
    for (const auto& row : rows) {
        FakeDiagnostics platform;
        platform.ticksPerSecond = row.frequency;
        const TmyTimeCounter counter;
        EXPECT_EQ(counter.ToMicroseconds(row.ticks), row.microseconds)
            << row.ticks << " of " << row.frequency;
        EXPECT_EQ(counter.ToMilliseconds(row.ticks), row.milliseconds)
            << row.ticks << " of " << row.frequency;
    }
}

TEST(TmyTimeCounter, TakesTheHighestFrequencies) {
    FakeDiagnostics platform;
    platform.ticksPerSecond = INT64_MAX;
    const TmyTimeCounter counter;
    EXPECT_EQ(counter.ToMicroseconds(INT64_MAX), 1000000);
    EXPECT_NEAR(static_cast<double>(counter.ToMicroseconds(INT64_MAX / 2)), 500000.0, 1.0);
    EXPECT_NEAR(static_cast<double>(counter.ToMilliseconds(INT64_MAX / 4)), 250.0, 1.0);
    EXPECT_EQ(counter.ToMicroseconds(1000), 0);
    EXPECT_EQ(counter.ToMicroseconds(-INT64_MAX), -1000000);
}

TEST(TmyTimeCounter, ConvertsToSeconds) {
    FakeDiagnostics platform;
    platform.ticksPerSecond = 1000;
    EXPECT_DOUBLE_EQ(TmyTimeCounter().ToSeconds(1500), 1.5);
}

TEST(TmyTimeCounter, TheRealClockGoesForward) {
    const TmyTimeCounter counter;
    EXPECT_GT(counter.Frequency(), 0);
    std::int64_t now = counter.Now();
    EXPECT_GE(now, counter.Start());
    while (counter.ToMicroseconds(counter.Now() - counter.Start()) < 1000) {
        EXPECT_GE(counter.Now(), now);
        now = counter.Now();
    }
    EXPECT_GE(counter.ToMilliseconds(counter.Now() - counter.Start()), 1);
}

} // namespace
} // namespace orva::toolkit
