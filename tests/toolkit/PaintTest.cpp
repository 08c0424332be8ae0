#include "tests/toolkit/WindowSupport.h"

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Entries = EventLog::Entries;

constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kGreen = RGB(0, 255, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kYellow = RGB(255, 255, 0);
constexpr COLORREF kWindow = 0x636363;

/// Fills much more than the control.
auto Fill(COLORREF color) {
    return [color](HDC dc) {
        const RECT everything{-1000, -1000, 1000, 1000};
        const HBRUSH brush = CreateSolidBrush(color);
        FillRect(dc, &everything, brush);
        DeleteObject(brush);
    };
}

/// Fills the control alone.
auto FillOwn(COLORREF color, int width, int height) {
    return [=](HDC dc) {
        const RECT own{0, 0, width, height};
        const HBRUSH brush = CreateSolidBrush(color);
        FillRect(dc, &own, brush);
        DeleteObject(brush);
    };
}

class Paint : public ::testing::Test {
protected:
    Paint() { Settle(top); }

    COLORREF PixelAt(int x, int y) const {
        const HDC dc = ::GetDC(top.Window());
        const COLORREF color = GetPixel(dc, x, y);
        ::ReleaseDC(top.Window(), dc);
        return color;
    }
    void PaintAll() {
        RedrawWindow(top.Window(), nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    }

    EventLog log{{"OnPaint", "OnEraseBackground"}};
    RecordingComponent top{log, "top", nullptr, "", kPopup, DWORD{0}, kPlace};
};

TEST_F(Paint, ChildrenComeFirstThenTheControlThenOverlays) {
    RecordingControl overlay(log, "overlay", &top, Placement{0, 0, 30, 30});
    overlay.SetOverlay(true);
    RecordingControl first(log, "first", &top, Placement{10, 10, 50, 50});
    RecordingControl inner(log, "inner", &first, Placement{5, 5, 10, 10});
    RecordingControl second(log, "second", &top, Placement{40, 40, 50, 50});
    log.Take();
    PaintAll();
    EXPECT_EQ(log.Take(), (Entries{"top.OnEraseBackground()", "inner.OnPaint()", "first.OnPaint()",
                                   "second.OnPaint()", "top.OnPaint()", "overlay.OnPaint()"}));
}

TEST_F(Paint, AParentCannotPaintOverItsOpaqueChildren) {
    RecordingControl first(log, "first", &top, Placement{10, 10, 50, 50});
    RecordingControl inner(log, "inner", &first, Placement{5, 5, 10, 10});
    top.paint = Fill(kRed);
    first.paint = FillOwn(kGreen, 50, 50);
    inner.paint = FillOwn(kBlue, 10, 10);
    PaintAll();
    EXPECT_EQ(PixelAt(5, 5), kRed);
    EXPECT_EQ(PixelAt(60, 60), kRed);
    EXPECT_EQ(PixelAt(10, 10), kGreen);
    EXPECT_EQ(PixelAt(59, 59), kGreen);
    EXPECT_EQ(PixelAt(14, 15), kGreen);
    EXPECT_EQ(PixelAt(15, 15), kBlue);
    EXPECT_EQ(PixelAt(24, 24), kBlue);
    EXPECT_EQ(PixelAt(25, 24), kGreen);
}

TEST_F(Paint, AmongOverlappingChildrenTheFirstIsOnTop) {
    RecordingControl first(log, "first", &top, Placement{10, 10, 50, 50});
    RecordingControl second(log, "second", &top, Placement{40, 40, 50, 50});
    first.paint = FillOwn(kGreen, 50, 50);
    second.paint = FillOwn(kBlue, 50, 50);
    PaintAll();
    EXPECT_EQ(PixelAt(50, 50), kGreen);
    EXPECT_EQ(PixelAt(60, 60), kBlue);
    EXPECT_EQ(PixelAt(5, 5), kWindow); // erased, painted by none
}

TEST_F(Paint, OverlaysLieOnTopOfTheirSiblings) {
    RecordingControl overlay(log, "overlay", &top, Placement{30, 30, 40, 40});
    overlay.SetOverlay(true);
    RecordingControl first(log, "first", &top, Placement{10, 10, 50, 50});
    top.paint = Fill(kRed);
    first.paint = FillOwn(kGreen, 50, 50);
    overlay.paint = FillOwn(kYellow, 20, 40); // the right half is left through
    PaintAll();
    EXPECT_EQ(PixelAt(35, 35), kYellow);
    EXPECT_EQ(PixelAt(35, 65), kYellow);
    EXPECT_EQ(PixelAt(55, 35), kGreen); // not excluded from its siblings' painting
    EXPECT_EQ(PixelAt(65, 65), kRed);   // nor from its parent's
}

TEST_F(Paint, HiddenChildrenAreNotPainted) {
    RecordingControl first(log, "first", &top, Placement{10, 10, 50, 50});
    RecordingControl overlay(log, "overlay", &top, Placement{30, 30, 40, 40});
    overlay.SetOverlay(true);
    first.SetVisible(false);
    overlay.SetVisible(false);
    top.paint = Fill(kRed);
    log.Take();
    PaintAll();
    EXPECT_EQ(log.Take(), (Entries{"top.OnEraseBackground()", "top.OnPaint()"}));
    EXPECT_EQ(PixelAt(20, 20), kRed);
}

TEST_F(Paint, OnlyChildrenInTheRegionArePainted) {
    RecordingControl first(log, "first", &top, Placement{10, 10, 20, 20});
    RecordingControl second(log, "second", &top, Placement{50, 10, 20, 20});
    RecordingControl inner(log, "inner", &second, Placement{15, 15, 5, 5});
    top.Update();
    log.Take();
    second.InvalidateRect({0, 0, 5, 5});
    top.Update();
    EXPECT_EQ(log.Take(), (Entries{"top.OnEraseBackground()", "second.OnPaint()", "top.OnPaint()"}));
}

TEST_F(Paint, EachControlPaintsInItsOwnCoordinates) {
    RecordingControl first(log, "first", &top, Placement{10, 20, 50, 50});
    RecordingControl inner(log, "inner", &first, Placement{5, 6, 10, 10});
    POINT origins[3] = {};
    const auto originInto = [](POINT& origin) {
        return [&origin](HDC dc) { GetViewportOrgEx(dc, &origin); };
    };
    inner.paint = originInto(origins[0]);
    first.paint = originInto(origins[1]);
    top.paint = originInto(origins[2]);
    PaintAll();
    EXPECT_EQ(origins[0].x - origins[2].x, 15);
    EXPECT_EQ(origins[0].y - origins[2].y, 26);
    EXPECT_EQ(origins[1].x - origins[2].x, 10);
    EXPECT_EQ(origins[1].y - origins[2].y, 20);
}

TEST_F(Paint, EraseFillsAllButOpaqueChildren) {
    RecordingControl first(log, "first", &top, Placement{10, 10, 20, 20});
    RecordingControl overlay(log, "overlay", &top, Placement{50, 10, 20, 20});
    overlay.SetOverlay(true);
    top.SetWindowColor(RGB(10, 20, 30));
    const HDC dc = ::GetDC(top.Window());
    const RECT everything{0, 0, 200, 150};
    FillRect(dc, &everything, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    EXPECT_EQ(Send(top, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc)), 1);
    ::ReleaseDC(top.Window(), dc);
    EXPECT_EQ(PixelAt(15, 15), RGB(255, 255, 255));
    EXPECT_EQ(PixelAt(9, 15), RGB(10, 20, 30));
    EXPECT_EQ(PixelAt(30, 15), RGB(10, 20, 30));
    EXPECT_EQ(PixelAt(55, 15), RGB(10, 20, 30));
    EXPECT_EQ(PixelAt(199, 149), RGB(10, 20, 30));
}

TEST_F(Paint, BorrowedContextIsShiftedAndClipped) {
    RecordingControl first(log, "first", &top, Placement{10, 20, 50, 40});
    RecordingControl inner(log, "inner", &first, Placement{5, 6, 100, 10}); // wider than its parent
    PaintAll();
    const HDC dc = inner.GetDC();
    ASSERT_NE(dc, nullptr);
    Fill(kRed)(dc);
    inner.ReleaseDC(dc);
    EXPECT_EQ(PixelAt(15, 26), kRed);
    EXPECT_EQ(PixelAt(14, 26), kWindow);
    EXPECT_EQ(PixelAt(15, 25), kWindow);
    EXPECT_EQ(PixelAt(59, 35), kRed);
    EXPECT_EQ(PixelAt(60, 30), kWindow); // beyond the parent
    EXPECT_EQ(PixelAt(15, 36), kWindow);
}

// --- the back buffer ---------------------------------------------------------------------------------------

TEST_F(Paint, BackBufferShowsTheSamePicture) {
    RecordingControl first(log, "first", &top, Placement{10, 10, 50, 50});
    RecordingControl overlay(log, "overlay", &top, Placement{30, 30, 40, 40});
    overlay.SetOverlay(true);
    top.paint = FillOwn(kRed, 150, 150);
    first.paint = FillOwn(kGreen, 50, 50);
    overlay.paint = FillOwn(kYellow, 20, 40);
    EXPECT_FALSE(top.IsDoubleBuffered());
    top.SetDoubleBuffered(true);
    EXPECT_TRUE(top.IsDoubleBuffered());
    top.Update();
    log.Take();
    PaintAll();
    EXPECT_EQ(log.Take(),
              (Entries{"top.OnEraseBackground()", "first.OnPaint()", "top.OnPaint()", "overlay.OnPaint()"}));
    EXPECT_EQ(PixelAt(5, 5), kRed);
    EXPECT_EQ(PixelAt(15, 15), kGreen);
    EXPECT_EQ(PixelAt(55, 35), kGreen);
    EXPECT_EQ(PixelAt(35, 65), kYellow);
    EXPECT_EQ(PixelAt(160, 20), kWindow); // erased in the buffer
    EXPECT_TRUE(UpdateRegion(top).IsEmpty());
}

TEST_F(Paint, BackBufferPaintsTheRegionAlone) {
    top.SetDoubleBuffered(true);
    top.paint = Fill(kRed);
    PaintAll();
    top.paint = Fill(kBlue);
    top.InvalidateRect({10, 10, 20, 20});
    top.Update();
    EXPECT_EQ(PixelAt(15, 15), kBlue);
    EXPECT_EQ(PixelAt(9, 15), kRed);
    EXPECT_EQ(PixelAt(20, 15), kRed);
}

TEST_F(Paint, BackBufferFollowsTheSize) {
    top.SetDoubleBuffered(true);
    top.paint = Fill(kRed);
    top.SetClientSize(260, 180);
    PaintAll();
    EXPECT_EQ(PixelAt(259, 179), kRed);
    top.SetDoubleBuffered(false);
    EXPECT_FALSE(top.IsDoubleBuffered());
    top.paint = Fill(kGreen);
    PaintAll();
    EXPECT_EQ(PixelAt(259, 179), kGreen);
}

TEST_F(Paint, AGivenContextIsPaintedIntoDirectly) {
    top.SetDoubleBuffered(true);
    top.paint = Fill(kRed);
    const HDC screen = ::GetDC(nullptr);
    const HDC dc = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, 200, 150);
    ::ReleaseDC(nullptr, screen);
    const HGDIOBJ before = SelectObject(dc, bitmap);
    Send(top, WM_PAINT, reinterpret_cast<WPARAM>(dc));
    EXPECT_EQ(GetPixel(dc, 100, 100), kRed);
    SelectObject(dc, before);
    DeleteObject(bitmap);
    DeleteDC(dc);
}

// --- over a procedure of the platform's --------------------------------------------------------------------

std::vector<std::pair<UINT, WPARAM>> forwarded;

LRESULT CALLBACK PaintOriginal(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_PAINT || message == WM_ERASEBKGND) {
        forwarded.emplace_back(message, wParam);
        return 77;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

TEST_F(Paint, ASubclassedWindowLetsItsOriginalEraseAndPaint) {
    top.SetOriginal(PaintOriginal);
    forwarded.clear();
    const HDC dc = ::GetDC(top.Window());
    EXPECT_EQ(Send(top, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc)), 77);
    Send(top, WM_PAINT, reinterpret_cast<WPARAM>(dc));
    ::ReleaseDC(top.Window(), dc);
    ASSERT_EQ(forwarded.size(), 2u);
    EXPECT_EQ(forwarded[0].first, static_cast<UINT>(WM_ERASEBKGND));
    EXPECT_EQ(forwarded[0].second, reinterpret_cast<WPARAM>(dc));
    EXPECT_EQ(forwarded[1].first, static_cast<UINT>(WM_PAINT));
    EXPECT_EQ(forwarded[1].second, reinterpret_cast<WPARAM>(dc));
    top.SetOriginal(DefWindowProcA);
}

TEST_F(Paint, ASubclassedWindowReplacesTheBaseWindow) {
    EventLog quiet({"none"});
    auto* edit = new RecordingComponent(quiet, "edit", &top, "", WS_CHILD, DWORD{0}, Placement{5, 5, 60, 20});
    const HWND base = edit->Window();
    const HWND platform = CreateWindowExA(0, "EDIT", "text", kChild, 5, 5, 60, 20, top.Window(), nullptr,
                                          Application().ModuleHandle(), nullptr);
    ASSERT_NE(platform, nullptr);
    edit->Subclass(platform);
    EXPECT_EQ(edit->Window(), platform);
    EXPECT_EQ(TmyApplication::ObjectFromWindow(platform), edit);
    EXPECT_FALSE(IsWindow(base));
    EXPECT_STREQ(edit->GetText().Text(), "text");
    edit->SetText("other");
    EXPECT_STREQ(edit->GetText().Text(), "other");
    EXPECT_EQ(edit->Bounds(), (RECT{5, 5, 65, 25}));
    delete edit;
    EXPECT_FALSE(IsWindow(platform));
}

} // namespace
} // namespace orva::toolkit
