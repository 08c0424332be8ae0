/// A list that owns its records.
#pragma once

#include "toolkit/TmyList.h"

#include <cstdint>
#include <memory>

namespace orva::toolkit {

/// Records of one type, each deleted with the list if not before. Their addresses are the items of the base,
/// which must not be added to or removed from by its own operations.
template <class Record>
class TmyTypeList : public TmyList {
public:
    TmyTypeList() = default;
    ~TmyTypeList() override { Clear(); }
    TmyTypeList(const TmyTypeList&) = delete;
    TmyTypeList& operator=(const TmyTypeList&) = delete;

    /// As in the base; a record that there is no room for is deleted.
    std::int32_t Add(std::unique_ptr<Record> record, std::int32_t index = -1) {
        const std::int32_t place = TmyList::Add(reinterpret_cast<Item>(record.get()), index);
        if (place != kNone) {
            static_cast<void>(record.release()); // the list's from here on
        }
        return place;
    }

    /// The record at `index`, the list's own; null outside the list.
    Record* Get(std::int32_t index) const {
        return reinterpret_cast<Record*>(TmyList::Get(index)); // NOLINT(performance-no-int-to-ptr)
    }

    /// Index of this record, or -1.
    std::int32_t IndexOf(const Record* record) const {
        return TmyList::IndexOf(reinterpret_cast<Item>(record));
    }

    /// Takes the record at `index` out of the list; null outside the list.
    std::unique_ptr<Record> Take(std::int32_t index) {
        std::unique_ptr<Record> record(Get(index));
        TmyList::Remove(index);
        return record;
    }

    /// Deletes the record at `index`; outside the list nothing happens.
    void Remove(std::int32_t index) { Take(index).reset(); }

    /// Deletes all records.
    void Clear() {
        while (Count() > 0) {
            Remove(Count() - 1);
        }
    }
};

} // namespace orva::toolkit
