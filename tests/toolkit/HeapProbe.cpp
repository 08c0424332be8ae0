// A library on the private heap, to be loaded and unloaded.
#include "toolkit/PrivateHeap.h"

#include <string>
#include <vector>

namespace {

/// Take memory while the library is loaded, and give it back while it is unloaded.
std::vector<std::string> words(10, std::string(100, 'x'));

} // namespace

extern "C" {

/// Keeps so many more bytes until the library is unloaded. Returns how many more are in use.
__declspec(dllexport) unsigned ProbeWork(unsigned kept) {
    words.reserve(100);
    const std::size_t before = orva::toolkit::ProcessHeap().Statistics().usedBytes;
    words.emplace_back(kept, 'z');
    return orva::toolkit::ProcessHeap().Statistics().usedBytes - before;
}

/// 1 while the heap is sound.
__declspec(dllexport) int ProbeVerify() {
    return orva::toolkit::ProcessHeap().Verify() == nullptr ? 1 : 0;
}
}
