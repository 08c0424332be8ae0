#include "toolkit/TmyRegistry.h"

#include "toolkit/TmyBuffer.h"
#include "toolkit/Trace.h"
#include "toolkit/TypeRegistry.h"

#include <cstring>

namespace orva::toolkit {
namespace {

constexpr std::uint32_t kFirstBytes = 256;

bool IsText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

/// A value's bytes as text; they may lack the zero at their end.
TmyString TextOf(const TmyBuffer& bytes, std::uint32_t count) {
    const auto* text = reinterpret_cast<const char*>(bytes.Data());
    return {text, static_cast<std::uint32_t>(strnlen(text, count))};
}

} // namespace

TmyRegistry::TmyRegistry(HKEY root, REGSAM access) {
    RegisterType(this, TypeId::Registry, "Registry");
    HKEY opened = nullptr;
    if (RegOpenKeyExA(root, nullptr, 0, access, &opened) == ERROR_SUCCESS) {
        key = opened;
    }
}

TmyRegistry::~TmyRegistry() {
    Replace(nullptr);
}

void TmyRegistry::Replace(HKEY opened) {
    if (key != nullptr) {
        RegCloseKey(key);
    }
    key = opened;
}

bool TmyRegistry::OpenKey(const char* name, bool create, REGSAM access) {
    HKEY opened = nullptr;
    LSTATUS status = RegOpenKeyExA(key, name, 0, access, &opened);
    if (status != ERROR_SUCCESS) {
        Trace(this, 0, "Key %s not opened, err=%d", name, static_cast<int>(status));
        if (!create) {
            return false;
        }
        status = RegCreateKeyExA(key, name, 0, nullptr, REG_OPTION_NON_VOLATILE, access, nullptr, &opened,
                                 nullptr);
        if (status != ERROR_SUCCESS) {
            Trace(this, 0, "Key %s not created, err=%d", name, static_cast<int>(status));
            return false;
        }
    }
    Replace(opened);
    return true;
}

std::int32_t TmyRegistry::GetInt(const char* name, std::int32_t absent) const {
    std::int32_t value = 0;
    DWORD type = REG_NONE;
    DWORD size = sizeof(value);
    const LSTATUS status =
        RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    return status == ERROR_SUCCESS && type == REG_DWORD && size == sizeof(value) ? value : absent;
}

TmyString TmyRegistry::GetString(const char* name, const char* absent) const {
    TmyBuffer buffer;
    std::uint32_t wanted = kFirstBytes;
    while (buffer.SetSize(wanted) == wanted) {
        DWORD type = REG_NONE;
        DWORD size = wanted;
        const LSTATUS status = RegQueryValueExA(key, name, nullptr, &type, buffer.Data(), &size);
        if (status == ERROR_SUCCESS && IsText(type)) {
            return TextOf(buffer, size);
        }
        // A value that grows between two looks at it is asked for again.
        if (status != ERROR_MORE_DATA || size <= wanted) {
            break;
        }
        wanted = size;
    }
    return absent;
}

std::uint32_t TmyRegistry::GetBinary(const char* name, void* buffer, std::uint32_t size) const {
    DWORD type = REG_NONE;
    DWORD read = size;
    const LSTATUS status = RegQueryValueExA(key, name, nullptr, &type, static_cast<BYTE*>(buffer), &read);
    return status == ERROR_SUCCESS && type == REG_BINARY && read <= size ? read : 0;
}

bool TmyRegistry::SetInt(const char* name, std::int32_t value) {
    return Set(name, REG_DWORD, &value, sizeof(value));
}

bool TmyRegistry::SetString(const char* name, const char* value) {
    return Set(name, REG_SZ, value, static_cast<std::uint32_t>(std::strlen(value)) + 1);
}

bool TmyRegistry::SetBinary(const char* name, const void* buffer, std::uint32_t size) {
    return Set(name, REG_BINARY, buffer, size);
}

bool TmyRegistry::Set(const char* name, DWORD type, const void* data, std::uint32_t size) {
    return RegSetValueExA(key, name, 0, type, static_cast<const BYTE*>(data), size) == ERROR_SUCCESS;
}

} // namespace orva::toolkit
