/// Any sequence of heap operations, each answered as the model of the heap says. Byte 0 chooses how the
/// platform places and rounds its memory; then each operation takes one byte, and a size or an index behind
/// it.
#include "fuzz/InputBytes.h"
#include "fuzz/Require.h"
#include "tests/toolkit/HeapModel.h"
#include "toolkit/PrivateHeap.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace orva::fuzz {

namespace {

using test::HeapModel;
using toolkit::HeapPlatform;
using toolkit::PrivateHeap;

constexpr std::size_t kMostAlive = 100;
constexpr std::size_t kAlignment = 64;
/// Five words: two links, the first block, the size, the free bytes.
constexpr std::size_t kRegionHeader = 5 * sizeof(void*);

struct PlatformState {
    std::size_t offset;  ///< of memory from an aligned address
    std::size_t surplus; ///< of memory beyond what is asked
    void* newest;
    std::size_t newestSize;
    std::size_t alive;
};

PlatformState state;

/// What `malloc` gave stands just before the memory.
void* AllocateFrom(void* /*heap*/, std::size_t bytes) {
    auto* raw = static_cast<char*>(std::malloc(bytes + state.surplus + 3 * kAlignment));
    const auto address = reinterpret_cast<std::uintptr_t>(raw) + sizeof(raw);
    char* memory = raw + sizeof(raw) + (kAlignment - address % kAlignment) + state.offset;
    std::memcpy(memory - sizeof(raw), &raw, sizeof(raw));
    state.newest = memory;
    state.newestSize = bytes + state.surplus;
    ++state.alive;
    return memory;
}

void FreeTo(void* /*heap*/, void* memory) {
    char* raw = nullptr;
    std::memcpy(&raw, static_cast<char*>(memory) - sizeof(raw), sizeof(raw));
    std::free(raw);
    --state.alive;
}

HeapPlatform Platform() {
    HeapPlatform platform = toolkit::kRealHeapPlatform;
    platform.heapAlloc = AllocateFrom;
    platform.heapFree = FreeTo;
    platform.heapSize = [](void*, const void*) { return state.newestSize; };
    platform.waitForMutex = [](void*) {};
    platform.releaseMutex = [](void*) {};
    return platform;
}

std::uintptr_t AddressOf(const void* memory) {
    return reinterpret_cast<std::uintptr_t>(memory);
}

/// The heap, its model, and what is allocated.
class Heaps {
public:
    explicit Heaps(const HeapPlatform& platform) : heap(platform) {}

    std::size_t Alive() const { return alive.size(); }

    void Allocate(std::size_t bytes) {
        if (bytes == 0) {
            Require(heap.Allocate(0) == nullptr, "no bytes are null");
            return;
        }
        std::uintptr_t place = model.Place(bytes);
        void* memory = heap.Allocate(bytes);
        Require(AddressOf(memory) == Settle(place, bytes), "an allocation lands where the model says");
        model.Take(AddressOf(memory), bytes);
        std::memset(memory, 0xA5, bytes);
        alive.push_back(memory);
    }

    void Free(std::size_t index, std::size_t inside) {
        void* memory = alive[index];
        heap.Free(static_cast<char*>(memory) + inside % (model.SizeAt(AddressOf(memory)) - kAlignment));
        model.Free(AddressOf(memory));
        alive.erase(alive.begin() + static_cast<std::ptrdiff_t>(index));
    }

    void Reallocate(std::size_t index, std::size_t bytes) {
        void* memory = alive[index];
        const bool fits = HeapModel::BlockSize(bytes) <= model.SizeAt(AddressOf(memory));
        std::uintptr_t place = fits ? AddressOf(memory) : model.Place(bytes);
        void* moved = heap.Reallocate(memory, bytes);
        Require(AddressOf(moved) == Settle(place, bytes), "a reallocation lands where the model says");
        if (!fits) {
            model.Take(AddressOf(moved), bytes);
            model.Free(AddressOf(memory));
        }
        alive[index] = moved;
    }

    void Check() {
        const char* broken = heap.Verify();
        Require(broken == nullptr, broken);
        Require(heap.Statistics().usedBlocks == alive.size(), "the heap has the blocks that are in use");
        Require(heap.Statistics().regions == model.Regions(), "the heap has the regions that are in use");
    }

    void FreeAll() {
        while (!alive.empty()) {
            Free(alive.size() - 1, 0);
        }
        Check();
        heap.Close();
        Require(state.alive == 0, "nothing is left at the end");
    }

private:
    /// Where it must land, once the region that it may have taken is in the model.
    std::uintptr_t Settle(std::uintptr_t place, std::size_t bytes) {
        if (place == HeapModel::kNoPlace) {
            model.AddRegion(AddressOf(state.newest), state.newestSize, kRegionHeader);
            place = model.Place(bytes);
        }
        return place;
    }

    PrivateHeap heap;
    HeapModel model;
    std::vector<void*> alive;
};

void Run(InputBytes input) {
    const std::uint8_t placing = input.Byte();
    state = {placing % 8 * std::size_t{8}, placing / 8 * std::size_t{8}, nullptr, 0, 0};
    const HeapPlatform platform = Platform();
    Heaps heaps(platform);
    while (!input.IsAtEnd()) {
        const std::uint8_t operation = input.Byte();
        const std::uint16_t number = input.Word();
        if (heaps.Alive() == 0 || (operation % 4 < 2 && heaps.Alive() < kMostAlive)) {
            heaps.Allocate(number);
        } else if (operation % 4 == 2) {
            heaps.Reallocate(operation / 4 % heaps.Alive(), number);
        } else {
            heaps.Free(operation / 4 % heaps.Alive(), number);
        }
        heaps.Check();
    }
    heaps.FreeAll();
}

} // namespace

} // namespace orva::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    orva::fuzz::Run({data, size});
    return 0;
}
