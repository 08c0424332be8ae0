/// The drawing functions that all widgets share.

#include "tests/toolkit/WindowSupport.h"
#include "toolkit/ArrowDrawing.h"
#include "toolkit/Colors.h"
#include "toolkit/FocusMark.h"
#include "toolkit/FrameDrawing.h"
#include "toolkit/TextDrawing.h"
#include "toolkit/TmyBitmap24.h"

#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr COLORREF kPaper = RGB(100, 110, 120);
constexpr COLORREF kInk = RGB(255, 255, 0);
constexpr RECT kNothing{0, 0, 0, 0};

/// Something to draw on.
class Sheet {
public:
    Sheet(int width, int height, COLORREF color = kPaper) : bitmap(width, height), paper(color) {
        FillSolid(Dc(), Whole(), color);
    }

    [[nodiscard]] HDC Dc() { return bitmap.GetDC(); }
    [[nodiscard]] RECT Whole() const { return {0, 0, bitmap.Width(), bitmap.Height()}; }
    [[nodiscard]] COLORREF At(int x, int y) {
        GdiFlush();
        const std::uint8_t* row = bitmap.GetRow(y);
        return RGB(row[3 * x + 2], row[3 * x + 1], row[3 * x]);
    }
    [[nodiscard]] int Count(COLORREF color) {
        int count = 0;
        for (int y = 0; y < bitmap.Height(); ++y) {
            for (int x = 0; x < bitmap.Width(); ++x) {
                count += At(x, y) == color ? 1 : 0;
            }
        }
        return count;
    }
    /// The smallest rectangle around what is not paper any more.
    [[nodiscard]] RECT Drawn() {
        RECT box{bitmap.Width(), bitmap.Height(), 0, 0};
        for (int y = 0; y < bitmap.Height(); ++y) {
            for (int x = 0; x < bitmap.Width(); ++x) {
                if (At(x, y) != paper) {
                    box = {std::min<LONG>(box.left, x), std::min<LONG>(box.top, y),
                           std::max<LONG>(box.right, x + 1), std::max<LONG>(box.bottom, y + 1)};
                }
            }
        }
        return box.left < box.right ? box : kNothing;
    }
    /// One line per row: '#' is drawn, '.' is paper.
    [[nodiscard]] std::string Map() {
        std::string map;
        for (int y = 0; y < bitmap.Height(); ++y) {
            for (int x = 0; x < bitmap.Width(); ++x) {
                map += At(x, y) == paper ? '.' : '#';
            }
            map += '\n';
        }
        return map;
    }

private:
    TmyBitmap24 bitmap;
    COLORREF paper;
};

HFONT GuiFont() {
    return static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT));
}

// --- colours -----------------------------------------------------------------------------------------------

TEST(Colors, AreScaledOffsetAndMixedChannelByChannel) {
    EXPECT_EQ(BrightnessOf(RGB(1, 20, 255)), 276);
    EXPECT_EQ(ScaleColor(RGB(100, 50, 10), 100), RGB(100, 50, 10));
    EXPECT_EQ(ScaleColor(RGB(100, 50, 10), 50), RGB(50, 25, 5));
    EXPECT_EQ(ScaleColor(RGB(100, 200, 0), 200), RGB(200, 255, 0));
    EXPECT_EQ(ScaleColor(RGB(100, 200, 1), -5), RGB(0, 0, 0));
    EXPECT_EQ(ScaleColor(RGB(0, 1, 255), INT_MAX), RGB(0, 255, 255));
    EXPECT_EQ(OffsetColor(RGB(10, 100, 250), -32), RGB(0, 68, 218));
    EXPECT_EQ(OffsetColor(RGB(10, 100, 250), 32), RGB(42, 132, 255));
    EXPECT_EQ(OffsetColor(RGB(10, 100, 250), INT_MIN), RGB(0, 0, 0));
    EXPECT_EQ(MixColors(RGB(0, 100, 200), RGB(100, 0, 200), 0), RGB(0, 100, 200));
    EXPECT_EQ(MixColors(RGB(0, 100, 200), RGB(100, 0, 200), 25), RGB(25, 75, 200));
    EXPECT_EQ(MixColors(RGB(0, 100, 200), RGB(100, 0, 200), 100), RGB(100, 0, 200));
    EXPECT_EQ(MixColors(RGB(0, 100, 200), RGB(100, 0, 200), 140), RGB(100, 0, 200));
    EXPECT_EQ(MixColors(0, 0xFFFFFF, 50), 0x808080u) << "127.5 is rounded up";
}

