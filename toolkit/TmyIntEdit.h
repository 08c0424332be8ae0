/// An entry of a 64-bit number.
#pragma once

#include "toolkit/ControlLink.h"
#include "toolkit/NumberStep.h"
#include "toolkit/NumberText.h"
#include "toolkit/TmyEdit.h"

#include <cstdint>

namespace orva::toolkit {

/// Which letters set the unit of a number entry.
enum class UnitMode : std::uint32_t {
    None = 0,
    Frequency = 1, ///< H, K, M, G: "Hz", "kHz", "MHz", "GHz"
    Time = 2,      ///< S, M, H: "s", "min", "h"
};

/// Holds a number and shows it as text. The text on show becomes the number at Return, at the loss of the
/// focus if it was edited, before each step of the wheel, and at a press of the linked `TmyUpDown`.
///
/// | key                  | effect                                                                        |
/// |----------------------|-------------------------------------------------------------------------------|
/// | digit                | enters; a to f in either case too while hexadecimal                           |
/// | letter, in unit mode | sets the unit and enters nothing; the number stays what it is                 |
/// | minus                | decimal only, with the caret at the beginning; a minus there must be selected |
/// | Return               | takes the text as the number, and gives the focus to the parent               |
/// | Escape               | puts the text of the number back, and gives the focus to the parent           |
/// | other characters     | dropped                                                                       |
/// | control characters   | the platform's: deletion, the clipboard                                       |
/// | wheel                | steps by `SetStep`, or by the size of the number with `SetWheelDigits`        |
///
/// While a `TmyFloatingSelection` of the entry is open, that gets its keys and the wheel first.
///
/// A fresh entry has no text, and a number that no one uses, 0x123456789: the first `SetValue` counts as a
/// change, and a range set before brings the number into it. Owners set range and value before they bind
/// events. Disabled, it takes no input; read-only, it shows the number and takes neither characters nor the
/// wheel.
class TmyIntEdit : public TmyEdit {
public:
    /// The number of a fresh entry.
    static constexpr std::int64_t kUnset = 0x123456789;

    explicit TmyIntEdit(TmyControl* parent, const Placement& placement, DWORD windowStyle = kEditStyle,
                        DWORD extendedStyle = 0);
    ~TmyIntEdit() override;

    /// Rounds to the step if asked to, limits to the range, shows the number, and fires `onValueChanged` if
    /// it is another than before.
    void SetValue(std::int64_t newValue);
    [[nodiscard]] std::int64_t GetValue() const { return value; }

    /// Both limits 0 mean none. A limit that passes the other moves it along, and the number is brought into
    /// the range.
    void SetMinimum(std::int64_t minimum);
    void SetMaximum(std::int64_t maximum);
    [[nodiscard]] std::int64_t GetMinimum() const { return range.minimum; }
    [[nodiscard]] std::int64_t GetMaximum() const { return range.maximum; }

    /// 1 at the start. The wheel stores here the step that it used.
    void SetStep(std::int64_t step) { wheel.step = step; }
    [[nodiscard]] std::int64_t GetStep() const { return wheel.step; }
    /// `SetValue` rounds towards 0 to a multiple of the step.
    void SetRoundToStep(bool rounds) { roundToStep = rounds; }
    /// The wheel's step follows the size of the number: the power of ten of its first digit, divided by ten
    /// so many times. 0, as at the start, is the fixed step.
    void SetWheelDigits(int digits) { wheel.digits = digits; }
    [[nodiscard]] int GetWheelDigits() const { return wheel.digits; }
    /// The wheel goes from one multiple of the step to the next.
    void SetWheelSnap(bool snaps) { wheel.snap = snaps; }
    [[nodiscard]] bool GetWheelSnap() const { return wheel.snap; }

    /// A hexadecimal entry has the unit "h"; the text follows.
    void SetHexadecimal(NumberBase newBase);
    [[nodiscard]] NumberBase GetHexadecimal() const { return base; }
    void SetUnitMode(UnitMode mode) { unitMode = mode; }

    /// Controls beside the entry that keep standing at its right, one after the other, at its height. They
    /// must be children of the same parent; null is none. Not owned.
    void SetLinked(TmyControl* up, TmyControl* down);

    /// A change by the user is under way.
    [[nodiscard]] bool IsEditing() const { return editing; }

    /// Moves the number as so many notches of the wheel do, up positive.
    void StepBy(int notches);
    /// `SetValue` on the user's behalf.
    void EnterValue(std::int64_t newValue);

    void SetBounds(int x, int y, int width, int height) override;
    void OnMove() override;
    void OnResize() override;
    void OnKeyDown(WPARAM& key, LPARAM flags) override;
    void OnChar(WPARAM& code, LPARAM flags) override;
    void OnFocusChange(bool gained) override;
    void OnEnableChanged() override;
    void OnVisibilityChanged(bool visible) override;
    void OnMouseWheel(int delta, TmyControl* sender) override;
    /// Takes an edited text first. At Return it fires once, and at Escape not at all, though both give the
    /// focus away.
    void OnCommit() override;

    TmyEvent<std::int64_t, TmyString&> onFormat;       ///< the number and its text, which may be changed
    TmyEvent<const TmyString&, std::int64_t&> onParse; ///< the text and its number, which may be changed
    TmyEvent<std::int64_t> onValueChanged;

    /// The text that shows a number, with what `onFormat` makes of it.
    [[nodiscard]] TmyString TextOf(std::int64_t number);

protected:
    /// The text of a number without its unit, and the number of a text.
    [[nodiscard]] virtual TmyString Format(std::int64_t number) const;
    [[nodiscard]] virtual std::int64_t Parse(const TmyString& text) const;
    /// Whether a character enters as part of a number; the minus sign is not asked for.
    [[nodiscard]] virtual bool IsNumberCharacter(char character) const;

private:
    class EditingScope;

    void ShowValue();
    void TakeShownText();
    void BringIntoRange();
    void Accept(WPARAM& code, LPARAM flags);
    void Revert(WPARAM& code);
    void GiveFocusToParent();
    [[nodiscard]] const char* UnitOfKey(char character) const;
    [[nodiscard]] bool MinusMayEnter() const;
    void PlaceLinked();
    [[nodiscard]] TmyComponent* OpenPopup() const;
    void ClosePopup();

    std::int64_t value = kUnset;
    NumberRange range;
    WheelRules wheel;
    NumberBase base = NumberBase::Decimal;
    UnitMode unitMode = UnitMode::None;
    bool roundToStep = false;
    bool editing = false;
    bool leaving = false; ///< the focus goes to the parent by a key
    TmyString shownText;  ///< that `value` was last shown as
    ControlLink<TmyControl> linkedUp;
    ControlLink<TmyControl> linkedDown;
};

} // namespace orva::toolkit
