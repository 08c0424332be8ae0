/// A list that opens outside its parent's window.
#pragma once

#include "toolkit/TmyListBox.h"

#include <windows.h>

namespace orva::controls {

/// A list box in a window of its own on the desktop, hidden at the start, which its parent's top-level window
/// owns. Its place is held relative to the parent, and taken each time it is shown.
///
/// States, mouse and keys are those of a list in a combo box. When the focus goes elsewhere it fires
/// `onClose`; whoever opened it hides it then.
class CtbComboListBox : public toolkit::TmyListBox {
public:
    /// \param placement  in the parent's client coordinates [pixels]
    CtbComboListBox(toolkit::TmyControl* parent, const toolkit::Placement& placement);

    /// Takes effect when the list is shown next.
    void SetPlace(const toolkit::Placement& placement) { place = placement; }

    void SetVisible(bool visible) override;
    /// Fires `onClose` at a loss, before anything else.
    void OnFocusChange(bool gained) override;

    toolkit::TmyEvent<> onClose;

private:
    void LeaveParent();
    void TakePlace();

    toolkit::Placement place;
};

} // namespace orva::controls
