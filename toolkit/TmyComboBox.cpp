#include "toolkit/TmyComboBox.h"

#include "toolkit/Colors.h"
#include "toolkit/FocusMark.h"
#include "toolkit/FrameDrawing.h"
#include "toolkit/IndexStep.h"
#include "toolkit/TmyApplication.h"
#include "toolkit/TmyPopupFocus.h"
#include "toolkit/Tmy_Btn.h"
#include "toolkit/TypeRegistry.h"
#include "toolkit/WorkArea.h"

#include <algorithm>
#include <memory>

namespace orva::toolkit {

namespace {

constexpr std::uint32_t kBorderWidth = 2;
constexpr int kButtonWidth = 16;
constexpr int kMostLines = 12; ///< of the open list
constexpr int kTextGap = 3;    ///< on both sides of the text

constexpr DWORD kListWindowStyle = WS_POPUP | WS_CLIPSIBLINGS | WS_CLIPCHILDREN;
constexpr DWORD kListExtendedStyle = WS_EX_TOOLWINDOW | WS_EX_TOPMOST;

/// A press on the box closes the open list before it arrives, and must not open it again [ms].
constexpr DWORD kSamePress = 100;

constexpr LPARAM kAltHeld = 0x20000000; ///< among the flags of a key

} // namespace

RECT PlaceDropDown(const RECT& box, int height, const RECT& workArea) {
    const LONG below = workArea.bottom - box.bottom;
    const LONG above = box.top - workArea.top;
    if (height > below && above > below) {
        return {box.left, box.top - std::min<LONG>(height, above), box.right, box.top};
    }
    return {box.left, box.bottom, box.right, box.bottom + std::clamp<LONG>(height, 0, std::max(below, 0L))};
}

// --- the list ----------------------------------------------------------------------------------------------

/// Tells its box what happens to it.
class TmyComboBox::DropList : public TmyListBox {
public:
    explicit DropList(TmyComboBox* owningBox)
        : TmyListBox(owningBox, {0, 0, 0, 0}, ListStyle::InCombo, kListWindowStyle, kListExtendedStyle),
          box(owningBox) {}

    void OnEscape() override { box->Close(); }

