/// The tables that all transforms of one size share.
///
/// Two process-wide caches keyed by size, with a reference count per entry and one lock for both. The lock
/// covers lookup, creation and release, never a transform.
#pragma once

#include <cstdint>

namespace orva::dsp {

/// Tables of a transform of N real samples, owned by the caches.
struct FftTables {
    const float* twiddles;            ///< N/2 pairs (-sin t, cos t), t = 2 pi i / N, aligned to 16 bytes
    const std::uint32_t* bitReversal; ///< N/2 entries, 2 x the bit-reversed index: a float offset
};

/// References held on one size.
struct FftTableReferences {
    std::uint32_t twiddles;
    std::uint32_t bitReversal;
};

/// Adds a reference to both tables of `size`, a power of two of at least 16, making what does not exist yet.
/// False, with no reference taken, when there is not enough memory.
bool AcquireFftTables(std::uint32_t size, FftTables& tables);

/// Gives back what one successful `AcquireFftTables` took; the last reference frees a table.
void ReleaseFftTables(std::uint32_t size);

FftTableReferences CountFftTableReferences(std::uint32_t size);

} // namespace orva::dsp
