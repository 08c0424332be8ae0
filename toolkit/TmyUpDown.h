/// Two or three small buttons that step something.
#pragma once

#include "toolkit/ControlLink.h"
#include "toolkit/TmyPanel.h"

namespace orva::toolkit {

class TmyIntEdit;
class Tmy_Btn2;

/// Shares its area between a button up and a button down, which repeat while they are held: one above the
/// other, or, if it is wider than high, down at the left and up at the right. A third button between them has
/// a third of the area. Its border style is 0, its pointer the hand.
///
/// A press and each repetition step the entry that it belongs to, as a notch of the wheel does: the text on
/// show is taken as the number first. Then `onStep` fires. Disabled, or with its entry disabled or read-only,
/// nothing steps.
class TmyUpDown : public TmyPanel {
public:
    TmyUpDown(TmyControl* parent, const Placement& placement, bool withMiddle = false,
              DWORD windowStyle = kWidgetStyle, DWORD extendedStyle = 0);

    /// The entry to step, of the same parent, at whose right it stands from now on; null is none. Not owned.
    void SetEdit(TmyIntEdit* newEdit);

    [[nodiscard]] Tmy_Btn2* UpButton() const { return up; }
    [[nodiscard]] Tmy_Btn2* DownButton() const { return down; }
    [[nodiscard]] Tmy_Btn2* MiddleButton() const {
        return middle;
    } ///< null without one; its events are the owner's

    void OnResize() override;
    void OnMouseWheel(int delta, TmyControl* sender) override; ///< steps, if it has an entry

    TmyEvent<int> onStep; ///< 1 up, -1 down; the wheel's notches

private:
    void OnUpPress(TmyControl* sender);
    void OnDownPress(TmyControl* sender);
    void Step(int notches);
    void PlaceButtons();

    Tmy_Btn2* up;
    Tmy_Btn2* down;
    Tmy_Btn2* middle;
    ControlLink<TmyIntEdit> edit;
};

} // namespace orva::toolkit
