/// Watches for the pointer to rest over a control.
#pragma once

#include "toolkit/TmyComponent.h"

namespace orva::toolkit {

/// A hidden window whose timer tells when the pointer has stayed in a control long enough. One control is
/// watched at a time; it hears of it by `OnHover`, once.
class TmyHoveringMonitor : public TmyComponent {
public:
    TmyHoveringMonitor();

    /// Watches `control`; does nothing if that is what is watched already.
    void Start(TmyControl* control);
    /// Ends the watch, if it is on `control`.
    void Stop(const TmyControl* control);

    void OnTimer(UINT_PTR id) override;

private:
    void EndWatch();

    TmyControl* tracked = nullptr;
    DWORD startTicks = 0; ///< [ms]
};

} // namespace orva::toolkit
