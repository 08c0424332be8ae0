/// Error numbers of the library and the calling thread's error state.
#pragma once

#include <cstdint>

namespace orva::dsp {

/// The platform's own numbers.
enum ErrorNumber : std::uint32_t {
    kErrorNone = 0,
    kErrorOutOfMemory = 8,
    kErrorInvalidParameter = 87,
};

/// The calling thread's error state: on Windows the platform's last-error value, elsewhere a thread's own
/// variable.
void SetErrorState(std::uint32_t number);
std::uint32_t GetErrorState();

} // namespace orva::dsp
