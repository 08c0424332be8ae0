#include "controls/CtbComboListBox.h"
#include "controls/CtbSliderBar.h"
#include "toolkit/FrameDrawing.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using controls::CtbComboListBox;
using controls::CtbSliderBar;

constexpr int kLength = 60;
constexpr int kHeight = 8;
constexpr COLORREF kThumb = 0x00FF00;
constexpr COLORREF kTrack = 0x006400;

CtbSliderBar* AddBar(Family& family, const char* caption, int position) {
    auto* bar = new CtbSliderBar(&family, family.Cell(kLength, kHeight, caption));
    bar->SetColours(kThumb, kTrack);
    bar->SetPosition(position);
    return bar;
}

void FillBars(Family& family) {
    AddBar(family, "Bar", 40);
    AddBar(family, "Disabled", 40)->SetEnabled(false);
    AddBar(family, "Grey", 40)->SetGrey(true);
    AddBar(family, "Empty", 0);
    AddBar(family, "Full", 100);
    auto* reversed = AddBar(family, "Reversed", 0);
    reversed->SetMinimum(100);
    reversed->SetMaximum(0);
    reversed->SetPosition(40);
    auto* framed = AddBar(family, "Border 3", 40);
    framed->SetBorderStyle(toolkit::kFrameSunken);
    framed->SetBorderWidth(1);
    auto* vertical = new CtbSliderBar(&family, family.Cell(kHeight, 36, "Vertical"));
    vertical->SetVertical(true);
    vertical->SetColours(kThumb, kTrack);
    vertical->SetPosition(40);
}

/// A pop-up list inside the family's window instead of on the desktop.
class PinnedList : public CtbComboListBox {
public:
    PinnedList(Family& family, const toolkit::Placement& cell) : CtbComboListBox(&family, cell) {
        SetWindowLongA(Window(), GWL_STYLE, WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN);
        SetWindowLongA(Window(), GWL_EXSTYLE, 0);
        ::SetParent(Window(), family.Window());
        SetBounds(cell.x, cell.y, cell.width, cell.height);
        ShowWindow(Window(), SW_SHOWNA);
    }
};

} // namespace

void FillSmallControls(Family& family) {
    FillBars(family);
    auto* list = new PinnedList(family, family.Cell(kLength, 36, "Pop-up list"));
    list->AddItem("1.wav");
    list->AddItem("2.wav");
    list->Select(1, false);
}

} // namespace orva::gallery
