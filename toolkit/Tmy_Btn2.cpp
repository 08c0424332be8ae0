#include "toolkit/Tmy_Btn2.h"

#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {

Tmy_Btn2::Tmy_Btn2(TmyControl* parentControl, const Placement& placement, const char* buttonText)
    : Tmy_Btn(parentControl, placement, buttonText) {
    RegisterType(this, TypeId::Btn2, "Btn2");
}

void Tmy_Btn2::StartRepeat() {
    delayTimer.Start(kRepeatDelay);
}

void Tmy_Btn2::StopRepeat() {
    delayTimer.Stop();
    repeatTimer.Stop();
}

void Tmy_Btn2::OnTimer(UINT_PTR id) {
    if (id != kDelayTimer && id != kRepeatTimer) {
        Tmy_Btn::OnTimer(id);
        return;
    }
    if (!IsEnabled()) {
        return;
    }
    if (!HasCapture()) {
        CancelPress(); // someone took the mouse away: the release will not come here
        return;
    }
    if (id == kDelayTimer) {
        delayTimer.Stop();
        repeatTimer.Start(kRepeatInterval);
    }
    OnPress();
}

} // namespace orva::toolkit
