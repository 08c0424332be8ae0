#pragma once

#include <string>
#include <string_view>

namespace orva::test {

/// What keeps `text` from being a well-formed XML document in UTF-8 without declarations; empty if nothing
/// does. Knows elements, attributes, text and the five entities, which is all that a picture needs.
std::string XmlFault(std::string_view text);

/// Begins of the element `<name` in `text`.
int CountElements(std::string_view text, std::string_view name);

} // namespace orva::test
