/// A button without a window that repeats.
#pragma once

#include "toolkit/ControlTimer.h"
#include "toolkit/Tmy_Btn.h"

namespace orva::toolkit {

/// The arrow of scroll bars and spin buttons. `onPress` comes at the press, after 500 ms, and then every 50
/// ms while the left button is held.
class Tmy_Btn2 : public Tmy_Btn {
public:
    /// Ids at which `OnTimer` is called.
    static constexpr UINT_PTR kDelayTimer = 1;
    static constexpr UINT_PTR kRepeatTimer = 2;

    explicit Tmy_Btn2(TmyControl* parent, const Placement& placement = {}, const char* buttonText = "");

    void OnTimer(UINT_PTR id) override;

protected:
    void StartRepeat() override;
    void StopRepeat() override;

private:
    ControlTimer delayTimer{this, kDelayTimer};
    ControlTimer repeatTimer{this, kRepeatTimer};
};

} // namespace orva::toolkit