TEST(Colors, FillWhatIsNotEmpty) {
    Sheet sheet(10, 10);
    FillSolid(sheet.Dc(), {2, 3, 5, 4}, kInk);
    EXPECT_EQ(sheet.Drawn(), (RECT{2, 3, 5, 4}));
    EXPECT_EQ(sheet.Count(kInk), 3);
    FillSolid(sheet.Dc(), {8, 3, 8, 9}, kInk);
    FillSolid(sheet.Dc(), {9, 9, 7, 7}, kInk);
    EXPECT_EQ(sheet.Count(kInk), 3);
}

// --- text --------------------------------------------------------------------------------------------------

TEST(TextPlace, FollowsTheAlignmentCode) {
    constexpr SIZE kText{20, 10};
    constexpr RECT kArea{100, 200, 150, 230}; // 50 by 30
    const auto place = [&](std::uint32_t code) { return PlaceText(kText, kArea, code); };
    EXPECT_EQ(place(0), (RECT{100, 200, 120, 210})) << "left and top";
    EXPECT_EQ(place(1), (RECT{100, 200, 120, 210}));
    EXPECT_EQ(place(1 + 16), (RECT{100, 200, 120, 210}));
    EXPECT_EQ(place(2), (RECT{130, 200, 150, 210}));
    EXPECT_EQ(place(4), (RECT{115, 200, 135, 210}));
    EXPECT_EQ(place(32), (RECT{100, 220, 120, 230}));
    EXPECT_EQ(place(64), (RECT{100, 210, 120, 220}));
    EXPECT_EQ(place(68), (RECT{115, 210, 135, 220}));
    EXPECT_EQ(place(65), (RECT{100, 210, 120, 220}));
    EXPECT_EQ(place(66), (RECT{130, 210, 150, 220}));
    EXPECT_EQ(place(2 + 32), (RECT{130, 220, 150, 230}));
}

TEST(TextPlace, WideTextKeepsToTheAreaAndHighTextIsCentredBeyondIt) {
    EXPECT_EQ(PlaceText({80, 10}, {100, 200, 150, 230}, 68), (RECT{100, 210, 150, 220}));
    EXPECT_EQ(PlaceText({80, 10}, {100, 200, 150, 230}, 66), (RECT{100, 210, 150, 220}));
    EXPECT_EQ(PlaceText({20, 40}, {100, 200, 150, 230}, 68), (RECT{115, 195, 135, 235}));
    EXPECT_EQ(PlaceText({50, 30}, {100, 200, 150, 230}, 34), (RECT{100, 200, 150, 230})) << "just fits";
}

TEST(TextDrawer, MeasuresLines) {
    Sheet sheet(1, 1);
    const SIZE none = MeasureText(sheet.Dc(), GuiFont(), "");
    EXPECT_EQ(none.cx, 0);
    EXPECT_EQ(none.cy, 0);
    EXPECT_EQ(MeasureText(sheet.Dc(), GuiFont(), nullptr).cx, 0);
    const SIZE one = MeasureText(sheet.Dc(), GuiFont(), "Wider");
    const SIZE two = MeasureText(sheet.Dc(), GuiFont(), "Wider\nW");
    EXPECT_EQ(two.cx, one.cx);
    EXPECT_EQ(two.cy, 2 * one.cy);
    const SIZE ampersand = MeasureText(sheet.Dc(), GuiFont(), "a&b");
    EXPECT_GT(ampersand.cx, MeasureText(sheet.Dc(), GuiFont(), "ab").cx) << "an ampersand is a character";
}

TEST(TextDrawer, DrawsIntoThePlaceInTheColourAndLeavesTheBackground) {
    Sheet sheet(80, 40);
    const TextLook look{GuiFont(), kInk, kPaper, 0};
    DrawAlignedText(sheet.Dc(), "Text", sheet.Whole(), kTextInTheMiddle, look);
    const SIZE size = MeasureText(sheet.Dc(), GuiFont(), "Text");
    const RECT place = PlaceText(size, sheet.Whole(), kTextInTheMiddle);
    const RECT drawn = sheet.Drawn();
    EXPECT_GT(sheet.Count(kInk), 10);
    EXPECT_GE(drawn.left, place.left);
    EXPECT_LE(drawn.right, place.right + kGlyphOverhang);
    EXPECT_GE(drawn.top, place.top);
    EXPECT_LE(drawn.bottom, place.bottom);
    EXPECT_EQ(sheet.Count(kInk) + sheet.Count(kPaper), 80 * 40) << "no shadow, no background";
}

