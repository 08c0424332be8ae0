/// One entry of a list box.
#pragma once

#include "toolkit/TmyString.h"

#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

/// Colour of an entry that has none of its own.
constexpr COLORREF kListTextColor = CLR_INVALID;

/// Owned by its list.
struct TmyLBitem {
    TmyString text;
    std::uintptr_t userWord = 0;     ///< the owner's; the list does not read it
    COLORREF color = kListTextColor; ///< of the text
};

} // namespace orva::toolkit
