#include "toolkit/TmyFloatEdit.h"

#include "toolkit/TypeRegistry.h"

#include <algorithm>

namespace orva::toolkit {

TmyFloatEdit::TmyFloatEdit(TmyControl* parentControl, int decimalCount, const Placement& placement,
                           DWORD windowStyle, DWORD extendedStyle)
    : TmyIntEdit(parentControl, placement, windowStyle, extendedStyle),
      decimals(std::clamp(decimalCount, 0, kMostDecimals)) {
    RegisterType(this, TypeId::FloatEdit, "FloatEdit");
}

TmyString TmyFloatEdit::Format(std::int64_t number) const {
    return FormatFixedPoint(number, decimals).c_str();
}

std::int64_t TmyFloatEdit::Parse(const TmyString& text) const {
    return ParseFixedPoint(text.Text(), decimals);
}

bool TmyFloatEdit::IsNumberCharacter(char character) const {
    return character == '.' || TmyIntEdit::IsNumberCharacter(character);
}

} // namespace orva::toolkit
