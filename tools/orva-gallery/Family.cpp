#include "tools/orva-gallery/Family.h"

#include "toolkit/FrameDrawing.h"
#include "toolkit/Tmy_Label.h"

#include <algorithm>

namespace orva::gallery {

namespace {

using toolkit::Placement;
using toolkit::StyleValue;
using toolkit::Tmy_Label;

constexpr COLORREF kFamilyColor = 0x4C4C4C;
constexpr COLORREF kTitleColor = 0x66E0FF;
constexpr COLORREF kSampleTextColor = 0xFFFFFF;
constexpr COLORREF kCaptionColor = 0xB4B4B4;

constexpr int kMargin = 10;
constexpr int kTitleHeight = 22;
constexpr int kCellGap = 9;
constexpr int kRowGap = 6;
constexpr int kCaptionGap = 2;
constexpr int kBottomMargin = 3;
constexpr int kCaptionHeight = 15;

} // namespace

Family::Family(TmyControl* parentControl, const char* title, int x, int y, int width)
    : TmyPanel(parentControl, title, {x, y, width, 0}), nextX(kMargin), rowTop(kTitleHeight + kRowGap) {
    SetBorderStyle(toolkit::kFrameRounded);
    SetWindowColor(kFamilyColor);
    SetTextColor(kSampleTextColor);
}

toolkit::TmyPanel::TitlePlace Family::PlaceTitle(const RECT& area) const {
    return {{area.left + kMargin, area.top + kRowGap / 2, area.right - kMargin, area.top + kTitleHeight},
            kTitleColor};
}

Placement Family::Cell(int width, int height, const char* caption) {
    auto* label = new Tmy_Label(this, {}, caption);
    label->SetStyleValue(StyleValue::TextColor, kCaptionColor, true);
    label->SetTextAlignment(toolkit::kTextLeft | toolkit::kTextTop);
    label->SetText(caption, true);
    const int captionWidth = static_cast<int>(label->Bounds().right - label->Bounds().left);
    const int cellWidth = std::max(width, captionWidth);
    if (!rowIsEmpty && nextX + cellWidth > GetClientWidth() - kMargin) {
        StartRow();
    }
    const Placement sample{nextX, rowTop, width, height};
    label->SetPosition(nextX, rowTop + height + kCaptionGap);
    nextX += cellWidth + kCellGap;
    rowHeight = std::max(rowHeight, height);
    rowIsEmpty = false;
    return sample;
}

void Family::StartRow() {
    if (!rowIsEmpty) {
        rowTop += rowHeight + kCaptionGap + kCaptionHeight + kRowGap;
    }
    nextX = kMargin;
    rowHeight = 0;
    rowIsEmpty = true;
}

void Family::Finish() {
    StartRow();
    SetSize(-1, rowTop - kRowGap + kBottomMargin);
}

} // namespace orva::gallery
