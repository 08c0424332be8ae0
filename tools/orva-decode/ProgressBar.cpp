#include "tools/orva-decode/ProgressBar.h"

#include <algorithm>
#include <cstdio>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace orva::tools {

namespace {

constexpr std::uint64_t kNothingShown = ~std::uint64_t{0};
constexpr std::uint64_t kPercent = 100;
constexpr std::uint64_t kCellsPerPercent = 2;
constexpr std::size_t kNameWidth = 32;

bool IsStandardErrorTerminal() {
#ifdef _WIN32
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

} // namespace

ProgressBar::ProgressBar() : isTerminal(IsStandardErrorTerminal()) {}

void ProgressBar::Start(const std::string& inputName) {
    name = inputName.size() > kNameWidth ? "..." + inputName.substr(inputName.size() - kNameWidth + 3)
                                         : inputName;
    lastShown = kNothingShown;
}

void ProgressBar::Update(std::uint64_t done, std::uint64_t total, double seconds) {
    if (!isTerminal) {
        return;
    }
    const auto whole = static_cast<std::uint64_t>(seconds);
    const std::uint64_t shown = total > 0 ? std::min(kPercent, done * kPercent / total) : whole;
    if (shown == lastShown) {
        return;
    }
    lastShown = shown;
    if (total == 0) {
        Draw(name + "  " + std::to_string(whole) + " s");
        return;
    }
    const auto cells = static_cast<std::size_t>(kPercent / kCellsPerPercent);
    const auto filled = static_cast<std::size_t>(shown / kCellsPerPercent);
    Draw(name + "  [" + std::string(filled, '#') + std::string(cells - filled, ' ') + "] " +
         std::to_string(shown) + " %");
}

void ProgressBar::Draw(const std::string& text) {
    std::fprintf(stderr, "\r%s", text.c_str());
    std::fflush(stderr);
    isShown = true;
}

void ProgressBar::Clear() {
    if (isShown) {
        constexpr std::size_t kLine = 79;
        std::fprintf(stderr, "\r%s\r", std::string(kLine + kNameWidth, ' ').c_str());
        std::fflush(stderr);
        isShown = false;
    }
    lastShown = kNothingShown;
}

} // namespace orva::tools
