/// What the tests of text and number entries share.
#pragma once

#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/TmyEdit.h"

#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {

/// Input into entries by messages, and their pixels, frame included.
class EntryTest : public WidgetTest {
protected:
    static void Type(TmyEdit& edit, const std::string& text) {
        for (const char character : text) {
            Send(edit, WM_CHAR, static_cast<unsigned char>(character));
        }
    }
    static void Key(TmyEdit& edit, WPARAM key) {
        Send(edit, WM_KEYDOWN, key);
        Send(edit, WM_KEYUP, key);
    }
    static std::string Text(const TmyEdit& edit) { return edit.GetText().Text(); }
    static DWORD Selection(const TmyEdit& edit) { return static_cast<DWORD>(Send(edit, EM_GETSEL)); }

    /// The client area in coordinates of the window's corner.
    static RECT ClientInWindow(const TmyComponent& component) {
        RECT outer{};
        GetWindowRect(component.Window(), &outer);
        RECT client{};
        GetClientRect(component.Window(), &client);
        MapWindowPoints(component.Window(), nullptr, reinterpret_cast<POINT*>(&client), 2);
        OffsetRect(&client, -outer.left, -outer.top);
        return client;
    }
    /// A pixel of the whole window, its frame included.
    static COLORREF PixelAt(const TmyComponent& component, int x, int y) {
        const HDC dc = GetWindowDC(component.Window());
        const COLORREF color = GetPixel(dc, x, y);
        ::ReleaseDC(component.Window(), dc);
        return color;
    }
    /// How many pixels of an area of the whole window have a color.
    static int CountPixels(const TmyComponent& component, const RECT& area, COLORREF color) {
        const HDC dc = GetWindowDC(component.Window());
        int count = 0;
        for (int y = area.top; y < area.bottom; ++y) {
            for (int x = area.left; x < area.right; ++x) {
                count += GetPixel(dc, x, y) == color ? 1 : 0;
            }
        }
        ::ReleaseDC(component.Window(), dc);
        return count;
    }
    static void PaintNow(const TmyComponent& component) {
        RedrawWindow(component.Window(), nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_UPDATENOW | RDW_ALLCHILDREN);
    }

    TmyComponent& top = Top();
};

} // namespace orva::toolkit
