/// A control without a window of its own, and the base of those that have one.
#pragma once

#include "toolkit/ControlStyle.h"
#include "toolkit/TmyEvent.h"
#include "toolkit/TmyObject.h"
#include "toolkit/TmySet.h"

#include <cstdint>
#include <optional>
#include <windows.h>

namespace orva::toolkit {

class TmyComponent;

/// Bits of a control's state.
enum class ControlState : std::int32_t {
    Disabled = 0,       ///< by itself
    Hidden = 1,         ///< by itself
    Grey = 2,           ///< inherited by children; widgets choose their look by it
    Overlay = 3,        ///< drawn on top of its siblings, not excluded from their painting
    ParentDisabled = 4, ///< an ancestor is disabled
    Focusable = 5,
    Focused = 6,      ///< has the focus, or leads to the child that has it
    ForwardsKeys = 7, ///< shows its keys to the top-level window first
};

/// Where a control docks in its parent's client area.
enum class Alignment : std::uint32_t {
    None = 0,
    Top = 1,         ///< over the full width, placed first
    Bottom = 2,      ///< the same
    Left = 3,        ///< over the height that remains
    Right = 4,       ///< the same
    InnerTop = 5,    ///< over the width that the sides left
    InnerBottom = 6, ///< the same
    Fill = 7,        ///< all that remains; does not use it up
};

/// Value of an anchor that binds nothing.
constexpr std::int32_t kAnchorNone = INT32_MIN;
/// Value of a left or top anchor: the child stands in the middle.
constexpr std::int32_t kAnchorCentre = INT32_MIN + 1;

/// Distances of a child's edges from its parent's client area [pixels]; see `TmyControl::Realign`.
struct Anchors {
    std::int32_t left = kAnchorNone;
    std::int32_t top = kAnchorNone;
    std::int32_t right = kAnchorNone;
    std::int32_t bottom = kAnchorNone;
};

/// Position in the parent's client area and size [pixels].
struct Placement {
    int x;
    int y;
    int width;
    int height;
};

/// Which button a mouse event is about.
enum class MouseButton : std::uint32_t { Left, Right };

/// What `TmyControl::DispatchMouse` carries. The values are part of the messages' description.
enum class MouseCode : std::uint32_t {
    Move = 0,
    LeftDown = 1,
    RightDown = 2,
    Wheel = 0x8000,
    LeftUp = 0x8001,
    RightUp = 0x8002,
};

/// Font of a control that takes its parent's.
inline HFONT InheritedFont() {
    return reinterpret_cast<HFONT>(static_cast<INT_PTR>(-1));
}

/// A rectangle in its parent's coordinates that paints into its parent's device context. Controls and
/// components nest freely in one tree; a message arrives at a component, which walks to the control
/// concerned.
///
/// | state     | set by             | effect                                                              |
/// |-----------|--------------------|---------------------------------------------------------------------|
/// | disabled  | `SetEnabled`       | widgets ignore input; the hit test does not                         |
/// | hidden    | `SetVisible`       | no painting, no mouse, no place in the layout                       |
/// | grey      | `SetGrey`          | look of widgets                                                     |
/// | overlay   | `SetOverlay`       | painted after its siblings, on top                                  |
/// | focusable | `SetFocusable`     | takes the focus by a click and in the tab order                     |
/// | forwards  | `SetKeyForwarding` | `OnKeyPreview` of the top-level window sees its keys; on when made  |
///
/// A parent owns and deletes its children. Constructing a control with a parent appends it to the parent's
/// children and lets it share the parent's style. Setters compare first: an unchanged value does nothing. All
/// calls on the thread that created the windows.
///
/// Handlers may delete the control that calls them: after firing an event, the control asks a `LifeGuard`
/// before it touches itself again.
class TmyControl : public TmyObject {
public:
    /// Tells whether a control has been deleted while a handler ran.
    class LifeGuard {
    public:
        explicit LifeGuard(TmyControl* guarded);
        ~LifeGuard();
        LifeGuard(const LifeGuard&) = delete;
        LifeGuard& operator=(const LifeGuard&) = delete;
        [[nodiscard]] bool IsAlive() const { return control != nullptr; }

    private:
        friend class TmyControl;
        TmyControl* control;
        LifeGuard* next;
    };

    /// Goes through a control's children while handlers may delete any of them, or the control.
    class ChildWalk {
    public:
        explicit ChildWalk(TmyControl* walkedParent);
        ~ChildWalk();
        ChildWalk(const ChildWalk&) = delete;
        ChildWalk& operator=(const ChildWalk&) = delete;
        /// The next child; null after the last, and when the parent has gone.
        TmyControl* Next();

