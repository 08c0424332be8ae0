#include "tools/orva-decode/SvgPanel.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string_view>

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

/// The character of UTF-8 that `text` begins with, 0 when it is none that XML allows, and its length.
struct Character {
    std::uint32_t code = 0;
    std::size_t length = 1;
};

Character FirstCharacter(std::string_view text) {
    constexpr std::uint32_t kLeast[] = {0, 0x20, 0x80, 0x800, 0x10000}; // by length
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const bool isLead = lead < 0x80 || (lead >= 0xC0 && lead < 0xF8);
    if (!isLead || length > text.size()) {
        return {};
    }
    std::uint32_t code = length == 1 ? lead : lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) {
            return {};
        }
        code = code << 6 | (next & 0x3F);
    }
    const bool isSurrogate = code >= 0xD800 && code < 0xE000;
    if (code < kLeast[length] || code > 0x10FFFF || isSurrogate || code == 0xFFFE || code == 0xFFFF) {
        return {};
    }
    return {code, length};
}

/// Text for the picture. A file's name may be any bytes; what cannot be shown is replaced.
std::string Escaped(std::string_view text) {
    constexpr const char* kReplacement = "\xEF\xBF\xBD";
    std::string escaped;
    while (!text.empty()) {
        const Character character = FirstCharacter(text);
        switch (character.code) {
        case 0:
            escaped += kReplacement;
            break;
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
            escaped += text.substr(0, character.length);
        }
        text.remove_prefix(character.length);
    }
    return escaped;
}

/// Where `value` lies between `low` and `high`, 0 .. 1; 0 when there is nothing between them.
double Share(double value, double low, double high) {
    return high > low ? std::clamp((value - low) / (high - low), 0.0, 1.0) : 0.0;
}

std::string Segment(double x1, double y1, double x2, double y2, const std::string& colour,
                    const char* extra) {
    return "<path d=\"M" + Number(x1) + " " + Number(y1) + "L" + Number(x2) + " " + Number(y2) +
           "\" stroke=\"" + colour + "\"" + extra + "/>\n";
}

} // namespace

SvgPanel::SvgPanel(const SvgBox& place, const SvgRange& values) : box(place), range(values) {}

double SvgPanel::PixelX(double x) const {
    return box.x + box.width * Share(x, range.left, range.right);
}

double SvgPanel::PixelY(double y) const {
    return box.y + box.height * (1 - Share(y, range.bottom, range.top));
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
    if (step <= 0) {
        return; // nothing to divide
    }
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
    if (step <= 0) {
        return; // nothing to divide
    }
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
