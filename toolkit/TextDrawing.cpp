#include "toolkit/TextDrawing.h"

#include "toolkit/Colors.h"

namespace orva::toolkit {

namespace {

constexpr UINT kFormat = DT_NOPREFIX | DT_NOCLIP;

/// A font in a device context, and what was there before at the end.
class SelectedFont {
public:
    SelectedFont(HDC context, HFONT font) : dc(context), before(SelectObject(context, font)) {}
    ~SelectedFont() { SelectObject(dc, before); }
    SelectedFont(const SelectedFont&) = delete;
    SelectedFont& operator=(const SelectedFont&) = delete;

private:
    HDC dc;
    HGDIOBJ before;
};

SIZE MeasureSelected(HDC dc, const char* text) {
    RECT box{0, 0, 0, 0};
    if (text == nullptr || *text == '\0' || DrawTextA(dc, text, -1, &box, kFormat | DT_CALCRECT) == 0) {
        return {0, 0};
    }
    return {box.right - box.left, box.bottom - box.top};
}

UINT LinesAlignedBy(std::uint32_t alignment) {
    if ((alignment & kTextCentre) != 0) {
        return DT_CENTER;
    }
    return (alignment & kTextRight) != 0 ? DT_RIGHT : DT_LEFT;
}

void DrawIn(HDC dc, const char* text, RECT place, UINT format, COLORREF color) {
    ::SetTextColor(dc, color);
    DrawTextA(dc, text, -1, &place, format);
}

} // namespace

SIZE MeasureText(HDC dc, HFONT font, const char* text) {
    const SelectedFont selected(dc, font);
    return MeasureSelected(dc, text);
}

SIZE MeasureText(HFONT font, const char* text) {
    SIZE size{0, 0};
    if (const HDC screen = ::GetDC(nullptr)) {
        size = MeasureText(screen, font, text);
        ::ReleaseDC(nullptr, screen);
    }
    return size;
}

RECT PlaceText(const SIZE& size, const RECT& area, std::uint32_t alignment) {
    const LONG width = area.right - area.left;
    const LONG height = area.bottom - area.top;
    RECT place{area.left, area.top, area.right, area.top + size.cy};
    if (size.cx <= width) {
        if ((alignment & kTextCentre) != 0) {
            place.left += (width - size.cx) / 2;
        } else if ((alignment & kTextRight) != 0) {
            place.left += width - size.cx;
        }
        place.right = place.left + size.cx;
    }
    if ((alignment & kTextMiddle) != 0) {
        OffsetRect(&place, 0, (height - size.cy) / 2);
    } else if ((alignment & kTextBottom) != 0) {
        OffsetRect(&place, 0, height - size.cy);
    }
    return place;
}

COLORREF ShadowColor(const TextLook& look) {
    if (look.shadow != kAutomaticShadow) {
        return OffsetColor(look.background, look.shadow);
    }
    const bool onBright = BrightnessOf(look.background) > BrightnessOf(look.color);
    return OffsetColor(look.background, onBright ? kShadowOnBright : kShadowOnDark);
}

void DrawAlignedText(HDC dc, const char* text, const RECT& area, std::uint32_t alignment,
                     const TextLook& look) {
    if (text == nullptr || *text == '\0' || area.left >= area.right) {
        return;
    }
    const SelectedFont selected(dc, look.font);
    const SIZE size = MeasureSelected(dc, text);
    const RECT place = PlaceText(size, area, alignment);
    const bool tooWide = size.cx > area.right - area.left;
    const UINT format = kFormat | (tooWide ? DT_LEFT | DT_END_ELLIPSIS : LinesAlignedBy(alignment));

    const int mode = SetBkMode(dc, TRANSPARENT);
    const COLORREF color = GetTextColor(dc);
    if (look.shadow != 0) {
        RECT shadowPlace = place;
        OffsetRect(&shadowPlace, 1, 1);
        DrawIn(dc, text, shadowPlace, format, ShadowColor(look));
    }
    DrawIn(dc, text, place, format, look.color);
    ::SetTextColor(dc, color);
    SetBkMode(dc, mode);
}

} // namespace orva::toolkit
