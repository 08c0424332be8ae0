#include "toolkit/TmyMsgBox.h"
#include "toolkit/Tmy_Btn2.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using toolkit::Placement;
using toolkit::TmyMsgBox;

/// A message box that stays where it is put, as a part of the page.
class ShownBox : public TmyMsgBox {
public:
    ShownBox(Family& family, int count) : TmyMsgBox(&family, count) {}

    void StandIn(Family& family, const char* caption) {
        const int width = static_cast<int>(Bounds().right - Bounds().left);
        const int height = static_cast<int>(Bounds().bottom - Bounds().top);
        const auto popupStyle = static_cast<DWORD>(GetWindowLongA(Window(), GWL_STYLE));
        SetWindowLongA(Window(), GWL_STYLE, static_cast<LONG>((popupStyle & ~WS_POPUP) | WS_CHILD));
        ::SetParent(Window(), family.Window());
        const Placement place = family.Cell(width, height, caption);
        SetBounds(place.x, place.y, width, height);
        SetVisible(true);
    }
};

} // namespace

void FillMsgBoxes(Family& family) {
    auto* question = new ShownBox(family, 2);
    question->SetButtonText(0, "Yes");
    question->SetButtonText(1, "No");
    question->SetMessage("The file: \nC:\\call.wav\nalready exists. Overwrite it?",
                         "Overwrite existing file?");
    question->StandIn(family, "Two buttons");
    auto* tool = new ShownBox(family, 4);
    tool->SetMessage("As many buttons as there can be.", "Four");
    tool->StandIn(family, "Four buttons");
}

} // namespace orva::gallery
