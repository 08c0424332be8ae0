#include "tools/orva-decode/SignalPlot.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/XmlCheck.h"

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::tools {
namespace {

class SignalPlotTest : public testing::Test {
protected:
    /// The picture as text, checked to be one.
    std::string Draw(double seconds, const std::string& title = "title") {
        EXPECT_TRUE(plot.Write(folder.Path("plot.svg"), title, seconds));
        std::string svg = test::ReadWholeFile(folder.Path("plot.svg"));
        EXPECT_EQ(test::XmlFault(svg), "");
        EXPECT_EQ(svg.find("nan"), std::string::npos) << "no number";
        EXPECT_EQ(svg.find("inf\""), std::string::npos) << "no number";
        return svg;
    }

    test::TemporaryFolder folder;
    SignalPlot plot;
};

TEST_F(SignalPlotTest, OfNothingIsAPicture) {
    const std::string svg = Draw(0.0);
    EXPECT_EQ(test::CountElements(svg, "svg"), 1);
}

TEST_F(SignalPlotTest, OfDibitsAloneIsAPicture) {
    plot.NoteFrame(0.1, 7);
    plot.NoteErrorRate(0.1, 2.0F);
    Draw(1.0);
}

/// Heights of the points of the first line, which is the spectrum; smaller is stronger.
std::vector<double> SpectrumHeights(const std::string& svg) {
    std::vector<double> heights;
    const std::size_t begin = svg.find("points=\"") + 8;
    const std::string points = svg.substr(begin, svg.find('"', begin) - begin);
    for (std::size_t comma = points.find(','); comma != std::string::npos;
         comma = points.find(',', comma + 1)) {
        heights.push_back(std::stod(points.substr(comma + 1)));
    }
    return heights;
}

TEST_F(SignalPlotTest, SpectrumPeaksAtTheToneOfTheSignal) {
    constexpr std::uint32_t kRate = 48000;
    std::vector<float> tone(kRate);
    for (std::size_t n = 0; n < tone.size(); ++n) {
        tone[n] = static_cast<float>(
            0.5 * std::sin(2 * std::numbers::pi * 12000.0 * static_cast<double>(n) / kRate));
    }
    for (std::size_t first = 0; first < tone.size(); first += 2400) {
        plot.NoteSamples(tone.data() + first, 2400, kRate);
    }
    const std::vector<double> heights = SpectrumHeights(Draw(1.0));
    ASSERT_EQ(heights.size(), 1024U);
    const auto peak = std::min_element(heights.begin(), heights.end()) - heights.begin();
    EXPECT_NEAR(static_cast<double>(peak), 512.0, 1.0);
}

TEST_F(SignalPlotTest, SymbolsAreCountedAndOutliersPassedOver) {
    for (const float sample : {-0.5F, -0.39F, -0.3F, -0.1F, 0.1F, 0.3F, 0.39F, 0.4F, 0.5F, NAN}) {
        plot.OnSymbol(sample, 0);
    }
    Draw(1.0);
}

TEST_F(SignalPlotTest, EveryKindOfFrameHasItsRow) {
    const std::string before = Draw(16.0);
    for (std::int32_t duid = 0; duid < 16; ++duid) {
        plot.NoteFrame(duid + 0.5, duid);
    }
    const std::string after = Draw(16.0);
    EXPECT_EQ(test::CountElements(after, "rect") - test::CountElements(before, "rect"), 16);
    for (const char* name : {"HDU", "LDU1", "LDU2", "TDU", "TDULC", "TSBK", "PDU", "unknown"}) {
        EXPECT_NE(after.find(std::string(">") + name + "</text>"), std::string::npos) << name;
    }
}

TEST_F(SignalPlotTest, StaysBoundedHoweverLongTheInput) {
    for (int second = 0; second < 100000; ++second) {
        plot.NoteFrame(second, 7);
        plot.NoteErrorRate(second, 50.0F);
    }
    EXPECT_LT(Draw(100000.0).size(), 300000U);
}

TEST_F(SignalPlotTest, TitleMayBeAnyFileName) {
    Draw(1.0, "a<b>&\"c\".wav");
    Draw(1.0, "caf\xE9\x01.wav");
}

TEST_F(SignalPlotTest, TellsWhenItCannotBeWritten) {
    EXPECT_FALSE(plot.Write(folder.Path("no such folder/plot.svg"), "title", 1.0));
}

#ifdef __linux__
TEST_F(SignalPlotTest, TellsAFullDisk) {
    EXPECT_FALSE(plot.Write("/dev/full", "title", 1.0));
}
#endif

} // namespace
} // namespace orva::tools
