#include "tools/orva-decode/SvgPanel.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace orva::tools {

namespace {

constexpr const char* kTextColour = "#1d2f44";
constexpr const char* kGridColour = "#dde5ee";
constexpr double kLabelGap = 6;

std::string Number(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.2f", value);
    return text;
}

/// A tick's value without needless digits.
std::string Label(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.6g", std::abs(value) < 1e-9 ? 0.0 : value);
    return text;
}

/// A unit as it follows a number; nothing for none.
std::string Behind(const std::string& unit) {
    return unit.empty() ? unit : " " + unit;
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

std::string Segment(double x1, double y1, double x2, double y2, const std::string& colour,
                    const char* extra) {
    return "<path d=\"M" + Number(x1) + " " + Number(y1) + "L" + Number(x2) + " " + Number(y2) +
           "\" stroke=\"" + colour + "\"" + extra + "/>\n";
}

} // namespace

SvgPanel::SvgPanel(const SvgBox& place, const SvgRange& values) : box(place), range(values) {}

double SvgPanel::PixelX(double x) const {
    const double share = (x - range.left) / (range.right - range.left);
    return box.x + box.width * std::clamp(share, 0.0, 1.0);
}

double SvgPanel::PixelY(double y) const {
    const double share = (y - range.bottom) / (range.top - range.bottom);
    return box.y + box.height * (1 - std::clamp(share, 0.0, 1.0));
}

void SvgPanel::Text(double x, double y, const char* anchor, const std::string& text,
                    const std::string& colour) {
    drawing += "<text x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" text-anchor=\"" + anchor +
               "\" fill=\"" + colour + "\">" + Escaped(text) + "</text>\n";
}

void SvgPanel::Title(const std::string& text) {
    drawing += "<text x=\"" + Number(box.x) + "\" y=\"" + Number(box.y - 8) +
               "\" font-weight=\"bold\" fill=\"" + kTextColour + "\">" + Escaped(text) + "</text>\n";
}

void SvgPanel::HorizontalTicks(double step, const std::string& unit) {
    const double first = std::ceil(range.left / step);
    for (double i = first; i * step <= range.right * (1 + 1e-9); ++i) {
        const double x = PixelX(i * step);
        drawing += Segment(x, box.y, x, box.y + box.height, kGridColour, "");
        const bool isLast = (i + 1) * step > range.right * (1 + 1e-9);
        Text(x, box.y + box.height + 16, "middle", Label(i * step) + (isLast ? Behind(unit) : ""),
             kTextColour);
    }
}

void SvgPanel::VerticalTicks(double step, const std::string& unit) {
    const double first = std::ceil(range.bottom / step);
    for (double i = first; i * step <= range.top + 1e-9; ++i) {
        const double y = PixelY(i * step);
        drawing += Segment(box.x, y, box.x + box.width, y, kGridColour, "");
        const bool isLast = (i + 1) * step > range.top + 1e-9;
        Text(box.x - kLabelGap, y + 4, "end", Label(i * step) + (isLast ? Behind(unit) : ""), kTextColour);
    }
}

void SvgPanel::Line(const std::vector<SvgPoint>& points, const std::string& colour) {
    if (points.empty()) {
        return;
    }
    drawing += "<polyline fill=\"none\" stroke=\"" + colour + "\" stroke-width=\"1.2\" points=\"";
    for (const SvgPoint& point : points) {
        drawing += Number(PixelX(point.x)) + "," + Number(PixelY(point.y)) + " ";
    }
    drawing += "\"/>\n";
}

void SvgPanel::Bar(double left, double right, double bottom, double top, const std::string& colour) {
    const double x = PixelX(left);
    const double y = PixelY(top);
    drawing += "<rect x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" width=\"" + Number(PixelX(right) - x) +
               "\" height=\"" + Number(PixelY(bottom) - y) + "\" fill=\"" + colour + "\"/>\n";
}

void SvgPanel::Marker(double x) {
    drawing +=
        Segment(PixelX(x), box.y, PixelX(x), box.y + box.height, kTextColour, " stroke-dasharray=\"3 3\"");
}

void SvgPanel::RowLabel(double y, const std::string& text, const std::string& colour) {
    Text(box.x - kLabelGap, PixelY(y) + 4, "end", text, colour);
}

std::string SvgPanel::Finish() const {
    return "<g>\n" + drawing + "<rect x=\"" + Number(box.x) + "\" y=\"" + Number(box.y) + "\" width=\"" +
           Number(box.width) + "\" height=\"" + Number(box.height) + "\" fill=\"none\" stroke=\"" +
           kTextColour + "\"/>\n</g>\n";
}

std::string SvgPanel::BeginDocument(double width, double height, const std::string& title) {
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + Number(width) + " " + Number(height) +
           "\" font-family=\"sans-serif\" font-size=\"11\">\n<rect width=\"" + Number(width) +
           "\" height=\"" + Number(height) +
           "\" fill=\"white\"/>\n<text x=\"60\" y=\"22\" font-size=\"15\" font-weight=\"bold\" fill=\"" +
           kTextColour + "\">" + Escaped(title) + "</text>\n";
}

std::string SvgPanel::EndDocument() {
    return "</svg>\n";
}

} // namespace orva::tools
