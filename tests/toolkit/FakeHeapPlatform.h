/// A platform for the private heap that counts, remembers and fails on demand.
#pragma once

#include "toolkit/HeapPlatform.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace orva::test {

/// The one heap and its regions, and any number of mutexes. Only the mutex calls may come from several
/// threads.
class FakeHeapPlatform {
public:
    static constexpr int kNever = -1;

    /// Starts from nothing, with nothing failing.
    FakeHeapPlatform();
    ~FakeHeapPlatform();
    FakeHeapPlatform(const FakeHeapPlatform&) = delete;
    FakeHeapPlatform& operator=(const FakeHeapPlatform&) = delete;

    const toolkit::HeapPlatform& Calls() const;

    /// Of the calls that can fail (mutex, heap, memory), `successes` succeed and the next one fails, and with
    /// `forGood` all that follow.
    void FailAfter(int successes, bool forGood);

    struct Memory {
        std::size_t asked;
        std::size_t told; ///< what `heapSize` says
    };

    std::vector<std::string> log; ///< the heap's calls with their arguments, where `keepsLog`
    bool keepsLog = false;
    std::size_t addressOffset = 8; ///< of each memory from an address aligned to 64; the heap promises 8
    std::size_t sizeSurplus = 0;   ///< what memories are larger than asked
    bool sizeFails = false;        ///< `heapSize` answers SIZE_MAX
    std::map<void*, Memory> memories;
    void* newestMemory = nullptr;
    bool hasHeap = false;

    static int LiveMutexes();
    static int Waits();
    static int Releases();
};

} // namespace orva::test
