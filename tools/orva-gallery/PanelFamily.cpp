#include "toolkit/FrameDrawing.h"
#include "toolkit/Tmy_Panel.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using toolkit::StyleValue;
using toolkit::Tmy_Panel;
using toolkit::TmyPanel;

constexpr int kWidth = 62;
constexpr int kHeight = 30;

} // namespace

void FillPanels(Family& family) {
    for (std::uint32_t style = toolkit::kFrameNone; style <= toolkit::kFrameRaisedOutlined; ++style) {
        char caption[16];
        wsprintfA(caption, "Style %u", style);
        auto* panel = new TmyPanel(&family, "Text", family.Cell(kWidth, kHeight, caption));
        panel->SetTextAlignment(toolkit::kTextInTheMiddle);
        panel->SetBorderStyle(style);
    }
    family.StartRow();
    auto* disabled = new TmyPanel(&family, "Text", family.Cell(kWidth, kHeight, "Disabled"));
    disabled->SetTextAlignment(toolkit::kTextInTheMiddle);
    disabled->SetEnabled(false);
    new Focused<TmyPanel>(&family, "Text", family.Cell(kWidth, kHeight, "Focused"), toolkit::kTabbingStyle);
    auto* grey = new TmyPanel(&family, "Text", family.Cell(kWidth, kHeight, "Grey"));
    grey->SetGrey(true);
    new TmyPanel(&family, "Text", family.Cell(kWidth, kHeight, "Left and top"));
    new TmyPanel(&family, "A long title of a panel", family.Cell(kWidth, kHeight, "Long text"));
    auto* light = new Tmy_Panel(&family, family.Cell(kWidth, kHeight, "Tmy_Panel"));
    light->SetBorderStyle(toolkit::kFrameRaised);
    auto* lightSunken = new Tmy_Panel(&family, family.Cell(kWidth, kHeight, "Tmy_Panel, 3"));
    lightSunken->SetBorderStyle(toolkit::kFrameSunken);
}

} // namespace orva::gallery
