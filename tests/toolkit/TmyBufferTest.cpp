#include "toolkit/TmyBuffer.h"

#include "tests/support/AllocationProbe.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

void Fill(TmyBuffer& buffer, const std::string& text) {
    ASSERT_EQ(buffer.SetSize(static_cast<std::uint32_t>(text.size())), text.size());
    std::memcpy(buffer.Data(), text.data(), text.size());
}

std::string TextOf(const TmyBuffer& buffer) {
    return {reinterpret_cast<const char*>(buffer.Data()), buffer.GetSize()};
}

TEST(TmyBuffer, StartsWithNothing) {
    const TmyBuffer buffer;
    EXPECT_EQ(buffer.GetSize(), 0U);
    EXPECT_EQ(buffer.GetCapacity(), 0U);
    EXPECT_EQ(buffer.Data(), nullptr);
    EXPECT_EQ(buffer.maximum, 0U);
    EXPECT_EQ(buffer.minimum, 0U);
}

TEST(TmyBuffer, CapacityIsWhatIsAskedFor) {
    TmyBuffer buffer;
    for (const std::uint32_t bytes : {100U, 5U, 1000U, 4U}) {
        EXPECT_TRUE(buffer.Reallocate(bytes));
        EXPECT_EQ(buffer.GetCapacity(), bytes);
        EXPECT_EQ(buffer.GetSize(), 0U);
    }
}

TEST(TmyBuffer, CapacityHasItsBounds) {
    const struct {
        const char* what;
        std::uint32_t size, maximum, minimum, asked, capacity;
    } rows[] = {
        {"at least 4", 0, 0, 0, 0, 4},
        {"at least 4, whatever the maximum", 0, 2, 0, 100, 4},
        {"at most the maximum", 0, 50, 0, 100, 50},
        {"at least the minimum", 0, 0, 60, 10, 60},
        {"the minimum before the maximum", 0, 50, 60, 10, 60},
        {"above the minimum", 0, 0, 60, 70, 70},
        {"at least the size", 30, 0, 0, 10, 30},
        {"the size before the maximum", 30, 20, 0, 100, 30},
    };
    for (const auto& row : rows) {
        TmyBuffer buffer;
        buffer.SetSize(row.size);
        buffer.maximum = row.maximum;
        buffer.minimum = row.minimum;
        EXPECT_TRUE(buffer.Reallocate(row.asked));
        EXPECT_EQ(buffer.GetCapacity(), row.capacity) << row.what;
        EXPECT_EQ(buffer.GetSize(), row.size) << row.what;
    }
}

TEST(TmyBuffer, ReallocatingKeepsTheBytes) {
    TmyBuffer buffer;
    Fill(buffer, "some text");
    EXPECT_TRUE(buffer.Reallocate(1000));
    EXPECT_EQ(TextOf(buffer), "some text");
    EXPECT_TRUE(buffer.Reallocate(0));
    EXPECT_EQ(buffer.GetCapacity(), 9U);
    EXPECT_EQ(TextOf(buffer), "some text");
}

TEST(TmyBuffer, CapacityDoublesAsTheSizeGrows) {
    TmyBuffer buffer;
    const struct {
        std::uint32_t size, capacity;
    } rows[] = {{1, 4}, {4, 4}, {5, 8}, {8, 8}, {9, 16}, {100, 128}, {129, 256}};
    for (const auto& row : rows) {
        EXPECT_EQ(buffer.SetSize(row.size), row.size);
        EXPECT_EQ(buffer.GetSize(), row.size);
        EXPECT_EQ(buffer.GetCapacity(), row.capacity) << row.size;
    }
    TmyBuffer odd;
    odd.Reallocate(5);
    odd.SetSize(11);
    EXPECT_EQ(odd.GetCapacity(), 20U);
}

TEST(TmyBuffer, CapacityIsHalvedOnceBelowAnEighth) {
    TmyBuffer buffer;
    buffer.SetSize(1024);
    EXPECT_EQ(buffer.SetSize(128), 128U); // an eighth is not below it
    EXPECT_EQ(buffer.GetCapacity(), 1024U);
    EXPECT_EQ(buffer.SetSize(127), 127U);
    EXPECT_EQ(buffer.GetCapacity(), 512U);
    EXPECT_EQ(buffer.SetSize(0), 0U);
    EXPECT_EQ(buffer.GetCapacity(), 256U);
    for (int i = 0; i < 10; ++i) {
        buffer.SetSize(0);
    }
    EXPECT_EQ(buffer.GetCapacity(), 4U);
}