    private:
        friend class TmyControl;
        TmyControl* parent;
        TmyControl* child;
        ChildWalk* outer;
    };

    explicit TmyControl(TmyControl* parent, const Placement& placement = {});
    TmyControl(const TmyControl&) = delete;
    TmyControl& operator=(const TmyControl&) = delete;

    /// Deletes the children and leaves the parent.
    ~TmyControl() override;

    // What happens to a control. Where nothing else is said, the base fires the event of the same name.

    /// Tells the children; an aligned control realigns its parent.
    virtual void OnVisibilityChanged(bool visible);
    /// The state of an ancestor: told to the children, then `OnEnableChanged`.
    virtual void SetParentEnabled(bool enabled);
    virtual void OnPaint(HDC dc);
    virtual void OnLeftButtonUp(WPARAM flags, int x, int y);
    virtual void OnRightButtonDown(WPARAM flags, int x, int y);
    virtual void OnRightButtonUp(WPARAM flags, int x, int y); ///< fires `onMouseUp`, then `onRightClick`
    virtual void OnMouseMove(WPARAM flags, int x, int y);     ///< starts the hover watch first
    virtual void OnDoubleClick(int x, int y);
    /// Fires `onKeyDown`, shows the key to the top-level window, and moves the focus at Tab. A handler drops
    /// a key by setting it to 0, which keeps it from everything that follows.
    virtual void OnKeyDown(WPARAM& key, LPARAM flags);
    virtual void OnKeyUp(WPARAM key, LPARAM flags);  ///< fires `onKey`
    virtual void OnChar(WPARAM& code, LPARAM flags); ///< fires `onKey`; 0 drops the character
    virtual void OnResize();
    virtual void OnMove();          ///< empty
    virtual void OnEnableChanged(); ///< empty
    virtual void OnLeftButtonDown(WPARAM flags, int x, int y);
    virtual void OnHover();
    virtual void OnConstrainBounds(int* x, int* y, int* width,
                                   int* height);  ///< empty; may change the proposal
    virtual void OnChildAdded(TmyControl* child); ///< empty
    virtual void OnKeyPreview(WPARAM& key, LPARAM flags, TmyControl* sender);
    virtual void OnFocusChange(bool gained);
    virtual void OnTimer(UINT_PTR id);

    // The tree.

    /// Appends a child. A child that is in the list already stays where it is.
    virtual void AddChild(TmyControl* child);
    virtual void RemoveChild(TmyControl* child);

    // Focus and keys.

    /// Gives this control the focus, and its component the platform's.
    virtual void SetFocus();
    [[nodiscard]] virtual bool HasFocus() const;
    virtual void SetKeyForwarding(bool forwards);
    [[nodiscard]] virtual bool GetKeyForwarding() const;
    /// Fires `onWheel`; unless the handler clears its pass-on flag, the parent gets the wheel next.
    ///
    /// \param delta   notches, up positive
    /// \param sender  the control that the wheel was meant for
    virtual void OnMouseWheel(int delta, TmyControl* sender);

    /// First of this control and its ancestors that has a window which is no child window; null if none does.
    [[nodiscard]] virtual TmyComponent* GetTopLevel();
    [[nodiscard]] virtual TmyControl* GetParent() const;

    // Painting.

    /// Lets an area be painted anew, unless the control is hidden. `region` is in the control's own
    /// coordinates, and has the same value on return.
    virtual void InvalidateRegion(HRGN region);
    virtual void Invalidate(); ///< the whole area but its opaque visible children
    virtual void InvalidateRect(const RECT& rect);
    virtual void Update(); ///< paints now what is invalid

    // State.

    virtual void SetEnabled(bool enabled);
    virtual void SetVisible(bool visible);
    [[nodiscard]] virtual bool IsEnabled() const; ///< neither it nor an ancestor is disabled
    [[nodiscard]] virtual bool IsVisible() const; ///< neither it nor an ancestor is hidden
    virtual void SetOverlay(bool overlay);

    // Layout.

