// The private heap, the string, the list and the tree, each beside what the language brings.

#include "bench/toolkit/AllocationLoad.h"
#include "toolkit/PrivateHeap.h"
#include "toolkit/TmyBinaryTree.h"
#include "toolkit/TmyList.h"
#include "toolkit/TmySet.h"
#include "toolkit/TmyString.h"

#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace orva::bench {
namespace {

using toolkit::TmyBinaryTree;
using toolkit::TmyList;
using toolkit::TmySet;
using toolkit::TmyString;

constexpr std::uint32_t kTypes = 40; ///< about as many classes as the toolkit has
constexpr std::uint32_t kThunks = 5041;

/// A step frees one of 200 blocks and allocates another.
template <class Allocator>
void FreeAndAllocate(benchmark::State& state, Allocator& allocator) {
    AllocationLoad<Allocator> load(allocator);
    for ([[maybe_unused]] auto _ : state) {
        load.Step();
    }
}

void PrivateHeapStep(benchmark::State& state) {
    toolkit::PrivateHeap heap(toolkit::kRealHeapPlatform);
    FreeAndAllocate(state, heap);
}

void CLibraryStep(benchmark::State& state) {
    struct {
        static void* Allocate(std::size_t bytes) { return std::malloc(bytes); }
        static void Free(void* block) { std::free(block); }
    } cLibrary;
    FreeAndAllocate(state, cLibrary);
}

template <class String>
void CopyString(benchmark::State& state) {
    const String text("a text of more letters than a small one has");
    for ([[maybe_unused]] auto _ : state) {
        String copy(text);
        benchmark::DoNotOptimize(copy);
    }
}

void AppendTmyString(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        TmyString text;
        for (int i = 0; i < 1000; ++i) {
            text.Append("abc", 3);
        }
        benchmark::DoNotOptimize(text);
    }
}

void AppendStdString(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::string text;
        for (int i = 0; i < 1000; ++i) {
            text.append("abc", 3);
        }
        benchmark::DoNotOptimize(text);
    }
}

void FillTmyList(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        TmyList list;
        for (TmyList::Item i = 0; i < 1000; ++i) {
            list.Add(i);
        }
        benchmark::DoNotOptimize(list.Get(999));
    }
}

void FillStdVector(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::vector<std::uintptr_t> list;
        for (std::uintptr_t i = 0; i < 1000; ++i) {
            list.push_back(i);
        }
        benchmark::DoNotOptimize(list[999]);
    }
}

/// Keys as scattered as addresses.
std::vector<TmyBinaryTree::Key> Keys() {
    test::RandomSource random(1);
    std::vector<TmyBinaryTree::Key> keys(kTypes);
    for (auto& key : keys) {
        key = random.Below(1U << 30);
    }
    return keys;
}

/// One step looks all of them up.
void FindInTmyBinaryTree(benchmark::State& state) {
    TmyBinaryTree tree;
    auto keys = Keys();
    for (auto& key : keys) {
        tree.Insert(key, &key);
    }
    for ([[maybe_unused]] auto _ : state) {
        for (const auto key : keys) {
            benchmark::DoNotOptimize(tree.Find(key));
        }
    }
    state.counters["depth"] = tree.Depth();
}

void FindInStdMap(benchmark::State& state) {
    std::map<TmyBinaryTree::Key, void*> tree;
    auto keys = Keys();
    for (auto& key : keys) {
        tree.emplace(key, &key);
    }
    for ([[maybe_unused]] auto _ : state) {
        for (const auto key : keys) {
            benchmark::DoNotOptimize(tree.find(key));
        }
    }
}

/// The lowest of all values, when it is the last.
void FirstOfTmySet(benchmark::State& state) {
    TmySet set(0, kThunks - 1);
    set.Add(kThunks - 1);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(set.First());
    }
}

BENCHMARK(PrivateHeapStep);
BENCHMARK(CLibraryStep);
BENCHMARK_TEMPLATE(CopyString, TmyString);
BENCHMARK_TEMPLATE(CopyString, std::string);
BENCHMARK(AppendTmyString);
BENCHMARK(AppendStdString);
BENCHMARK(FillTmyList);
BENCHMARK(FillStdVector);
BENCHMARK(FindInTmyBinaryTree);
BENCHMARK(FindInStdMap);
BENCHMARK(FirstOfTmySet);

} // namespace
} // namespace orva::bench
