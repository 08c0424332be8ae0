#include "tools/orva-gallery/LayoutPage.h"

#include "tools/orva-gallery/Sample.h"

namespace orva::gallery {

namespace {

using toolkit::Alignment;
using toolkit::Anchors;
using toolkit::kAnchorCentre;
using toolkit::kAnchorNone;
using toolkit::StyleValue;
using toolkit::TmyControl;

// Blue, green, red. Windowless samples are of the first kind, windows of the second.
constexpr COLORREF kPageColor = 0x505050;
constexpr COLORREF kLight = 0x7A5A3A;
constexpr COLORREF kWindowed = 0x3A6A3A;
constexpr COLORREF kOverlayColor = 0x3A3A8A;
constexpr std::uint32_t kBorderWidth = 4;
constexpr std::uint32_t kRaisedBorder = 4;

constexpr int kBarSize = 34;
constexpr int kSideSize = 90;
constexpr int kHalfWidth = 440;

void Align(TmyControl* control, Alignment alignment) {
    control->SetAlignment(alignment);
}

/// Docked controls: the outer ones windowless, their counterparts windows.
void FillAlignments(TmyControl* area) {
    Align(new SampleControl(area, "Top", kLight, {0, 0, 0, kBarSize}), Alignment::Top);
    Align(new SampleWindow(area, "Top, window", kWindowed, {0, 0, 0, kBarSize}), Alignment::Top);
    Align(new SampleControl(area, "Bottom", kLight, {0, 0, 0, kBarSize}), Alignment::Bottom);
    Align(new SampleControl(area, "Left", kLight, {0, 0, kSideSize, 0}), Alignment::Left);
    Align(new SampleWindow(area, "Right, window", kWindowed, {0, 0, kSideSize, 0}), Alignment::Right);
    Align(new SampleControl(area, "Inner top", kLight, {0, 0, 0, kBarSize}), Alignment::InnerTop);
    Align(new SampleWindow(area, "Inner bottom, window", kWindowed, {0, 0, 0, kBarSize}),
          Alignment::InnerBottom);

    auto* hidden = new SampleControl(area, "Hidden", kLight, {0, 0, 0, kBarSize});
    hidden->SetVisible(false);
    hidden->SetAlignment(Alignment::Top);

    auto* fill = new SampleControl(area, "", kPageColor, {0, 0, 0, 0});
    fill->SetAlignment(Alignment::Fill);
    Align(new SampleControl(fill, "Fill: windowless, with children", kLight, {0, 0, 0, kBarSize}),
          Alignment::Top);
    Align(new SampleWindow(fill, "Window below a windowless control", kWindowed, {0, 0, 0, 0}),
          Alignment::Fill);
}

void Anchor(TmyControl* control, const Anchors& anchors) {
    control->SetAnchors(anchors);
}

void FillAnchors(TmyControl* area) {
    constexpr int kMargin = 12;
    Anchor(new SampleControl(area, "Both margins across", kLight, {0, kMargin, 10, kBarSize}),
           {kMargin, kAnchorNone, kMargin, kAnchorNone});
    Anchor(new SampleWindow(area, "Right", kWindowed, {0, 60, 130, kBarSize}),
           {kAnchorNone, kAnchorNone, kMargin, kAnchorNone});
    Anchor(new SampleControl(area, "Centre across", kLight, {0, 60, 130, kBarSize}),
           {kAnchorCentre, kAnchorNone, kAnchorNone, kAnchorNone});
    Anchor(new SampleWindow(area, "Centre", kWindowed, {0, 0, 140, 60}),
           {kAnchorCentre, kAnchorCentre, kAnchorNone, kAnchorNone});
    Anchor(new SampleControl(area, "Both margins down", kLight, {kMargin, 0, 110, 10}),
           {kAnchorNone, 110, kAnchorNone, 70});
    Anchor(new SampleControl(area, "Right, bottom", kLight, {0, 0, 130, kBarSize}),
           {kAnchorNone, kAnchorNone, kMargin, kMargin});
    Anchor(new SampleWindow(area, "Bottom", kWindowed, {kMargin, 0, 130, kBarSize}),
           {kAnchorNone, kAnchorNone, kAnchorNone, kMargin});
    auto* fixed = new SampleControl(area, "No anchors, disabled", kLight, {140, 110, 150, kBarSize});
    fixed->SetEnabled(false);
    auto* overlay = new SampleControl(area, "Overlay", kOverlayColor, {250, 125, 90, kBarSize});
    overlay->SetOverlay(true);
}

TmyControl* AddHalf(TmyControl* page, Alignment alignment) {
    auto* half = new SampleControl(page, "", kPageColor, {0, 0, kHalfWidth, 0});
    half->SetFocusable(false);
    half->SetStyleValue(StyleValue::BorderStyle, kRaisedBorder, true);
    half->SetStyleValue(StyleValue::BorderWidth, kBorderWidth);
    half->SetAlignment(alignment);
    return half;
}

} // namespace

void FillLayoutPage(TmyControl* page) {
    FillAlignments(AddHalf(page, Alignment::Left));
    FillAnchors(AddHalf(page, Alignment::Fill));
}

} // namespace orva::gallery