TEST(TextDrawer, EveryAlignmentMovesTheSameText) {
    const TextLook look{GuiFont(), kInk, kPaper, 0};
    Sheet reference(80, 40);
    DrawAlignedText(reference.Dc(), "Text", reference.Whole(), kTextLeft | kTextTop, look);
    const SIZE size = MeasureText(reference.Dc(), GuiFont(), "Text");
    for (const std::uint32_t across : {0u, 1u, 2u, 4u}) {
        for (const std::uint32_t down : {0u, 16u, 32u, 64u}) {
            Sheet sheet(80, 40);
            DrawAlignedText(sheet.Dc(), "Text", sheet.Whole(), across | down, look);
            const RECT place = PlaceText(size, sheet.Whole(), across | down);
            RECT expected = reference.Drawn();
            OffsetRect(&expected, place.left, place.top);
            EXPECT_EQ(sheet.Drawn(), expected) << "code " << (across | down);
        }
    }
}

TEST(TextDrawer, AlignsEachLineOfATextByTheCode) {
    const TextLook look{GuiFont(), kInk, kPaper, 0};
    Sheet measure(1, 1);
    const SIZE longer = MeasureText(measure.Dc(), GuiFont(), "A longer line");
    const SIZE shorter = MeasureText(measure.Dc(), GuiFont(), "short");
    const LONG room = longer.cx - shorter.cx;
    const RECT area{0, 0, longer.cx, 2 * longer.cy};
    const std::pair<std::uint32_t, LONG> cases[] = {
        {kTextLeft, 0}, {kTextRight, room}, {kTextCentre, room / 2}};
    Sheet alone(static_cast<int>(shorter.cx) + 2, static_cast<int>(shorter.cy));
    DrawAlignedText(alone.Dc(), "short", alone.Whole(), kTextLeft, look);
    const RECT word = alone.Drawn();
    for (const auto& [code, offset] : cases) {
        Sheet sheet(static_cast<int>(area.right), static_cast<int>(area.bottom));
        DrawAlignedText(sheet.Dc(), "short\nA longer line", area, code, look);
        FillSolid(sheet.Dc(), {0, longer.cy, area.right, area.bottom}, kPaper); // the second line
        EXPECT_NEAR(sheet.Drawn().left, word.left + offset, 1) << code;
        EXPECT_NEAR(sheet.Drawn().right, word.right + offset, 1) << code;
    }
}

TEST(TextDrawer, TooWideTextEndsInAnEllipsisInsideTheArea) {
    const TextLook look{GuiFont(), kInk, kPaper, 0};
    for (const std::uint32_t code : {65u, 66u, 68u}) {
        Sheet sheet(80, 20);
        const RECT area{10, 0, 60, 20};
        DrawAlignedText(sheet.Dc(), "A text that has no room in it", area, code, look);
        const RECT drawn = sheet.Drawn();
        EXPECT_GE(drawn.left, 10) << code;
        EXPECT_LE(drawn.right, 60) << code;
        EXPECT_GT(drawn.right, 45) << code << ": as much of it as fits";
    }
}

TEST(TextDrawer, DrawsNothingWithoutTextOrRoom) {
    Sheet sheet(20, 20);
    const TextLook look{GuiFont(), kInk, kPaper, 1};
    DrawAlignedText(sheet.Dc(), "", sheet.Whole(), 68, look);
    DrawAlignedText(sheet.Dc(), nullptr, sheet.Whole(), 68, look);
    DrawAlignedText(sheet.Dc(), "Text", {10, 0, 10, 20}, 68, look);
    EXPECT_EQ(sheet.Drawn(), kNothing);
}

TEST(TextDrawer, LeavesTheContextAsItWas) {
    Sheet sheet(20, 20);
    const HDC dc = sheet.Dc();
    const HGDIOBJ font = GetCurrentObject(dc, OBJ_FONT);
    SetBkMode(dc, OPAQUE);
    ::SetTextColor(dc, RGB(1, 2, 3));
    DrawAlignedText(dc, "Text", sheet.Whole(), 68, {GuiFont(), kInk, kPaper, -30});
    EXPECT_EQ(GetCurrentObject(dc, OBJ_FONT), font);
    EXPECT_EQ(GetBkMode(dc), OPAQUE);
    EXPECT_EQ(GetTextColor(dc), RGB(1, 2, 3));
}

