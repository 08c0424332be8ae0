/// A control with a window of its own.
#pragma once

#include "toolkit/TmyControl.h"
#include "toolkit/TmyString.h"

#include <memory>
#include <optional>
#include <windows.h>

namespace orva::toolkit {

class TmyBitmap24;

/// Owns a window of the platform. Every message of the window comes to `WndProc`.
///
/// Messages: the table is in docs/TOOLKIT.md. What a component does not handle itself goes to the window
/// procedure it replaced, which for a window of its own is the platform's default.
///
/// Life: the constructor makes the window, the destructor destroys it. A window that goes away otherwise,
/// with its parent for instance, takes the object with it: an owner that holds a pointer binds `onDestroy`.
/// Without a free thunk the object lives without a window; all operations bear that.
class TmyComponent : public TmyControl {
public:
    /// \param parent     owner in the tree; the window becomes a child of its nearest window, or is owned by
    /// it \param title      text of the window; copied \param windowStyle, extendedStyle  of the platform.
    /// `WS_TABSTOP` makes the component focusable, the lack of
    ///                   `WS_VISIBLE` hidden.
    /// \param placement  outer rectangle [pixels]; a position of -1, -1 is the middle of the screen
    TmyComponent(TmyControl* parent, const char* title, DWORD windowStyle, DWORD extendedStyle,
                 const Placement& placement);
    ~TmyComponent() override;

    // Instead of the control's own.

    void OnVisibilityChanged(bool visible) override;
    void OnPaint(HDC dc) override;
    [[nodiscard]] bool HasFocus() const override; ///< asks the platform
    void InvalidateRegion(HRGN region) override;
    void Update() override;
    void SetEnabled(bool enabled) override; ///< the state follows with `WM_ENABLE`
    void SetVisible(bool visible) override; ///< the state follows when messages are pumped
    [[nodiscard]] HDC GetDC() override;
    void ReleaseDC(HDC dc) override;
    [[nodiscard]] int GetClientHeight() const override;
    [[nodiscard]] int GetClientWidth() const override;
    void GetPosition(POINT* point, bool screen) const override;
    void SetBounds(int x, int y, int width, int height) override;
    void SetPosition(int x, int y) override;
    void SetSize(int width, int height) override; ///< -1 keeps a value
    void SetFont(HFONT newFont) override;
    void CreateCaret(int width, int height, HBITMAP bitmap) override;
    void ShowCaret(bool show) override;
    void SetCaretPos(int x, int y) override;
    void DestroyCaret() override;

    // A component's own.

    /// Reads the window's rectangles from the platform.
    virtual void UpdateBounds();
    /// Fills the client area with the window colour, but for opaque children; 1.
    virtual LRESULT OnEraseBackground(HDC dc);
    virtual LRESULT OnCommand(WPARAM code);   ///< empty; 0
    virtual LRESULT OnNotify(NMHDR* header);  ///< empty; 0
    virtual void OnContextMenu(int x, int y); ///< on the screen; -1, -1 takes the pointer's place
    virtual void OnUserMessage(UINT id, WPARAM wParam, LPARAM lParam); ///< empty; `id` counts from `WM_USER`
    virtual LRESULT WndProc(UINT message, WPARAM wParam, LPARAM lParam);
    virtual void SetText(const TmyString& text);
    virtual void SetText(const char* text);
    [[nodiscard]] virtual TmyString GetText() const;
    /// Copies at most `size` characters, the end's zero included; the number copied without it.
    virtual int GetText(char* buffer, int size) const;
    [[nodiscard]] virtual int GetTextLength() const;
    virtual void SetRedraw(bool redraw);
    [[nodiscard]] virtual bool IsDoubleBuffered() const;
    virtual void SetDoubleBuffered(bool doubleBuffered);
    /// Posts message `WM_USER` + `id`; false for an `id` above 16384, or if the queue is full. [any thread]
    virtual bool PostUserMessage(UINT id, WPARAM wParam, LPARAM lParam);
    /// Makes the window so large that its client area has this size [pixels].
    virtual void SetClientSize(int width, int height);

