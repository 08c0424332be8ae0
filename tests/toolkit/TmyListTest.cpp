#include "toolkit/TmyList.h"

#include "tests/support/AllocationProbe.h"
#include "tests/support/RandomSource.h"
#include "toolkit/TmyTypeList.h"

#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Item = TmyList::Item;

std::vector<Item> ItemsOf(const TmyList& list) {
    std::vector<Item> items;
    for (std::int32_t i = 0; i < list.Count(); ++i) {
        items.push_back(list.Get(i));
    }
    return items;
}

void Fill(TmyList& list, const std::vector<Item>& items) {
    for (const Item item : items) {
        list.Add(item);
    }
}

TEST(TmyList, StartsEmpty) {
    const TmyList list;
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(list.IndexOf(0), -1);
    EXPECT_EQ(list.Get(0), 0U);
}

TEST(TmyList, AddAppendsWithoutAnIndex) {
    TmyList list;
    EXPECT_EQ(list.Add(10), 0);
    EXPECT_EQ(list.Add(20, -1), 1);
    EXPECT_EQ(list.Add(30), 2);
    EXPECT_EQ(ItemsOf(list), (std::vector<Item>{10, 20, 30}));
    EXPECT_EQ(list.GetSize(), 3 * sizeof(Item));
}

TEST(TmyList, AddInsertsBeforeTheIndex) {
    TmyList list;
    Fill(list, {10, 20, 30});
    EXPECT_EQ(list.Add(5, 0), 0);
    EXPECT_EQ(list.Add(25, 3), 3);
    EXPECT_EQ(list.Add(40, 5), 5);
    EXPECT_EQ(ItemsOf(list), (std::vector<Item>{5, 10, 20, 25, 30, 40}));
}

TEST(TmyList, AddAppendsAtAnIndexOutsideTheList) {
    TmyList list;
    EXPECT_EQ(list.Add(10, 7), 0);
    EXPECT_EQ(list.Add(20, INT32_MAX), 1);
    EXPECT_EQ(list.Add(30, INT32_MIN), 2);
    EXPECT_EQ(ItemsOf(list), (std::vector<Item>{10, 20, 30}));
}

TEST(TmyList, RemoveClosesTheGap) {
    TmyList list;
    Fill(list, {10, 20, 30, 40});
    list.Remove(1);
    EXPECT_EQ(ItemsOf(list), (std::vector<Item>{10, 30, 40}));
    list.Remove(0);
    EXPECT_EQ(ItemsOf(list), (std::vector<Item>{30, 40}));
}

TEST(TmyList, RemovingTheLastLeavesOneLess) {
    TmyList list;
    Fill(list, {10, 20, 30});
    list.Remove(2);
    EXPECT_EQ(list.Count(), 2);
    EXPECT_EQ(ItemsOf(list), (std::vector<Item>{10, 20}));
    list.Remove(1);
    list.Remove(0);
    EXPECT_EQ(list.Count(), 0);
}

TEST(TmyList, RemoveIgnoresAnIndexOutsideTheList) {
    TmyList list;
    list.Remove(0);
    Fill(list, {10, 20});
    for (const std::int32_t index : {-1, 2, INT32_MIN, INT32_MAX}) {
        list.Remove(index);
        EXPECT_EQ(list.Count(), 2) << index;
    }
}

TEST(TmyList, IndexOfFindsTheFirst) {
    TmyList list;
    Fill(list, {10, 20, 10, 0});
    EXPECT_EQ(list.IndexOf(10), 0);
    EXPECT_EQ(list.IndexOf(20), 1);
    EXPECT_EQ(list.IndexOf(0), 3);
    EXPECT_EQ(list.IndexOf(30), -1);
}

TEST(TmyList, GetIsZeroOutsideTheList) {
    TmyList list;
    Fill(list, {10, 20});
    EXPECT_EQ(list.Get(1), 20U);
    EXPECT_EQ(list.Get(2), 0U);
    EXPECT_EQ(list.Get(-1), 0U);
}

TEST(TmyList, HoldsAllBitsOfAnItem) {
    TmyList list;
    list.Add(UINTPTR_MAX);
    EXPECT_EQ(list.Get(0), UINTPTR_MAX);
    EXPECT_EQ(list.IndexOf(UINTPTR_MAX), 0);
}

