/// A thousand widgets of all classes under a stream of messages: nothing breaks, nothing stays behind.

#include "tests/controls/WidgetZoo.h"
#include "tests/support/AllocationProbe.h"
#include "tests/toolkit/LiveObjects.h"
#include "toolkit/TmyApplication.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

constexpr int kWidgets = 1000;
constexpr int kMessages = 20000;
constexpr int kKeptByThePlatform = 8; ///< device contexts that were once in use at a time
constexpr int kMessagesToWarmUp = 2000;

/// For a longer run: ORVA_STRESS_MESSAGES in the environment.
int MessagesToSend() {
    const char* asked = std::getenv("ORVA_STRESS_MESSAGES");
    return asked != nullptr ? std::atoi(asked) : kMessages;
}

struct LiveObjects {
    int windows = CountWindows();
    int gdiObjects = CountGdiObjects();
    std::int64_t heapBlocks = CountLiveAllocations();
};

TEST(Stress, CountersSeeWhatIsLeftBehind) {
    // The platform adds a window of its own to a thread's first.
    const HWND first =
        CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const LiveObjects before;
    const HPEN pen = CreatePen(PS_SOLID, 1, 0x123456);
    const HRGN region = CreateRectRgn(0, 0, 1, 1);
    const HWND window =
        CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const HWND child =
        CreateWindowExA(0, "STATIC", "", WS_CHILD, 0, 0, 1, 1, window, nullptr, nullptr, nullptr);
    EXPECT_NE(child, nullptr);
    const LiveObjects meanwhile;
    EXPECT_GE(meanwhile.gdiObjects, before.gdiObjects + 2);
    EXPECT_EQ(meanwhile.windows, before.windows + 2);
    DestroyWindow(window);
    DeleteObject(region);
    DeleteObject(pen);
    EXPECT_EQ(CountWindows(), before.windows);
    DestroyWindow(first);
}

TEST(Stress, AThousandWidgetsBearAStreamOfMessagesAndLeaveNothing) {
    // The platform makes some things once, and keeps them: a first round has them made.
    WidgetZoo(1, 2 * WidgetZoo::ClassCount()).Drive(kMessagesToWarmUp);
    const LiveObjects before;
    {
        WidgetZoo zoo(2, kWidgets);
        EXPECT_EQ(zoo.WidgetCount(), kWidgets);
        EXPECT_GT(CountWindows(), before.windows + kWidgets / 2);
        const int messages = MessagesToSend();
        zoo.Drive(messages);
        EXPECT_GT(zoo.EventCount(), static_cast<std::uint64_t>(messages) / 20);
        EXPECT_TRUE(IsWindow(zoo.Window()));
    }
    const LiveObjects after;
    EXPECT_EQ(after.windows, before.windows);
    EXPECT_LE(after.gdiObjects, before.gdiObjects + kKeptByThePlatform);
    EXPECT_EQ(after.heapBlocks, before.heapBlocks);
    EXPECT_EQ(toolkit::Application().popupList.Count(), 0);
}

} // namespace
} // namespace orva::test
