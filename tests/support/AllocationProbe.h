/// Counts what the program allocates and holds, and makes chosen allocations fail. The test program's
/// `operator new` is replaced.
#pragma once

#include <cstdint>

namespace orva::test {

/// Allocations of any kind since the program began.
std::uint64_t CountAllocations();

/// Allocations that have not been released yet.
std::int64_t CountLiveAllocations();

/// For its lifetime one non-throwing allocation fails, the one after `successes` others that succeed, or that
/// one and all that follow.
class AllocationFailure {
public:
    enum class Reach { Once, FromThenOn };

    explicit AllocationFailure(int successes, Reach reach = Reach::Once);
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    /// An allocation was made to fail.
    bool HasStruck() const;
};

} // namespace orva::test
