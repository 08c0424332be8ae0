#include "plugin/PluginHandleList.h"

#include <utility>

#include <gtest/gtest.h>

namespace orva::plugin {

namespace {

WindowHandle Window(std::uintptr_t number) {
    return reinterpret_cast<WindowHandle>(number); // NOLINT(performance-no-int-to-ptr)
}

class PluginHandleListTest : public testing::Test {
protected:
    PluginHandleEntry* Add(std::uint32_t hostHandle, std::uintptr_t window) {
        PluginHandleEntryOwner entry = PluginHandleList::MakeEntry();
        entry->hostHandle = hostHandle;
        entry->window = Window(window);
        PluginHandleEntry* added = entry.get();
        list.Append(std::move(entry));
        return added;
    }

    PluginHandleList list;
};

TEST_F(PluginHandleListTest, MakesEntriesOfZeros) {
    const PluginHandleEntryOwner entry = PluginHandleList::MakeEntry();
    EXPECT_EQ(entry->hostHandle, 0U);
    EXPECT_EQ(entry->plugin, nullptr);
    EXPECT_EQ(entry->window, nullptr);
    EXPECT_EQ(entry->hostCallback, nullptr);
}

TEST_F(PluginHandleListTest, FindsNothingInAnEmptyList) {
    EXPECT_EQ(list.FindByHandle(0), nullptr);
    EXPECT_EQ(list.FindByWindow(nullptr), nullptr);
    list.RemoveAll(0);
    EXPECT_EQ(list.Count(), 0U);
}

TEST_F(PluginHandleListTest, FindsTheFirstFromTheFront) {
    PluginHandleEntry* first = Add(7, 70);
    PluginHandleEntry* second = Add(8, 70);
    PluginHandleEntry* third = Add(8, 80);
    EXPECT_EQ(list.FindByHandle(7), first);
    EXPECT_EQ(list.FindByHandle(8), second);
    EXPECT_EQ(list.FindByHandle(9), nullptr);
    EXPECT_EQ(list.FindByWindow(Window(70)), first);
    EXPECT_EQ(list.FindByWindow(Window(80)), third);
    EXPECT_EQ(list.FindByWindow(Window(90)), nullptr);
}

TEST_F(PluginHandleListTest, RemovesEveryEntryOfAHandle) {
    Add(8, 1);
    PluginHandleEntry* kept = Add(7, 2);
    Add(8, 3);
    Add(8, 4);
    list.RemoveAll(8);
    EXPECT_EQ(list.Count(), 1U);
    EXPECT_EQ(list.FindByHandle(8), nullptr);
    EXPECT_EQ(list.FindByHandle(7), kept);
    list.RemoveAll(9);
    EXPECT_EQ(list.Count(), 1U);
}

} // namespace

} // namespace orva::plugin
