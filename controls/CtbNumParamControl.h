/// A number with its name, its unit and buttons to step it.
#pragma once

#include "toolkit/TmyPanel.h"
#include "toolkit/TmyString.h"

#include <cstdint>

namespace orva::toolkit {
class TmyIntEdit;
class TmyLabel;
class TmyUpDown;
} // namespace orva::toolkit

namespace orva::controls {

/// Label, entry, spin buttons and unit in a row. Typed, spun and wheeled numbers take the same way as those
/// set by the program: limited to the range, shown, and told by `onChange` if they are a change.
///
/// The range is 0 to 0 at first, so that the number is 0 until it is set. Owners set range and value before
/// they bind `onChange`. There is no border until one is given.
class CtbNumParamControl : public toolkit::TmyPanel {
public:
    CtbNumParamControl(toolkit::TmyControl* parent, const toolkit::Placement& placement);

    /// Text of the label; null is empty.
    ///
    /// \param relayout  whether to place everything anew, as `Relayout` does
    void SetTitle(const char* text, bool relayout);
    /// Text of the unit; null is empty, and takes no room.
    void SetUnit(const char* text, bool relayout);
    /// Whether there are spin buttons; there are at first.
    void SetSpinVisible(bool visible, bool relayout);

    /// A limit that passes the other moves it along, and a number outside the range comes to its end.
    void SetMinimum(std::int64_t newMinimum);
    void SetMaximum(std::int64_t newMaximum);
    /// What a notch of the wheel or a press on the spin buttons moves by; 1 at first. With `SetWheelDigits`
    /// the entry has a step of its own, by the size of the number.
    void SetStep(std::int64_t newStep);
    void SetValue(std::int64_t newValue);
    [[nodiscard]] std::int64_t GetMinimum() const { return minimum; }
    [[nodiscard]] std::int64_t GetMaximum() const { return maximum; }
    [[nodiscard]] std::int64_t GetStep() const { return step; }
    [[nodiscard]] std::int64_t GetValue() const { return value; }

    /// Size of the entry [pixels].
    void SetFieldSize(int width, int height);
    /// Most characters that can be typed.
    void SetDigits(int count);
    /// As the entry's own.
    void SetWheelSnap(bool snaps);
    void SetWheelDigits(int digits);

    /// Places label, entry, spin buttons and unit from left to right, without gaps, and takes their width and
    /// the entry's height.
    void Relayout();

    [[nodiscard]] toolkit::TmyIntEdit* Edit() const { return edit; }
    [[nodiscard]] toolkit::TmyLabel* Label() const { return label; }
    [[nodiscard]] toolkit::TmyLabel* UnitLabel() const { return unitLabel; }
    [[nodiscard]] toolkit::TmyUpDown* Spin() const { return spin; }
    [[nodiscard]] bool HasUnit() const { return hasUnit; }
    [[nodiscard]] bool IsSpinVisible() const { return spinVisible; }

    toolkit::TmyEvent<std::int64_t> onChange; ///< the number; hides the base's

private:
    void OnEditValueChanged(toolkit::TmyControl* sender, std::int64_t newValue);

    std::int64_t value = 0;
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
    std::int64_t step = 1;
    bool hasUnit = false;
    bool spinVisible = true;
    toolkit::TmyIntEdit* edit; ///< these four are children
    toolkit::TmyLabel* label;
    toolkit::TmyLabel* unitLabel;
    toolkit::TmyUpDown* spin;
};

} // namespace orva::controls
