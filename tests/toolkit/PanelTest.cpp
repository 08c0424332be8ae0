/// The panel and the label with a window, and the pictures of the library.

#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/FrameDrawing.h"
#include "toolkit/TmyButton.h"
#include "toolkit/TmyLabel.h"
#include "toolkit/TmyPanel.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr Placement kPlaceOfPanel{10, 10, 60, 40};
constexpr RECT kInside{3, 3, 57, 37};
constexpr COLORREF kSurface = RGB(80, 90, 100);
constexpr COLORREF kTextInk = RGB(255, 255, 0);
constexpr COLORREF kDisabledInk = RGB(1, 2, 3);

// Resources of the tests' program.
constexpr int kOpaquePicture = 7; // 3 by 2; the n-th pixel is blue 3n+1, green 3n+2, red 3n+3
constexpr int kNoPicture = 9999;

class Panel : public WidgetTest {
protected:
    Panel() : panel(new TmyPanel(&Top(), "", kPlaceOfPanel)) { Colour(*panel); }

    static void Colour(TmyPanel& painted) {
        painted.SetWindowColor(kSurface);
        painted.SetTextColor(kTextInk);
        painted.SetDisabledTextColor(kDisabledInk);
    }

    TmyPanel* panel;
};

TEST_F(Panel, HasABorderInAStyleRecordOfItsOwn) {
    TmyControl plain(&Top());
    TmyPanel fresh(&Top(), "Title", {10, 60, 60, 40});
    EXPECT_EQ(fresh.GetStyleValue(StyleValue::BorderStyle), 4u);
    EXPECT_EQ(fresh.GetStyleValue(StyleValue::BorderWidth), 3u);
    EXPECT_EQ(fresh.GetTextAlignment(), 0u);
    EXPECT_FALSE(fresh.HasBitmap());
    EXPECT_FALSE(fresh.SharesStyleWith(Top()));
    EXPECT_TRUE(plain.SharesStyleWith(Top()));
    EXPECT_EQ(Top().GetStyleValue(StyleValue::BorderStyle), 0u);
    TmyControl child(&fresh);
    EXPECT_TRUE(child.SharesStyleWith(fresh));
    RECT area{};
    fresh.GetClientArea(&area);
    EXPECT_EQ(area, kInside);
    EXPECT_STREQ(fresh.GetText().Text(), "Title");
}

TEST_F(Panel, FillsTheInsideAndFramesIt) {
    const Snapshot picture(*panel);
    EXPECT_EQ(picture.CountOther(kInside, kSurface), 0);
    EXPECT_EQ(picture.Count({0, 0, 60, 3}, kSurface), 0);
    EXPECT_EQ(picture.Count({0, 37, 60, 40}, kSurface), 0);
    EXPECT_EQ(picture.Count({0, 0, 3, 40}, kSurface), 0);
    EXPECT_EQ(picture.Count({57, 0, 60, 40}, kSurface), 0);
}

TEST_F(Panel, FrameAndTitleAreAsTheStyleSays) {
    const struct {
        std::uint32_t style;
        std::uint32_t width;
        std::uint32_t brightness;
        std::int32_t shadow;
    } looks[] = {{kFrameRaised, 3, 100, 0},    {kFrameRaised, 5, 100, -40}, {kFrameRaised, 3, 60, 127},
                 {kFrameSunken, 2, 150, 0},    {kFrameGroove, 4, 120, 30},  {kFrameFlat, 4, 80, 0},
                 {kFrameOutline, 1, 130, -20}, {kFrameNone, 3, 100, 0}};
    constexpr RECT kWhole{0, 0, 60, 40};
    panel->SetText("Title");
    for (const auto& look : looks) {
        panel->SetStyleValue(StyleValue::BorderStyle, look.style);
        panel->SetStyleValue(StyleValue::BorderWidth, look.width);
        panel->SetStyleValue(StyleValue::Brightness, look.brightness);
        panel->SetStyleValue(StyleValue::Shadow, static_cast<std::uint32_t>(look.shadow));
        const int margin =
            look.style == kFrameNone || look.style == kFrameFlat ? 0 : static_cast<int>(look.width);
        const Snapshot expected = Snapshot::Drawn(60, 40, kSurface, [&](HDC dc) {
            DrawAlignedText(dc, "Title", {margin, margin, 60 - margin, 40 - margin}, 0,
                            {panel->EffectiveFont(), kTextInk, kSurface, look.shadow});
            DrawFrame(dc, kWhole, look.style, static_cast<int>(look.width), kSurface,
                      static_cast<int>(look.brightness));
        });
        EXPECT_EQ(Snapshot(*panel).Differences(kWhole, expected), 0)
            << "style " << look.style << ", width " << look.width;
    }
}

