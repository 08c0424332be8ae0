/// What fills each family of the gallery; every function has a source file of its own.
#pragma once

#include "tools/orva-gallery/Family.h"

namespace orva::gallery {

void FillButtons(Family& family);
void FillLightButtons(Family& family);
void FillPanels(Family& family);
void FillLabels(Family& family);
void FillArrows(Family& family);
void FillSliders(Family& family);
void FillLists(Family& family);
void FillComboBoxes(Family& family);
void FillMsgBoxes(Family& family);
void FillEntries(Family& family);
void FillSpins(Family& family);
void FillFloatingSelections(Family& family);
void FillSmallControls(Family& family);

} // namespace orva::gallery
