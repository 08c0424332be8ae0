/// What must hold for any input, checked in every build.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace orva::fuzz {

/// Ends the program, which makes the input a finding, unless `holds`.
inline void Require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

} // namespace orva::fuzz
