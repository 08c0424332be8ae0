#include "audio/BufferedFile.h"

#include <algorithm>
#include <cstring>

namespace orva::audio {

bool BufferedFile::OpenForReading(const char* existingPath) {
    Close();
    if (!Start(platform->openForReading(existingPath), Mode::Reading)) {
        return false;
    }
    bytesInFile = platform->size(file);
    canSeek = bytesInFile >= 0;
    return true;
}

bool BufferedFile::OpenStandardInput() {
    Close();
    isBorrowed = true;
    return Start(platform->standardInput(), Mode::Reading);
}

bool BufferedFile::Create(const char* newPath) {
    Close();
    path = newPath;
    if (!Start(platform->create(newPath), Mode::Writing)) {
        return false;
    }
    isWatched = platform->isInPlace(file, path.c_str());
    return true;
}

bool BufferedFile::Start(FileHandle opened, Mode how) {
    file = opened;
    mode = file == kNoFile ? Mode::Closed : how;
    return IsOpen();
}

bool BufferedFile::Close() {
    const bool flushed = !IsWriting() || Flush();
    const bool closed = !IsOpen() || isBorrowed || platform->close(file);
    file = kNoFile;
    mode = Mode::Closed;
    bytesInFile = -1;
    canSeek = isWatched = isBorrowed = false;
    position = origin = 0;
    length = 0;
    return flushed && closed;
}

bool BufferedFile::Seek(std::uint64_t offset) {
    if (!IsWriting()) {
        position = offset;
        return IsOpen();
    }
    if (offset == GetPosition()) {
        return true;
    }
    if (!Flush() && length > 0) {
        return false;
    }
    if (!platform->seek(file, offset)) {
        return false;
    }
    origin = offset;
    return true;
}

std::size_t BufferedFile::Read(void* bytes, std::size_t count) {
    auto* to = static_cast<std::uint8_t*>(bytes);
    std::size_t done = 0;
    while (done < count && mode == Mode::Reading) {
        if (position < origin || position >= origin + length) {
            if (!Fill()) {
                break;
            }
        }
        const auto at = static_cast<std::size_t>(position - origin);
        const std::size_t part = std::min(count - done, length - at);
        std::memcpy(to + done, buffer.data() + at, part);
        done += part;
        position += part;
    }
    return done;
}

/// Brings the byte at `position` into the buffer.
bool BufferedFile::Fill() {
    if (canSeek && position != origin + length) {
        if (!platform->seek(file, position)) {
            return false;
        }
        origin = position;
        length = 0;
    }
    if (position < origin + length) {
        return false; // it has passed through the pipe and is gone
    }
    do {
        origin += length;
        length = 0;
        const std::int64_t count = platform->read(file, buffer.data(), buffer.size());
        if (count <= 0) {
            return false;
        }
        length = static_cast<std::size_t>(count);
    } while (position >= origin + length);
    return true;
}

std::size_t BufferedFile::Write(const void* bytes, std::size_t count) {
    const auto* from = static_cast<const std::uint8_t*>(bytes);
    std::size_t done = 0;
    while (done < count && IsWriting()) {
        if (length == buffer.size() && !Flush()) {
            break;
        }
        const std::size_t part = std::min(count - done, buffer.size() - length);
        std::memcpy(buffer.data() + length, from + done, part);
        done += part;
        length += part;
    }
    return done;
}

bool BufferedFile::Flush() {
    if (!IsWriting()) {
        return false;
    }
    std::size_t sent = 0;
    while (sent < length) {
        const std::int64_t count = platform->write(file, buffer.data() + sent, length - sent);
        if (count <= 0) {
            break;
        }
        sent += static_cast<std::size_t>(count);
    }
    std::memmove(buffer.data(), buffer.data() + sent, length - sent);
    origin += sent;
    length -= sent;
    return length == 0 && (!isWatched || platform->isInPlace(file, path.c_str()));
}

void BufferedFile::DropUnwritten() {
    if (IsWriting()) {
        length = 0;
    }
}

} // namespace orva::audio
