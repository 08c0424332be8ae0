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

} // namespace orva::toolkit