TEST(TmyBuffer, TheMinimumHoldsTheCapacityWhenShrinking) {
    TmyBuffer buffer;
    buffer.minimum = 300;
    buffer.SetSize(1);
    EXPECT_EQ(buffer.GetCapacity(), 300U);
    buffer.SetSize(0);
    EXPECT_EQ(buffer.GetCapacity(), 300U);
}

TEST(TmyBuffer, SizeStopsAtTheMaximum) {
    TmyBuffer buffer;
    buffer.maximum = 100;
    EXPECT_EQ(buffer.SetSize(200), 100U);
    EXPECT_EQ(buffer.GetSize(), 100U);
    EXPECT_EQ(buffer.GetCapacity(), 100U);
    EXPECT_EQ(buffer.SetSize(100), 100U);
    EXPECT_EQ(buffer.SetSize(99), 99U);
    buffer.maximum = 50;
    EXPECT_EQ(buffer.SetSize(99), 50U);
}

TEST(TmyBuffer, DeleteMovesTheTailDown) {
    TmyBuffer buffer;
    Fill(buffer, "0123456789");
    buffer.Delete(2, 3);
    EXPECT_EQ(TextOf(buffer), "0156789");
    buffer.Delete(0, 1);
    EXPECT_EQ(TextOf(buffer), "156789");
    buffer.Delete(3, 0);
    EXPECT_EQ(TextOf(buffer), "156789");
}

TEST(TmyBuffer, DeleteCutsItsCountAtTheEnd) {
    TmyBuffer buffer;
    Fill(buffer, "0123456789");
    buffer.Delete(8, 2);
    EXPECT_EQ(TextOf(buffer), "01234567");
    buffer.Delete(6, 100);
    EXPECT_EQ(TextOf(buffer), "012345");
    buffer.Delete(5, UINT32_MAX);
    EXPECT_EQ(TextOf(buffer), "01234");
    buffer.Delete(5, 1);
    buffer.Delete(UINT32_MAX, UINT32_MAX);
    EXPECT_EQ(TextOf(buffer), "01234");
    buffer.Delete(0, 5);
    EXPECT_EQ(buffer.GetSize(), 0U);
    buffer.Delete(0, 1);
    EXPECT_EQ(buffer.GetSize(), 0U);
}

TEST(TmyBuffer, DeletingShrinksTheCapacity) {
    TmyBuffer buffer;
    Fill(buffer, std::string(64, 'a') + "tail");
    EXPECT_EQ(buffer.GetCapacity(), 128U);
    buffer.Delete(0, 64);
    EXPECT_EQ(buffer.GetCapacity(), 64U);
    EXPECT_EQ(TextOf(buffer), "tail");
}

TEST(TmyBuffer, TheOpenOperationsDoNothing) {
    TmyBuffer buffer;
    Fill(buffer, "text");
    buffer.Lock();
    buffer.Flush();
    buffer.Unlock();
    EXPECT_EQ(TextOf(buffer), "text");
    EXPECT_EQ(buffer.GetCapacity(), 4U);
}

TEST(TmyBuffer, WithoutMemoryNothingChanges) {
    TmyBuffer buffer;
    Fill(buffer, "text");
    const test::AllocationFailure failure(0, test::AllocationFailure::Reach::FromThenOn);
    EXPECT_FALSE(buffer.Reallocate(100));
    EXPECT_EQ(buffer.SetSize(5), 4U);
    EXPECT_EQ(buffer.GetCapacity(), 4U);
    EXPECT_EQ(TextOf(buffer), "text");
    EXPECT_TRUE(buffer.Reallocate(4)) << "nothing to do";
}

TEST(TmyBuffer, ShrinksItsSizeEvenWithoutMemory) {
    TmyBuffer buffer;
    Fill(buffer, std::string(64, 'a'));
    const test::AllocationFailure failure(0, test::AllocationFailure::Reach::FromThenOn);
    EXPECT_EQ(buffer.SetSize(1), 1U);
    EXPECT_TRUE(failure.HasStruck());
    EXPECT_EQ(buffer.GetCapacity(), 64U);
    EXPECT_EQ(TextOf(buffer), "a");
}

TEST(TmyBuffer, KeepsWhatItReachedWhenMemoryRunsOutOnTheWay) {
    TmyBuffer buffer;
    Fill(buffer, "text");
    const test::AllocationFailure failure(2);
    EXPECT_EQ(buffer.SetSize(100), 4U);
    EXPECT_EQ(buffer.GetCapacity(), 16U);
    EXPECT_EQ(TextOf(buffer), "text");
}

} // namespace
} // namespace orva::toolkit
