/// The page that shows how controls are placed.
#pragma once

#include "toolkit/TmyControl.h"

namespace orva::gallery {

/// Left half: every alignment, by windowless controls and by windows, one inside the other. Right half: every
/// form of anchors, a hidden child, a disabled one and an overlay.
void FillLayoutPage(toolkit::TmyControl* page);

} // namespace orva::gallery