TEST_F(Panel, FrameLiesOverATitleThatReachesBelowIt) {
    constexpr RECT kUpperEdge{0, 0, 60, 6};
    panel->SetText("Title");
    panel->SetBorderWidth(6);
    panel->SetBorderStyle(kFrameNone);
    EXPECT_GT(Snapshot(*panel).Count(kUpperEdge, kTextInk), 0) << "the title begins there";
    panel->SetBorderStyle(kFrameFlat); // everything is content
    EXPECT_EQ(Snapshot(*panel).Count(kUpperEdge, kTextInk), 0);
    EXPECT_GT(Snapshot(*panel).Count({6, 6, 54, 34}, kTextInk), 0);
}

TEST_F(Panel, WithoutABorderAllIsInside) {
    panel->SetBorderStyle(kFrameNone);
    const Snapshot picture(*panel);
    EXPECT_EQ(picture.CountOther(picture.Whole(), kSurface), 0);
}

TEST_F(Panel, PaintsInOrder) {
    class Noting : public TmyPanel {
    public:
        using TmyPanel::TmyPanel;
        void OnDrawBackground(HDC dc, const RECT& area) override {
            order += 'b';
            backgroundArea = area;
            TmyPanel::OnDrawBackground(dc, area);
        }
        void OnDrawContent(HDC dc, const RECT& area) override {
            order += 'c';
            contentArea = area;
            contentWasErased = GetPixel(dc, 30, 20) == kSurface;
            FillRect(dc, &area, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
        }
        void OnDrawFocus(HDC dc, const RECT& area) override {
            order += 'f';
            frameWasThere = GetPixel(dc, 0, 20) != kSurface && GetPixel(dc, 0, 20) != RGB(255, 255, 255);
            titleWasThere = false;
            for (int y = area.top; y < area.bottom; ++y) {
                for (int x = area.left; x < area.right; ++x) {
                    titleWasThere = titleWasThere || GetPixel(dc, x, y) == kTextInk;
                }
            }
        }
        std::string order;
        RECT backgroundArea{};
        RECT contentArea{};
        bool contentWasErased = false;
        bool frameWasThere = false;
        bool titleWasThere = false;
    };
    Noting noting(&Top(), "Title", {10, 60, 60, 40}, kTabbingStyle);
    Colour(noting);
    EventCount<HDC> paints;
    paints.Watch(noting.onPaint);
    paints.then = [&] { noting.order += 'p'; };
    noting.SetFocus();
    Pump();
    Snapshot settled(noting);
    noting.order.clear();
    noting.Invalidate();
    noting.Update();
    EXPECT_EQ(noting.order, "bcfp");
    EXPECT_EQ(noting.backgroundArea, kInside);
    EXPECT_EQ(noting.contentArea, kInside);
    EXPECT_TRUE(noting.contentWasErased);
    EXPECT_TRUE(noting.titleWasThere);
    EXPECT_TRUE(noting.frameWasThere);
    noting.SetBorderStyle(kFrameFlat); // everything is content, below the frame
    noting.order.clear();
    noting.Update();
    EXPECT_EQ(noting.backgroundArea, (RECT{0, 0, 60, 40}));
    EXPECT_EQ(noting.contentArea, (RECT{0, 0, 60, 40}));
    EXPECT_TRUE(noting.frameWasThere);
    Top().SetFocus();
    noting.order.clear();
    noting.Update();
    EXPECT_EQ(noting.order, "bcp");
}

TEST_F(Panel, TitleIsInTheTextColourOrTheDisabledOne) {
    panel->SetText("Title");
    Snapshot enabled(*panel);
    EXPECT_GT(enabled.Count(kInside, kTextInk), 0);
    EXPECT_EQ(enabled.Count(kInside, kDisabledInk), 0);
    panel->SetEnabled(false);
    Snapshot disabled(*panel);
    EXPECT_EQ(disabled.Count(kInside, kTextInk), 0);
    EXPECT_EQ(disabled.Count(kInside, kDisabledInk), enabled.Count(kInside, kTextInk));
    EXPECT_EQ(disabled.BoxOfOther(kInside, kSurface), enabled.BoxOfOther(kInside, kSurface));
}

TEST_F(Panel, TitleGoesByTheAlignmentCodeAndTheShadowByTheStyle) {
    panel->SetText("Ti");
    const RECT topLeft = Snapshot(*panel).BoxOfOther(kInside, kSurface);
    const HDC dc = ::GetDC(nullptr);
    const SIZE size = MeasureText(dc, panel->EffectiveFont(), "Ti");
    ::ReleaseDC(nullptr, dc);
    for (const std::uint32_t code : {2u, 4u, 32u, 64u, 68u, 34u}) {
        panel->SetTextAlignment(code);
        EXPECT_EQ(panel->GetTextAlignment(), code);
        const RECT place = PlaceText(size, kInside, code);
        RECT expected = topLeft;
        OffsetRect(&expected, place.left - kInside.left, place.top - kInside.top);
        EXPECT_EQ(Snapshot(*panel).BoxOfOther(kInside, kSurface), expected) << code;
    }
    panel->SetStyleValue(StyleValue::Shadow, static_cast<std::uint32_t>(-20));
    EXPECT_GT(Snapshot(*panel).Count(kInside, RGB(60, 70, 80)), 0);
    panel->SetStyleValue(StyleValue::Shadow, 127); // the text is the brighter
    EXPECT_GT(Snapshot(*panel).Count(kInside, RGB(0, 0, 0)), 0);
}

TEST_F(Panel, SettersCompareFirst) {
    panel->Update();
    panel->SetTextAlignment(0);
    EXPECT_TRUE(UpdateRegion(*panel).IsEmpty());
    panel->SetTextAlignment(4);
    EXPECT_FALSE(UpdateRegion(*panel).IsEmpty());
}

TEST_F(Panel, TitleMovesWithTheSize) {
    panel->SetText("Ti");
    panel->SetTextAlignment(66);
    const RECT before = Snapshot(*panel).BoxOfOther(kInside, kSurface);
    panel->SetSize(90, 60);
    const Snapshot picture(*panel);
    RECT expected = before;
    OffsetRect(&expected, 30, 10);
    EXPECT_EQ(picture.BoxOfOther({3, 3, 87, 57}, kSurface), expected) << "and nothing is left of the old one";
}

TEST_F(Panel, FontIsItsOwnOrInherited) {
    panel->SetText("Ti");
    const RECT small = Snapshot(*panel).BoxOfOther(kInside, kSurface);
    const HFONT large = CreateFontA(-24, 0, 0, 0, FW_NORMAL, 0, 0, 0, 0, 0, 0, 0, 0, "Arial");
    Top().SetFont(large);
    const RECT inherited = Snapshot(*panel).BoxOfOther(kInside, kSurface);
    EXPECT_GT(inherited.bottom - inherited.top, small.bottom - small.top + 5);
    Top().SetFont(InheritedFont());
    panel->SetFont(large);
    EXPECT_EQ(Snapshot(*panel).BoxOfOther(kInside, kSurface), inherited);
    panel->SetFont(InheritedFont());
    DeleteObject(large);
    EXPECT_EQ(Snapshot(*panel).BoxOfOther(kInside, kSurface), small);
}

TEST_F(Panel, ShowsTheFocusOnlyIfItTakesIt) {
    TmyPanel taking(&Top(), "", {10, 60, 60, 40}, kTabbingStyle);
    Colour(taking);
    taking.SetFocus();
    EXPECT_EQ(Snapshot(taking).BoxOfOther(kInside, kSurface), kInside);
    panel->SetFocus();
    EXPECT_EQ(Snapshot(*panel).CountOther(kInside, kSurface), 0);
    EXPECT_EQ(Snapshot(taking).CountOther(kInside, kSurface), 0) << "repainted when it lost the focus";
}

// --- pictures ----------------------------------------------------------------------------------------------

COLORREF OpaquePixel(int n) {
    return RGB(3 * n + 3, 3 * n + 2, 3 * n + 1);
}

/// Where the 3 by 2 picture's corner stands: in the middle of 54 by 34 pixels.
constexpr int kPictureX = 3 + 25;
constexpr int kPictureY = 3 + 16;

TEST_F(Panel, DrawsItsPictureInTheMiddleButForTheTopLeftPixelsColour) {
    ASSERT_TRUE(panel->SetBitmap(kOpaquePicture));
    EXPECT_TRUE(panel->HasBitmap());
    const Snapshot picture(*panel);
    EXPECT_EQ(picture.At(kPictureX, kPictureY), kSurface) << "transparent";
    for (int n = 1; n < 6; ++n) {
        EXPECT_EQ(picture.At(kPictureX + n % 3, kPictureY + n / 3), OpaquePixel(n)) << n;
    }
    EXPECT_EQ(picture.CountOther(kInside, kSurface), 5);
}

TEST_F(Panel, DisabledPictureIsAllInTheDisabledTextColour) {
    ASSERT_TRUE(panel->SetBitmap(kOpaquePicture, GetModuleHandleA(nullptr)));
    panel->SetEnabled(false);
    const Snapshot picture(*panel);
    EXPECT_EQ(picture.At(kPictureX, kPictureY), kSurface);
    EXPECT_EQ(picture.Count(kInside, kDisabledInk), 5);
    EXPECT_EQ(picture.CountOther(kInside, kSurface), 5);
    panel->SetDisabledTextColor(RGB(9, 99, 199)); // the copy follows
    EXPECT_EQ(Snapshot(*panel).Count(kInside, RGB(9, 99, 199)), 5);
    panel->SetDisabledTextColor(RGB(0, 0, 0)); // the copy's transparent colour
    EXPECT_EQ(Snapshot(*panel).CountOther(kInside, kSurface), 0);
    panel->SetEnabled(true);
    EXPECT_EQ(Snapshot(*panel).CountOther(kInside, kSurface), 5);
}

TEST_F(Panel, WithoutThePictureTheTextIsDrawnAlone) {
    panel->SetText("Title");
    const RECT text = Snapshot(*panel).BoxOfOther(kInside, kSurface);
    EXPECT_FALSE(panel->SetBitmap(kNoPicture));
    EXPECT_FALSE(panel->HasBitmap());
    EXPECT_EQ(Snapshot(*panel).BoxOfOther(kInside, kSurface), text);
    ASSERT_TRUE(panel->SetBitmap(kOpaquePicture));
    EXPECT_GT(Snapshot(*panel).Count(kInside, OpaquePixel(5)), 0);
    EXPECT_FALSE(panel->SetBitmap(kNoPicture)) << "the former one goes";
    EXPECT_EQ(Snapshot(*panel).BoxOfOther(kInside, kSurface), text);
    EXPECT_FALSE(panel->SetBitmap(kOpaquePicture, GetModuleHandleA("user32.dll"))) << "not that module's";
}

TEST_F(Panel, PicturesCostNoHandlesInTheEnd) {
    constexpr unsigned kTimes = 50;
    panel->SetBitmap(kOpaquePicture);
    panel->SetDisabledTextColor(RGB(5, 5, 5));
    const unsigned before = EndOfGraphicsObjects();
    for (unsigned i = 0; i < kTimes; ++i) {
        panel->SetBitmap(kOpaquePicture);
        panel->SetDisabledTextColor(RGB(i, 5, 6));
        panel->SetBitmap(kNoPicture);
        TmyPanel other(&Top(), "", {10, 60, 60, 40}, kWidgetStyle);
        other.SetBitmap(kOpaquePicture);
    }
    panel->SetBitmap(kOpaquePicture);
    EXPECT_LT(EndOfGraphicsObjects(), before + kTimes);
}

TEST_F(Panel, NaturalSizeHoldsTextAndPicture) {
    panel->SetBitmap(kOpaquePicture);
    EXPECT_EQ(panel->NaturalSize().cx, 3 + 2 * 3);
    EXPECT_EQ(panel->NaturalSize().cy, 2 + 2 * 3);
    panel->SetText("Title");
    const HDC dc = ::GetDC(nullptr);
    const SIZE text = MeasureText(dc, panel->EffectiveFont(), "Title");
    ::ReleaseDC(nullptr, dc);
    EXPECT_EQ(panel->NaturalSize().cx, text.cx + 2 * 3);
    EXPECT_EQ(panel->NaturalSize().cy, text.cy + 2 * 3);
}

// --- the library's pictures --------------------------------------------------------------------------------

constexpr int kLibraryPictures[] = {101, 103, 105, 107, 108, 109, 110, 111, 112};
constexpr RECT kInsideOfSmall{3, 3, 16, 16}; // of a button of 19 by 19

class LibraryPictures : public WidgetTest {
protected:
    LibraryPictures() : button(new TmyButton(&Top(), "", {10, 10, 19, 19})) {
        button->SetWindowColor(0x757575);
    }
    /// What is drawn on the face, row by row: true where it is not the face's colour.
    std::vector<bool> Silhouette() {
        const Snapshot picture(*button);
        const COLORREF face = FaceColor(0x757575, button->IsEnabled());
        std::vector<bool> drawn;
        for (int y = kInsideOfSmall.top; y < kInsideOfSmall.bottom; ++y) {
            for (int x = kInsideOfSmall.left; x < kInsideOfSmall.right; ++x) {
                drawn.push_back(picture.At(x, y) != face);
            }
        }
        return drawn;
    }
    TmyButton* button;
};

TEST_F(LibraryPictures, FitASmallButtonWithAPixelToMove) {
    for (const int id : kLibraryPictures) {
        ASSERT_TRUE(button->SetBitmap(id)) << id;
        button->SetDown(false);
        RECT up = Snapshot(*button).BoxOfOther(kInsideOfSmall, 0x757575);
        EXPECT_GE(up.left, 4) << id;
        EXPECT_GE(up.top, 4) << id;
        EXPECT_LE(up.right, 15) << id;
        EXPECT_LE(up.bottom, 15) << id;
        EXPECT_GE(std::max(up.right - up.left, up.bottom - up.top), 9) << id << " uses the room";
        button->SetDown(true);
        OffsetRect(&up, 1, 1);
        EXPECT_EQ(Snapshot(*button).BoxOfOther(kInsideOfSmall, 0x757575), up) << id << " is whole when down";
    }
}

TEST_F(LibraryPictures, AreAllDifferentEnabledAndDisabledInTheSameShape) {
    std::set<std::vector<bool>> shapes;
    for (const int id : kLibraryPictures) {
        ASSERT_TRUE(button->SetBitmap(id)) << id;
        button->SetEnabled(true);
        const std::vector<bool> enabled = Silhouette();
        button->SetEnabled(false);
        EXPECT_EQ(Silhouette(), enabled) << id;
        shapes.insert(enabled);
    }
    EXPECT_EQ(shapes.size(), std::size(kLibraryPictures));
}

TEST_F(LibraryPictures, StandOutFromTheFaceOfAButton) {
    const auto sum = [](COLORREF color) { return GetRValue(color) + GetGValue(color) + GetBValue(color); };
    for (const int id : kLibraryPictures) {
        ASSERT_TRUE(button->SetBitmap(id)) << id;
        for (const bool enabled : {true, false}) {
            button->SetEnabled(enabled);
            const Snapshot picture(*button);
            const COLORREF face = picture.At(4, 3);
            int drawn = 0;
            for (int y = kInsideOfSmall.top; y < kInsideOfSmall.bottom; ++y) {
                for (int x = kInsideOfSmall.left; x < kInsideOfSmall.right; ++x) {
                    const COLORREF color = picture.At(x, y);
                    if (color != face) {
                        ++drawn;
                        // Record's red is told by its hue.
                        const int distance = std::max(std::abs(sum(color) - sum(face)),
                                                      std::abs(GetRValue(color) - GetRValue(face)));
                        EXPECT_GE(distance, 90) << id;
                    }
                }
            }
            EXPECT_GE(drawn, 25) << id;
        }
    }
}

/// The pixels of a picture inside the box around them.
class Shape {
public:
    Shape(const Snapshot& picture, COLORREF face)
        : box(picture.BoxOfOther(kInsideOfSmall, face)), source(picture), background(face) {}
    [[nodiscard]] int Width() const { return static_cast<int>(box.right - box.left); }
    [[nodiscard]] int Height() const { return static_cast<int>(box.bottom - box.top); }
    /// How many pixels of a column, or of a row, are drawn; a negative number counts from the other end.
    [[nodiscard]] int InColumn(int x) const {
        const LONG column = x < 0 ? box.right + x : box.left + x;
        return source.CountOther({column, box.top, column + 1, box.bottom}, background);
    }
    [[nodiscard]] int InRow(int y) const {
        const LONG row = y < 0 ? box.bottom + y : box.top + y;
        return source.CountOther({box.left, row, box.right, row + 1}, background);
    }
    [[nodiscard]] int Drawn() const { return source.CountOther(box, background); }
    [[nodiscard]] int Count(COLORREF color) const { return source.Count(box, color); }

private:
    RECT box;
    Snapshot source;
    COLORREF background;
};

TEST_F(LibraryPictures, ShowWhatTheirNumbersStandFor) {
    const auto shapeOf = [this](int id) {
        EXPECT_TRUE(button->SetBitmap(id)) << id;
        return Shape(Snapshot(*button), 0x757575);
    };
    const Shape play = shapeOf(107); // a triangle: high at the left, a tip at the right
    EXPECT_EQ(play.InColumn(0), play.Height());
    EXPECT_LE(play.InColumn(-1), 2);
    const Shape forward = shapeOf(101); // two of them
    EXPECT_EQ(forward.InColumn(0), forward.Height());
    EXPECT_LE(forward.InColumn(-1), 2);
    const auto highest = [&](int from) {
        int high = 0;
        for (int x = from; x < forward.Width(); ++x) {
            high = std::max(high, forward.InColumn(x));
        }
        return high;
    };
    EXPECT_EQ(highest(forward.Width() / 2), forward.Height());
    const Shape rewind = shapeOf(109);
    EXPECT_LE(rewind.InColumn(0), 2);
    EXPECT_EQ(rewind.InColumn(-1), rewind.Height());
    const Shape next = shapeOf(111); // against a bar at the right
    EXPECT_EQ(next.InColumn(-1), next.Height());
    EXPECT_EQ(next.InColumn(0), next.Height());
    EXPECT_LT(next.InColumn(next.Width() / 2), next.Height());
    const Shape previous = shapeOf(112); // the bar at the left, before the tip
    EXPECT_EQ(previous.InColumn(0), previous.Height());
    EXPECT_GT(previous.InColumn(-2), previous.InColumn(3));
    const Shape stop = shapeOf(110); // all filled
    EXPECT_EQ(stop.Drawn(), stop.Width() * stop.Height());
    const Shape pause = shapeOf(105); // two bars, and nothing between them
    EXPECT_EQ(pause.InColumn(0), pause.Height());
    EXPECT_EQ(pause.InColumn(-1), pause.Height());
    EXPECT_EQ(pause.InColumn(pause.Width() / 2), 0);
    const Shape letters = shapeOf(103); // an I and an F: upright strokes, and a bar at the top
    EXPECT_GT(letters.InRow(0), letters.InRow(-1));
    EXPECT_EQ(letters.InColumn(0) > 0 && letters.InColumn(-1) < letters.Height(), true);
    const Shape record = shapeOf(108); // round and red
    EXPECT_LT(record.InRow(0), record.Width());
    EXPECT_EQ(record.InRow(record.Height() / 2), record.Width());
    EXPECT_EQ(record.InColumn(record.Width() / 2), record.Height());
}

TEST_F(LibraryPictures, RewindAndForwardMirrorEachOtherAndSoDoPreviousAndNext) {
    constexpr int kInsideSide = 13;
    for (const auto& [one, other] : {std::pair{109, 101}, std::pair{112, 111}}) {
        ASSERT_TRUE(button->SetBitmap(one));
        const std::vector<bool> left = Silhouette();
        ASSERT_TRUE(button->SetBitmap(other));
        const std::vector<bool> right = Silhouette();
        for (std::size_t i = 0; i < left.size(); ++i) {
            const std::size_t x = i % kInsideSide;
            ASSERT_EQ(left[i], right[i - x + (kInsideSide - 1 - x)]) << one << ", pixel " << i;
        }
    }
}

// --- the label ---------------------------------------------------------------------------------------------

class Label : public WidgetTest {
protected:
    Label() : label(new TmyLabel(&Top(), "Text", {10, 10, 80, 30})) {
        label->SetWindowColor(kSurface);
        label->SetTextColor(kTextInk);
    }
    SIZE Measure(const char* text) const {
        const HDC dc = ::GetDC(nullptr);
        const SIZE size = MeasureText(dc, label->EffectiveFont(), text);
        ::ReleaseDC(nullptr, dc);
        return size;
    }
    TmyLabel* label;
};

TEST_F(Label, StandsLeftAndInTheMiddleWithoutABorder) {
    EXPECT_EQ(label->GetTextAlignment(), 65u);
    EXPECT_EQ(label->GetStyleValue(StyleValue::BorderStyle), 0u);
    EXPECT_FALSE(label->SharesStyleWith(Top()));
    const Snapshot picture(*label);
    const RECT box = picture.BoxOfOther(picture.Whole(), kSurface);
    const LONG top = (30 - Measure("Text").cy) / 2;
    EXPECT_GE(box.left, 0);
    EXPECT_LE(box.left, 2);
    EXPECT_GE(box.top, top);
    EXPECT_LE(box.bottom, top + Measure("Text").cy);
}

TEST_F(Label, FitsItselfToTheTextWhenAsked) {
    label->SetText("Another text", false);
    EXPECT_STREQ(label->GetText().Text(), "Another text");
    EXPECT_EQ(label->Bounds(), (RECT{10, 10, 90, 40}));
    label->SetText(TmyString("Another text"), true);
    const SIZE size = Measure("Another text");
    EXPECT_EQ(label->Bounds(), (RECT{10, 10, 10 + size.cx + 2 * kGlyphOverhang, 10 + size.cy}));
    const Snapshot picture(*label);
    EXPECT_EQ(picture.Count({0, 0, picture.Width(), 1}, kTextInk), 0) << "nothing is cut";
    label->SetText("", true);
    EXPECT_LE(label->Bounds().right - label->Bounds().left, 2 * kGlyphOverhang);
}

TEST_F(Label, ComparesTheTextFirst) {
    label->Update();
    label->SetText("Text", false);
    EXPECT_TRUE(UpdateRegion(*label).IsEmpty());
    label->SetText("Other", false);
    EXPECT_FALSE(UpdateRegion(*label).IsEmpty());
    label->Update();
    EXPECT_GT(Snapshot(*label).Count({0, 0, 80, 30}, kTextInk), 0);
}

TEST_F(Label, DisabledTextIsInItsColour) {
    label->SetDisabledTextColor(kDisabledInk);
    label->SetEnabled(false);
    EXPECT_GT(Snapshot(*label).Count({0, 0, 80, 30}, kDisabledInk), 0);
    EXPECT_EQ(Snapshot(*label).Count({0, 0, 80, 30}, kTextInk), 0);
}

} // namespace
} // namespace orva::toolkit
