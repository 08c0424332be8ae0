/// A growing array of bytes.
#pragma once

#include "toolkit/TmyObject.h"

#include <cstdint>
#include <memory>

namespace orva::toolkit {

/// Bytes with a size and, mostly larger, a capacity that follows it by halves and doubles. Without memory an
/// operation changes nothing; none throws.
class TmyBuffer : public TmyObject {
public:
    TmyBuffer();
    TmyBuffer(const TmyBuffer&) = delete;
    TmyBuffer& operator=(const TmyBuffer&) = delete;

    /// Sets the capacity, at most `maximum`, but at least `minimum`, the size, and 4; the later bound counts.
    /// False, and nothing has changed, without the memory.
    virtual bool Reallocate(std::uint32_t bytes);

    /// Sets the size, at most `maximum`, and returns it; without the memory, the size as it was. The capacity
    /// doubles until it is enough, and is halved once when the size is below an eighth of it. New bytes are
    /// undefined.
    virtual std::uint32_t SetSize(std::uint32_t bytes);

    /// Takes out `count` bytes from `offset` on, or as many as there are.
    virtual void Delete(std::uint32_t offset, std::uint32_t count);

    virtual std::uint32_t GetSize() const { return size; }

    /// For buffers whose bytes belong to a device or a file; empty here.
    virtual void Lock() {}
    virtual void Unlock() {}
    virtual void Flush() {}

    virtual std::uint32_t GetCapacity() const { return capacity; }

    /// The bytes, valid until the capacity changes; null before the first size.
    std::uint8_t* Data() { return data.get(); }
    const std::uint8_t* Data() const { return data.get(); }

private:
    std::unique_ptr<std::uint8_t[]> data;
    std::uint32_t capacity = 0; ///< [bytes]
    std::uint32_t size = 0;     ///< [bytes]

public:
    std::uint32_t maximum = 0; ///< limit of the size [bytes], 0: none
    std::uint32_t minimum = 0; ///< least capacity [bytes], 0: none
};

} // namespace orva::toolkit
