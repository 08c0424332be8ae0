/// A group of samples in the gallery.
///
/// How to add widgets to the gallery: one source file for each family of widgets, which has one function
///
///     void FillSpinButtons(Family& family) {
///         auto* plain = new TmyUpDown(&family, family.Cell(16, 20, "Enabled"));
///         auto* off = new TmyUpDown(&family, family.Cell(16, 20, "Disabled"));
///         off->SetEnabled(false);
///         family.StartRow();
///         ...
///     }
///
/// declared in Families.h, and one line in the table at the top of WidgetsPage.cpp. Cells flow from left to
/// right and wrap at the family's right edge; each has its caption below. The samples are children of the
/// family and belong to it. `Focused<Widget>` is a widget that looks as if it had the focus, which only one
/// can really have.
#pragma once

#include "toolkit/TmyPanel.h"

#include <utility>

namespace orva::gallery {

/// A panel with a title, in which samples stand in rows of cells.
class Family : public toolkit::TmyPanel {
public:
    /// \param width  of the panel [pixels]; its height follows from the cells
    Family(toolkit::TmyControl* parent, const char* title, int x, int y, int width);

    /// Takes the next cell and writes its caption.
    ///
    /// \param width, height  of the sample [pixels]
    /// \return where the sample is to stand
    toolkit::Placement Cell(int width, int height, const char* caption);

    /// Lets the next cell begin a row.
    void StartRow();

    /// Ends the last row; from then on the panel has its height.
    void Finish();

protected:
    [[nodiscard]] TitlePlace PlaceTitle(const RECT& area) const override;

private:
    int nextX;
    int rowTop;
    int rowHeight = 0; ///< of the samples so far
    bool rowIsEmpty = true;
};

/// A widget that draws the mark of the focus.
template <class Widget>
class Focused : public Widget {
public:
    template <class... Arguments>
    explicit Focused(Arguments&&... arguments) : Widget(std::forward<Arguments>(arguments)...) {}
    [[nodiscard]] bool HasFocus() const override { return true; }
};

} // namespace orva::gallery
