#include "toolkit/TmyProfiler.h"

#include "tests/toolkit/FakeDiagnostics.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Lines = std::vector<std::string>;

class TmyProfilerTest : public testing::Test {
protected:
    /// Spends so many ticks, of which 1000 are a second, at a place.
    void Spend(const char* source, const char* function, std::uint32_t line, std::int64_t ticks) {
        const ProfileScope scope(profiler.get(), source, function, line);
        platform.ticks += ticks;
    }

    Lines Report() {
        platform.lines.clear();
        profiler->Report();
        return platform.Texts();
    }

    test::FakeDiagnostics platform;
    test::TraceSwitch trace{1};
    std::unique_ptr<TmyProfiler> profiler = std::make_unique<TmyProfiler>();
};

TEST_F(TmyProfilerTest, ReportsNothingButTheFrameWithoutHits) {
    platform.ticks += 2500;
    EXPECT_EQ(Report(),
              (Lines{"Profiler report [running 2.500000secs]", "----------------", "----------------"}));
}

TEST_F(TmyProfilerTest, ReportsThePlacesTheMostCostlyFirst) {
    Spend("a.cpp", "Short", 10, 100);
    Spend("b.cpp", "Long", 20, 1500);
    Spend("a.cpp", "Middle", 30, 300);
    Spend("a.cpp", "Middle", 30, 100);
    EXPECT_EQ(Report(), (Lines{
                            "Profiler report [running 2.000000secs]",
                            "----------------",
                            "75.000% Long, b.cpp[20] 1 hits, [1.500000sec] <1500000.000",
                            "20.000% Middle, a.cpp[30] 2 hits, [0.400000sec] <200000.000",
                            "5.000% Short, a.cpp[10] 1 hits, [0.100000sec] <100000.000",
                            "----------------",
                        }));
}

TEST_F(TmyProfilerTest, PlacesInsideEachOtherBothCount) {
    {
        const ProfileScope outer(profiler.get(), "a.cpp", "Outer", 1);
        platform.ticks += 100;
        Spend("a.cpp", "Inner", 2, 300);
    }
    const Lines lines = Report();
    EXPECT_EQ(lines.at(2), "100.000% Outer, a.cpp[1] 1 hits, [0.400000sec] <400000.000");
    EXPECT_EQ(lines.at(3), "75.000% Inner, a.cpp[2] 1 hits, [0.300000sec] <300000.000");
}

TEST_F(TmyProfilerTest, TellsPlacesApartByLineFileAndName) {
    std::set<ProfileEntry*> entries;
    entries.insert(profiler->Find("a.cpp", "One", 7));
    entries.insert(profiler->Find("b.cpp", "One", 7));
    entries.insert(profiler->Find("a.cpp", "Two", 7));
    entries.insert(profiler->Find("a.cpp", "One", 7 + TmyProfiler::kEntries)); // the same slot
    entries.insert(profiler->Find("a.cpp", "One", 8));                         // a slot taken by one of these
    EXPECT_EQ(entries.size(), 5U);
    const std::string copyOfName("One");
    EXPECT_EQ(profiler->Find("a.cpp", copyOfName.c_str(), 7), profiler->Find("a.cpp", "One", 7));
    EXPECT_EQ(entries.count(profiler->Find("a.cpp", "One", 8)), 1U);
    EXPECT_EQ(entries.count(profiler->Find("a.cpp", "Two", 7)), 1U);
}

TEST_F(TmyProfilerTest, FindsEveryPlaceAgainInAFullTable) {
    // Lines that fall on few slots, so that nearly all entries are chained.
    std::vector<ProfileEntry*> entries;
    for (std::uint32_t i = 0; i < TmyProfiler::kEntries; ++i) {
        entries.push_back(profiler->Find("a.cpp", "Place", i % 3 + TmyProfiler::kEntries * (i / 3) + 4998));
        ASSERT_NE(entries.back(), nullptr) << i;
    }
    EXPECT_EQ(std::set<ProfileEntry*>(entries.begin(), entries.end()).size(), TmyProfiler::kEntries);
    for (std::uint32_t i = 0; i < TmyProfiler::kEntries; i += 97) {
        EXPECT_EQ(profiler->Find("a.cpp", "Place", i % 3 + TmyProfiler::kEntries * (i / 3) + 4998),
                  entries[i]);
    }
    EXPECT_EQ(profiler->Find("a.cpp", "One too many", 1), nullptr);
    Spend("a.cpp", "One too many", 1, 10);
    EXPECT_EQ(Report().size(), 3U);
}

TEST_F(TmyProfilerTest, AReportStopsIt) {
    Spend("a.cpp", "Place", 1, 100);
    const Lines first = Report();
    Spend("a.cpp", "Place", 1, 100);
    Spend("a.cpp", "Other", 2, 100);
    EXPECT_EQ(Report(), first);
    EXPECT_FALSE(profiler->IsRunning());
}

TEST_F(TmyProfilerTest, AScopeThatOutlivesTheStopAddsNothing) {
    Lines lines;
    {
        const ProfileScope scope(profiler.get(), "a.cpp", "Place", 1);
        platform.ticks += 100;
        lines = Report();
    }
    EXPECT_EQ(lines.at(2), "0.000% Place, a.cpp[1] 1 hits, [0.000000sec] <0.000");
    EXPECT_EQ(Report(), lines);
}

TEST_F(TmyProfilerTest, NoTimeAtAllIsNoPercentage) {
    Spend("a.cpp", "Place", 1, 0);
    EXPECT_EQ(Report().at(2), "0.000% Place, a.cpp[1] 1 hits, [0.000000sec] <0.000");
}

TEST_F(TmyProfilerTest, WithoutAProfilerAScopeDoesNothing) {
    const std::int64_t before = platform.ticks;
    const ProfileScope scope(nullptr, "a.cpp", "Place", 1);
    EXPECT_EQ(platform.ticks, before);
    EXPECT_TRUE(platform.lines.empty());
}

TEST_F(TmyProfilerTest, WithoutAClockItDoesNotRun) {
    platform.ticksPerSecond = 0;
    profiler = std::make_unique<TmyProfiler>();
    EXPECT_EQ(platform.Texts(), Lines{"TimeCounter constructor failed"});
    Spend("a.cpp", "Place", 1, 100);
    EXPECT_EQ(Report(),
              (Lines{"Profiler report [running 0.000000secs]", "----------------", "----------------"}));
}

} // namespace
} // namespace orva::toolkit
