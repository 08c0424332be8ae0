/// Whether the tests run under AddressSanitizer, which slows them down by a factor: the long ones then try
/// every n-th case only, and the plain builds all.
#pragma once

namespace orva::test {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitizedBuild = true;
#elif defined(__has_feature)
constexpr bool kSanitizedBuild = __has_feature(address_sanitizer);
#else
constexpr bool kSanitizedBuild = false;
#endif

} // namespace orva::test
