/// orva-gallery: shows the toolkit's controls.
#include "toolkit/TmyApplication.h"
#include "tools/orva-gallery/GalleryWindow.h"

#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>

namespace {

constexpr double kMillisecondsPerSecond = 1000.0;

void RunUntilClosed() {
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

} // namespace

int main(int argumentCount, char** arguments) {
    try {
        CLI::App options("Shows the toolkit's controls in a window.");
        double seconds = 0.0;
        options.add_option("--seconds", seconds, "Close after so many seconds; 0 stays open")
            ->check(CLI::NonNegativeNumber);
        bool layout = false;
        options.add_flag("--layout", layout, "Show how controls are placed, instead of the widgets");
        CLI11_PARSE(options, argumentCount, arguments);

        orva::gallery::GalleryWindow window(layout ? orva::gallery::GalleryPage::Layout
                                                   : orva::gallery::GalleryPage::Widgets,
                                            static_cast<unsigned>(seconds * kMillisecondsPerSecond));
        orva::toolkit::Application().mainWindow = &window;
        window.SetVisible(true);
        RunUntilClosed();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "orva-gallery: " << error.what() << '\n';
        return 1;
    }
}