TEST(TextShadow, IsTheBackgroundChangedByTheValue) {
    const COLORREF dark = RGB(40, 50, 60);
    const COLORREF bright = RGB(200, 210, 220);
    EXPECT_EQ(ShadowColor({nullptr, bright, dark, -10}), RGB(30, 40, 50));
    EXPECT_EQ(ShadowColor({nullptr, bright, dark, 100}), RGB(140, 150, 160));
    // 127 chooses: -32 if the background is the brighter, otherwise -128.
    EXPECT_EQ(ShadowColor({nullptr, dark, bright, 127}), RGB(168, 178, 188));
    EXPECT_EQ(ShadowColor({nullptr, bright, RGB(140, 150, 160), 127}), RGB(12, 22, 32));
    EXPECT_EQ(ShadowColor({nullptr, bright, bright, 127}), RGB(72, 82, 92)) << "equal is not brighter";
    EXPECT_EQ(ShadowColor({nullptr, bright, dark, 127}), RGB(0, 0, 0));
}

TEST(TextShadow, LiesOnePixelRightAndDownBelowTheText) {
    const TextLook plain{GuiFont(), kInk, kPaper, 0};
    const TextLook shadowed{GuiFont(), kInk, kPaper, -50};
    const COLORREF shadow = ShadowColor(shadowed);
    Sheet without(60, 30);
    Sheet with(60, 30);
    DrawAlignedText(without.Dc(), "Text", without.Whole(), 68, plain);
    DrawAlignedText(with.Dc(), "Text", with.Whole(), 68, shadowed);
    for (int y = 1; y < 30; ++y) {
        for (int x = 1; x < 60; ++x) {
            const COLORREF expected = without.At(x, y) == kInk           ? kInk
                                      : without.At(x - 1, y - 1) == kInk ? shadow
                                                                         : kPaper;
            ASSERT_EQ(with.At(x, y), expected) << x << ", " << y;
        }
    }
    EXPECT_GT(with.Count(shadow), 0);
}

// --- frames ------------------------------------------------------------------------------------------------

constexpr int kSide = 20;
constexpr int kMiddle = kSide / 2;

int MarginOfFrame(std::uint32_t style, int width) {
    Sheet sheet(kSide, kSide);
    DrawFrame(sheet.Dc(), sheet.Whole(), style, width, kPaper, 100);
    int margin = 0;
    while (margin < kMiddle && sheet.At(margin, kMiddle) != kPaper) {
        ++margin;
    }
    return margin;
}

TEST(FrameDrawer, DrawsAsManyRingsAsThePixelsThatTheBorderTakes) {
    for (const int width : {1, 2, 3, 4}) {
        EXPECT_EQ(MarginOfFrame(0, width), 0);
        EXPECT_EQ(MarginOfFrame(1, width), 1);
        EXPECT_EQ(MarginOfFrame(9, width), 2 * width);
        for (const std::uint32_t style : {3u, 4u, 5u, 6u, 7u, 8u, 10u, 11u, 12u, 13u, 14u}) {
            EXPECT_EQ(MarginOfFrame(style, width), width) << "style " << style;
        }
    }
}

TEST(FrameDrawer, KeepsToTheAreaAndLeavesTheInside) {
    for (std::uint32_t style = 1; style <= 14; ++style) {
        Sheet sheet(40, 30);
        const RECT area{5, 6, 35, 26};
        DrawFrame(sheet.Dc(), area, style, 3, kPaper, 100);
        EXPECT_EQ(sheet.Drawn(), area) << "style " << style;
        EXPECT_EQ(sheet.At(20, 16), kPaper) << "style " << style;
    }
}

