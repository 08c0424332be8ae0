#include "dsp/DesignWindows.h"

#include <cmath>
#include <numbers>

namespace orva::dsp {
namespace {

using std::numbers::pi;

/// Coefficients of cos 0x .. cos 4x; the kinds that are sums of cosines differ in nothing else.
struct CosineSum {
    double terms[5];
};

constexpr CosineSum kHamming{{0.54, -0.46, 0.0, 0.0, 0.0}};
constexpr CosineSum kNuttall{{0.355768, -0.487396, 0.144232, -0.012604, 0.0}};
constexpr CosineSum kBlackmanHarris{{0.35875, -0.48829, 0.14128, -0.01168, 0.0}};
constexpr CosineSum kBlackmanNuttall{{0.3635819, -0.4891775, 0.1365995, -0.0106411, 0.0}};
constexpr CosineSum kFlatTop{{1.0, -1.93, 1.29, -0.388, 0.032}};

double Evaluate(const CosineSum& sum, double x) {
    double value = sum.terms[0];
    for (int order = 1; order < 5; ++order) {
        value += sum.terms[order] * std::cos(order * x);
    }
    return value;
}

double Lanczos(double y) {
    return y == 0.0 ? 1.0 : std::sin(y) / y;
}

double Gaussian(double offset, double width) {
    const double ratio = offset / width;
    return std::exp(-0.5 * ratio * ratio);
}

/// w[i] of a window of n points, n >= 2.
double WindowValue(std::uint32_t kind, const double* parameters, double i, double n) {
    const double last = n - 1.0;
    const double x = 2.0 * pi * i / last;
    switch (kind) {
    case kWindowTriangular:
        return (n / 2.0 - std::fabs(i - last / 2.0)) * 2.0 / n;
    case kWindowSine:
        return std::sin(pi * i / last);
    case kWindowHamming:
        return Evaluate(kHamming, x);
    case kWindowBlackman: {
        const double a = parameters[0];
        return (1.0 - a) / 2.0 - 0.5 * std::cos(x) + a / 2.0 * std::cos(2.0 * x);
    }
    case kWindowHann:
        return 0.5 * (1.0 - std::cos(x));
    case kWindowLanczos:
        return Lanczos((2.0 * i / last - 1.0) * pi);
    case kWindowGaussian:
        return Gaussian(i - last / 2.0, parameters[1] * (last / 2.0));
    case kWindowBartlettHann:
        return 0.62 - 0.48 * std::fabs(i / last - 0.5) - 0.38 * std::cos(x);
    case kWindowNuttall:
        return Evaluate(kNuttall, x);
    case kWindowBlackmanHarris:
        return Evaluate(kBlackmanHarris, x);
    case kWindowBlackmanNuttall:
        return Evaluate(kBlackmanNuttall, x);
    case kWindowFlatTop:
        return Evaluate(kFlatTop, x);
    default:
        return 1.0;
    }
}

} // namespace

std::uint32_t MakeWindow(std::uint32_t kind, const double* parameters, double* output, std::uint32_t length,
                         WindowLayout layout) {
    const bool knownLayout = layout == WindowLayout::Ascending || layout == WindowLayout::Descending ||
                             layout == WindowLayout::Full;
    if (kind >= kWindowKinds || length == 0 || !knownLayout) {
        return 0;
    }
    // Written without length + 1, which could wrap.
    const std::uint32_t half = length / 2 + (length & 1U);
    for (std::uint32_t i = 0; i < half; ++i) {
        const double value = length == 1 ? 1.0 : WindowValue(kind, parameters, i, length);
        const std::uint32_t fromCentre = half - 1 - i;
        switch (layout) {
        case WindowLayout::Ascending:
            output[i] = value;
            break;
        case WindowLayout::Descending:
            output[fromCentre] = value;
            break;
        case WindowLayout::Full:
            output[(length >> 1) + fromCentre] = value;
            output[((length - 1) >> 1) - fromCentre] = value;
            break;
        }
    }
    return layout == WindowLayout::Full ? length : half;
}

} // namespace orva::dsp
