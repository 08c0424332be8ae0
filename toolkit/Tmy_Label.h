/// Text without a window.
#pragma once

#include "toolkit/TextDrawing.h"
#include "toolkit/TmyControl.h"
#include "toolkit/TmyString.h"

#include <cstdint>

namespace orva::toolkit {

/// Draws a text, left and vertically in the middle at the start, on the window colour; as an overlay it draws
/// the text alone. It shares its parent's style, and has no border.
class Tmy_Label : public TmyControl {
public:
    explicit Tmy_Label(TmyControl* parent, const Placement& placement = {}, const char* labelText = "");

    /// Compares first. With `resize` the label fits itself to the text, at the place where it is.
    virtual void SetText(const TmyString& newText, bool resize = false);
    [[nodiscard]] const TmyString& GetText() const { return text; }
    /// A code made of `TextAlignment` bits. Compares first.
    void SetTextAlignment(std::uint32_t alignmentCode);
    [[nodiscard]] std::uint32_t GetTextAlignment() const { return textAlignment; }

    /// The size at which the text just fits.
    [[nodiscard]] SIZE NaturalSize() const;

    void OnPaint(HDC dc) override;
    void OnResize() override;
    void GetClientArea(RECT* area) const override;

private:
    TmyString text;
    std::uint32_t textAlignment = kTextLeftMiddle;
};

} // namespace orva::toolkit
