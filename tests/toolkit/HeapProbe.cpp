// A library on the private heap, to be loaded and unloaded.
#include "toolkit/PrivateHeap.h"

#include <string>
#include <vector>

namespace {

/// Takes its memory while the library is loaded, and gives it back while it is unloaded.
std::vector<std::string> words(10, std::string(100, 'x'));

} // namespace

extern "C" {

/// Allocates some, frees it, and keeps `kept` more bytes in a static object. Returns the bytes in use.
__declspec(dllexport) unsigned ProbeWork(unsigned kept) {
    {
        const std::vector<std::string> gone(100, std::string(50, 'y'));
        words.emplace_back(kept, 'z');
    }
    return orva::toolkit::ProcessHeap().Statistics().usedBytes;
}

/// True while the heap is sound.
__declspec(dllexport) int ProbeVerify() {
    return orva::toolkit::ProcessHeap().Verify() == nullptr ? 1 : 0;
}
}