TEST(FrameDrawer, KnowsFourteenStyles) {
    for (const std::uint32_t style : {0u, 15u, 16u, 1000u, 0xFFFFFFFFu}) {
        Sheet sheet(kSide, kSide);
        DrawFrame(sheet.Dc(), sheet.Whole(), style, 3, kPaper, 100);
        EXPECT_EQ(sheet.Drawn(), kNothing) << style;
    }
    // No two look the same.
    std::set<std::vector<COLORREF>> looks;
    for (std::uint32_t style = 1; style <= 14; ++style) {
        Sheet sheet(kSide, kSide);
        DrawFrame(sheet.Dc(), sheet.Whole(), style, 3, kPaper, 100);
        std::vector<COLORREF> look;
        for (int i = 0; i < kSide; ++i) {
            look.push_back(sheet.At(i, kMiddle));
            look.push_back(sheet.At(i, i));
        }
        looks.insert(look);
    }
    EXPECT_EQ(looks.size(), 14u);
}

/// How much brighter than the paper the middles of a ring's edges are.
struct Edges {
    int top;
    int left;
    int bottom;
    int right;
};

Edges EdgesOf(Sheet& sheet, int ring = 0) {
    const int last = kSide - 1 - ring;
    const int paper = BrightnessOf(kPaper);
    return {BrightnessOf(sheet.At(kMiddle, ring)) - paper, BrightnessOf(sheet.At(ring, kMiddle)) - paper,
            BrightnessOf(sheet.At(kMiddle, last)) - paper, BrightnessOf(sheet.At(last, kMiddle)) - paper};
}

Edges EdgesOfStyle(std::uint32_t style, int width, int ring = 0) {
    Sheet sheet(kSide, kSide);
    DrawFrame(sheet.Dc(), sheet.Whole(), style, width, kPaper, 100);
    return EdgesOf(sheet, ring);
}

void ExpectRaised(const Edges& edges, const std::string& what) {
    EXPECT_GT(edges.top, 0) << what;
    EXPECT_EQ(edges.top, edges.left) << what;
    EXPECT_LT(edges.bottom, 0) << what;
    EXPECT_EQ(edges.bottom, edges.right) << what;
}

void ExpectSunken(const Edges& edges, const std::string& what) {
    ExpectRaised({edges.bottom, edges.right, edges.top, edges.left}, what);
}

TEST(FrameDrawer, RaisedIsLitAtTheTopAndLeftAndSunkenAtTheBottomAndRight) {
    for (const int ring : {0, 1, 2}) {
        ExpectRaised(EdgesOfStyle(kFrameRaised, 3, ring), "raised");
        ExpectSunken(EdgesOfStyle(kFrameSunken, 3, ring), "sunken");
        ExpectSunken(EdgesOfStyle(kFrameFaint, 3, ring), "faint");
        ExpectSunken(EdgesOfStyle(kFrameSoftSunken, 3, ring), "soft sunken");
        ExpectRaised(EdgesOfStyle(kFrameSoftRaised, 3, ring), "soft raised");
    }
    ExpectRaised(EdgesOfStyle(kFrameOutline, 3), "outline");
}

TEST(FrameDrawer, FadesFromTheOutsideIn) {
    EXPECT_GT(EdgesOfStyle(kFrameRaised, 3, 0).top, EdgesOfStyle(kFrameRaised, 3, 1).top);
    EXPECT_GT(EdgesOfStyle(kFrameRaised, 3, 1).top, EdgesOfStyle(kFrameRaised, 3, 2).top);
    EXPECT_GT(EdgesOfStyle(kFrameRaised, 1).top, EdgesOfStyle(kFrameSoftRaised, 1).top);
    EXPECT_GT(EdgesOfStyle(kFrameSoftSunken, 1).bottom, EdgesOfStyle(kFrameFaint, 1).bottom);
}

TEST(FrameDrawer, SunkenAndRaisedAreEachOthersNegative) {
    for (const int ring : {0, 1, 2}) {
        const Edges up = EdgesOfStyle(kFrameRaised, 3, ring);
        const Edges down = EdgesOfStyle(kFrameSunken, 3, ring);
        EXPECT_EQ(up.top, down.bottom);
        EXPECT_EQ(up.bottom, down.top);
    }
}

TEST(FrameDrawer, TwofoldStylesTurnHalfWay) {
    ExpectSunken(EdgesOfStyle(kFrameGroove, 4, 0), "groove, outside");
    ExpectRaised(EdgesOfStyle(kFrameGroove, 4, 3), "groove, inside");
    ExpectRaised(EdgesOfStyle(kFrameRidge, 4, 0), "ridge, outside");
    ExpectSunken(EdgesOfStyle(kFrameRidge, 4, 3), "ridge, inside");
    ExpectRaised(EdgesOfStyle(kFrameDouble, 2, 1), "double, outside");
    ExpectSunken(EdgesOfStyle(kFrameDouble, 2, 2), "double, inside");
}

