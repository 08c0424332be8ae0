#include "dsp/CWindow.h"

#include <cmath>
#include <numbers>
#include <string_view>

namespace orva::dsp {
namespace {

using std::numbers::pi;

enum NamedWindow : std::uint32_t {
    kRectangular,
    kHanning,
    kHamming,
    kBlackman,
    kFlatTop,
    kBartlettHanning,
    kBartlett,
    kBlackmanHarris,
    kBohman,
    kGaussian,
    kTriangular,
    kWindowCount,
};

constexpr std::string_view kNames[kWindowCount] = {
    "Rectangular", "Hanning",           "Hamming", "Blackman", "Flat Top",  "Bartlett - Hanning",
    "Bartlett",    "Blackman - Harris", "Bohman",  "Gaussian", "Triangular"};
constexpr std::string_view kNoName = "N/A";

/// What differs in the interleaved form: see `Bartlett` and `BlackmanHarris`.
enum class Form { Contiguous, Interleaved };

double BartlettHanning(double i, double n) {
    const double y = i / (n - 1.0) - 0.5;
    return 0.62 - 0.48 * std::fabs(y) + 0.38 * std::cos(2.0 * pi * y);
}

/// The interleaved form falls to negative weights in the upper half of an odd length; kept as it is.
double Bartlett(std::int32_t index, std::int32_t count, Form form) {
    const double i = index;
    const double n = count;
    if (index < count / 2) {
        return 2.0 * i / (n - 1.0);
    }
    if (count % 2 == 0) {
        return (2.0 * (n - i) - 2.0) / (n - 1.0);
    }
    return form == Form::Interleaved ? (2.0 - 2.0 * i) / (n - 1.0) : 2.0 - 2.0 * i / (n - 1.0);
}

/// The interleaved form has its period one sample longer.
double BlackmanHarris(double i, double n, Form form) {
    const double z = 2.0 * pi * i / (form == Form::Interleaved ? n : n - 1.0);
    return 0.35875 - 0.48829 * std::cos(z) + 0.14128 * std::cos(2.0 * z) - 0.01168 * std::cos(3.0 * z);
}

/// Worked out for the lower of the pair i and N-1-i; the centre of an odd length stays as it is.
double Bohman(std::int32_t index, std::int32_t count) {
    const std::int32_t lower = index < count - 1 - index ? index : count - 1 - index;
    if (lower >= count / 2) {
        return 1.0;
    }
    const double r = count / 2.0;
    const double ratio = (count - lower - r) / r;
    return (1.0 - ratio) * std::cos(pi * ratio) + std::sin(pi * ratio) / pi;
}

/// The first weight of an even length is -2/N; kept as it is.
double Triangular(std::int32_t index, std::int32_t count) {
    const double i = index;
    const double n = count;
    const bool odd = count % 2 != 0;
    if (index <= count / 2) {
        return odd ? 2.0 * i / (n + 1.0) : (2.0 * i - 2.0) / n;
    }
    return (2.0 * (n - i) + 2.0) / (odd ? n + 1.0 : n);
}

/// A window of one point divides by its length less one in some kinds: there it leaves the sample as it is.
bool IsUndefined(std::uint32_t window, std::int32_t count, Form form) {
    return count == 1 && (window == kBartlettHanning || window == kBartlett ||
                          (window == kBlackmanHarris && form == Form::Contiguous));
}

double Weight(std::uint32_t window, std::int32_t index, std::int32_t count, Form form) {
    if (IsUndefined(window, count, form)) {
        return 1.0;
    }
    const double i = index;
    const double n = count;
    const double u = (i - n / 2.0) / (n / 2.0);
    switch (window) {
    case kHanning:
        return 0.5 + 0.5 * std::cos(pi * u);
    case kHamming:
        return 0.54 + 0.46 * std::cos(pi * u);
    case kBlackman:
        return 0.42 + 0.5 * std::cos(pi * u) + 0.08 * std::cos(2.0 * pi * u);
    case kFlatTop:
        return 0.2810639 - 0.5208972 * std::cos(2.0 * pi * i / n) + 0.1980399 * std::cos(4.0 * pi * i / n);
    case kBartlettHanning:
        return BartlettHanning(i, n);
    case kBartlett:
        return Bartlett(index, count, form);
    case kBlackmanHarris:
        return BlackmanHarris(i, n, form);
    case kBohman:
        return Bohman(index, count);
    case kGaussian:
        return std::exp(-0.5 * (2.5 * u) * (2.5 * u));
    case kTriangular:
        return Triangular(index, count);
    default:
        return 1.0;
    }
}

template <class Sample>
bool Apply(std::uint32_t window, Sample* data, std::int32_t count, Form form) {
    if (data == nullptr || count <= 0 || window >= kWindowCount) {
        return false;
    }
    if (window == kRectangular) {
        return true;
    }
    // Counted in 64 bits: the step of two may pass the largest count.
    const std::int64_t step = form == Form::Interleaved ? 2 : 1;
    for (std::int64_t i = 0; i < count; i += step) {
        data[i] *= static_cast<Sample>(Weight(window, static_cast<std::int32_t>(i), count, form));
    }
    return true;
}

} // namespace

std::uint32_t CWindow::GetWindowCount() {
    return kWindowCount;
}

std::int32_t CWindow::GetWindowName(std::uint32_t index, char* text, std::int32_t maxLength) {
    const std::string_view name = index < kWindowCount ? kNames[index] : kNoName;
    const auto length = static_cast<std::int32_t>(name.size());
    if (text != nullptr && maxLength > 0) {
        const std::size_t copied = name.copy(text, static_cast<std::size_t>(maxLength));
        if (length < maxLength) {
            text[copied] = '\0';
        }
    }
    return length;
}

bool CWindow::ApplyF32(std::uint32_t index, float* data, std::int32_t count) {
    return Apply(index, data, count, Form::Contiguous);
}

bool CWindow::ApplyF64(std::uint32_t index, double* data, std::int32_t count) {
    return Apply(index, data, count, Form::Contiguous);
}

bool CWindow::ApplyInterleavedF32(std::uint32_t index, float* data, std::int32_t count) {
    return Apply(index, data, count, Form::Interleaved);
}

} // namespace orva::dsp
