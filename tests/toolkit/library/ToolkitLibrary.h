/// What the test library exports: the toolkit inside a library of its own, on its own heap, as the product
/// has it.
#pragma once

#include <cstdint>
#include <windows.h>

namespace orva::test {

/// State of one loaded copy.
struct LibraryStatistics {
    std::uint32_t heapBlocks;     ///< in use
    std::uint32_t heapIsSound;    ///< 1 if the heap's own check finds nothing wrong
    std::uint32_t paintedWindows; ///< paint events seen so far
};

// The exports, all stdcall and undecorated.

/// Opens a window with a button-like child and a windowless one; null if it failed.
using OpenTestWindow = HWND(WINAPI*)(const char* title);
/// Deletes the object of a window of this copy; 0 if it has none.
using CloseTestWindow = int(WINAPI*)(HWND window);
/// Runs all pending messages of the thread.
using PumpTestMessages = void(WINAPI*)();
/// Throws inside a handler, caught at the window procedure; the answer of the window.
using ProvokeException = LRESULT(WINAPI*)(HWND window);
/// Opens a window with so many widgets of all classes, the only one of this copy; null if it failed.
using OpenWidgets = HWND(WINAPI*)(unsigned seed, int count);
/// Sends so many random messages to them; how many events they have fired so far.
using DriveWidgets = unsigned(WINAPI*)(int messages);
using CloseWidgets = void(WINAPI*)();
using ReadStatistics = void(WINAPI*)(LibraryStatistics* statistics);

} // namespace orva::test
