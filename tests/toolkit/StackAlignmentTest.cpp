#include "tests/toolkit/WindowSupport.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

/// Calls a window procedure with the stack pointer, at the call, so many bytes past a multiple of 16.
LRESULT CallFromStackOffBy(std::uint32_t offset, WNDPROC procedure, HWND window, UINT message, WPARAM wParam,
                           LPARAM lParam) {
    const std::uintptr_t arguments[4] = {reinterpret_cast<std::uintptr_t>(window), message, wParam,
                                         static_cast<std::uintptr_t>(lParam)};
    std::uintptr_t target = reinterpret_cast<std::uintptr_t>(procedure);
    LRESULT result = 0;
    asm volatile("movl %%esp, %%ebx\n\t"
                 "andl $-16, %%esp\n\t"
                 "subl %[offset], %%esp\n\t"
                 "pushl 12(%[arguments])\n\t"
                 "pushl 8(%[arguments])\n\t"
                 "pushl 4(%[arguments])\n\t"
                 "pushl 0(%[arguments])\n\t"
                 "call *%[target]\n\t"
                 "movl %%ebx, %%esp\n\t"
                 : "=a"(result)
                 : [offset] "d"(offset), [arguments] "S"(arguments), [target] "D"(target)
                 : "ebx", "ecx", "memory", "cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6",
                   "xmm7");
    return result;
}

/// Has a local that the compiler stores with aligned instructions, and tells where it stands.
struct AlignedHandler {
    void OnTimer(TmyControl* /*sender*/, UINT_PTR id) {
        alignas(16) volatile float lanes[4] = {1.0F, 2.0F, 3.0F, static_cast<float>(id)};
        misalignment = reinterpret_cast<std::uintptr_t>(&lanes) % 16;
        sum = lanes[0] + lanes[1] + lanes[2] + lanes[3];
    }
    std::uintptr_t misalignment = 99;
    float sum = 0;
};

class StackAlignment : public ::testing::TestWithParam<std::uint32_t> {};

INSTANTIATE_TEST_SUITE_P(Offsets, StackAlignment, ::testing::Values(0u, 4u, 8u, 12u));

TEST_P(StackAlignment, AWindowProcedureWorksFromAnyStack) {
    AlignedHandler handler;
    TmyComponent window(nullptr, "title", kPopupHidden, 0, kPlace);
    window.onTimer.Bind<&AlignedHandler::OnTimer>(&handler);
    const auto procedure = reinterpret_cast<WNDPROC>(GetWindowLongA(window.Window(), GWL_WNDPROC));
    CallFromStackOffBy(GetParam(), procedure, window.Window(), WM_TIMER, 4, 0);
    EXPECT_EQ(handler.misalignment, 0u);
    EXPECT_EQ(handler.sum, 10.0F);
    EXPECT_EQ(CallFromStackOffBy(GetParam(), procedure, window.Window(), WM_NULL, 77, 0), 77);
    EXPECT_EQ(CallFromStackOffBy(GetParam(), procedure, window.Window(), WM_GETTEXTLENGTH, 0, 0), 5);
    CallFromStackOffBy(GetParam(), procedure, window.Window(), WM_PAINT, 0, 0);
    CallFromStackOffBy(GetParam(), procedure, window.Window(), WM_MOUSEMOVE, 0, Point(3, 3));
}

TEST_P(StackAlignment, AFreedThunkWorksFromAnyStack) {
    WNDPROC procedure = nullptr;
    {
        const TmyComponent window(nullptr, "", kPopupHidden, 0, kPlace);
        procedure = reinterpret_cast<WNDPROC>(GetWindowLongA(window.Window(), GWL_WNDPROC));
    }
    EXPECT_EQ(CallFromStackOffBy(GetParam(), procedure, nullptr, WM_TIMER, 4, 0), 0);
}

TEST_P(StackAlignment, TheFirstProcedureWorksFromAnyStack) {
    EXPECT_EQ(CallFromStackOffBy(GetParam(), &TmyComponent::InitialWndProc, nullptr, WM_NCCREATE, 0, 0), 0);
}

} // namespace
} // namespace orva::toolkit