TEST(FrameDrawer, FlatStylesAreTheSameAllAround) {
    const Edges dark = EdgesOfStyle(kFrameFlat, 3);
    const Edges light = EdgesOfStyle(kFrameFlatLight, 3);
    EXPECT_LT(dark.top, 0);
    EXPECT_EQ(dark.top, dark.bottom);
    EXPECT_GT(light.top, 0);
    EXPECT_EQ(light.top, light.bottom);
    EXPECT_EQ(EdgesOfStyle(kFrameFlat, 3, 2).top, dark.top);
}

TEST(FrameDrawer, OutlinedStylesHaveADarkRingUnlessItWouldBeAll) {
    for (const std::uint32_t style :
         {std::uint32_t{kFrameSunkenOutlined}, std::uint32_t{kFrameRaisedOutlined}}) {
        const Edges outline = EdgesOfStyle(style, 3);
        EXPECT_LT(outline.top, 0);
        EXPECT_EQ(outline.top, outline.right);
    }
    ExpectSunken(EdgesOfStyle(kFrameSunkenOutlined, 3, 1), "inside the outline");
    ExpectRaised(EdgesOfStyle(kFrameRaisedOutlined, 3, 1), "inside the outline");
    ExpectSunken(EdgesOfStyle(kFrameSunkenOutlined, 1), "alone");
    ExpectRaised(EdgesOfStyle(kFrameRaisedOutlined, 1), "alone");
}

TEST(FrameDrawer, RoundedStyleLeavesTheCorners) {
    Sheet sheet(kSide, kSide);
    DrawFrame(sheet.Dc(), sheet.Whole(), kFrameRounded, 3, kPaper, 100);
    for (const int x : {0, kSide - 1}) {
        for (const int y : {0, kSide - 1}) {
            EXPECT_EQ(sheet.At(x, y), kPaper);
        }
    }
    EXPECT_LT(BrightnessOf(sheet.At(kMiddle, 0)), BrightnessOf(kPaper));
    EXPECT_GT(BrightnessOf(sheet.At(kMiddle, 1)), BrightnessOf(kPaper)) << "the light pair, one further down";
    EXPECT_EQ(sheet.At(kMiddle, 2), kPaper);
}

TEST(FrameDrawer, BrightnessIsAPercentageOfTheColour) {
    Sheet half(kSide, kSide);
    DrawFrame(half.Dc(), half.Whole(), kFrameRaised, 3, kPaper, 50);
    Sheet halfColor(kSide, kSide);
    DrawFrame(halfColor.Dc(), halfColor.Whole(), kFrameRaised, 3, ScaleColor(kPaper, 50), 100);
    EXPECT_EQ(half.At(0, kMiddle), halfColor.At(0, kMiddle));
    EXPECT_EQ(half.At(kSide - 1, kMiddle), halfColor.At(kSide - 1, kMiddle));
    Sheet bright(kSide, kSide);
    DrawFrame(bright.Dc(), bright.Whole(), kFrameRaised, 3, kPaper, 150);
    EXPECT_GT(BrightnessOf(bright.At(0, kMiddle)), BrightnessOf(half.At(0, kMiddle)));
}

TEST(FrameDrawer, BlackAndWhiteSurfacesHaveAFrameToo) {
    for (const COLORREF surface : {kBlack, kWhite}) {
        Sheet sheet(kSide, kSide, surface);
        DrawFrame(sheet.Dc(), sheet.Whole(), kFrameRaised, 3, surface, 100);
        EXPECT_NE(sheet.Drawn(), kNothing);
    }
}

TEST(FrameDrawer, SmallAndEmptyAreasDoNoHarm) {
    for (std::uint32_t style = 1; style <= 14; ++style) {
        for (int side = 0; side < 6; ++side) {
            Sheet sheet(kSide, kSide);
            const RECT area{7, 7, 7 + side, 7 + side};
            DrawFrame(sheet.Dc(), area, style, 4, kPaper, 100);
            RECT inside{};
            const RECT drawn = sheet.Drawn();
            UnionRect(&inside, &drawn, &area);
            EXPECT_TRUE(drawn == kNothing || inside == area) << "style " << style << ", side " << side;
        }
        Sheet sheet(kSide, kSide);
        DrawFrame(sheet.Dc(), {15, 15, 5, 5}, style, 3, kPaper, 100);
        if (style != kFrameRounded) { // the platform takes corners in either order
            EXPECT_EQ(sheet.Drawn(), kNothing) << "style " << style;
        }
        Sheet negative(kSide, kSide);
        DrawFrame(negative.Dc(), negative.Whole(), style, -3, kPaper, 100);
    }
}

