/// What outlives a control for the length of a call: whether it is still there, and which child comes next.

#include "toolkit/TmyControl.h"

namespace orva::toolkit {

TmyControl::LifeGuard::LifeGuard(TmyControl* guarded) : control(guarded), next(guarded->guards) {
    guarded->guards = this;
}

/// The last guard is the first to go as a rule; those that are members go in any order.
TmyControl::LifeGuard::~LifeGuard() {
    if (control == nullptr) {
        return;
    }
    LifeGuard** link = &control->guards;
    while (*link != this) {
        link = &(*link)->next;
    }
    *link = next;
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
