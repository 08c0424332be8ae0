#include "toolkit/Colors.h"

#include <algorithm>

namespace orva::toolkit {

namespace {

constexpr int kMostOfAChannel = 255;

BYTE ToChannel(int value) {
    return static_cast<BYTE>(std::clamp(value, 0, kMostOfAChannel));
}

template <class Change>
COLORREF WithEachChannel(COLORREF color, Change change) {
    return RGB(ToChannel(change(GetRValue(color))), ToChannel(change(GetGValue(color))),
               ToChannel(change(GetBValue(color))));
}

BYTE MixChannels(int from, int to, int percent) {
    return ToChannel((from * (kFullPercent - percent) + to * percent + kFullPercent / 2) / kFullPercent);
}

} // namespace

int BrightnessOf(COLORREF color) {
    return GetRValue(color) + GetGValue(color) + GetBValue(color);
}

COLORREF ScaleColor(COLORREF color, int percent) {
    // Beyond this every channel but 0 is at its limit.
    const int limited = std::clamp(percent, 0, kFullPercent * kMostOfAChannel);
    return WithEachChannel(color, [limited](int channel) { return channel * limited / kFullPercent; });
}

COLORREF OffsetColor(COLORREF color, int offset) {
    const int limited = std::clamp(offset, -kMostOfAChannel, kMostOfAChannel);
    return WithEachChannel(color, [limited](int channel) { return channel + limited; });
}

COLORREF MixColors(COLORREF from, COLORREF to, int percent) {
    const int limited = std::clamp(percent, 0, kFullPercent);
    return RGB(MixChannels(GetRValue(from), GetRValue(to), limited),
               MixChannels(GetGValue(from), GetGValue(to), limited),
               MixChannels(GetBValue(from), GetBValue(to), limited));
}

void FillSolid(HDC dc, const RECT& area, COLORREF color) {
    if (area.left < area.right && area.top < area.bottom) {
        SetDCBrushColor(dc, color);
        FillRect(dc, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    }
}

} // namespace orva::toolkit