TEST(ButtonFace, IsDimmerWhenDisabled) {
    EXPECT_EQ(FaceColor(RGB(100, 80, 40), true), RGB(100, 80, 40));
    EXPECT_EQ(FaceColor(RGB(100, 80, 40), false), RGB(75, 60, 30));
}

// --- arrows ------------------------------------------------------------------------------------------------

std::string Glyph(ArrowGlyph glyph, int size) {
    Sheet sheet(size, size);
    DrawArrow(sheet.Dc(), glyph, 0, 0, size, kInk);
    return sheet.Map();
}

TEST(ArrowGlyphs, SolidTrianglesPointTheirWay) {
    EXPECT_EQ(Glyph(ArrowGlyph::SolidUp, 5), ".....\n"
                                             "..#..\n"
                                             ".###.\n"
                                             "#####\n"
                                             ".....\n");
    EXPECT_EQ(Glyph(ArrowGlyph::SolidDown, 5), ".....\n"
                                               "#####\n"
                                               ".###.\n"
                                               "..#..\n"
                                               ".....\n");
    EXPECT_EQ(Glyph(ArrowGlyph::SolidLeft, 4), "..#.\n"
                                               ".##.\n"
                                               ".##.\n"
                                               "..#.\n");
    EXPECT_EQ(Glyph(ArrowGlyph::SolidRight, 4), ".#..\n"
                                                ".##.\n"
                                                ".##.\n"
                                                ".#..\n");
}

TEST(ArrowGlyphs, OpenArrowsAreAngles) {
    EXPECT_EQ(Glyph(ArrowGlyph::Up, 5), ".....\n"
                                        "..#..\n"
                                        ".#.#.\n"
                                        "#...#\n"
                                        ".....\n");
    EXPECT_EQ(Glyph(ArrowGlyph::Down, 8), "........\n"
                                          "........\n"
                                          "##....##\n"
                                          ".##..##.\n"
                                          "..####..\n"
                                          "...##...\n"
                                          "........\n"
                                          "........\n");
    EXPECT_EQ(Glyph(ArrowGlyph::Left, 5), "...#.\n"
                                          "..#..\n"
                                          ".#...\n"
                                          "..#..\n"
                                          "...#.\n");
    EXPECT_EQ(Glyph(ArrowGlyph::Right, 5), ".#...\n"
                                           "..#..\n"
                                           "...#.\n"
                                           "..#..\n"
                                           ".#...\n");
}

TEST(ArrowGlyphs, BarSquareAndDoubleAngles) {
    EXPECT_EQ(Glyph(ArrowGlyph::Bar, 5), ".....\n"
                                         ".....\n"
                                         "#####\n"
                                         ".....\n"
                                         ".....\n");
    EXPECT_EQ(Glyph(ArrowGlyph::Square, 3), "###\n"
                                            "###\n"
                                            "###\n");
    EXPECT_EQ(Glyph(ArrowGlyph::DoubleLeft, 6), "..#..#\n"
                                                ".#..#.\n"
                                                "#..#..\n"
                                                "#..#..\n"
                                                ".#..#.\n"
                                                "..#..#\n");
    EXPECT_EQ(Glyph(ArrowGlyph::DoubleRight, 6), "#..#..\n"
                                                 ".#..#.\n"
                                                 "..#..#\n"
                                                 "..#..#\n"
                                                 ".#..#.\n"
                                                 "#..#..\n");
}

constexpr std::uint32_t kGlyphCodes[] = {1, 2, 3, 4, 5, 8, 10, 11, 16, 17, 18, 19};