TEST(TmyList, AddsNothingWithoutRoom) {
    TmyList list;
    list.maximum = 2 * sizeof(Item) + 1;
    Fill(list, {10, 20});
    EXPECT_EQ(list.Add(30), -1);
    EXPECT_EQ(list.Add(30, 0), -1);
    EXPECT_EQ(ItemsOf(list), (std::vector<Item>{10, 20}));
    list.maximum = 1; // less than there is
    EXPECT_EQ(list.Add(30), -1);
    EXPECT_EQ(ItemsOf(list), (std::vector<Item>{10, 20}));
}

TEST(TmyList, AddsNothingWithoutMemory) {
    TmyList list;
    Fill(list, {10});
    list.Reallocate(0);
    const test::AllocationFailure failure(0);
    EXPECT_EQ(list.Add(20), -1);
    EXPECT_TRUE(failure.HasStruck());
    EXPECT_EQ(ItemsOf(list), std::vector<Item>{10});
}

TEST(TmyList, AgreesWithAVector) {
    test::RandomSource random(3);
    TmyList list;
    std::vector<Item> model;
    for (int i = 0; i < 20000; ++i) {
        const auto place =
            static_cast<std::int32_t>(random.Below(static_cast<std::uint32_t>(model.size()) + 1));
        if (random.Below(100) < (i < 10000 ? 55U : 45U)) {
            const Item item = random.Below(50);
            ASSERT_EQ(list.Add(item, place), place);
            model.insert(model.begin() + place, item);
        } else {
            list.Remove(place);
            if (place < static_cast<std::int32_t>(model.size())) {
                model.erase(model.begin() + place);
            }
        }
        if (i % 100 == 0) {
            ASSERT_EQ(ItemsOf(list), model) << i;
        }
    }
}

/// Counts the records alive.
struct Record {
    explicit Record(int recordValue) : value(recordValue) { ++alive; }
    ~Record() { --alive; }
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    int value;
    static int alive;
};

int Record::alive = 0;

TEST(TmyTypeList, DeletesItsRecordsWithItself) {
    {
        TmyTypeList<Record> list;
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(list.Add(std::make_unique<Record>(i)), i);
        }
        EXPECT_EQ(Record::alive, 10);
        EXPECT_EQ(list.Count(), 10);
        EXPECT_EQ(list.Get(7)->value, 7);
    }
    EXPECT_EQ(Record::alive, 0);
}

TEST(TmyTypeList, DeletesThroughTheRootToo) {
    auto list = std::make_unique<TmyTypeList<Record>>();
    list->Add(std::make_unique<Record>(1));
    std::unique_ptr<TmyObject> object = std::move(list);
    object.reset();
    EXPECT_EQ(Record::alive, 0);
}

TEST(TmyTypeList, AddsAtAnIndexAndFindsByAddress) {
    TmyTypeList<Record> list;
    list.Add(std::make_unique<Record>(1));
    auto second = std::make_unique<Record>(2);
    const Record* address = second.get();
    EXPECT_EQ(list.IndexOf(address), -1);
    EXPECT_EQ(list.Add(std::move(second), 0), 0);
    EXPECT_EQ(list.IndexOf(address), 0);
    EXPECT_EQ(list.Get(0), address);
    EXPECT_EQ(list.Get(1)->value, 1);
    EXPECT_EQ(list.Get(2), nullptr);
    EXPECT_EQ(list.Get(-1), nullptr);
}

TEST(TmyTypeList, RemoveDeletesTheRecord) {
    TmyTypeList<Record> list;
    for (int i = 0; i < 3; ++i) {
        list.Add(std::make_unique<Record>(i));
    }
    list.Remove(1);
    EXPECT_EQ(Record::alive, 2);
    EXPECT_EQ(list.Get(1)->value, 2);
    list.Remove(5);
    list.Remove(-1);
    EXPECT_EQ(Record::alive, 2);
    list.Clear();
    EXPECT_EQ(Record::alive, 0);
    EXPECT_EQ(list.Count(), 0);
}

TEST(TmyTypeList, TakeHandsTheRecordOver) {
    TmyTypeList<Record> list;
    list.Add(std::make_unique<Record>(1));
    const std::unique_ptr<Record> taken = list.Take(0);
    EXPECT_EQ(taken->value, 1);
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(Record::alive, 1);
    EXPECT_EQ(list.Take(0), nullptr);
}

TEST(TmyTypeList, DeletesARecordThatHasNoRoom) {
    TmyTypeList<Record> list;
    list.maximum = sizeof(Item);
    EXPECT_EQ(list.Add(std::make_unique<Record>(1)), 0);
    EXPECT_EQ(list.Add(std::make_unique<Record>(2)), -1);
    EXPECT_EQ(Record::alive, 1);
}

} // namespace
} // namespace orva::toolkit
