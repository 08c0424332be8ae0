#include "toolkit/ArrowDrawing.h"
#include "toolkit/TmyControl.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using toolkit::ArrowGlyph;

/// All glyphs in one size, one beside the other.
class ArrowRow : public toolkit::TmyControl {
public:
    ArrowRow(TmyControl* parentControl, const toolkit::Placement& placement, int glyphSize)
        : TmyControl(parentControl, placement), size(glyphSize) {
        SetOverlay(true); // what is below shows between the glyphs
    }

    static constexpr ArrowGlyph kAll[] = {
        ArrowGlyph::Up,      ArrowGlyph::Down,      ArrowGlyph::Left,       ArrowGlyph::Right,
        ArrowGlyph::Bar,     ArrowGlyph::Square,    ArrowGlyph::DoubleLeft, ArrowGlyph::DoubleRight,
        ArrowGlyph::SolidUp, ArrowGlyph::SolidDown, ArrowGlyph::SolidLeft,  ArrowGlyph::SolidRight};
    static constexpr int kGap = 4;

    static int WidthFor(int glyphSize) { return static_cast<int>(std::size(kAll)) * (glyphSize + kGap); }

    void OnPaint(HDC dc) override {
        int x = 0;
        for (const ArrowGlyph glyph : kAll) {
            DrawArrow(dc, glyph, x, 0, size, GetStyleValue(toolkit::StyleValue::TextColor));
            x += size + kGap;
        }
        TmyControl::OnPaint(dc);
    }

private:
    int size;
};

} // namespace

void FillArrows(Family& family) {
    for (const int size : {4, 5, 6, 7, 8, 11, 16}) {
        char caption[16];
        wsprintfA(caption, "Size %d", size);
        new ArrowRow(&family, family.Cell(ArrowRow::WidthFor(size), size, caption), size);
    }
}

} // namespace orva::gallery
