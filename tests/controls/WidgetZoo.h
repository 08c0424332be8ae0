/// Widgets of all classes, and someone who plays with all of them at once.
#pragma once

#include "toolkit/TmyComponent.h"

#include <cstdint>
#include <random>
#include <vector>
#include <windows.h>

namespace orva::test {

/// A window full of widgets. The same seed gives the same widgets and the same messages.
class WidgetZoo {
public:
    /// \param count  of widgets, which take turns in their classes; a composite one is one
    WidgetZoo(std::uint32_t seed, int count);
    ~WidgetZoo();
    WidgetZoo(const WidgetZoo&) = delete;
    WidgetZoo& operator=(const WidgetZoo&) = delete;

    /// Sends mouse, wheel, keys, characters, timers, sizes, paints to windows chosen at random, disables,
    /// hides and shows widgets, and replaces some by new ones of their class.
    void Drive(int messages);

    [[nodiscard]] HWND Window() const { return top->Window(); }
    [[nodiscard]] int WidgetCount() const { return static_cast<int>(widgets.size()); }
    /// Events that the widgets have fired.
    [[nodiscard]] std::uint64_t EventCount() const { return events; }
    static int ClassCount(); ///< different ones among the widgets

private:
    [[nodiscard]] int Below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
    [[nodiscard]] bool Chance(int percent) { return Below(100) < percent; }
    toolkit::TmyControl* Make(int index);
    template <class Widget, class... Rest>
    Widget* Listening(Widget* widget, Rest&... furtherEvents);
    void ListWindows();
    void SendMouse(HWND window, UINT message);
    void SendOne();
    void ChangeOne();
    template <typename... Arguments>
    void OnEvent(toolkit::TmyControl* sender, Arguments... arguments);

    std::mt19937 random;
    toolkit::TmyComponent* top;
    std::vector<toolkit::TmyControl*> widgets; ///< by index; the class is the index modulo their number
    std::vector<HWND> windows;                 ///< some may have gone since they were listed
    std::uint64_t events = 0;
};

} // namespace orva::test
