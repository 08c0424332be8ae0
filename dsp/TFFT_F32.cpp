#include "dsp/TFFT_F32.h"

#include "dsp/FftTables.h"
#include "dsp/LastError.h"
#include "dsp/ProcessorDispatch.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>

namespace orva::dsp {
namespace {

constexpr std::uint32_t kDefaultSize = 128;
constexpr std::uint32_t kSmallestSize = 16;
constexpr double kI16Scale = 1.0 / 32768.0;
constexpr double kI32Scale = 1.0 / 2147483648.0;

} // namespace

TFFT_F32::TFFT_F32() : kernels(GetDispatchTables().fft) {
    SetSize(kDefaultSize);
}

TFFT_F32::~TFFT_F32() {
    ReleaseTables();
}

void TFFT_F32::ReleaseTables() {
    if (twiddles != nullptr) {
        ReleaseFftTables(size);
    }
    twiddles = nullptr;
    bitReversal = nullptr;
    scratch = {};
}

bool TFFT_F32::SetSize(std::uint32_t n) {
    if (n == size) {
        SetErrorState(kErrorNone);
        return true;
    }
    if (n < kSmallestSize || !std::has_single_bit(n)) {
        SetErrorState(kErrorInvalidParameter);
        return false;
    }
    ReleaseTables();
    size = n;
    halfSize = n / 2;
    // N floats of work and three windows of N/2.
    block = {};
    block = AlignedBlock::Allocate((std::uint64_t{n} + 3 * std::uint64_t{halfSize}) * sizeof(float));
    if (!block) {
        size = 0;
        halfSize = 0;
        SetErrorState(kErrorOutOfMemory);
        return false;
    }
    work = block.Floats();
    windowF32 = work + n;
    windowI16 = windowF32 + halfSize;
    windowI32 = windowI16 + halfSize;
    ComputeWindows();
    std::fill_n(work, n, 0.0F);
    SetErrorState(kErrorNone);
    return true;
}

void TFFT_F32::ComputeWindows() {
    // N/2 doubles fit the memory of `work`, which is not in use yet.
    auto* window = reinterpret_cast<double*>(block.Data());
    if (windowKind == kWindowRectangular) {
        std::fill_n(window, halfSize, 1.0);
        windowGain = 1.0 / size;
    } else {
        MakeWindow(windowKind, windowParameters, window, size, WindowLayout::Ascending);
        windowGain = 0.5 / std::accumulate(window, window + halfSize, 0.0);
    }
    for (std::uint32_t i = 0; i < halfSize; ++i) {
        const double weight = window[i] * windowGain;
        windowF32[i] = static_cast<float>(weight);
        windowI16[i] = static_cast<float>(weight * kI16Scale);
        windowI32[i] = static_cast<float>(weight * kI32Scale);
    }
}

bool TFFT_F32::AcquireTables() {
    if (twiddles != nullptr) {
        return true;
    }
    if (size == 0) {
        return false;
    }
    AlignedBlock fresh = AlignedBlock::Allocate(std::uint64_t{size} * sizeof(float));
    FftTables tables{};
    if (!fresh || !AcquireFftTables(size, tables)) {
        SetErrorState(kErrorOutOfMemory);
        return false;
    }
    scratch = std::move(fresh);
    twiddles = tables.twiddles;
    bitReversal = tables.bitReversal;
    return true;
}

FftState TFFT_F32::KernelState() const {
    const DispatchTables& tables = GetDispatchTables();
    return {size,         work,      scratch.Floats(), twiddles,
            bitReversal,  windowF32, tables.log2Table, tables.decibelsPerOctave,
            floorDecibels};
}

bool TFFT_F32::ComputeSpectrum(float* out, const float* in) {
    if (!AcquireTables()) {
        return false;
    }
    const FftState state = KernelState();
    kernels.input(state, in);
    kernels.transform(state);
    kernels.decibels(state, out);
    if (mirror) {
        std::reverse(out, out + halfSize);
    }
    return true;
}

} // namespace orva::dsp
