/// The application object: what all windows of this module share.
#pragma once

#include "toolkit/TmyObject.h"
#include "toolkit/TmyPopupFocus.h"
#include "toolkit/TmySet.h"
#include "toolkit/TmyTypeList.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <windows.h>

namespace orva::toolkit {

class TmyComponent;
class TmyControl;
class TmyHoveringMonitor;
class TmyProfiler;

/// Where a window's messages enter: a window procedure that is given the object in place of the window.
using ThunkTarget = LRESULT(CALLBACK*)(TmyComponent* object, UINT message, WPARAM wParam, LPARAM lParam);

/// Holds the window class, the thunks by which a window procedure finds its object, the hover monitor and the
/// state of modal loops. One instance lives from the time the module is loaded: `Application()`.
///
/// A thunk is 13 bytes of machine code: it overwrites the window handle among the arguments with the object
/// and jumps to the target, so that messages reach their object without a look-up, even those sent inside
/// `CreateWindowExA`. 65536 bytes of them are the limit on live windows.
///
/// [window thread], but for the per-thread slot, which is what it says.
class TmyApplication : public TmyObject {
public:
    static constexpr std::int32_t kThunkCount = 5041;

    TmyApplication();
    ~TmyApplication() override;
    TmyApplication(const TmyApplication&) = delete;
    TmyApplication& operator=(const TmyApplication&) = delete;

    /// Takes the lowest free thunk, and writes it. Null, with a line to the debug output, if all are taken.
    void* CreateThunk(ThunkTarget target, TmyComponent* object);

    /// Gives a thunk back. It stays as code that answers 0 to whatever message still comes. Null is ignored;
    /// a thunk that is not taken is traced when the trace is on.
    void FreeThunk(void* thunk);

    /// The object of a live thunk; null for any other address.
    [[nodiscard]] TmyComponent* ObjectFromThunk(const void* address) const;

    /// The object of a window; null for windows of others.
    [[nodiscard]] static TmyComponent* ObjectFromWindow(HWND window);

    /// Dispatches messages until the queue of this thread is empty: after stopping a device, its last
    /// notifications arrive by this. A quit message found there is posted again at the end.
    static void ProcessPendingMessages();

    /// Begins to wait for the pointer to rest over `control`, unless that is what is waited for already.
    void StartHover(TmyControl* control);
    /// Ends the wait, if it is for `control`.
    void StopHover(const TmyControl* control);

    /// The process's command line; without one, argument 0 is the module's file name.
    [[nodiscard]] int GetArgumentCount() const;
    [[nodiscard]] std::string GetArgument(int index) const;

    /// Object that the next window created on this thread will belong to; null to let its creation fail.
    void SetWindowUnderConstruction(TmyComponent* object) const;
    /// The same, taken: the slot is cleared.
    [[nodiscard]] TmyComponent* TakeWindowUnderConstruction() const;

    /// This module, not the program that loaded it.
    [[nodiscard]] HINSTANCE ModuleHandle() const { return moduleHandle; }
    [[nodiscard]] const char* WindowClass() const;
    [[nodiscard]] TmyProfiler* Profiler() const { return profiler.get(); }
    [[nodiscard]] std::int32_t MaxThunkIndex() const {
        return maxThunkIndex;
    } ///< highest ever taken; -1 none

    TmyTypeList<TmyPopupFocus> popupList; ///< pop-ups open at this time
    TmyComponent* mainWindow = nullptr;   ///< its close ends the program; null in a library
    MSG message{};                        ///< the last one of a modal loop
    bool quitting = false;                ///< ends all modal loops

private:
    void FindModule();
    void AllocateThunks();
    void RegisterWindowClass();
    [[nodiscard]] bool TraceIsAskedFor() const;
    void ReportUndeletedControls();
    void ForgetHoverMonitor(TmyControl* sender);
    [[nodiscard]] std::byte* ThunkAt(std::int32_t index) const;
    [[nodiscard]] std::int32_t IndexOfThunk(const void* address) const;

    std::unique_ptr<TmyProfiler> profiler;            ///< when the trace is on
    std::unique_ptr<TmyHoveringMonitor> hoverMonitor; ///< made on first use
    ATOM classAtom = 0;
    std::byte* thunkMemory = nullptr;
    TmySet thunkUsed;
    std::int32_t maxThunkIndex = -1;
    HINSTANCE moduleHandle = nullptr;
    HCURSOR defaultCursor = nullptr;
    DWORD threadSlot; ///< of the object whose window is being created
};

/// The one instance.
TmyApplication& Application();

} // namespace orva::toolkit