    /// Places the children: first `Top` and `Bottom`, then `Left` and `Right`, `InnerTop` and `InnerBottom`,
    /// `Fill`, each in the order of the list and inside the client area that the earlier ones left; then the
    /// anchored children inside the whole client area. In each axis, a first anchor of `kAnchorCentre`
    /// centres; otherwise a second anchor alone keeps the size and holds the distance from the far edge, and
    /// both stretch the child between them. Hidden children do not dock; windows of their own on the desktop
    /// are not placed at all.
    virtual void Realign();
    /// A device context for the control's area, its origin at the control's corner. A windowless control
    /// borrows its parent's; `ReleaseDC` puts its state back.
    [[nodiscard]] virtual HDC GetDC();
    virtual void ReleaseDC(HDC dc);
    [[nodiscard]] virtual int GetClientHeight() const;
    [[nodiscard]] virtual int GetClientWidth() const;
    /// Makes the control as large as its children reach, and so much larger [pixels].
    virtual void FitToChildren(int extraX, int extraY);
    /// Position in the parent, or on the screen.
    virtual void GetPosition(POINT* point, bool screen) const;
    virtual void SetBounds(int x, int y, int width, int height);
    virtual void SetPosition(int x, int y);
    virtual void SetSize(int width, int height);
    virtual void SetAlignment(Alignment newAlignment);
    virtual void SetCursor(HCURSOR newCursor);
    [[nodiscard]] virtual HCURSOR GetCursor() const;
    virtual void SetGrey(bool grey);
    /// The area inside the border.
    virtual void GetClientArea(RECT* area) const;

    // Look.

    /// Sets the font, or `InheritedFont()`; children that inherit theirs are told. Not owned.
    virtual void SetFont(HFONT newFont);

    /// Sets a value of the style, for all controls that share it or, with `unshare`, for this one alone. Each
    /// control concerned is told by a call of this operation, then by one of the value's own, and repaints;
    /// by then the value is stored, so that the base does nothing more. Override them to follow a value.
    virtual void SetStyleValue(StyleValue index, std::uint32_t value, bool unshare = false);
    virtual void SetBackColor(COLORREF color);
    virtual void SetTextColor(COLORREF color);
    virtual void SetDisabledTextColor(COLORREF color);
    virtual void SetBorderWidth(std::uint32_t width);
    virtual void SetBorderStyle(std::uint32_t borderStyle);
    virtual void SetWindowColor(COLORREF color);
    virtual void SetBrightness(std::uint32_t percent);

    // The caret. A control forwards to its parent, adding its own position.

    virtual void CreateCaret(int width, int height, HBITMAP bitmap); ///< a height of -1 takes the text's
    virtual void ShowCaret(bool show);
    virtual void SetCaretPos(int x, int y);
    virtual void DestroyCaret();

    // Not to be overridden.

    /// Takes a mouse message down the tree to the control that it concerns.
    ///
    /// \param flags  the key flags of the message; for the wheel the notches, up positive
    /// \param x, y   relative to this control
    void DispatchMouse(MouseCode code, WPARAM flags, int x, int y);

    /// Paints the control and its windowless children as far as they meet `region` (in this control's
    /// coordinates; unchanged on return). Opaque children come first and are cut out of the clip; overlays
    /// come last.
    void PaintTree(HDC dc, HRGN region);

    void SetAnchors(const Anchors& newAnchors);
    void ClearAnchors();
    void SetFocusable(bool focusable);

    [[nodiscard]] bool HasState(ControlState bit) const {
        return state.Contains(static_cast<std::int32_t>(bit));
    }
    [[nodiscard]] std::uint32_t GetStyleValue(StyleValue index) const { return style->Get(index); }
    [[nodiscard]] bool SharesStyleWith(const TmyControl& other) const { return style == other.style; }
    [[nodiscard]] HFONT GetFont() const { return font; }
    /// The font to draw with: its own, an ancestor's, or the platform's default for user interfaces.
    [[nodiscard]] HFONT EffectiveFont() const;
    [[nodiscard]] int TextHeight() const {
        return textHeight;
    } ///< [pixels]; 0 before the tree's first `SetFont`
    [[nodiscard]] const RECT& Bounds() const { return bounds; } ///< in the parent's client coordinates
    [[nodiscard]] Alignment GetAlignment() const { return alignment; }
    [[nodiscard]] HWND Window() const { return window; } ///< null in a control without one
    [[nodiscard]] TmyControl* FirstChild() const { return firstChild; }
    [[nodiscard]] TmyControl* NextSibling() const { return nextSibling; }
    /// This control or its first ancestor with a window; null if there is none.
    [[nodiscard]] TmyComponent* NearestComponent();
    /// Whether it is a window on the desktop, which its parent owns but does not lay out.
    [[nodiscard]] bool IsTopLevelWindow() const;
    /// The first visible child, in the order of the list, that contains the point; null if none does.
    [[nodiscard]] TmyControl* ChildAt(int x, int y) const;
    /// Tells the control at the end of the path that the focus has left the window.
    void TellDeepestOfLostFocus();
    /// Where this control's corner lies in the coordinates of its nearest component; (0, 0) for a component.
    [[nodiscard]] POINT OffsetInComponent() const;
    /// The child that has the focus or leads to it; null if none does.
    [[nodiscard]] TmyControl* FocusedChild() const;
    /// The control that keys go to: down the path of the focus to its end.
    [[nodiscard]] TmyControl* DeepestFocused();

