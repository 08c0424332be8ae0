/// An entry of a number with a fixed count of decimals.
#pragma once

#include "toolkit/TmyIntEdit.h"

namespace orva::toolkit {

/// Shows its number with the point in its place. All values, limits and steps are in units of the last
/// decimal: with two decimals, 150 is "1.50". The point enters beside the keys of `TmyIntEdit`; decimals
/// beyond those of the entry are cut, missing ones are 0.
class TmyFloatEdit : public TmyIntEdit {
public:
    /// \param decimalCount  limited to 0 .. `kMostDecimals`
    TmyFloatEdit(TmyControl* parent, int decimalCount, const Placement& placement,
                 DWORD windowStyle = kEditStyle, DWORD extendedStyle = 0);

    [[nodiscard]] int GetDecimals() const { return decimals; }

protected:
    [[nodiscard]] TmyString Format(std::int64_t number) const override;
    [[nodiscard]] std::int64_t Parse(const TmyString& text) const override;
    [[nodiscard]] bool IsNumberCharacter(char character) const override;

private:
    int decimals;
};

} // namespace orva::toolkit
