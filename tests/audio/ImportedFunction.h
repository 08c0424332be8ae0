/// Where calls of the platform's functions end.
#pragma once

#include <cstdint>
#include <cstring>
#include <windows.h>

namespace orva::test {

/// The function itself, behind the jump that the linker may put between: the address of an imported function
/// is that of such a jump in one file and the function's own in another.
template <class Function>
const void* ImportedFunction(Function* function) {
    constexpr std::uint8_t kJumpThroughMemory[] = {0xFF, 0x25};
    const auto* code = reinterpret_cast<const std::uint8_t*>(function);
    if (std::memcmp(code, kJumpThroughMemory, sizeof kJumpThroughMemory) != 0) {
        return code;
    }
    const void* const* slot = nullptr;
    std::memcpy(&slot, code + sizeof kJumpThroughMemory, sizeof slot);
    return *slot;
}

/// The same by its names.
inline const void* ImportedFunction(const char* library, const char* name) {
    return reinterpret_cast<const void*>(GetProcAddress(GetModuleHandleA(library), name));
}

} // namespace orva::test
