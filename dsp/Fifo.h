/// First-in, first-out queue of small values that allocates only when it must grow.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>

namespace orva::dsp {

/// Ring buffer of `Value`s, which must be trivially copyable; pointers in it are not owned. Growing doubles
/// the room and keeps the contents; a queue that has held n values once takes n again without allocating.
template <class Value>
class Fifo {
    static_assert(std::is_trivially_copyable_v<Value>);

public:
    bool IsEmpty() const { return count == 0; }
    std::size_t Count() const { return count; }

    /// Appends `value`; false, with the queue unchanged, when there is no memory to grow.
    bool Push(const Value& value) {
        if (count == room && !Grow()) {
            return false;
        }
        values[(first + count) & (room - 1)] = value;
        ++count;
        return true;
    }

    /// Removes the oldest value into `value`; false when empty.
    bool Pop(Value& value) {
        if (count == 0) {
            return false;
        }
        value = values[first];
        first = (first + 1) & (room - 1);
        --count;
        return true;
    }

    void Clear() { first = count = 0; }

private:
    static constexpr std::size_t kInitialRoom = 16; ///< a power of two, as all later rooms

    bool Grow() {
        const std::size_t larger = room == 0 ? kInitialRoom : 2 * room;
        std::unique_ptr<Value[]> moved(new (std::nothrow) Value[larger]());
        if (!moved) {
            return false;
        }
        for (std::size_t i = 0; i < count; ++i) {
            moved[i] = values[(first + i) & (room - 1)];
        }
        values = std::move(moved);
        room = larger;
        first = 0;
        return true;
    }

    std::unique_ptr<Value[]> values;
    std::size_t room = 0;
    std::size_t first = 0;
    std::size_t count = 0;
};

} // namespace orva::dsp
