#include "tests/toolkit/DebugOutput.h"
#include "tests/toolkit/WindowSupport.h"

#include <cstring>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr int kThunkSize = 13;

TmyComponent* lastObject = nullptr;
UINT lastMessage = 0;

LRESULT CALLBACK Target(TmyComponent* object, UINT message, WPARAM wParam, LPARAM lParam) {
    lastObject = object;
    lastMessage = message;
    return static_cast<LRESULT>(wParam) * 1000 + lParam;
}

TmyComponent* FakeObject(std::uintptr_t value) {
    return reinterpret_cast<TmyComponent*>(value);
}

LRESULT Call(void* thunk, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return reinterpret_cast<WNDPROC>(thunk)(window, message, wParam, lParam);
}

/// Start of the memory that holds the thunks.
const std::uint8_t* BaseOf(const void* thunk) {
    MEMORY_BASIC_INFORMATION pages{};
    VirtualQuery(thunk, &pages, sizeof pages);
    return static_cast<const std::uint8_t*>(pages.AllocationBase);
}

TEST(Thunks, CodeStoresTheObjectAndJumpsToTheTarget) {
    void* thunk = Application().CreateThunk(Target, FakeObject(0x12345678));
    ASSERT_NE(thunk, nullptr);
    const auto* code = static_cast<const std::uint8_t*>(thunk);
    const std::uint8_t head[9] = {0xC7, 0x44, 0x24, 0x04, 0x78, 0x56, 0x34, 0x12, 0xE9};
    EXPECT_EQ(std::memcmp(code, head, sizeof head), 0);
    std::int32_t distance = 0;
    std::memcpy(&distance, code + 9, sizeof distance);
    EXPECT_EQ(code + kThunkSize + distance, reinterpret_cast<const std::uint8_t*>(&Target));
    EXPECT_EQ((code - BaseOf(thunk)) % kThunkSize, 0);
    Application().FreeThunk(thunk);
}

TEST(Thunks, AMessageReachesTheTargetWithTheObjectInPlaceOfTheWindow) {
    void* thunk = Application().CreateThunk(Target, FakeObject(0xABCD0));
    EXPECT_EQ(Call(thunk, GetDesktopWindow(), 77, 5, 9), 5009);
    EXPECT_EQ(lastObject, FakeObject(0xABCD0));
    EXPECT_EQ(lastMessage, 77u);
    Application().FreeThunk(thunk);
}

TEST(Thunks, TheLowestFreeOneIsTaken) {
    TmyApplication& application = Application();
    void* first = application.CreateThunk(Target, FakeObject(1));
    void* second = application.CreateThunk(Target, FakeObject(2));
    void* third = application.CreateThunk(Target, FakeObject(3));
    ASSERT_LT(first, second);
    ASSERT_LT(second, third);
    const std::int32_t highest = application.MaxThunkIndex();
    EXPECT_GE(highest, (static_cast<std::uint8_t*>(third) - BaseOf(third)) / kThunkSize);

    application.FreeThunk(second);
    application.FreeThunk(first);
    EXPECT_EQ(application.CreateThunk(Target, FakeObject(4)), first);
    EXPECT_EQ(application.CreateThunk(Target, FakeObject(5)), second);
    EXPECT_EQ(application.MaxThunkIndex(), highest);
    for (void* thunk : {first, second, third}) {
        application.FreeThunk(thunk);
    }
}

TEST(Thunks, AFreedOneAnswersZeroAndSaysSo) {
    void* thunk = Application().CreateThunk(Target, FakeObject(0xBEEF0));
    Application().FreeThunk(thunk);
    lastObject = nullptr;
    const DebugOutput output;
    EXPECT_EQ(Call(thunk, nullptr, 0x201, 1, 2), 0);
    EXPECT_EQ(lastObject, nullptr);
    ASSERT_EQ(output.Lines().size(), 1u);
    EXPECT_EQ(output.Lines()[0], "Message 201 to non-existing control beef0\r\n");
}

