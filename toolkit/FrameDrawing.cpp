#include "toolkit/FrameDrawing.h"

#include "toolkit/Colors.h"

#include <algorithm>
#include <array>

namespace orva::toolkit {

namespace {

/// Which way a ring faces.
enum class Relief { Raised, Sunken, Light, Dark };

/// A style made of rings.
struct RingStyle {
    Relief outer;
    Relief inner;  ///< of the inner half
    int strength;  ///< [percent] of the outermost ring's shade
    bool outlined; ///< the outermost ring is dark all around
    int ringsPerWidth;
};

constexpr int kStrong = 52;
constexpr int kSoft = 26;
constexpr int kHardly = 14;
constexpr int kFlatStrength = 45;
constexpr int kOutlineStrength = 62;

// The light of a ring fades from the outermost to the innermost, to this much of it [percent].
constexpr int kInnermost = 35;

constexpr std::uint32_t kFirstRingStyle = kFrameSunken;
constexpr std::array<RingStyle, 12> kRingStyles{{
    {Relief::Sunken, Relief::Sunken, kStrong, false, 1},
    {Relief::Raised, Relief::Raised, kStrong, false, 1},
    {Relief::Dark, Relief::Dark, kFlatStrength, false, 1},
    {Relief::Light, Relief::Light, kFlatStrength, false, 1},
    {Relief::Sunken, Relief::Sunken, kHardly, false, 1},
    {Relief::Sunken, Relief::Raised, kStrong, false, 1},
    {Relief::Raised, Relief::Sunken, kStrong, false, 2},
    {Relief::Raised, Relief::Sunken, kStrong, false, 1},
    {Relief::Sunken, Relief::Sunken, kSoft, false, 1},
    {Relief::Raised, Relief::Raised, kSoft, false, 1},
    {Relief::Sunken, Relief::Sunken, kStrong, true, 1},
    {Relief::Raised, Relief::Raised, kStrong, true, 1},
}};

COLORREF Lighter(COLORREF color, int strength) {
    return MixColors(color, kWhite, strength);
}

COLORREF Darker(COLORREF color, int strength) {
    return MixColors(color, kBlack, strength);
}

/// The top and left edges in one colour, the bottom and right ones, corners included, in the other.
void DrawRing(HDC dc, const RECT& ring, COLORREF topLeft, COLORREF bottomRight) {
    FillSolid(dc, {ring.left, ring.top, ring.right - 1, ring.top + 1}, topLeft);
    FillSolid(dc, {ring.left, ring.top, ring.left + 1, ring.bottom - 1}, topLeft);
    FillSolid(dc, {ring.left, ring.bottom - 1, ring.right, ring.bottom}, bottomRight);
    FillSolid(dc, {ring.right - 1, ring.top, ring.right, ring.bottom}, bottomRight);
}

void DrawReliefRing(HDC dc, const RECT& ring, Relief relief, COLORREF color, int strength) {
    const COLORREF light = Lighter(color, strength);
    const COLORREF dark = Darker(color, strength);
    switch (relief) {
    case Relief::Raised:
        DrawRing(dc, ring, light, dark);
        break;
    case Relief::Sunken:
        DrawRing(dc, ring, dark, light);
        break;
    case Relief::Light:
        DrawRing(dc, ring, light, light);
        break;
    case Relief::Dark:
        DrawRing(dc, ring, dark, dark);
        break;
    }
}

/// Strength of ring `index` of `count`, from the outermost in.
int Fade(int strength, int index, int count) {
    if (count <= 1) {
        return strength;
    }
    return strength - strength * (kFullPercent - kInnermost) * index / (kFullPercent * (count - 1));
}

bool IsFlat(Relief relief) {
    return relief == Relief::Light || relief == Relief::Dark;
}

void DrawRings(HDC dc, const RECT& area, const RingStyle& style, int width, COLORREF color) {
    const int count = width * style.ringsPerWidth;
    const int outerCount = style.outer == style.inner ? count : (count + 1) / 2;
    RECT ring = area;
    for (int index = 0; index < count && ring.left < ring.right && ring.top < ring.bottom; ++index) {
        const bool isOuter = index < outerCount;
        const Relief relief = isOuter ? style.outer : style.inner;
        // An outline alone would tell nothing of the relief: a single ring does without.
        if (style.outlined && index == 0 && count > 1) {
            DrawReliefRing(dc, ring, Relief::Dark, color, kOutlineStrength);
        } else {
            const int strength = IsFlat(relief) ? style.strength
                                 : isOuter      ? Fade(style.strength, index, outerCount)
                                                : Fade(style.strength, count - 1 - index, count - outerCount);
            DrawReliefRing(dc, ring, relief, color, strength);
        }
        InflateRect(&ring, -1, -1);
    }
}

void DrawRoundedRectangle(HDC dc, const RECT& area, COLORREF color) {
    constexpr int kCorner = 7;
    SetDCPenColor(dc, color);
    RoundRect(dc, area.left, area.top, area.right, area.bottom, kCorner, kCorner);
}

/// The light one lies one pixel further right and down, as along an edge cut into the surface.
void DrawRoundedPair(HDC dc, const RECT& area, COLORREF color) {
    const HGDIOBJ pen = SelectObject(dc, GetStockObject(DC_PEN));
    const HGDIOBJ brush = SelectObject(dc, GetStockObject(NULL_BRUSH));
    DrawRoundedRectangle(dc, {area.left + 1, area.top + 1, area.right, area.bottom}, Lighter(color, kSoft));
    DrawRoundedRectangle(dc, {area.left, area.top, area.right - 1, area.bottom - 1}, Darker(color, kStrong));
    SelectObject(dc, brush);
    SelectObject(dc, pen);
}

} // namespace

void DrawFrame(HDC dc, const RECT& area, std::uint32_t style, int width, COLORREF color, int brightness) {
    const COLORREF base = ScaleColor(color, brightness);
    if (style == kFrameOutline) {
        DrawReliefRing(dc, area, Relief::Raised, base, kStrong);
    } else if (style == kFrameRounded) {
        DrawRoundedPair(dc, area, base);
    } else if (style >= kFirstRingStyle && style < kFirstRingStyle + kRingStyles.size()) {
        DrawRings(dc, area, kRingStyles[style - kFirstRingStyle], std::max(width, 0), base);
    }
}

COLORREF FaceColor(COLORREF surface, bool enabled) {
    constexpr int kDimming = 25;
    return enabled ? surface : Darker(surface, kDimming);
}

} // namespace orva::toolkit
