/// What the process's address space holds.
#pragma once

#include "toolkit/TmyObject.h"

namespace orva::toolkit {

/// Traces one line for each run of pages of the same kind, on behalf of `object`.
void TraceMemoryMap(const TmyObject* object);

} // namespace orva::toolkit
