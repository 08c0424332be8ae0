#include "tests/audio/MemoryFiles.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace orva::test {

namespace {

using audio::FileHandle;

struct OpenFile {
    std::string path;
    std::uint64_t position = 0;

    bool isWritten = false;
    bool isOpen = false;
};

MemoryFiles* memory = nullptr;
std::vector<OpenFile> openFiles;

/// The open file behind a handle. Using one that is none is a fault of the tested code.
OpenFile& At(FileHandle file) {
    if (file < 0 || file >= static_cast<FileHandle>(openFiles.size()) ||
        !openFiles[static_cast<std::size_t>(file)].isOpen) {
        std::abort();
    }
    return openFiles[static_cast<std::size_t>(file)];
}

FileHandle Open(const std::string& path, bool isWritten) {
    ++memory->opened;
    openFiles.push_back({.path = path, .isWritten = isWritten, .isOpen = true});
    return static_cast<FileHandle>(openFiles.size() - 1);
}

FileHandle OpenForReading(const char* path) {
    if (memory->refusesToOpen || memory->isGone || !memory->files.contains(path)) {
        return audio::kNoFile;
    }
    return Open(path, false);
}

FileHandle Create(const char* path) {
    if (memory->refusesToOpen || memory->isGone) {
        return audio::kNoFile;
    }
    memory->files[path].clear();
    return Open(path, true);
}

FileHandle StandardInput() {
    return memory->standardInput.empty() ? audio::kNoFile : Open(memory->standardInput, false);
}

std::int64_t Size(FileHandle file) {
    return memory->isPipe || memory->isGone ? -1
                                            : static_cast<std::int64_t>(memory->files[At(file).path].size());
}

bool Seek(FileHandle file, std::uint64_t offset) {
    OpenFile& open = At(file);
    ++memory->seeks;
    if (memory->isPipe || memory->isGone || memory->refusesToSeek) {
        return false;
    }
    open.position = offset;
    return true;
}

std::int64_t Read(FileHandle file, void* bytes, std::size_t count) {
    OpenFile& open = At(file);
    ++memory->reads;
    if (memory->isGone || memory->refusesToRead || open.isWritten) {
        return -1;
    }
    const MemoryFiles::Bytes& contents = memory->files[open.path];
    const std::uint64_t left = contents.size() - std::min<std::uint64_t>(contents.size(), open.position);
    const auto part = static_cast<std::size_t>(std::min<std::uint64_t>({count, memory->mostPerCall, left}));
    if (part > 0) {
        std::memcpy(bytes, contents.data() + open.position, part);
    }
    open.position += part;
    return static_cast<std::int64_t>(part);
}

std::int64_t Write(FileHandle file, const void* bytes, std::size_t count) {
    OpenFile& open = At(file);
    ++memory->writes;
    const std::uint64_t room = memory->capacity - std::min(memory->capacity, open.position);
    const auto part = static_cast<std::size_t>(std::min<std::uint64_t>({count, memory->mostPerCall, room}));
    if (memory->isGone || !open.isWritten || part == 0) {
        return -1;
    }
    MemoryFiles::Bytes& contents = memory->files[open.path];
    const std::uint64_t end = std::min(open.position + part, memory->kept);
    if (end > contents.size()) {
        contents.resize(static_cast<std::size_t>(end));
    }
    if (end > open.position) {
        std::memcpy(contents.data() + open.position, bytes, static_cast<std::size_t>(end - open.position));
    }
    open.position += part;
    memory->written += part;
    return static_cast<std::int64_t>(part);
}

bool IsInPlace(FileHandle file, const char* path) {
    return At(file).path == path && !memory->isMoved && !memory->isGone;
}

bool Close(FileHandle file) {
    At(file).isOpen = false;
    ++memory->closed;
    return !memory->refusesToClose && !memory->isGone;
}

} // namespace

MemoryFiles::MemoryFiles() {
    memory = this;
    openFiles.clear();
}

MemoryFiles::~MemoryFiles() {
    memory = nullptr;
}

const audio::FilePlatform& MemoryFiles::Platform() const {
    static constexpr audio::FilePlatform kPlatform = {
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
    return kPlatform;
}

MemoryFiles::Bytes MemoryFiles::Samples(const std::string& path) const {
    constexpr std::ptrdiff_t kHeaderBytes = 46;
    const Bytes& contents = files.at(path);
    return {contents.begin() + std::min<std::ptrdiff_t>(kHeaderBytes, std::ssize(contents)), contents.end()};
}

} // namespace orva::test
