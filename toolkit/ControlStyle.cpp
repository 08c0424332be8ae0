#include "toolkit/ControlStyle.h"

#include <algorithm>

namespace orva::toolkit {

ControlStyle* ControlStyle::Copy() const {
    auto* copy = new ControlStyle;
    copy->values = values;
    return copy;
}

void ControlStyle::Join(TmyControl* control) {
    sharers.push_back(control);
}

void ControlStyle::Leave(TmyControl* control) {
    // Controls go in about the reverse of the order they came.
    const auto found = std::find(sharers.rbegin(), sharers.rend(), control);
    if (found != sharers.rend()) {
        sharers.erase(std::next(found).base());
    }
    DeleteIfUnused();
}

void ControlStyle::DeleteIfUnused() {
    if (sharers.empty() && keepers == 0) {
        delete this;
    }
}

bool ControlStyle::IsSharedBy(const TmyControl* control) const {
    return std::find(sharers.begin(), sharers.end(), control) != sharers.end();
}

} // namespace orva::toolkit
