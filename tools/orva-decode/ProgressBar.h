/// A progress bar on a terminal.
#pragma once

#include <cstdint>
#include <string>

namespace orva::tools {

/// Drawn on standard error, and only if that is a terminal; redrawn when the shown value changes.
class ProgressBar {
public:
    ProgressBar();
    ~ProgressBar() { Clear(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Start(const std::string& inputName);

    /// `done` of `total` samples; a total of 0 is unknown, and `seconds` of input are shown instead.
    void Update(std::uint64_t done, std::uint64_t total, double seconds);

    /// Takes the bar off the screen.
    void Clear();

private:
    void Draw(const std::string& text);

    bool isTerminal;
    bool isShown = false;
    std::string name;
    std::uint64_t lastShown = 0;
};

} // namespace orva::tools
