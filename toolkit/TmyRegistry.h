/// Access to the registry.
#pragma once

#include "toolkit/TmyObject.h"
#include "toolkit/TmyString.h"

#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

/// Holds one open key, and reads and writes its values. A value that is missing, of another type or out of
/// reach counts as absent.
class TmyRegistry : public TmyObject {
public:
    /// Opens a root, as HKEY_CURRENT_USER. If that fails, there is no key, and all operations fail.
    TmyRegistry(HKEY root, REGSAM access);
    ~TmyRegistry() override;
    TmyRegistry(const TmyRegistry&) = delete;
    TmyRegistry& operator=(const TmyRegistry&) = delete;

    /// Opens a key below the present one, which it replaces; `create` makes it if it cannot be opened. False,
    /// which is traced, and the present key stays, if that fails.
    bool OpenKey(const char* name, bool create, REGSAM access);

    std::int32_t GetInt(const char* name, std::int32_t absent) const;
    /// Of any length, up to its first zero. Names of environment variables are not replaced.
    TmyString GetString(const char* name, const char* absent) const;
    /// Reads at most `size` bytes, and returns how many; 0 if absent, and if it is longer.
    std::uint32_t GetBinary(const char* name, void* buffer, std::uint32_t size) const;

    /// True on success.
    bool SetInt(const char* name, std::int32_t value);
    bool SetString(const char* name, const char* value);
    bool SetBinary(const char* name, const void* buffer, std::uint32_t size);

private:
    bool Set(const char* name, DWORD type, const void* data, std::uint32_t size);
    void Replace(HKEY opened);

    HKEY key = nullptr;
};

} // namespace orva::toolkit
