#include "toolkit/MemoryMap.h"

#include "toolkit/Trace.h"

#include <cstddef>
#include <windows.h>

namespace orva::toolkit {

namespace {

constexpr DWORD kProtectionMask = 0xFF; ///< without guard and cache flags

const char* NameOfState(DWORD pageState) {
    switch (pageState) {
    case MEM_COMMIT:
        return "COMMITTED";
    case MEM_RESERVE:
        return "RESERVED";
    default:
        return "FREE";
    }
}

const char* NameOfType(DWORD type) {
    switch (type) {
    case MEM_IMAGE:
        return "IMAGE";
    case MEM_MAPPED:
        return "MAPPED";
    case MEM_PRIVATE:
        return "PRIVATE";
    default:
        return "";
    }
}

const char* NameOfProtection(DWORD protection) {
    switch (protection & kProtectionMask) {
    case PAGE_NOACCESS:
        return "NOACCESS";
    case PAGE_READONLY:
        return "READONLY";
    case PAGE_READWRITE:
        return "RW";
    case PAGE_WRITECOPY:
        return "WRITECOPY";
    case PAGE_EXECUTE:
        return "EXEC";
    case PAGE_EXECUTE_READ:
        return "EXEC_READ";
    case PAGE_EXECUTE_READWRITE:
        return "EXEC_RW";
    case PAGE_EXECUTE_WRITECOPY:
        return "EXEC_WRITECOPY";
    default:
        return "";
    }
}

} // namespace

void TraceMemoryMap(const TmyObject* object) {
    const std::byte* at = nullptr;
    MEMORY_BASIC_INFORMATION pages;
    while (VirtualQuery(at, &pages, sizeof pages) == sizeof pages && pages.RegionSize != 0) {
        if (pages.State != MEM_FREE) {
            Trace(object, 0, "%p %8lx %s %s %s", pages.BaseAddress,
                  static_cast<unsigned long>(pages.RegionSize), NameOfState(pages.State),
                  NameOfType(pages.Type), NameOfProtection(pages.Protect));
        }
        const std::byte* next = static_cast<std::byte*>(pages.BaseAddress) + pages.RegionSize;
        if (next <= at) {
            return; // the end of the address space
        }
        at = next;
    }
}

} // namespace orva::toolkit
