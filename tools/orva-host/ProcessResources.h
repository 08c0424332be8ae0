/// What the running process holds of the system.
#pragma once

#include <cstdint>

namespace orva::tools {

/// Counted one by one: not every system has the numbers ready.
struct ProcessResources {
    int handles = 0;          ///< of kernel objects
    int windows = 0;          ///< of this thread, those inside others included
    int graphicsObjects = 0;  ///< pens, bitmaps, device contexts, ...
    int heapBlocks = 0;       ///< in use, of all heaps of the process
    int threads = 0;          ///< running, the platform's own included
    std::uint64_t memory = 0; ///< private and committed, stacks included [bytes]

    /// Takes some tenths of a second.
    static ProcessResources Count();
};

} // namespace orva::tools