TEST(ArrowGlyphs, KeepToTheirSquareAndAreInTheColour) {
    for (const std::uint32_t code : kGlyphCodes) {
        for (int size = 1; size <= 17; ++size) {
            Sheet sheet(size + 6, size + 6);
            DrawArrow(sheet.Dc(), static_cast<ArrowGlyph>(code), 3, 3, size, kInk);
            const RECT drawn = sheet.Drawn();
            EXPECT_NE(drawn, kNothing) << "code " << code << ", size " << size;
            EXPECT_TRUE(drawn.left >= 3 && drawn.top >= 3 && drawn.right <= 3 + size &&
                        drawn.bottom <= 3 + size)
                << "code " << code << ", size " << size;
            EXPECT_TRUE(drawn.right - drawn.left == size || drawn.bottom - drawn.top == size)
                << "one side is used in full: code " << code << ", size " << size;
            EXPECT_EQ(sheet.Count(kInk) + sheet.Count(kPaper), (size + 6) * (size + 6));
        }
    }
}

TEST(ArrowGlyphs, AreSymmetric) {
    for (const std::uint32_t code : kGlyphCodes) {
        const bool pointsAcross =
            code == 3 || code == 4 || code == 10 || code == 11 || code == 18 || code == 19;
        for (int size = 1; size <= 17; ++size) {
            Sheet sheet(size, size);
            DrawArrow(sheet.Dc(), static_cast<ArrowGlyph>(code), 0, 0, size, kInk);
            for (int y = 0; y < size; ++y) {
                for (int x = 0; x < size; ++x) {
                    const COLORREF mirrored =
                        pointsAcross ? sheet.At(x, size - 1 - y) : sheet.At(size - 1 - x, y);
                    ASSERT_EQ(sheet.At(x, y), mirrored) << "code " << code << ", size " << size;
                }
            }
        }
    }
}

TEST(ArrowGlyphs, OppositeOnesMirrorEachOther) {
    constexpr std::pair<std::uint32_t, std::uint32_t> kPairs[] = {
        {1, 2}, {3, 4}, {10, 11}, {16, 17}, {18, 19}};
    for (const auto& [one, other] : kPairs) {
        const bool across = one != 1 && one != 16;
        for (int size = 1; size <= 12; ++size) {
            Sheet first(size, size);
            Sheet second(size, size);
            DrawArrow(first.Dc(), static_cast<ArrowGlyph>(one), 0, 0, size, kInk);
            DrawArrow(second.Dc(), static_cast<ArrowGlyph>(other), 0, 0, size, kInk);
            for (int y = 0; y < size; ++y) {
                for (int x = 0; x < size; ++x) {
                    ASSERT_EQ(first.At(x, y),
                              across ? second.At(size - 1 - x, y) : second.At(x, size - 1 - y))
                        << "codes " << one << " and " << other << ", size " << size;
                }
            }
        }
    }
}

TEST(ArrowGlyphs, OtherCodesAndSizesDrawNothing) {
    for (const std::uint32_t code : {0u, 6u, 7u, 9u, 12u, 15u, 20u, 1000u}) {
        Sheet sheet(8, 8);
        DrawArrow(sheet.Dc(), static_cast<ArrowGlyph>(code), 0, 0, 8, kInk);
        EXPECT_EQ(sheet.Drawn(), kNothing) << code;
    }
    for (const std::uint32_t code : kGlyphCodes) {
        Sheet sheet(8, 8);
        DrawArrow(sheet.Dc(), static_cast<ArrowGlyph>(code), 4, 4, 0, kInk);
        DrawArrow(sheet.Dc(), static_cast<ArrowGlyph>(code), 4, 4, -5, kInk);
        EXPECT_EQ(sheet.Drawn(), kNothing) << code;
    }
}

// --- the mark of the focus ---------------------------------------------------------------------------------

TEST(FocusMark, IsARectangleOfBlackAndWhitePixelsAlternating) {
    for (const COLORREF surface : {kPaper, kBlack, kWhite, COLORREF{0x636363}, COLORREF{0x808080}}) {
        Sheet sheet(20, 16, surface);
        DrawFocusMark(sheet.Dc(), {2, 3, 18, 13});
        EXPECT_EQ(sheet.At(10, 8), surface);
        EXPECT_EQ(sheet.At(3, 4), surface) << "one pixel wide";
        int black = 0;
        int white = 0;
        for (int x = 2; x < 18; ++x) {
            black += sheet.At(x, 3) == kBlack ? 1 : 0;
            white += sheet.At(x, 3) == kWhite ? 1 : 0;
        }
        EXPECT_EQ(black, 8);
        EXPECT_EQ(white, 8);
    }
}

} // namespace
} // namespace orva::toolkit
