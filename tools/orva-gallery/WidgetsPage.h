/// The page that shows every widget in every state.
#pragma once

#include "toolkit/TmyControl.h"

namespace orva::gallery {

/// Places the families in columns, each below the shortest column so far.
void FillWidgetsPage(toolkit::TmyControl* page);

} // namespace orva::gallery
