#include "plugin/ReceiverLibrary.h"

#include <cstring>

namespace orva::plugin {

namespace {

constexpr char kLibraryName[] = "TRK718API.DLL";

template <class Function>
void Bind(const LibraryPlatform& platform, HMODULE module, const char* name, Function& function) {
    if (function != nullptr) {
        return;
    }
    const FARPROC found = platform.getProcAddress(module, name);
    static_assert(sizeof found == sizeof function);
    std::memcpy(&function, &found, sizeof function);
}

} // namespace

bool ReceiverLibrary::Load() {
    if (module == nullptr) {
        module = platform.loadLibrary(kLibraryName);
    }
    if (module == nullptr) {
        return false;
    }
    Bind(platform, module, "CodecStart", CodecStart);
    Bind(platform, module, "CodecStop", CodecStop);
    Bind(platform, module, "CodecRead", CodecRead);
    Bind(platform, module, "K7GetEEP", K7GetEEP);
    Bind(platform, module, "K7InvertSpectrum", K7InvertSpectrum);
    return CodecStart != nullptr && CodecStop != nullptr && CodecRead != nullptr && K7GetEEP != nullptr;
}

void ReceiverLibrary::Unload() {
    CodecStart = nullptr;
    CodecStop = nullptr;
    CodecRead = nullptr;
    K7GetEEP = nullptr;
    K7InvertSpectrum = nullptr;
    if (module != nullptr) {
        platform.freeLibrary(module);
        module = nullptr;
    }
}

} // namespace orva::plugin
