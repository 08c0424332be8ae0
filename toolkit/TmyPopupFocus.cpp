#include "toolkit/TmyPopupFocus.h"

#include "toolkit/TmyApplication.h"
#include "toolkit/TmyComponent.h"

#include <cstdint>
#include <memory>

namespace orva::toolkit {

void RememberPopup(TmyComponent* popup, TmyControl* owner) {
    Application().popupList.Add(std::make_unique<TmyPopupFocus>(TmyPopupFocus{popup, owner}));
}

void ForgetPopups(const TmyControl* popupOrOwner) {
    auto& popups = Application().popupList;
    for (std::int32_t index = popups.Count() - 1; index >= 0; --index) {
        const TmyPopupFocus* entry = popups.Get(index);
        if (entry->popup == popupOrOwner || entry->owner == popupOrOwner) {
            popups.Remove(index);
        }
    }
}

bool IsPopupOpen(const TmyComponent* popup) {
    const auto& popups = Application().popupList;
    for (std::int32_t index = 0; index < popups.Count(); ++index) {
        if (popups.Get(index)->popup == popup) {
            return true;
        }
    }
    return false;
}

TmyComponent* OpenPopupOf(const TmyControl* owner) {
    const auto& popups = Application().popupList;
    for (std::int32_t index = 0; index < popups.Count(); ++index) {
        if (popups.Get(index)->owner == owner) {
            return popups.Get(index)->popup;
        }
    }
    return nullptr;
}

} // namespace orva::toolkit
