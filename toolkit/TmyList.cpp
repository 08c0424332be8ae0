#include "toolkit/TmyList.h"

#include "toolkit/TypeRegistry.h"

#include <algorithm>

namespace orva::toolkit {

#ifdef _WIN32
static_assert(sizeof(TmyList::Item) == 4);
#endif

TmyList::TmyList() {
    RegisterType(this, TypeId::List, "List");
}

std::int32_t TmyList::Add(Item item, std::int32_t index) {
    const std::uint32_t wanted = GetSize() + sizeof(Item);
    const std::int32_t count = Count();
    // `SetSize` would cut it to the maximum, in the middle of an item.
    if ((maximum != 0 && wanted > maximum) || SetSize(wanted) != wanted) {
        return kNone;
    }
    const std::int32_t place = index >= 0 && index < count ? index : count;
    std::copy_backward(Items() + place, Items() + count, Items() + count + 1);
    Items()[place] = item;
    return place;
}

void TmyList::Remove(std::int32_t index) {
    if (Holds(index)) {
        Delete(static_cast<std::uint32_t>(index) * sizeof(Item), sizeof(Item));
    }
}

std::int32_t TmyList::IndexOf(Item item) const {
    const Item* end = Items() + Count();
    const Item* found = std::find(Items(), end, item);
    return found == end ? kNone : static_cast<std::int32_t>(found - Items());
}

TmyList::Item TmyList::Get(std::int32_t index) const {
    return Holds(index) ? Items()[index] : 0;
}

} // namespace orva::toolkit
