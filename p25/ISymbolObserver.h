/// What the demodulator tells of its symbols.
#pragma once

#include <cstdint>

namespace orva::p25 {

/// Listener for the symbols of a `COrvaDemodulator`, called from within `Process`, on its thread. Nothing in
/// the demodulator depends on it. An override must neither throw nor call the demodulator.
class ISymbolObserver {
public:
    /// A symbol was sliced. `sample` is the discriminator output at its instant, in radians per sample;
    /// `symbolClass` 0 is +1, 1 is +3, 2 is -1, 3 is -3.
    virtual void OnSymbol(float sample, std::int32_t symbolClass) = 0;

protected:
    ~ISymbolObserver() = default;
};

} // namespace orva::p25
