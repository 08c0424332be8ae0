#include "toolkit/ArrowDrawing.h"

#include "toolkit/Colors.h"

#include <algorithm>
#include <utility>

namespace orva::toolkit {

namespace {

enum class Direction { Up, Down, Left, Right };

/// Where a glyph goes, and which way it points. Shapes are described as pointing up.
struct Canvas {
    HDC dc;
    int x;
    int y;
    int size;
    Direction direction;
    COLORREF color;

    /// Fills the pixels from `first` up to `last` of one row of the shape, counted from the tip's side.
    void FillRow(int row, int first, int last) const {
        const bool turned = direction == Direction::Left || direction == Direction::Right;
        const bool mirrored = direction == Direction::Down || direction == Direction::Right;
        const int line = mirrored ? size - 1 - row : row;
        RECT area{first, line, last, line + 1};
        if (turned) {
            std::swap(area.left, area.top);
            std::swap(area.right, area.bottom);
        }
        OffsetRect(&area, x, y);
        FillSolid(dc, area, color);
    }
};

/// Rows of a triangle over the full width: each is one pixel wider at both ends than the one before.
int RowsOfTriangle(int size) {
    return (size + 1) / 2;
}

void FillTriangle(const Canvas& canvas) {
    const int rows = RowsOfTriangle(canvas.size);
    const int top = (canvas.size - rows) / 2;
    for (int row = 0; row < rows; ++row) {
        canvas.FillRow(top + row, rows - 1 - row, canvas.size - (rows - 1 - row));
    }
}

/// Two strokes that meet at the tip, `top` rows from the edge.
void FillAngle(const Canvas& canvas, int top) {
    constexpr int kSizeOfThickStrokes = 7;
    const int rows = RowsOfTriangle(canvas.size);
    const int stroke = canvas.size >= kSizeOfThickStrokes ? 2 : 1;
    for (int row = 0; row < rows; ++row) {
        const int first = rows - 1 - row;
        const int last = canvas.size - first;
        canvas.FillRow(top + row, first, std::min(first + stroke, last));
        canvas.FillRow(top + row, std::max(last - stroke, first), last);
    }
}

void FillSingleAngle(const Canvas& canvas) {
    FillAngle(canvas, (canvas.size - RowsOfTriangle(canvas.size)) / 2);
}

void FillDoubleAngle(const Canvas& canvas) {
    FillAngle(canvas, 0);
    FillAngle(canvas, canvas.size - RowsOfTriangle(canvas.size));
}

void FillBar(const Canvas& canvas) {
    constexpr int kWidthOverHeight = 4;
    // As high as leaves the same room above and below.
    int height = std::max(canvas.size / kWidthOverHeight, 1);
    height += (canvas.size - height) % 2;
    for (int row = 0; row < height; ++row) {
        canvas.FillRow((canvas.size - height) / 2 + row, 0, canvas.size);
    }
}

void FillSquare(const Canvas& canvas) {
    for (int row = 0; row < canvas.size; ++row) {
        canvas.FillRow(row, 0, canvas.size);
    }
}

} // namespace

void DrawArrow(HDC dc, ArrowGlyph glyph, int x, int y, int size, COLORREF color) {
    const auto pointing = [=](Direction direction) { return Canvas{dc, x, y, size, direction, color}; };
    switch (glyph) {
    case ArrowGlyph::Up:
        return FillSingleAngle(pointing(Direction::Up));
    case ArrowGlyph::Down:
        return FillSingleAngle(pointing(Direction::Down));
    case ArrowGlyph::Left:
        return FillSingleAngle(pointing(Direction::Left));
    case ArrowGlyph::Right:
        return FillSingleAngle(pointing(Direction::Right));
    case ArrowGlyph::Bar:
        return FillBar(pointing(Direction::Up));
    case ArrowGlyph::Square:
        return FillSquare(pointing(Direction::Up));
    case ArrowGlyph::DoubleLeft:
        return FillDoubleAngle(pointing(Direction::Left));
    case ArrowGlyph::DoubleRight:
        return FillDoubleAngle(pointing(Direction::Right));
    case ArrowGlyph::SolidUp:
        return FillTriangle(pointing(Direction::Up));
    case ArrowGlyph::SolidDown:
        return FillTriangle(pointing(Direction::Down));
    case ArrowGlyph::SolidLeft:
        return FillTriangle(pointing(Direction::Left));
    case ArrowGlyph::SolidRight:
        return FillTriangle(pointing(Direction::Right));
    case ArrowGlyph::None:
        break;
    }
}

} // namespace orva::toolkit
