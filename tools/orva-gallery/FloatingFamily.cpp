#include "toolkit/TmyFloatingSelection.h"
#include "toolkit/TmyFloatingSelection2.h"
#include "toolkit/TmyIntEdit.h"
#include "tools/orva-gallery/Families.h"

#include <utility>

namespace orva::gallery {

namespace {

using toolkit::TmyFloatingSelection;
using toolkit::TmyFloatingSelection2;
using toolkit::TmyIntEdit;

constexpr int kWidth = 76;
constexpr int kHeight = 20;
constexpr int kRowHeight = 15;

/// A pop-up that stands still below its entry, inside the family's window.
template <class Popup>
class Pinned : public Popup {
public:
    template <class... Arguments>
    explicit Pinned(TmyIntEdit* owner, Arguments&&... arguments)
        : Popup(owner, std::forward<Arguments>(arguments)...) {}

    void Pin() {
        const HWND family = ::GetParent(this->Entry()->Window());
        SetWindowLongA(this->Window(), GWL_STYLE, WS_CHILD | WS_CLIPSIBLINGS);
        SetWindowLongA(this->Window(), GWL_EXSTYLE, 0);
        ::SetParent(this->Window(), family);
        this->Prepare();
        const RECT& above = this->Entry()->Bounds();
        const SIZE size = this->WindowSize();
        this->SetBounds(static_cast<int>(above.left), static_cast<int>(above.bottom),
                        static_cast<int>(size.cx), static_cast<int>(size.cy));
        this->SetVisible(true);
    }
};

/// An entry at the top of a cell that has room for its pop-up.
TmyIntEdit* AddEntry(Family& family, const char* caption, int width, int rows) {
    const toolkit::Placement cell = family.Cell(width, kHeight + rows * kRowHeight + 2, caption);
    auto* entry = new TmyIntEdit(&family, {cell.x, cell.y, kWidth, kHeight});
    entry->SetValue(20);
    return entry;
}

void AddList(Family& family, const char* caption, int count, bool enabled) {
    constexpr int kRows = 3;
    TmyIntEdit* entry = AddEntry(family, caption, kWidth, kRows);
    auto* list = new Pinned<TmyFloatingSelection>(entry, kRows, kRowHeight);
    for (int number = 1; number <= count; ++number) {
        list->AddItem(10 * number);
    }
    entry->SetEnabled(enabled);
    list->Pin();
}

void AddDigits(Family& family, const char* caption, std::int64_t value, int turned) {
    constexpr int kRows = 3;
    constexpr int kDigitsWidth = 210;
    TmyIntEdit* entry = AddEntry(family, caption, kDigitsWidth, kRows);
    entry->SetValue(value);
    auto* digits = new Pinned<TmyFloatingSelection2>(entry, kRows, kRowHeight);
    digits->Pin();
    const RECT column = digits->ColumnRect(2);
    const int x = static_cast<int>(column.left) + 1;
    digits->OnMouseMove(0, x, 1);
    digits->OnLeftButtonDown(MK_LBUTTON, x, 1);
    digits->OnMouseMove(MK_LBUTTON, x, 1 - turned);
}

} // namespace

void FillFloatingSelections(Family& family) {
    AddList(family, "Few", 2, true);
    AddList(family, "Many, scrolled", 12, true);
    AddList(family, "Disabled", 12, false);
    AddDigits(family, "Digits, one turned", -146524550, 5);
}

} // namespace orva::gallery
