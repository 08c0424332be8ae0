/// What outlives a control for the length of a call: whether it is still there, and which child comes next.

#include "toolkit/TmyControl.h"

namespace orva::toolkit {

TmyControl::LifeGuard::LifeGuard(TmyControl* guarded) : control(guarded), next(guarded->guards) {
    guarded->guards = this;
}

TmyControl::LifeGuard::~LifeGuard() {
    if (control != nullptr) {
        control->guards = next;
    }
}

TmyControl::ChildWalk::ChildWalk(TmyControl* walkedParent)
    : parent(walkedParent), child(walkedParent->firstChild), outer(walkedParent->walks) {
    parent->walks = this;
}

TmyControl::ChildWalk::~ChildWalk() {
    if (parent != nullptr) {
        parent->walks = outer;
    }
}

TmyControl* TmyControl::ChildWalk::Next() {
    TmyControl* next = child;
    if (next != nullptr) {
        child = next->nextSibling;
    }
    return next;
}

} // namespace orva::toolkit
