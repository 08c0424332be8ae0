#include "tests/toolkit/library/ToolkitLibrary.h"

#include "tests/controls/WidgetZoo.h"
#include "toolkit/PrivateHeap.h"
#include "toolkit/myComponents.h"

#include <memory>
#include <stdexcept>

namespace {

using namespace orva::toolkit;

constexpr UINT kThrow = 7;

std::uint32_t painted = 0;
std::unique_ptr<orva::test::WidgetZoo> zoo;

class TestWindow : public TmyComponent {
public:
    explicit TestWindow(const char* title)
        : TmyComponent(nullptr, title, WS_POPUP | WS_VISIBLE, 0, {10, 10, 200, 100}) {
        auto* child = new TmyComponent(this, "child", WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, {0, 0, 0, 30});
        child->SetAlignment(Alignment::Top);
        auto* light = new TmyControl(this, {0, 0, 50, 0});
        light->SetAlignment(Alignment::Left);
        SetDoubleBuffered(true);
    }

    void OnPaint(HDC dc) override {
        ++painted;
        // An aligned store on the stack: what faults first when the caller left it misaligned.
        alignas(16) volatile float corner[4] = {0.0F, 1.0F, 2.0F, 3.0F};
        SetPixel(dc, static_cast<int>(corner[1]), 1, RGB(255, 255, 255));
        TmyComponent::OnPaint(dc);
    }

    void OnUserMessage(UINT id, WPARAM wParam, LPARAM lParam) override {
        if (id == kThrow) {
            throw std::runtime_error("thrown on request");
        }
        TmyComponent::OnUserMessage(id, wParam, lParam);
    }
};

} // namespace

extern "C" {

HWND WINAPI OpenTestWindow(const char* title) {
    auto* window = new TestWindow(title);
    return window->Window();
}

int WINAPI CloseTestWindow(HWND window) {
    TmyComponent* object = TmyApplication::ObjectFromWindow(window);
    delete object;
    return object != nullptr ? 1 : 0;
}

void WINAPI PumpTestMessages() {
    TmyApplication::ProcessPendingMessages();
}

LRESULT WINAPI ProvokeException(HWND window) {
    return SendMessageA(window, WM_USER + kThrow, 0, 0);
}

HWND WINAPI OpenWidgets(unsigned seed, int count) {
    zoo = std::make_unique<orva::test::WidgetZoo>(seed, count);
    return zoo->Window();
}

unsigned WINAPI DriveWidgets(int messages) {
    zoo->Drive(messages);
    return static_cast<unsigned>(zoo->EventCount());
}

void WINAPI CloseWidgets() {
    zoo.reset();
}

void WINAPI ReadStatistics(orva::test::LibraryStatistics* statistics) {
    const PrivateHeapStatistics heap = ProcessHeap().Statistics();
    statistics->heapBlocks = static_cast<std::uint32_t>(heap.usedBlocks);
    statistics->heapIsSound = ProcessHeap().Verify() == nullptr ? 1 : 0;
    statistics->paintedWindows = painted;
}

} // extern "C"