    void OnFocusChange(bool gained) override {
        const LifeGuard life(this);
        if (!gained && IsPopupOpen(this)) {
            box->OnListFocusLost();
        }
        if (life.IsAlive()) {
            TmyListBox::OnFocusChange(gained);
        }
    }

private:
    TmyComboBox* box;
};

// --- the box -----------------------------------------------------------------------------------------------

TmyComboBox::TmyComboBox(TmyControl* parentControl, const Placement& placement)
    : TmyPanel(parentControl, "", placement, kTabbingStyle),
      button(new Tmy_Btn(this, {0, 0, kButtonWidth, 0})) {
    RegisterType(this, TypeId::ComboBox, "ComboBox");
    TmyPanel::SetStyleValue(StyleValue::BorderStyle, kFrameSunken);
    TmyPanel::SetStyleValue(StyleValue::BorderWidth, kBorderWidth);
    SetTextAlignment(kTextLeftMiddle);
    button->SetArrow(ArrowGlyph::SolidDown);
    button->onMouseDown.Bind<&TmyComboBox::OnButtonDown>(this);
    button->SetAlignment(Alignment::Right);
    list = new DropList(this);
    list->onEnter.Bind<&TmyComboBox::OnListEnter>(this);
    list->onDestroy.Bind<&TmyComboBox::OnListDestroyed>(this);
}

TmyComboBox::~TmyComboBox() {
    ForgetPopups(this);
    if (list != nullptr) {
        list->onDestroy.Clear();
        delete list; // it knows this object as what it is
    }
}

void TmyComboBox::OnListDestroyed(TmyControl* /*sender*/) {
    ForgetPopups(this);
    list = nullptr;
    isOpen = false;
}

// --- items -------------------------------------------------------------------------------------------------

std::int32_t TmyComboBox::AddItem(const char* text) {
    return list != nullptr ? list->AddItem(text) : kNone;
}

void TmyComboBox::Clear() {
    if (list != nullptr) {
        list->Clear();
    }
    Select(kNone, false);
}

TmyLBitem* TmyComboBox::GetItem(std::int32_t index) const {
    return list != nullptr ? list->GetItem(index) : nullptr;
}

std::int32_t TmyComboBox::GetCount() const {
    return list != nullptr ? list->GetCount() : 0;
}

void TmyComboBox::Select(std::int32_t index, bool fire) {
    const std::int32_t chosen = index >= 0 && index < GetCount() ? index : kNone;
    if (chosen == selected) {
        return;
    }
    selected = chosen;
    if (list != nullptr) {
        list->Select(selected, false);
    }
    SetText(selected != kNone ? GetItem(selected)->text : TmyString());
    if (fire) {
        onChange.Fire(this, selected);
    }
}

void TmyComboBox::MoveSelection(std::int32_t lines) {
    if (GetCount() == 0) {
        return;
    }
    Select(StepIndex(selected, lines, GetCount()), true);
}

// --- opening and closing -----------------------------------------------------------------------------------

void TmyComboBox::PlaceList() {
    RECT box{};
    GetWindowRect(window, &box);
    const int lines = std::min(GetCount(), kMostLines);
    const RECT place = PlaceDropDown(box, list->HeightFor(lines), WorkAreaAt(window));
    list->SetBounds(place.left, place.top, place.right - place.left, place.bottom - place.top);
}

void TmyComboBox::Open() {
    if (isOpen || list == nullptr || window == nullptr || GetCount() == 0) {
        return;
    }
    isOpen = true;
    RememberPopup(list, this);
    button->SetDown(true);
    PlaceList();
    list->Select(selected, false);
    const LifeGuard life(this);
    list->SetVisible(true);
    if (life.IsAlive() && isOpen) {
        list->SetFocus();
    }
}

void TmyComboBox::Close() {
    if (!isOpen) {
        return;
    }
    closedByFocus = false;
    const LifeGuard life(this);
    const bool hadFocus = list->HasFocus();
    // The loss of the focus, which comes before the list is hidden, is not to close it once more.
    ForgetPopups(this);
    if (hadFocus) {
        SetFocus();
    }
    if (life.IsAlive()) {
        Hide();
    }
}

void TmyComboBox::OnListFocusLost() {
    closedByFocus = true;
    closedAt = GetTickCount();
    ForgetPopups(this);
    Hide();
}

void TmyComboBox::Hide() {
    isOpen = false;
    button->SetDown(false);
    if (list != nullptr) {
        list->SetVisible(false);
        list->Select(selected, false);
    }
}

void TmyComboBox::Toggle() {
    const bool closedByThis = closedByFocus && GetTickCount() - closedAt < kSamePress;
    closedByFocus = false;
    if (isOpen) {
        Close();
    } else if (!closedByThis) {
        Open();
    }
}

void TmyComboBox::OnListEnter(TmyControl* /*sender*/, std::int32_t index) {
    const LifeGuard life(this);
    Close();
    if (life.IsAlive()) {
        Select(index, true);
    }
}

// --- input -------------------------------------------------------------------------------------------------

void TmyComboBox::OnButtonDown(TmyControl* /*sender*/, MouseButton pressedButton, WPARAM /*flags*/, int /*x*/,
                               int /*y*/) {
    if (pressedButton == MouseButton::Left) {
        Toggle();
    }
}

void TmyComboBox::OnLeftButtonDown(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    const LifeGuard life(this);
    TmyPanel::OnLeftButtonDown(flags, x, y);
    if (life.IsAlive()) {
        Toggle();
    }
}

void TmyComboBox::OnMouseWheel(int delta, TmyControl* /*sender*/) {
    if (!IsEnabled()) {
        return;
    }
    bool moves = true;
    const LifeGuard life(this);
    onWheel.Fire(this, delta, wheelKeys, moves);
    if (life.IsAlive() && moves) {
        MoveSelection(-delta);
    }
}

void TmyComboBox::OnKeyDown(WPARAM& key, LPARAM flags) {
    if (!IsEnabled()) {
        return;
    }
    const LifeGuard life(this);
    TmyPanel::OnKeyDown(key, flags);
    if (!life.IsAlive()) {
        return;
    }
    switch (key) {
    case VK_UP:
        MoveSelection(-1);
        break;
    case VK_DOWN:
        if ((flags & kAltHeld) != 0) {
            Open();
        } else {
            MoveSelection(1);
        }
        break;
    case VK_SPACE:
    case VK_F4:
        Open();
        break;
    default:
        break;
    }
}

void TmyComboBox::OnEnableChanged() {
    const LifeGuard life(this);
    if (!IsEnabled()) {
        Close();
    }
    if (life.IsAlive()) {
        TmyPanel::OnEnableChanged();
    }
}

void TmyComboBox::OnVisibilityChanged(bool visible) {
    const LifeGuard life(this);
    if (!visible) {
        Close();
    }
    if (life.IsAlive()) {
        TmyPanel::OnVisibilityChanged(visible);
    }
}

// --- look --------------------------------------------------------------------------------------------------

void TmyComboBox::SetFont(HFONT newFont) {
    const LifeGuard life(this);
    TmyPanel::SetFont(newFont);
    if (life.IsAlive() && list != nullptr && list->GetFont() == InheritedFont()) {
        list->SetFont(InheritedFont());
    }
}

/// The list has a style record of its own, and follows in its colours.
void TmyComboBox::SetStyleValue(StyleValue index, std::uint32_t value, bool unshare) {
    const LifeGuard life(this);
    TmyPanel::SetStyleValue(index, value, unshare);
    if (life.IsAlive() && list != nullptr && index != StyleValue::BorderStyle &&
        index != StyleValue::BorderWidth) {
        list->SetStyleValue(index, value);
    }
}

RECT TmyComboBox::TextArea(const RECT& area) const {
    RECT text = area;
    text.right = std::max(text.left, text.right - button->GetClientWidth());
    return text;
}

TmyPanel::TitlePlace TmyComboBox::PlaceTitle(const RECT& area) const {
    RECT text = TextArea(area);
    InflateRect(&text, -kTextGap, 0);
    return {text, TmyPanel::PlaceTitle(area).color};
}

void TmyComboBox::OnDrawBackground(HDC dc, const RECT& area) {
    FillSolid(dc, area, GetStyleValue(StyleValue::BackColor));
}

void TmyComboBox::OnDrawFocus(HDC dc, const RECT& area) {
    DrawFocusMark(dc, TextArea(area));
}

} // namespace orva::toolkit
