#include "toolkit/FileSystem.h"

#include "toolkit/TmyString.h"

namespace orva::toolkit {
namespace {

#ifndef _WIN64
static_assert(sizeof(WIN32_FIND_DATAA) == 320);
#endif

constexpr char kSeparator = '\\';

/// Index behind the next backslash, or the length.
std::int32_t BehindSeparator(const TmyString& path, std::int32_t from) {
    const std::int32_t found = path.Find(kSeparator, from);
    return found == TmyString::kNone ? static_cast<std::int32_t>(path.Length()) : found + 1;
}

/// Length of what no folder can be made of: a drive, or the server and the share of a network path.
std::int32_t RootLength(const TmyString& path) {
    if (path.At(0) == kSeparator && path.At(1) == kSeparator) {
        return BehindSeparator(path, BehindSeparator(path, 2));
    }
    if (path.At(1) == ':') {
        return path.At(2) == kSeparator ? 3 : 2;
    }
    return path.At(0) == kSeparator ? 1 : 0;
}

bool EnsureFolder(const TmyString& path) {
    return FileExists(path.Text()) != 0 || CreateDirectoryA(path.Text(), nullptr) != 0;
}

} // namespace

std::uint32_t FileExists(const char* path, WIN32_FIND_DATAA* findData) {
    WIN32_FIND_DATAA found{};
    HANDLE search = FindFirstFileA(path, &found);
    if (search == INVALID_HANDLE_VALUE) {
        return 0;
    }
    FindClose(search);
    if (findData != nullptr) {
        *findData = found;
    }
    return found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
}

bool CreateFolderTree(const char* path) {
    const TmyString whole(path);
    const auto length = static_cast<std::int32_t>(whole.Length());
    std::int32_t begin = RootLength(whole);
    while (begin < length) {
        const std::int32_t next = BehindSeparator(whole, begin);
        const std::int32_t end =
            whole.At(static_cast<std::uint32_t>(next) - 1) == kSeparator ? next - 1 : next;
        if (end > begin && !EnsureFolder(whole.Left(end))) { // two backslashes in a row name no folder
            return false;
        }
        begin = next;
    }
    return length > 0;
}

} // namespace orva::toolkit
