/// A library as the loader sees it.
#pragma once

#include <string>
#include <vector>
#include <windows.h>

namespace orva::test {

/// Loads a library for as long as it lives, and reads its tables.
class LoadedLibrary {
public:
    explicit LoadedLibrary(const std::string& path) : module(LoadLibraryA(path.c_str())) {}
    ~LoadedLibrary() {
        if (module != nullptr) {
            FreeLibrary(module);
        }
    }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    HMODULE Module() const { return module; }

    template <class Function>
    Function Find(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    }

    /// Names of everything it exports, in the order of its table.
    std::vector<std::string> ExportedNames() const {
        std::vector<std::string> names;
        const auto* exports = At<IMAGE_EXPORT_DIRECTORY>(Directory(IMAGE_DIRECTORY_ENTRY_EXPORT));
        const auto* offsets = At<DWORD>(exports->AddressOfNames);
        for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
            names.emplace_back(At<char>(offsets[i]));
        }
        return names;
    }

    /// Names of the libraries that it needs.
    std::vector<std::string> ImportedLibraries() const {
        std::vector<std::string> names;
        for (const auto* import = At<IMAGE_IMPORT_DESCRIPTOR>(Directory(IMAGE_DIRECTORY_ENTRY_IMPORT));
             import->Name != 0; ++import) {
            names.emplace_back(At<char>(import->Name));
        }
        return names;
    }

private:
    template <class Record>
    const Record* At(DWORD offset) const {
        return reinterpret_cast<const Record*>(reinterpret_cast<const BYTE*>(module) + offset);
    }

    DWORD Directory(int entry) const {
        const auto* headers = At<IMAGE_NT_HEADERS>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
        return headers->OptionalHeader.DataDirectory[entry].VirtualAddress;
    }

    HMODULE module;
};

} // namespace orva::test
