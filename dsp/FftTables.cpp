#include "dsp/FftTables.h"

#include "dsp/AlignedBlock.h"

#include <bit>
#include <cmath>
#include <mutex>
#include <new>
#include <numbers>
#include <utility>

namespace orva::dsp {
namespace {

void FillTwiddles(std::byte* memory, std::uint32_t size) {
    auto* pairs = reinterpret_cast<float*>(memory);
    for (std::uint32_t i = 0; i < size / 2; ++i) {
        const double t = 2.0 * std::numbers::pi * i / size;
        pairs[2 * i] = static_cast<float>(-std::sin(t));
        pairs[2 * i + 1] = static_cast<float>(std::cos(t));
    }
}

void FillBitReversal(std::byte* memory, std::uint32_t size) {
    auto* offsets = reinterpret_cast<std::uint32_t*>(memory);
    const int bits = std::countr_zero(size / 2);
    for (std::uint32_t i = 0; i < size / 2; ++i) {
        std::uint32_t reversed = 0;
        for (int bit = 0; bit < bits; ++bit) {
            reversed |= (i >> bit & 1U) << (bits - 1 - bit);
        }
        offsets[i] = 2 * reversed;
    }
}

/// A list of tables by size. Its state is constant-initialised and never torn down by a destructor, so that
/// transforms with static storage may come before it and go after it.
class TableCache {
public:
    using Fill = void (*)(std::byte* memory, std::uint32_t size);

    constexpr TableCache(Fill fillTable, std::uint64_t bytes) : fill(fillTable), bytesPerBin(bytes) {}

    /// The table of `size` with a reference added, or null.
    const std::byte* Acquire(std::uint32_t size) {
        Entry* entry = Find(size);
        if (entry == nullptr) {
            entry = Create(size);
        }
        if (entry == nullptr) {
            return nullptr;
        }
        ++entry->references;
        return entry->table.Data();
    }

    void Release(std::uint32_t size) {
        for (Entry** link = &first; *link != nullptr; link = &(*link)->next) {
            Entry* entry = *link;
            if (entry->size == size) {
                if (--entry->references == 0) {
                    *link = entry->next;
                    delete entry;
                }
                return;
            }
        }
    }

    std::uint32_t References(std::uint32_t size) const {
        const Entry* entry = Find(size);
        return entry == nullptr ? 0 : entry->references;
    }

private:
    struct Entry {
        std::uint32_t size;
        std::uint32_t references;
        AlignedBlock table;
        Entry* next;
    };

    Entry* Find(std::uint32_t size) const {
        Entry* entry = first;
        while (entry != nullptr && entry->size != size) {
            entry = entry->next;
        }
        return entry;
    }

    Entry* Create(std::uint32_t size) {
        AlignedBlock table = AlignedBlock::Allocate(bytesPerBin * (size / 2));
        if (!table) {
            return nullptr;
        }
        fill(table.Data(), size);
        auto* entry = new (std::nothrow) Entry{size, 0, std::move(table), first};
        if (entry != nullptr) {
            first = entry;
        }
        return entry;
    }

    Fill fill;
    std::uint64_t bytesPerBin;
    Entry* first = nullptr;
};

constinit TableCache twiddleCache{FillTwiddles, 2 * sizeof(float)};
constinit TableCache bitReversalCache{FillBitReversal, sizeof(std::uint32_t)};

/// The one lock of both caches, made in place on first use and never destroyed, for the same reason.
std::mutex& CacheLock() {
    alignas(std::mutex) static std::byte storage[sizeof(std::mutex)];
    static auto* lock = new (storage) std::mutex;
    return *lock;
}

} // namespace

bool AcquireFftTables(std::uint32_t size, FftTables& tables) {
    const std::lock_guard guard(CacheLock());
    const std::byte* bitReversal = bitReversalCache.Acquire(size);
    if (bitReversal == nullptr) {
        return false;
    }
    const std::byte* twiddles = twiddleCache.Acquire(size);
    if (twiddles == nullptr) {
        bitReversalCache.Release(size);
        return false;
    }
    tables.bitReversal = reinterpret_cast<const std::uint32_t*>(bitReversal);
    tables.twiddles = reinterpret_cast<const float*>(twiddles);
    return true;
}

void ReleaseFftTables(std::uint32_t size) {
    const std::lock_guard guard(CacheLock());
    bitReversalCache.Release(size);
    twiddleCache.Release(size);
}

FftTableReferences CountFftTableReferences(std::uint32_t size) {
    const std::lock_guard guard(CacheLock());
    return {twiddleCache.References(size), bitReversalCache.References(size)};
}

} // namespace orva::dsp
