/// The words of a command line.
#pragma once

#include <cstddef>
#include <string>

namespace orva::toolkit {

/// Longest argument kept; what is longer is cut.
constexpr std::size_t kLongestArgument = 4095;

/// Number of arguments in `line`, the program's own name among them. White space separates them, double
/// quotes group, and two double quotes in a row stand for nothing at all. Null: 0.
int CountArguments(const char* line);

/// Argument `index` of `line`, without its grouping quotes; empty if there is none.
std::string ArgumentOf(const char* line, int index);

} // namespace orva::toolkit
