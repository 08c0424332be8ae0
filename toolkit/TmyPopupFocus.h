/// A pop-up that is open.
#pragma once

namespace orva::toolkit {

class TmyComponent;
class TmyControl;

/// Entry of the application's list of open pop-ups: when the focus goes elsewhere, the pop-up closes.
struct TmyPopupFocus {
    TmyComponent* popup; ///< the window on top; not owned
    TmyControl* owner;   ///< the control that opened it
};

/// Enters a pop-up into the application's list.
void RememberPopup(TmyComponent* popup, TmyControl* owner);
/// Takes the pop-ups from the list that a control is, or has opened.
void ForgetPopups(const TmyControl* popupOrOwner);
/// Whether a pop-up is in the list.
[[nodiscard]] bool IsPopupOpen(const TmyComponent* popup);
/// The first open pop-up of a control; null if it has none.
[[nodiscard]] TmyComponent* OpenPopupOf(const TmyControl* owner);

} // namespace orva::toolkit
