/// What of the platform's objects is alive: the platform's own counters answer nothing under Wine.
#pragma once

namespace orva::test {

/// Pens, brushes, fonts, bitmaps, regions, device contexts of the process, and the stock ones.
int CountGdiObjects();

/// Windows of this thread with all their children, those on the desktop and those that only take messages.
int CountWindows();

} // namespace orva::test
