/// Times of single blocks inside a benchmark, reported as their median and their 99.9th percentile.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

#include <benchmark/benchmark.h>

namespace orva::bench {

/// Collects how long each block took. Memory is taken at the start only; beyond it later blocks go uncounted.
class BlockTimes {
public:
    BlockTimes() { times.reserve(kCapacity); }

    template <class Work>
    void Measure(Work work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
        if (times.size() < kCapacity) {
            times.push_back(elapsed.count());
        }
    }

    /// Seconds of the median block; what else runs on the machine hardly moves it.
    double MedianSeconds() { return 1e-6 * Percentile(0.5); }

    /// Counters `p50_us` and `p999_us`, microseconds a block.
    void Report(benchmark::State& state) {
        state.counters["p50_us"] = Percentile(0.5);
        state.counters["p999_us"] = Percentile(0.999);
    }

private:
    static constexpr std::size_t kCapacity = 1U << 18;

    double Percentile(double share) {
        if (times.empty()) {
            return 0.0;
        }
        const auto index = static_cast<std::size_t>(share * static_cast<double>(times.size() - 1));
        const auto at = times.begin() + static_cast<std::ptrdiff_t>(index);
        std::nth_element(times.begin(), at, times.end());
        return *at;
    }

    std::vector<double> times;
};

} // namespace orva::bench
