#include "p25/CtbTrellisDecoder.h"

#include <algorithm>
#include <utility>

namespace orva::p25 {

namespace {

constexpr std::uint32_t kEmpty = 0xFFFFFFFFU;
constexpr std::uint8_t kSymbolMask = 15;

/// The four-bit symbol sent for an input dibit (column) from a state (row).
constexpr std::uint8_t kTrellisOutput[4][4] = {{2, 12, 1, 15}, {14, 0, 13, 3}, {9, 7, 10, 4}, {5, 11, 6, 8}};

/// Set bits of a four-bit value. SSE2 has no instruction that counts them; a table saves a call for each
/// candidate.
constexpr std::uint8_t kBitCount[16] = {0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4};

} // namespace

std::uint32_t CtbTrellisDecoder::Decode(const std::uint8_t* symbols, std::uint32_t count) {
    std::uint8_t* dibits = symbols != nullptr ? output.Acquire(count) : nullptr;
    if (dibits == nullptr) {
        return 0;
    }
    current->fill(TrellisPath{});
    for (TrellisPath& path : *next) {
        path.metric = kEmpty;
    }
    totalErrors = 0;

    // The first ten results are the zeros of the initial path memory.
    std::uint32_t written = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint8_t dibit = Advance(symbols[i] & kSymbolMask);
        if (i >= TrellisPath::kMemory) {
            dibits[written++] = dibit;
        }
    }
    const TrellisPath* best =
        std::min_element(current->begin(), current->end(),
                         [](const TrellisPath& a, const TrellisPath& b) { return a.metric < b.metric; });
    const std::uint32_t rest = count - written;
    std::copy_n(best->decisions + (TrellisPath::kMemory - rest), rest, dibits + written);
    return count;
}

/// One step of the Viterbi algorithm; returns the oldest decision of the path that is best now.
std::uint8_t CtbTrellisDecoder::Advance(std::uint8_t symbol) {
    std::uint32_t bestMetric = kEmpty;
    const TrellisPath* bestPath = &current->front();
    for (const TrellisPath& path : *current) {
        const std::uint8_t state = path.decisions[TrellisPath::kMemory - 1];
        for (std::uint8_t input = 0; input < kStates; ++input) {
            const std::uint32_t metric = path.metric + kBitCount[kTrellisOutput[state][input] ^ symbol];
            TrellisPath& survivor = (*next)[input];
            if (metric >= survivor.metric) {
                continue; // ties keep the earlier candidate
            }
            std::copy(path.decisions + 1, path.decisions + TrellisPath::kMemory, survivor.decisions);
            survivor.decisions[TrellisPath::kMemory - 1] = input;
            survivor.metric = metric;
            if (metric < bestMetric) {
                bestMetric = metric;
                bestPath = &path;
            }
        }
    }
    // Normalised at every step: the best metric is 0 and `totalErrors` keeps the sum.
    totalErrors += bestMetric;
    for (TrellisPath& path : *next) {
        path.metric -= bestMetric;
    }
    const std::uint8_t oldest = bestPath->decisions[0];
    std::swap(current, next);
    for (TrellisPath& path : *next) {
        path.metric = kEmpty;
    }
    return oldest;
}

const std::uint8_t* CtbTrellisDecoder::GetResult(std::uint32_t* errors) const {
    if (errors != nullptr) {
        *errors = totalErrors;
    }
    return output.Data();
}

} // namespace orva::p25