    TmyEvent<> onChange; ///< of the widget classes
    TmyEvent<UINT_PTR> onTimer;
    TmyEvent<int, int> onDoubleClick;
    TmyEvent<MouseButton, WPARAM, int, int> onMouseDown;
    TmyEvent<MouseButton, WPARAM, int, int> onMouseUp;
    TmyEvent<WPARAM, int, int> onMouseMove;
    TmyEvent<> onResize;
    TmyEvent<> onHover;
    TmyEvent<HDC> onPaint;
    TmyEvent<WPARAM, int, int> onRightClick;
    TmyEvent<WPARAM&, LPARAM> onKeyDown;
    TmyEvent<WPARAM&, LPARAM> onKey;
    TmyEvent<WPARAM&, LPARAM, TmyControl*> onKeyPreview;
    TmyEvent<bool> onFocus;
    TmyEvent<int, WPARAM, bool&> onWheel; ///< notches, the keys held, the pass-on flag

protected:
    void SetState(ControlState bit, bool on);
    /// Deletes all children; a component does so before its window goes.
    void DeleteChildren();
    /// Marks the way of the focus from here up to the top-level window, and takes it from all else there,
    /// which is told.
    void MarkFocusPath();
    /// Tells of a change of the focus that has not been told yet.
    void TellFocus(bool gained);
    [[nodiscard]] bool IsOpaqueWindowlessChild() const; ///< visible, too
    [[nodiscard]] bool IsVisibleOverlay() const;
    /// `area` less the windowless opaque children.
    void ExcludeOpaqueChildren(HRGN area) const;
    /// Reads `textHeight` from the font in force.
    void MeasureFont();

    /// Keys held during the wheel message under way.
    static WPARAM wheelKeys;

    HFONT font;
    int textHeight = 0;
    RECT bounds;
    HWND window = nullptr;

private:
    friend struct TmyControlInspector;

    static void PaintChild(TmyControl* child, HDC dc, HRGN region);
    void NotifyStyle(StyleValue index, std::uint32_t value);
    void TellStyleValue(StyleValue index, std::uint32_t value);

    [[nodiscard]] TmyControl* MouseTarget(MouseCode code, int x, int y);
    void HandleMouseMove(WPARAM flags, int x, int y);
    void HandleLeftDown(WPARAM flags, int x, int y);
    void HandleLeftUp(WPARAM flags, int x, int y);
    void FocusByClick();

    void ClearFocus();
    void ClearFocusedChildren();
    [[nodiscard]] TmyControl* FocusedSibling() const; ///< another one on the path; needs a parent
    bool MoveFocus(bool backward);
    [[nodiscard]] TmyControl* LastChild() const;
    [[nodiscard]] TmyControl* Predecessor(const TmyControl* child) const;
    void MoveFocusByTab(bool backward);

    void RepaintInParent(const RECT& before, const RECT& after, bool moved);
    void MoveWindowsBelow();
    void PlaceChildren();
    void Dock(RECT& area, HDWP& batch, Alignment first, Alignment second);
    void PlaceAnchored(const RECT& area, HDWP& batch);
    static void PlaceChild(TmyControl* child, const RECT& place, HDWP& batch);
    [[nodiscard]] int CountBatch() const;

    TmyControl* nextSibling = nullptr;
    ControlStyle* style = nullptr;
    TmyControl* parent;
    TmyControl* firstChild = nullptr;
    TmyControl* pressedChild = nullptr; ///< child that got the last left button down; itself at the leaf
    TmySet state{0, 7};
    DWORD lastClickTime = 0; ///< [ms]; 0 before the first click
    int lastClickX = -1000;
    int lastClickY = -1000;
    HCURSOR cursor = nullptr;
    Alignment alignment = Alignment::None;
    std::optional<Anchors> anchors;
    bool layingOut = false;
    bool layoutAsked = false; ///< while one is under way
    bool focusTold = false;   ///< the last `OnFocusChange` said gained
    LifeGuard* guards = nullptr;
    ChildWalk* walks = nullptr;
};

} // namespace orva::toolkit
