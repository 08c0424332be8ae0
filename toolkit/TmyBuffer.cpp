#include "toolkit/TmyBuffer.h"

#include "toolkit/TypeRegistry.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace orva::toolkit {
namespace {

constexpr std::uint32_t kLeastCapacity = 4;
constexpr std::uint32_t kMostCapacity = std::numeric_limits<std::uint32_t>::max();
/// The capacity shrinks when the size is less than this part of it.
constexpr std::uint64_t kShrinkBelow = 8;

std::uint32_t Twice(std::uint32_t capacity) {
    return capacity > kMostCapacity / 2 ? kMostCapacity : std::max(2 * capacity, kLeastCapacity);
}

} // namespace

TmyBuffer::TmyBuffer() {
    RegisterType(this, TypeId::Buffer, "Buffer");
}

bool TmyBuffer::Reallocate(std::uint32_t bytes) {
    if (maximum != 0) {
        bytes = std::min(bytes, maximum);
    }
    bytes = std::max({bytes, minimum, size, kLeastCapacity});
    if (bytes == capacity) {
        return true;
    }
    std::unique_ptr<std::uint8_t[]> moved(new (std::nothrow) std::uint8_t[bytes]);
    if (moved == nullptr) {
        return false;
    }
    if (size > 0) {
        std::memcpy(moved.get(), data.get(), size);
    }
    data = std::move(moved);
    capacity = bytes;
    return true;
}

std::uint32_t TmyBuffer::SetSize(std::uint32_t bytes) {
    if (maximum != 0) {
        bytes = std::min(bytes, maximum);
    }
    while (bytes > capacity) {
        if (!Reallocate(Twice(capacity))) {
            return size;
        }
    }
    size = bytes;
    if (size * kShrinkBelow < capacity) {
        Reallocate(capacity / 2);
    }
    return size;
}

void TmyBuffer::Delete(std::uint32_t offset, std::uint32_t count) {
    if (offset >= size) {
        return;
    }
    count = std::min(count, size - offset);
    std::memmove(data.get() + offset, data.get() + offset + count, size - offset - count);
    SetSize(size - count);
}

} // namespace orva::toolkit
