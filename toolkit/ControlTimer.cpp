#include "toolkit/ControlTimer.h"

#include "toolkit/TimerPlatform.h"
#include "toolkit/TmyApplication.h"
#include "toolkit/TmyComponent.h"
#include "toolkit/Trace.h"

#include <exception>

namespace orva::toolkit {

namespace {

ControlTimer* running = nullptr; ///< head of the list of those that run

} // namespace

ControlTimer::ControlTimer(TmyControl* timedControl, UINT_PTR timerId) : control(timedControl), id(timerId) {}

ControlTimer::~ControlTimer() {
    Stop();
}

void ControlTimer::Start(UINT milliseconds) {
    const TmyComponent* component = control->NearestComponent();
    if (component == nullptr || (window != nullptr && window != component->Window())) {
        Stop();
    }
    if (component == nullptr) {
        return;
    }
    // The object's address is an id that no other timer of the window has.
    const auto platformId = reinterpret_cast<UINT_PTR>(this);
    if (TimerCalls().set(component->Window(), platformId, milliseconds, &ControlTimer::OnElapsed) == 0) {
        return;
    }
    if (window == nullptr) {
        window = component->Window();
        next = running;
        running = this;
    }
}

void ControlTimer::Stop() {
    if (window == nullptr) {
        return;
    }
    TimerCalls().kill(window, reinterpret_cast<UINT_PTR>(this));
    window = nullptr;
    for (ControlTimer** link = &running; *link != nullptr; link = &(*link)->next) {
        if (*link == this) {
            *link = next;
            break;
        }
    }
    next = nullptr;
}

/// A message may still come for a timer that was stopped, even for one that is no more. No exception may
/// cross into the platform.
void CALLBACK ControlTimer::OnElapsed(HWND /*timedWindow*/, UINT /*message*/, UINT_PTR platformId,
                                      DWORD /*time*/) {
    ControlTimer* timer = running;
    while (timer != nullptr && reinterpret_cast<UINT_PTR>(timer) != platformId) {
        timer = timer->next;
    }
    if (timer == nullptr) {
        return;
    }
    try {
        timer->control->OnTimer(timer->id);
    } catch (const std::exception& error) {
        Trace(&Application(), 0, "Exception at a control's timer: %s", error.what());
    } catch (...) {
        Trace(&Application(), 0, "Exception at a control's timer");
    }
}

} // namespace orva::toolkit
