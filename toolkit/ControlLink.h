/// A pointer to a control that someone else owns.
#pragma once

#include "toolkit/TmyControl.h"

#include <optional>

namespace orva::toolkit {

/// Points to a control, and to nothing once the control has been deleted. [window thread]
template <class Control>
class ControlLink {
public:
    ControlLink() = default;
    ControlLink(const ControlLink&) = delete;
    ControlLink& operator=(const ControlLink&) = delete;

    void Set(Control* control) {
        life.reset();
        target = control;
        if (control != nullptr) {
            life.emplace(control);
        }
    }

    [[nodiscard]] Control* Get() const { return life.has_value() && life->IsAlive() ? target : nullptr; }

private:
    Control* target = nullptr;
    std::optional<TmyControl::LifeGuard> life;
};

} // namespace orva::toolkit
