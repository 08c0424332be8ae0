/// A list of numbers or addresses.
#pragma once

#include "toolkit/TmyBuffer.h"

#include <cstdint>

namespace orva::toolkit {

/// Items of 32 bits, as an address has them where the product runs. Without memory an operation changes
/// nothing; none throws.
class TmyList : public TmyBuffer {
public:
    using Item = std::uintptr_t;
    static constexpr std::int32_t kNone = -1;

    TmyList();

    /// Puts `item` before the one at `index`; -1, or any index outside the list, appends. Returns where it
    /// is, or -1 if there was no room for it.
    std::int32_t Add(Item item, std::int32_t index = -1);

    /// Takes out one item; an index outside the list does nothing.
    void Remove(std::int32_t index);

    /// Index of the first such item, or -1.
    std::int32_t IndexOf(Item item) const;

    std::int32_t Count() const { return static_cast<std::int32_t>(GetSize() / sizeof(Item)); }

    /// The item at `index`; 0 outside the list.
    Item Get(std::int32_t index) const;

private:
    bool Holds(std::int32_t index) const { return index >= 0 && index < Count(); }
    Item* Items() { return reinterpret_cast<Item*>(Data()); }
    const Item* Items() const { return reinterpret_cast<const Item*>(Data()); }
};

} // namespace orva::toolkit
