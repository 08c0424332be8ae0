/// The toolkit's callback.
#pragma once

#include <cstdint>

namespace orva::toolkit {

class TmyControl;

/// One notification of a control to its owner: a target object and the member function of it to call.
///
///     button->onClick.Bind<&SetupDialog::OnApply>(this);     // void OnApply(TmyControl* sender)
///
/// The sender comes first, the event's own arguments behind it. A copy calls the same target. The target is
/// not owned and must outlive the binding.
template <typename... Arguments>
class TmyEvent {
public:
    /// Binds `Function`, a member function of `Owner` or of one of its bases, and its target; a null target
    /// makes the event silent.
    template <auto Function, class Owner>
    void Bind(Owner* owner) {
        target = owner;
        function = [](void* bound, TmyControl* sender, Arguments... arguments) {
            (static_cast<Owner*>(bound)->*Function)(sender, arguments...);
        };
    }

    /// Makes the event silent again.
    void Clear() {
        target = nullptr;
        function = nullptr;
    }

    [[nodiscard]] bool IsBound() const { return target != nullptr && function != nullptr; }

    /// Calls the bound function; does nothing without a target or a function. The handler may delete the
    /// sender, and with it this event: nothing of it is read after the call.
    void Fire(TmyControl* sender, Arguments... arguments) const {
        if (IsBound()) {
            function(target, sender, arguments...);
        }
    }

private:
    void* target = nullptr;
    void (*function)(void* bound, TmyControl* sender, Arguments... arguments) = nullptr;
};

} // namespace orva::toolkit
