/// Kernels of a chosen processor for the length of a test.
#pragma once

#include "dsp/ProcessorDispatch.h"
#include "dsp/ProcessorFeatures.h"

#include <string>

namespace orva::test {

/// Puts the tables for a feature word in force and the real ones back at the end of its life.
class ForcedDispatch {
public:
    explicit ForcedDispatch(std::uint32_t features) : realFeatures(dsp::GetDispatchTables().features) {
        dsp::ForceDispatch(features);
    }
    ~ForcedDispatch() { dsp::ForceDispatch(realFeatures); }
    ForcedDispatch(const ForcedDispatch&) = delete;
    ForcedDispatch& operator=(const ForcedDispatch&) = delete;

private:
    std::uint32_t realFeatures;
};

/// A feature word that leads to each family of FIR kernels that exists.
struct FamilyWord {
    const char* name;
    std::uint32_t features;
};
constexpr FamilyWord kX87Word{"X87", 0};
constexpr FamilyWord kSseWord{"Sse", dsp::kFeatureMmx | dsp::kFeatureSse | dsp::kFeatureSse2};
constexpr FamilyWord kSse3Word{"Sse3", kSseWord.features | dsp::kFeatureSse3};

/// The real processor can run the kernels of `word`.
inline bool CanRun(const FamilyWord& word) {
    static const std::uint32_t realFeatures = dsp::DetectFeatures(dsp::RealProcessor());
    return (word.features & ~realFeatures) == 0;
}

} // namespace orva::test
