#include "dsp/LastError.h"

#ifdef _WIN32
// The two functions alone, so that the library stays free of the platform's headers.
extern "C" {
__declspec(dllimport) void __stdcall SetLastError(unsigned long number);
__declspec(dllimport) unsigned long __stdcall GetLastError(void);
}
#endif

namespace orva::dsp {

#ifdef _WIN32

void SetErrorState(std::uint32_t number) {
    SetLastError(number);
}

std::uint32_t GetErrorState() {
    return GetLastError();
}

#else

namespace {
thread_local std::uint32_t errorState = kErrorNone;
}

void SetErrorState(std::uint32_t number) {
    errorState = number;
}

std::uint32_t GetErrorState() {
    return errorState;
}

#endif

} // namespace orva::dsp
