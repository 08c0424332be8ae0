/// Folders, found and made.
#pragma once

#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

/// Looks for a path, which may have wildcards in its last part, and copies what is known of the first match
/// to `findData`, if that is not null. Returns FILE_ATTRIBUTE_DIRECTORY for a folder, and 0 for what does not
/// exist. Kept: a file that exists gives 0 too, so it tells folders only.
std::uint32_t FileExists(const char* path, WIN32_FIND_DATAA* findData = nullptr);

/// Makes each missing folder of a path, the last included, and stops at the first failure. The path may end
/// with a backslash; a drive or a network share at its start is there or nothing is made. True if all of the
/// path is there.
bool CreateFolderTree(const char* path);

} // namespace orva::toolkit
