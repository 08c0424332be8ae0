#include "toolkit/FocusMark.h"

#include "toolkit/Colors.h"

namespace orva::toolkit {

void DrawFocusMark(HDC dc, const RECT& area) {
    // The platform's rectangle inverts every other pixel, which shows little on a middling grey.
    SetDCBrushColor(dc, kBlack);
    FrameRect(dc, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    const COLORREF text = ::SetTextColor(dc, kBlack);
    const COLORREF back = SetBkColor(dc, kWhite);
    DrawFocusRect(dc, &area);
    SetBkColor(dc, back);
    ::SetTextColor(dc, text);
}

} // namespace orva::toolkit
