#include "toolkit/TmyIntEdit.h"

#include "toolkit/TmyApplication.h"
#include "toolkit/TmyPopupFocus.h"
#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {

namespace {

constexpr char kHexadecimalUnit[] = "h";
constexpr WPARAM kFirstPrintable = ' ';
constexpr WPARAM kCharacterEnd = 0x100;

char LowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

} // namespace

/// Tells that the user is the one who changes the number, for as long as the entry lives.
class TmyIntEdit::EditingScope {
public:
    explicit EditingScope(TmyIntEdit* changedEdit)
        : edit(changedEdit), life(changedEdit), before(changedEdit->editing) {
        edit->editing = true;
    }
    ~EditingScope() {
        if (IsAlive()) {
            edit->editing = before;
        }
    }
    EditingScope(const EditingScope&) = delete;
    EditingScope& operator=(const EditingScope&) = delete;
    [[nodiscard]] bool IsAlive() const { return life.IsAlive(); }

private:
    TmyIntEdit* edit;
    LifeGuard life;
    bool before;
};

TmyIntEdit::TmyIntEdit(TmyControl* parentControl, const Placement& placement, DWORD windowStyle,
                       DWORD extendedStyle)
    : TmyEdit(parentControl, "", placement, windowStyle, extendedStyle) {
    RegisterType(this, TypeId::IntEdit, "IntEdit");
}

TmyIntEdit::~TmyIntEdit() = default;

// --- the number --------------------------------------------------------------------------------------------

void TmyIntEdit::SetValue(std::int64_t newValue) {
    if (roundToStep) {
        newValue = RoundToStep(newValue, wheel.step);
    }
    newValue = range.Limit(newValue);
    const bool changed = newValue != value;
    value = newValue;
    const LifeGuard life(this);
    ShowValue();
    // A handler of the text's change may have set another number, and told of it.
    if (changed && life.IsAlive() && value == newValue) {
        onValueChanged.Fire(this, newValue);
    }
}

void TmyIntEdit::ShowValue() {
    const LifeGuard life(this);
    const TmyString text = TextOf(value);
    if (life.IsAlive()) {
        shownText = text;
        SetText(text);
    }
}

TmyString TmyIntEdit::TextOf(std::int64_t number) {
    TmyString text = Format(number);
    onFormat.Fire(this, number, text);
    return text;
}

/// Makes the text on show the number. The entry may be gone afterwards.
void TmyIntEdit::TakeShownText() {
    const TmyString text = GetText();
    std::int64_t number = Parse(text);
    const LifeGuard life(this);
    onParse.Fire(this, text, number);
    if (life.IsAlive()) {
        SetValue(number);
    }
}

TmyString TmyIntEdit::Format(std::int64_t number) const {
    return FormatNumber(number, base).c_str();
}

std::int64_t TmyIntEdit::Parse(const TmyString& text) const {
    return ParseNumber(text.Text(), base);
}

void TmyIntEdit::SetMinimum(std::int64_t minimum) {
    if (range.minimum == minimum) {
        return;
    }
    range.minimum = minimum;
    if (range.maximum < minimum) {
        range.maximum = minimum;
    }
    BringIntoRange();
}

void TmyIntEdit::SetMaximum(std::int64_t maximum) {
    if (range.maximum == maximum) {
        return;
    }
    range.maximum = maximum;
    if (range.minimum > maximum) {
        range.minimum = maximum;
    }
    BringIntoRange();
}

void TmyIntEdit::BringIntoRange() {
    if (range.Limit(value) != value) {
        SetValue(value);
    }
}

void TmyIntEdit::SetHexadecimal(NumberBase newBase) {
    if (base == newBase) {
        return;
    }
    const bool wasHexadecimal = base != NumberBase::Decimal;
    base = newBase;
    if (base != NumberBase::Decimal) {
        SetUnit(kHexadecimalUnit);
    } else if (wasHexadecimal && GetUnit() == kHexadecimalUnit) {
        SetUnit("");
    }
    if (value != kUnset) {
        ShowValue();
    }
}

// --- keys --------------------------------------------------------------------------------------------------

void TmyIntEdit::OnChar(WPARAM& code, LPARAM flags) {
    if (!IsEnabled()) {
        code = 0;
        return;
    }
    if (TmyComponent* popup = OpenPopup()) {
        popup->OnChar(code, flags);
        if (code == 0) {
            return;
        }
    }
    if (code == VK_RETURN) {
        Accept(code, flags);
        return;
    }
    if (code == VK_ESCAPE) {
        Revert(code);
        return;
    }
    if (code >= kFirstPrintable) {
        const char character = code < kCharacterEnd ? static_cast<char>(code) : ' ';
        if (const char* keyUnit = UnitOfKey(character)) {
            SetUnit(keyUnit);
            code = 0;
            return;
        }
        if (!IsNumberCharacter(character) && !(character == '-' && MinusMayEnter())) {
            code = 0;
            return;
        }
    }
    TmyEdit::OnChar(code, flags);
}

bool TmyIntEdit::IsNumberCharacter(char character) const {
    const char lower = LowerCase(character);
    return IsDigit(character) || (base != NumberBase::Decimal && lower >= 'a' && lower <= 'f');
}

/// The unit that a letter stands for; null if it is no unit key, or the entry is not to be changed.
const char* TmyIntEdit::UnitOfKey(char character) const {
    if (IsReadOnly()) {
        return nullptr;
    }
    const char key = LowerCase(character);
    if (unitMode == UnitMode::Frequency) {
        return key == 'h' ? "Hz" : key == 'k' ? "kHz" : key == 'm' ? "MHz" : key == 'g' ? "GHz" : nullptr;
    }
    if (unitMode == UnitMode::Time) {
        return key == 's' ? "s" : key == 'm' ? "min" : key == 'h' ? "h" : nullptr;
    }
    return nullptr;
}

