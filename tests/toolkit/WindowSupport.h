/// What the window tests share.
#pragma once

#include "tests/toolkit/RecordingControl.h"
#include "toolkit/TmyApplication.h"

#include <ostream>
#include <windows.h>

/// As "left top right bottom", in the messages of failed comparisons.
inline std::ostream& operator<<(std::ostream& out, const RECT& rect) {
    return out << rect.left << ' ' << rect.top << ' ' << rect.right << ' ' << rect.bottom;
}

inline bool operator==(const RECT& one, const RECT& other) {
    return EqualRect(&one, &other) != 0;
}

namespace orva::toolkit {

constexpr DWORD kPopup = WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN;
constexpr DWORD kPopupHidden = WS_POPUP;
constexpr DWORD kChild = WS_CHILD | WS_VISIBLE;

/// Where the tests' windows stand unless the place matters: outer and client size are the same without a
/// frame.
constexpr Placement kPlace{100, 100, 200, 150};

inline LRESULT Send(const TmyComponent& component, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return SendMessageA(component.Window(), message, wParam, lParam);
}

inline LPARAM Point(int x, int y) {
    return static_cast<LPARAM>(MAKELONG(x, y));
}

inline void Pump() {
    TmyApplication::ProcessPendingMessages();
}

/// Pumps messages until `condition` holds or the time is over.
///
/// \return whether it holds
template <class Condition>
bool PumpUntil(Condition condition, DWORD milliseconds = 5000) {
    const DWORD start = GetTickCount();
    while (!condition()) {
        if (GetTickCount() - start > milliseconds) {
            return false;
        }
        Pump();
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
    }
    return true;
}

/// Lets a new window settle: what its first showing brings, exposures among it, has been handled.
inline void Settle(TmyComponent& component) {
    constexpr DWORD kQuiet = 30; // [ms] without a message
    Pump();
    while (MsgWaitForMultipleObjects(0, nullptr, FALSE, kQuiet, QS_ALLINPUT) == WAIT_OBJECT_0) {
        Pump();
    }
    component.Update();
}

/// The window's update region, as a region that the caller compares.
class UpdateRegion {
public:
    explicit UpdateRegion(const TmyComponent& component) : region(CreateRectRgn(0, 0, 0, 0)) {
        GetUpdateRgn(component.Window(), region, FALSE);
    }
    ~UpdateRegion() { DeleteObject(region); }
    UpdateRegion(const UpdateRegion&) = delete;
    UpdateRegion& operator=(const UpdateRegion&) = delete;

    /// Whether it is the union of these rectangles.
    [[nodiscard]] bool Is(std::initializer_list<RECT> rects) const { return Is(rects, {}); }

    /// Whether it is the union of these rectangles less those.
    [[nodiscard]] bool Is(std::initializer_list<RECT> rects, std::initializer_list<RECT> less) const {
        HRGN expected = CreateRectRgn(0, 0, 0, 0);
        Combine(expected, rects, RGN_OR);
        Combine(expected, less, RGN_DIFF);
        const bool equal = EqualRgn(expected, region) != 0;
        DeleteObject(expected);
        return equal;
    }

    [[nodiscard]] bool IsEmpty() const {
        RECT box;
        return GetRgnBox(region, &box) == NULLREGION;
    }

    friend std::ostream& operator<<(std::ostream& out, const UpdateRegion& update) {
        alignas(RGNDATA) char memory[4096];
        auto* data = reinterpret_cast<RGNDATA*>(memory);
        if (GetRegionData(update.region, sizeof memory, data) == 0) {
            return out << "(large)";
        }
        const auto* rects = reinterpret_cast<const RECT*>(data->Buffer);
        for (DWORD index = 0; index < data->rdh.nCount; ++index) {
            out << '{' << rects[index] << '}';
        }
        return out;
    }

private:
    static void Combine(HRGN target, std::initializer_list<RECT> rects, int mode) {
        for (const RECT& rect : rects) {
            HRGN one = CreateRectRgnIndirect(&rect);
            CombineRgn(target, target, one, mode);
            DeleteObject(one);
        }
    }

    HRGN region;
};

inline void Validate(const TmyComponent& component) {
    ValidateRect(component.Window(), nullptr);
}

} // namespace orva::toolkit
