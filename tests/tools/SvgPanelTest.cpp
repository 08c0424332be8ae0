#include "tools/orva-decode/SvgPanel.h"

#include "tests/tools/XmlCheck.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::tools {
namespace {

using test::CountElements;
using test::XmlFault;

constexpr SvgBox kBox{100, 50, 200, 100};
constexpr SvgRange kRange{0, 10, 0, 5};

std::string Document(const SvgPanel& panel, const std::string& title = "x") {
    return SvgPanel::BeginDocument(400, 300, title) + panel.Finish() + SvgPanel::EndDocument();
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(XmlCheck, KnowsGoodFromBad) {
    EXPECT_EQ(XmlFault("<a b=\"1\" c=\"&lt;\"><d/>x &amp; y<e></e></a>\n"), "");
    for (const char* bad :
         {"", "x", "<a>", "<a></b>", "<a", "<a b=1/>", "<a b=\"1\" b=\"2\"/>", "<a>&nbsp;</a>", "<a>&</a>",
          "<a/><b/>", "<a>\x01</a>", "<a>caf\xE9</a>", "<a b=\"<\"/>", "<a b=\"1/>"}) {
        EXPECT_NE(XmlFault(bad), "") << bad;
    }
}

TEST(SvgPanel, IsWellFormedWithEverythingInIt) {
    SvgPanel panel(kBox, kRange);
    panel.Title("Title");
    panel.HorizontalTicks(2, "s");
    panel.VerticalTicks(1, "%");
    panel.Line({{0, 0}, {5, 2.5}, {10, 5}}, "#123456");
    panel.Bar(1, 2, 0, 3, "#abcdef");
    panel.Marker(5);
    panel.RowLabel(2.5, "row", "#000000");
    const std::string svg = Document(panel);
    EXPECT_EQ(XmlFault(svg), "") << svg;
    EXPECT_EQ(CountElements(svg, "svg"), 1);
    EXPECT_EQ(CountElements(svg, "polyline"), 1);
}

TEST(SvgPanel, PutsValuesWhereTheirAxesSay) {
    SvgPanel panel(kBox, kRange);
    panel.Line({{0, 0}, {5, 2.5}, {10, 5}}, "red");
    EXPECT_TRUE(Contains(panel.Finish(), "points=\"100.00,150.00 200.00,100.00 300.00,50.00 \""))
        << panel.Finish();
}

TEST(SvgPanel, DrawsWhatIsOutsideAtItsEdge) {
    SvgPanel panel(kBox, kRange);
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    panel.Line({{-99, -99}, {99, 99}, {kInfinity, -kInfinity}}, "red");
    EXPECT_TRUE(Contains(panel.Finish(), "points=\"100.00,150.00 300.00,50.00 300.00,150.00 \""))
        << panel.Finish();
}

TEST(SvgPanel, BarHasItsCornersInTheirPlaces) {
    SvgPanel panel(kBox, kRange);
    panel.Bar(1, 3, 1, 2, "red");
    EXPECT_TRUE(Contains(panel.Finish(),
                         "<rect x=\"120.00\" y=\"110.00\" width=\"40.00\" height=\"20.00\" fill=\"red\"/>"))
        << panel.Finish();
}

TEST(SvgPanel, TicksHaveLabelsAndTheLastOneTheUnit) {
    SvgPanel panel(kBox, kRange);
    panel.HorizontalTicks(5, "kHz");
    const std::string svg = panel.Finish();
    EXPECT_EQ(CountElements(svg, "text"), 3);
    EXPECT_TRUE(Contains(svg, ">0</text>"));
    EXPECT_TRUE(Contains(svg, ">5</text>"));
    EXPECT_TRUE(Contains(svg, ">10 kHz</text>"));
}

TEST(SvgPanel, EscapesWhatMarkupWouldTakeAmiss) {
    SvgPanel panel(kBox, kRange);
    panel.Title("a < b & c > d \"e\"");
    const std::string svg = Document(panel, "<&>.wav");
    EXPECT_EQ(XmlFault(svg), "") << svg;
    EXPECT_TRUE(Contains(svg, "a &lt; b &amp; c &gt; d"));
}

TEST(SvgPanel, TakesAnyBytesForAFileName) {
    for (const char* name : {"caf\xE9.wav", "caf\xC3\xA9.wav", "bell\x07.wav", "\xF0\x9F\x93\xBB.wav", "\xC3",
                             "\xED\xA0\x80", "\xC0\xAF", "\xFF\xFE", "\x7F\xC2\x80"}) {
        const std::string svg = Document(SvgPanel(kBox, kRange), name);
        EXPECT_EQ(XmlFault(svg), "") << svg;
    }
    EXPECT_TRUE(Contains(Document(SvgPanel(kBox, kRange), "caf\xC3\xA9.wav"), "caf\xC3\xA9.wav"));
}

TEST(SvgPanel, RangeWithoutExtentDrawsNumbersAllTheSame) {
    SvgPanel panel(kBox, {0, 0, 0, 0});
    panel.Line({{0, 0}, {1, 1}}, "red");
    panel.Bar(0, 1, 0, 1, "red");
    panel.HorizontalTicks(0, "s");
    panel.VerticalTicks(0, "s");
    const std::string svg = panel.Finish();
    EXPECT_FALSE(Contains(svg, "nan") || Contains(svg, "inf")) << svg;
}

TEST(SvgPanel, EmptyLineDrawsNothing) {
    SvgPanel panel(kBox, kRange);
    panel.Line({}, "red");
    EXPECT_EQ(CountElements(panel.Finish(), "polyline"), 0);
}

} // namespace
} // namespace orva::tools