bool TmyIntEdit::MinusMayEnter() const {
    if (base != NumberBase::Decimal || Window() == nullptr) {
        return false;
    }
    DWORD first = 0;
    DWORD end = 0;
    SendMessageA(Window(), EM_GETSEL, reinterpret_cast<WPARAM>(&first), reinterpret_cast<LPARAM>(&end));
    return first == 0 && (end > 0 || GetText().At(0) != '-');
}

/// Return: the text becomes the number.
void TmyIntEdit::Accept(WPARAM& code, LPARAM flags) {
    const EditingScope scope(this);
    TakeShownText();
    if (scope.IsAlive()) {
        TmyEdit::OnChar(code, flags);
    }
    code = 0;
    if (scope.IsAlive()) {
        GiveFocusToParent();
    }
    if (scope.IsAlive()) {
        Invalidate();
    }
}

/// Escape: the number becomes the text.
void TmyIntEdit::Revert(WPARAM& code) {
    const LifeGuard life(this);
    code = 0;
    SetValue(value);
    if (life.IsAlive()) {
        GiveFocusToParent();
    }
}

void TmyIntEdit::GiveFocusToParent() {
    if (GetParent() == nullptr) {
        return;
    }
    const LifeGuard life(this);
    leaving = true;
    GetParent()->SetFocus();
    if (life.IsAlive()) {
        leaving = false;
    }
}

void TmyIntEdit::OnCommit() {
    if (leaving) {
        return;
    }
    const EditingScope scope(this);
    // A text that the user has left alone need not be one that can be read back.
    if (GetText() != shownText) {
        TakeShownText();
    }
    if (scope.IsAlive()) {
        TmyEdit::OnCommit();
    }
}

void TmyIntEdit::EnterValue(std::int64_t newValue) {
    const EditingScope scope(this);
    SetValue(newValue);
}

// --- the pop-up --------------------------------------------------------------------------------------------

TmyComponent* TmyIntEdit::OpenPopup() const {
    return OpenPopupOf(this);
}

/// The entry has the focus for its pop-up: what the one loses, the other does.
void TmyIntEdit::ClosePopup() {
    if (TmyComponent* popup = OpenPopup()) {
        popup->OnFocusChange(false);
    }
}

void TmyIntEdit::OnKeyDown(WPARAM& key, LPARAM flags) {
    TmyComponent* popup = IsEnabled() ? OpenPopup() : nullptr;
    const LifeGuard life(this);
    if (popup != nullptr) {
        popup->OnKeyDown(key, flags);
    }
    if (life.IsAlive() && key != 0) {
        TmyEdit::OnKeyDown(key, flags);
    }
}

void TmyIntEdit::OnFocusChange(bool gained) {
    const LifeGuard life(this);
    if (!gained) {
        ClosePopup();
    }
    if (life.IsAlive()) {
        TmyEdit::OnFocusChange(gained);
    }
}

void TmyIntEdit::OnEnableChanged() {
    const LifeGuard life(this);
    if (!IsEnabled()) {
        ClosePopup();
    }
    if (life.IsAlive()) {
        TmyEdit::OnEnableChanged();
    }
}

void TmyIntEdit::OnVisibilityChanged(bool visible) {
    const LifeGuard life(this);
    if (!visible) {
        ClosePopup();
    }
    if (life.IsAlive()) {
        TmyEdit::OnVisibilityChanged(visible);
    }
}

// --- the wheel ---------------------------------------------------------------------------------------------

void TmyIntEdit::OnMouseWheel(int delta, TmyControl* /*sender*/) {
    if (!IsEnabled() || IsReadOnly()) {
        return;
    }
    if (TmyComponent* popup = OpenPopup()) {
        popup->OnMouseWheel(delta, popup);
    } else {
        StepBy(delta);
    }
}

void TmyIntEdit::StepBy(int notches) {
    if (notches == 0) {
        return;
    }
    const EditingScope scope(this);
    TakeShownText();
    if (!scope.IsAlive()) {
        return;
    }
    const std::int64_t end = notches < 0 ? range.minimum : range.maximum;
    if (range.IsLimited() && value == end) {
        return;
    }
    const WheelMove move = MoveByWheel(value, notches, wheel, range);
    wheel.step = move.step;
    SetValue(move.value);
}

// --- linked controls ---------------------------------------------------------------------------------------

void TmyIntEdit::SetLinked(TmyControl* up, TmyControl* down) {
    linkedUp.Set(up);
    linkedDown.Set(down);
    PlaceLinked();
}

void TmyIntEdit::SetBounds(int x, int y, int width, int height) {
    const LifeGuard life(this);
    TmyEdit::SetBounds(x, y, width, height);
    if (life.IsAlive()) {
        PlaceLinked();
    }
}

void TmyIntEdit::OnMove() {
    const LifeGuard life(this);
    TmyEdit::OnMove();
    if (life.IsAlive()) {
        PlaceLinked();
    }
}

void TmyIntEdit::OnResize() {
    const LifeGuard life(this);
    TmyEdit::OnResize();
    if (life.IsAlive()) {
        PlaceLinked();
    }
}

void TmyIntEdit::PlaceLinked() {
    int x = static_cast<int>(Bounds().right);
    const int y = static_cast<int>(Bounds().top);
    for (const ControlLink<TmyControl>* link : {&linkedUp, &linkedDown}) {
        if (TmyControl* control = link->Get()) {
            control->SetPosition(x, y);
            x = static_cast<int>(control->Bounds().right);
        }
    }
}

} // namespace orva::toolkit