TEST(Thunks, FreeingNothingDoesNothing) {
    const DebugOutput output;
    int other = 0;
    void* thunk = Application().CreateThunk(Target, FakeObject(7));
    Application().FreeThunk(nullptr);
    Application().FreeThunk(&other);
    Application().FreeThunk(static_cast<std::byte*>(thunk) + 1);
    EXPECT_EQ(Application().ObjectFromThunk(thunk), FakeObject(7));
    EXPECT_TRUE(output.Lines().empty());
    Application().FreeThunk(thunk);
}

TEST(Thunks, FreeingOneTwiceIsTraced) {
    void* thunk = Application().CreateThunk(Target, FakeObject(7));
    Application().FreeThunk(thunk);
    const DebugOutput output;
    Application().FreeThunk(thunk);
    EXPECT_TRUE(output.Lines().empty());
    Application().traceEnabled = 1;
    Application().FreeThunk(thunk);
    Application().traceEnabled = 0;
    EXPECT_EQ(output.Count("Trying to free nonexisting WNDPROC thunk"), 1);
}

TEST(Thunks, TheObjectIsFoundFromItsThunkAlone) {
    void* thunk = Application().CreateThunk(Target, FakeObject(0x10));
    const auto* base = BaseOf(thunk);
    EXPECT_EQ(Application().ObjectFromThunk(thunk), FakeObject(0x10));
    for (int offset = 1; offset < kThunkSize; ++offset) {
        EXPECT_EQ(Application().ObjectFromThunk(static_cast<std::uint8_t*>(thunk) + offset), nullptr)
            << offset;
    }
    EXPECT_EQ(Application().ObjectFromThunk(nullptr), nullptr);
    EXPECT_EQ(Application().ObjectFromThunk(base - kThunkSize), nullptr);
    // 65533 is a multiple of 13 inside the pages, but no thunk fits behind it.
    EXPECT_EQ(Application().ObjectFromThunk(base + 65533), nullptr);
    EXPECT_EQ(Application().ObjectFromThunk(base + 65520), nullptr); // the last one, not taken
    EXPECT_EQ(Application().ObjectFromThunk(base + 65536), nullptr);
    EXPECT_EQ(Application().ObjectFromThunk(base + 65546), nullptr);
    EXPECT_EQ(Application().ObjectFromThunk(reinterpret_cast<const void*>(&DefWindowProcA)), nullptr);
    Application().FreeThunk(thunk);
    EXPECT_EQ(Application().ObjectFromThunk(thunk), nullptr);
}

TEST(Thunks, AWindowsProcedureIsItsObjectsThunk) {
    TmyComponent window(nullptr, "", kPopupHidden, 0, kPlace);
    const auto* procedure = reinterpret_cast<const void*>(GetWindowLongA(window.Window(), GWL_WNDPROC));
    EXPECT_EQ(Application().ObjectFromThunk(procedure), &window);
    EXPECT_EQ(TmyApplication::ObjectFromWindow(window.Window()), &window);
}

TEST(Thunks, ForeignWindowsHaveNoObject) {
    HWND foreign =
        CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(foreign, nullptr);
    EXPECT_EQ(TmyApplication::ObjectFromWindow(foreign), nullptr);
    EXPECT_EQ(TmyApplication::ObjectFromWindow(nullptr), nullptr);
    EXPECT_EQ(TmyApplication::ObjectFromWindow(GetDesktopWindow()), nullptr);
    DestroyWindow(foreign);
    EXPECT_EQ(TmyApplication::ObjectFromWindow(foreign), nullptr);
}

TEST(Thunks, AWindowThatNobodyConstructsIsRefused) {
    EXPECT_EQ(Application().TakeWindowUnderConstruction(), nullptr);
    EXPECT_EQ(CreateWindowExA(0, Application().WindowClass(), "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                              Application().ModuleHandle(), nullptr),
              nullptr);
}

} // namespace
} // namespace orva::toolkit
