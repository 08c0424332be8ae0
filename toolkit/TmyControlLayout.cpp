/// Places and sizes.

#include "toolkit/GdiRegion.h"
#include "toolkit/TmyComponent.h"
#include "toolkit/TmyControl.h"

#include <algorithm>
#include <array>

namespace orva::toolkit {

namespace {

int WidthOf(const RECT& rect) {
    return rect.right - rect.left;
}
int HeightOf(const RECT& rect) {
    return rect.bottom - rect.top;
}

/// One axis of the anchors' rule.
///
/// \param first, second  the anchors
/// \param from, to       the child's edges, changed in place
/// \param low, high      the area's edges
void PlaceAxis(std::int32_t first, std::int32_t second, LONG& from, LONG& to, LONG low, LONG high) {
    const LONG size = to - from;
    if (first == kAnchorCentre) {
        from = low + (high - low - size) / 2;
        to = from + size;
    } else if (second != kAnchorNone) {
        to = high - second;
        from = first == kAnchorNone ? to - size : low + first;
        to = std::max(from, to);
    }
}

} // namespace

int TmyControl::GetClientWidth() const {
    return WidthOf(bounds);
}

int TmyControl::GetClientHeight() const {
    return HeightOf(bounds);
}

void TmyControl::GetPosition(POINT* point, bool screen) const {
    *point = {bounds.left, bounds.top};
    if (!screen || parent == nullptr) {
        return;
    }
    *point = OffsetInComponent();
    const TmyControl* component = parent;
    while (component != nullptr && component->window == nullptr) {
        component = component->parent;
    }
    if (component != nullptr) {
        ClientToScreen(component->window, point);
    }
}

// --- moving ------------------------------------------------------------------------------------------------

void TmyControl::SetBounds(int x, int y, int width, int height) {
    width = std::max(width, 0);
    height = std::max(height, 0);
    OnConstrainBounds(&x, &y, &width, &height);
    const RECT before = bounds;
    const RECT after{x, y, x + std::max(width, 0), y + std::max(height, 0)};
    if (EqualRect(&before, &after) != 0) {
        return;
    }
    const bool moved = before.left != after.left || before.top != after.top;
    const bool resized = WidthOf(before) != WidthOf(after) || HeightOf(before) != HeightOf(after);
    bounds = after;
    RepaintInParent(before, after, moved);

    const LifeGuard life(this);
    if (moved) {
        MoveWindowsBelow();
        OnMove();
    }
    if (resized && life.IsAlive()) {
        OnResize();
        if (life.IsAlive()) {
            Realign();
        }
    }
    if (life.IsAlive() && alignment != Alignment::None && parent != nullptr) {
        parent->Realign();
    }
}

void TmyControl::RepaintInParent(const RECT& before, const RECT& after, bool moved) {
    if (parent == nullptr || HasState(ControlState::Hidden)) {
        return;
    }
    const GdiRegion old(before);
    const GdiRegion now(after);
    CombineRgn(old.Get(), old.Get(), now.Get(), moved ? RGN_OR : RGN_XOR);
    parent->InvalidateRegion(old.Get());
}

/// Windows below a control without one stand in the coordinates of another window: they must follow it by
/// themselves.
void TmyControl::MoveWindowsBelow() {
    ChildWalk children(this);
    while (TmyControl* child = children.Next()) {
        if (child->window == nullptr) {
            child->MoveWindowsBelow();
        } else if (!child->IsTopLevelWindow()) {
            child->SetPosition(child->bounds.left, child->bounds.top);
        }
    }
}

void TmyControl::SetPosition(int x, int y) {
    SetBounds(x, y, WidthOf(bounds), HeightOf(bounds));
}

void TmyControl::SetSize(int width, int height) {
    SetBounds(bounds.left, bounds.top, width, height);
}

void TmyControl::FitToChildren(int extraX, int extraY) {
    LONG right = 0;
    LONG bottom = 0;
    for (const TmyControl* child = firstChild; child != nullptr; child = child->nextSibling) {
        if (!child->IsTopLevelWindow()) {
            right = std::max(right, child->bounds.right);
            bottom = std::max(bottom, child->bounds.bottom);
        }
    }
    SetSize(right + extraX, bottom + extraY);
}

// --- layout ------------------------------------------------------------------------------------------------

void TmyControl::SetAlignment(Alignment newAlignment) {
    if (alignment == newAlignment) {
        return;
    }
    alignment = newAlignment;
    if (parent != nullptr) {
        parent->Realign();
    }
}

void TmyControl::SetAnchors(const Anchors& newAnchors) {
    anchors = newAnchors;
    if (parent != nullptr) {
        parent->Realign();
    }
}

void TmyControl::ClearAnchors() {
    anchors.reset();
}

/// Windows that a layout may move; none, and there is no need for a batch.
int TmyControl::CountBatch() const {
    int count = 0;
    for (const TmyControl* child = firstChild; child != nullptr; child = child->nextSibling) {
        const bool anchored = child->anchors.has_value() && child->window != nullptr;
        if (!child->IsTopLevelWindow() && (child->alignment != Alignment::None || anchored)) {
            ++count;
        }
    }
    return count;
}

void TmyControl::Realign() {
    // A child that is placed asks for a layout in turn. It gets another round, since a child may have taken
    // another size than the one it was given; but not for ever, since two may never agree.
    constexpr int kMostRounds = 3;
    layoutAsked = true;
    if (layingOut) {
        return;
    }
    const LifeGuard life(this);
    layingOut = true;
    try {
        for (int round = 0; life.IsAlive() && layoutAsked && round < kMostRounds; ++round) {
            layoutAsked = false;
            PlaceChildren();
        }
    } catch (...) {
        // A handler's: it must not be the last layout for that.
        if (life.IsAlive()) {
            layingOut = false;
        }
        throw;
    }
    if (life.IsAlive()) {
        layingOut = false;
    }
}

void TmyControl::PlaceChildren() {
    const int count = CountBatch();
    HDWP batch = count > 0 ? BeginDeferWindowPos(count) : nullptr;
    RECT whole;
    GetClientArea(&whole);
    RECT area = whole;
    constexpr std::array<std::array<Alignment, 2>, 4> kPasses{{{Alignment::Top, Alignment::Bottom},
                                                               {Alignment::Left, Alignment::Right},
                                                               {Alignment::InnerTop, Alignment::InnerBottom},
                                                               {Alignment::Fill, Alignment::Fill}}};
    const LifeGuard life(this);
    for (const auto& [first, second] : kPasses) {
        if (life.IsAlive()) {
            Dock(area, batch, first, second);
        }
    }
    if (life.IsAlive()) {
        PlaceAnchored(whole, batch);
    }
    if (batch != nullptr) {
        EndDeferWindowPos(batch);
    }
}

/// One pass: docks the children of either alignment, and takes their places off the area.
void TmyControl::Dock(RECT& area, HDWP& batch, Alignment first, Alignment second) {
    ChildWalk children(this);
    while (TmyControl* child = children.Next()) {
        const bool docks = child->alignment == first || child->alignment == second;
        if (!docks || child->HasState(ControlState::Hidden) || child->IsTopLevelWindow()) {
            continue;
        }
        RECT place = area;
        switch (child->alignment) {
        case Alignment::Top:
        case Alignment::InnerTop:
            place.bottom = place.top + HeightOf(child->bounds);
            area.top = place.bottom;
            break;
        case Alignment::Bottom:
        case Alignment::InnerBottom:
            place.top = place.bottom - HeightOf(child->bounds);
            area.bottom = place.top;
            break;
        case Alignment::Left:
            place.right = place.left + WidthOf(child->bounds);
            area.left = place.right;
            break;
        case Alignment::Right:
            place.left = place.right - WidthOf(child->bounds);
            area.right = place.left;
            break;
        default:
            break;
        }
        PlaceChild(child, place, batch);
    }
}

void TmyControl::PlaceAnchored(const RECT& area, HDWP& batch) {
    ChildWalk children(this);
    while (TmyControl* child = children.Next()) {
        if (child->alignment != Alignment::None || !child->anchors.has_value() || child->IsTopLevelWindow()) {
            continue;
        }
        RECT place = child->bounds;
        PlaceAxis(child->anchors->left, child->anchors->right, place.left, place.right, area.left,
                  area.right);
        PlaceAxis(child->anchors->top, child->anchors->bottom, place.top, place.bottom, area.top,
                  area.bottom);
        PlaceChild(child, place, batch);
    }
}

void TmyControl::PlaceChild(TmyControl* child, const RECT& place, HDWP& batch) {
    const int width = std::max(0, WidthOf(place));
    const int height = std::max(0, HeightOf(place));
    if (child->bounds.left == place.left && child->bounds.top == place.top &&
        WidthOf(child->bounds) == width && HeightOf(child->bounds) == height) {
        return;
    }
    if (child->window == nullptr || batch == nullptr) {
        child->SetBounds(place.left, place.top, width, height);
        return;
    }
    const POINT offset = child->parent->OffsetInComponent();
    batch = DeferWindowPos(batch, child->window, nullptr, place.left + offset.x, place.top + offset.y, width,
                           height, SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOOWNERZORDER);
}

} // namespace orva::toolkit
