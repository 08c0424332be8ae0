#include "audio/FilePlatform.h"

#include <algorithm>

#ifdef _WIN32
#include <string>
#include <windows.h>
#else
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace orva::audio {

namespace {

/// One call to the platform takes no more, whatever the width of its counts.
constexpr std::size_t kMostBytesPerCall = std::size_t{1} << 30;

#ifdef _WIN32

static_assert(sizeof(FileHandle) == sizeof(HANDLE));

HANDLE ToHandle(FileHandle file) {
    return reinterpret_cast<HANDLE>(file);
}

FileHandle FromHandle(HANDLE handle) {
    return reinterpret_cast<FileHandle>(handle);
}

std::wstring WidePath(const char* path) {
    const int length = MultiByteToWideChar(CP_ACP, 0, path, -1, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(std::max(length, 1)), L'\0');
    MultiByteToWideChar(CP_ACP, 0, path, -1, wide.data(), length);
    wide.resize(wide.size() - 1); // without the closing zero
    return wide;
}

std::wstring FullPath(const std::wstring& path) {
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    const DWORD length =
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    full.resize(length);
    return full;
}

/// The path in the form that takes any length, if it is too long for the ordinary one.
std::wstring OpenablePath(const char* path) {
    const std::wstring wide = WidePath(path);
    if (wide.size() < MAX_PATH || wide.rfind(L"\\\\?\\", 0) == 0) {
        return wide;
    }
    const std::wstring full = FullPath(wide);
    return full.rfind(L"\\\\", 0) == 0 ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

FileHandle OpenForReading(const char* path) {
    return FromHandle(CreateFileW(OpenablePath(path).c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
}

FileHandle Create(const char* path) {
    return FromHandle(CreateFileW(OpenablePath(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
}

FileHandle StandardInput() {
    const HANDLE handle = GetStdHandle(STD_INPUT_HANDLE);
    return handle == nullptr ? kNoFile : FromHandle(handle);
}

std::int64_t Size(FileHandle file) {
    LARGE_INTEGER size;
    return GetFileType(ToHandle(file)) == FILE_TYPE_DISK && GetFileSizeEx(ToHandle(file), &size) != 0
               ? size.QuadPart
               : -1;
}

bool Seek(FileHandle file, std::uint64_t offset) {
    LARGE_INTEGER distance;
    distance.QuadPart = static_cast<LONGLONG>(offset);
    return SetFilePointerEx(ToHandle(file), distance, nullptr, FILE_BEGIN) != 0;
}

std::int64_t Read(FileHandle file, void* bytes, std::size_t count) {
    DWORD done = 0;
    if (ReadFile(ToHandle(file), bytes, static_cast<DWORD>(std::min(count, kMostBytesPerCall)), &done,
                 nullptr) == 0) {
        return GetLastError() == ERROR_BROKEN_PIPE ? 0 : -1; // a pipe whose writer is gone is at its end
    }
    return done;
}

std::int64_t Write(FileHandle file, const void* bytes, std::size_t count) {
    DWORD done = 0;
    const BOOL whole = WriteFile(ToHandle(file), bytes,
                                 static_cast<DWORD>(std::min(count, kMostBytesPerCall)), &done, nullptr);
    return whole == 0 && done == 0 ? -1 : std::int64_t{done};
}

/// Nobody may move or delete an open file here; a deleted one has no name left.
bool IsInPlace(FileHandle file, const char* /*path*/) {
    BY_HANDLE_FILE_INFORMATION information;
    return GetFileInformationByHandle(ToHandle(file), &information) != 0 && information.nNumberOfLinks > 0;
}

bool Close(FileHandle file) {
    return CloseHandle(ToHandle(file)) != 0;
}

#else

constexpr int kNewFileMode = 0666;

int ToDescriptor(FileHandle file) {
    return static_cast<int>(file);
}

/// Repeats a call while a signal interrupts it.
template <class Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

FileHandle OpenForReading(const char* path) {
    const int descriptor = Uninterrupted([path] { return open(path, O_RDONLY | O_CLOEXEC); });
    struct stat status;
    if (descriptor >= 0 && fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
        close(descriptor);
        return kNoFile;
    }
    return descriptor;
}

FileHandle Create(const char* path) {
    return Uninterrupted(
        [path] { return open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kNewFileMode); });
}

FileHandle StandardInput() {
    return STDIN_FILENO;
}

std::int64_t Size(FileHandle file) {
    struct stat status;
    return fstat(ToDescriptor(file), &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
}

bool Seek(FileHandle file, std::uint64_t offset) {
    return lseek(ToDescriptor(file), static_cast<off_t>(offset), SEEK_SET) >= 0;
}

std::int64_t Read(FileHandle file, void* bytes, std::size_t count) {
    return Uninterrupted([=] { return read(ToDescriptor(file), bytes, std::min(count, kMostBytesPerCall)); });
}

std::int64_t Write(FileHandle file, const void* bytes, std::size_t count) {
    return Uninterrupted(
        [=] { return write(ToDescriptor(file), bytes, std::min(count, kMostBytesPerCall)); });
}

bool IsInPlace(FileHandle file, const char* path) {
    struct stat opened;
    struct stat named;
    return fstat(ToDescriptor(file), &opened) == 0 && stat(path, &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

bool Close(FileHandle file) {
    return close(ToDescriptor(file)) == 0;
}

#endif

} // namespace

const FilePlatform& SystemFiles() {
    static constexpr FilePlatform kSystemFiles = {
        .openForReading = &OpenForReading,
        .create = &Create,
        .standardInput = &StandardInput,
        .size = &Size,
        .seek = &Seek,
        .read = &Read,
        .write = &Write,
        .isInPlace = &IsInPlace,
        .close = &Close,
    };
    return kSystemFiles;
}

} // namespace orva::audio
