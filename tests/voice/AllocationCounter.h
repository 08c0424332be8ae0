/// Counts the calls of operator new in a test program.
#pragma once

namespace orva::voice::test {

/// Allocations of this program since it started.
long AllocationCount();

} // namespace orva::voice::test