    /// Runs a message loop until the component ends it, and disables the owner for that time.
    ///
    /// \param ownerWindow  the window to disable; null takes the parent
    /// \return `modalResult`: -1 after a close, 0 when the application quits or `EndModal` was not given a
    /// result
    int ShowModal(HWND ownerWindow = nullptr);
    /// Ends the modal loop with a result other than 0.
    void EndModal(int result) { modalResult = result; }
    [[nodiscard]] bool IsInModal() const { return inModal; }
    /// Leaves the modal loop at its next message, with 0.
    void CancelModal() { inModal = false; }

    /// What a modal loop returns after a close.
    static constexpr int kModalClosed = -1;

    /// Procedure of every new window; gives the window its thunk.
    static LRESULT CALLBACK InitialWndProc(HWND newWindow, UINT message, WPARAM wParam, LPARAM lParam);

    TmyEvent<UINT, WPARAM, LPARAM> messageHook; ///< fired first with each message
    TmyEvent<int, int> onContextMenu;           ///< the place on the screen
    TmyEvent<> onDestroy;                       ///< the object is being deleted; owners forget their pointers

protected:
    /// Takes over a window of the platform's making: its messages come here, and from here to its own
    /// procedure.
    void Subclass(HWND platformWindow);
    /// Makes a window of a class of the platform, in place of the component's own and with its bounds, and
    /// takes it over. State bits and font follow as at construction. Call it in the constructor.
    void TakePlatformClass(const char* platformClass, const char* title, DWORD windowStyle,
                           DWORD extendedStyle);

    WNDPROC originalWndProc = DefWindowProcA;
    int modalResult = 0;

private:
    friend struct TmyComponentInspector;

    using Handled = std::optional<LRESULT>;

    static LRESULT CALLBACK ThunkEntry(TmyComponent* object, UINT message, WPARAM wParam, LPARAM lParam);

    void CreateOwnWindow(const char* title, DWORD windowStyle, DWORD extendedStyle,
                         const Placement& placement);
    void DestroyOwnWindow();
    void LeaveWindow(HWND left);
    void ReadBounds(); ///< the outer ones only: the client size is compared at `WM_SIZE`
    [[nodiscard]] HWND ParentWindow() const;
    [[nodiscard]] bool IsBelowHiddenControl() const;
    LRESULT CallOriginal(UINT message, WPARAM wParam, LPARAM lParam);

    Handled HandleMessage(UINT message, WPARAM& wParam, LPARAM lParam);
    Handled HandleMouse(UINT message, WPARAM wParam, LPARAM lParam);
    Handled HandleKey(UINT message, WPARAM& wParam, LPARAM lParam);
    Handled HandleDestroy(WPARAM wParam, LPARAM lParam);
    void HandleSize(WPARAM kind, int width, int height);
    void InvalidateResizedEdges(int width, int height);
    void HandleSetFocus(HWND other);
    void HandleKillFocus(HWND other);
    void HandlePaint(HDC given);
    void PaintDirectly(HDC given, HRGN region);
    void PaintThroughBuffer(HRGN region);
    Handled HandleClose();
    Handled HandleErase(HDC dc);
    Handled HandleSetCursor(LPARAM lParam);
    void HandlePosChanging(WINDOWPOS* position);
    void HandlePosChanged(const WINDOWPOS& position);
    Handled HandleNotify(WPARAM wParam, LPARAM lParam);
    static Handled HandleControlColor(HDC dc, HWND control);
    void FollowVisibility(bool visible);
    [[nodiscard]] bool IsInSameTopLevel(HWND other) const;
    [[nodiscard]] int RunModalLoop(const LifeGuard& life);

    void* thunk = nullptr;
    std::unique_ptr<TmyBitmap24> backBuffer; ///< null when it is not double-buffered
    bool inModal = false;
    int clientWidth = 0;
    int clientHeight = 0;
    bool followsPlatform = false;  ///< a change of visibility under way is the platform's
    bool hiddenWithParent = false; ///< a windowless ancestor is hidden, the component itself need not be
};

} // namespace orva::toolkit
