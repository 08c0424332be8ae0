/// Panels with axes, as SVG text.
#pragma once

#include <string>
#include <vector>

namespace orva::tools {

/// Where a panel lies in the picture, in pixels from its upper left corner.
struct SvgBox {
    double x;
    double y;
    double width;
    double height;
};

/// The values at a panel's edges.
struct SvgRange {
    double left;
    double right;
    double bottom;
    double top;
};

/// A place in a panel, in its values.
struct SvgPoint {
    double x;
    double y;
};

/// Gathers the drawing of one panel. Values outside its range are drawn at its edge.
class SvgPanel {
public:
    SvgPanel(const SvgBox& place, const SvgRange& values);

    void Title(const std::string& text);
    /// Lines and labels every `step`, with the unit behind the last label.
    void HorizontalTicks(double step, const std::string& unit);
    void VerticalTicks(double step, const std::string& unit);
    void Line(const std::vector<SvgPoint>& points, const std::string& colour);
    void Bar(double left, double right, double bottom, double top, const std::string& colour);
    void Marker(double x);
    /// Text left of the panel at height `y`.
    void RowLabel(double y, const std::string& text, const std::string& colour);

    /// The whole panel, its frame on top.
    std::string Finish() const;

    static std::string BeginDocument(double width, double height, const std::string& title);
    static std::string EndDocument();

private:
    double PixelX(double x) const;
    double PixelY(double y) const;
    void Text(double x, double y, const char* anchor, const std::string& text, const std::string& colour);

    SvgBox box;
    SvgRange range;
    std::string drawing;
};

} // namespace orva::tools
