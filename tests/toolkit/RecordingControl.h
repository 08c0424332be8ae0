/// Controls that note each call of their slots.
#pragma once

#include "tests/toolkit/EventLog.h"
#include "toolkit/TmyComponent.h"
#include "toolkit/TmyControl.h"

#include <functional>
#include <string>
#include <utility>

namespace orva::toolkit {

/// A control, or what derives from one, that notes its slots and then does as its base does.
template <class Base>
class Recording : public Base {
public:
    template <typename... Arguments>
    Recording(EventLog& eventLog, std::string ownName, Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...), log(eventLog), name(std::move(ownName)) {}

    ~Recording() override { log.Note(name, "Destructor"); }

    void OnVisibilityChanged(bool visible) override {
        log.Note(name, "OnVisibilityChanged", visible);
        Base::OnVisibilityChanged(visible);
    }
    void SetParentEnabled(bool enabled) override {
        log.Note(name, "SetParentEnabled", enabled);
        Base::SetParentEnabled(enabled);
    }
    void OnPaint(HDC dc) override {
        log.Note(name, "OnPaint");
        if (paint) {
            paint(dc);
        }
        Base::OnPaint(dc);
    }
    void OnLeftButtonDown(WPARAM flags, int x, int y) override {
        log.Note(name, "LeftDown", flags, x, y);
        Base::OnLeftButtonDown(flags, x, y);
    }
    void OnLeftButtonUp(WPARAM flags, int x, int y) override {
        log.Note(name, "LeftUp", flags, x, y);
        Base::OnLeftButtonUp(flags, x, y);
    }
    void OnRightButtonDown(WPARAM flags, int x, int y) override {
        log.Note(name, "RightDown", flags, x, y);
        Base::OnRightButtonDown(flags, x, y);
    }
    void OnRightButtonUp(WPARAM flags, int x, int y) override {
        log.Note(name, "RightUp", flags, x, y);
        Base::OnRightButtonUp(flags, x, y);
    }
    void OnMouseMove(WPARAM flags, int x, int y) override {
        log.Note(name, "Move", flags, x, y);
        Base::OnMouseMove(flags, x, y);
    }
    void OnDoubleClick(int x, int y) override {
        log.Note(name, "DoubleClick", x, y);
        Base::OnDoubleClick(x, y);
    }
    void OnMouseWheel(int delta, TmyControl* sender) override {
        log.Note(name, "Wheel", delta, sender == this ? "self" : "other");
        Base::OnMouseWheel(delta, sender);
    }
    void OnKeyDown(WPARAM& key, LPARAM flags) override {
        log.Note(name, "KeyDown", key);
        Base::OnKeyDown(key, flags);
    }
    void OnKeyUp(WPARAM key, LPARAM flags) override {
        log.Note(name, "KeyUp", key);
        Base::OnKeyUp(key, flags);
    }
    void OnChar(WPARAM& code, LPARAM flags) override {
        log.Note(name, "Char", code);
        Base::OnChar(code, flags);
    }
    void OnKeyPreview(WPARAM& key, LPARAM flags, TmyControl* sender) override {
        log.Note(name, "KeyPreview", key, sender == this ? "self" : "other");
        Base::OnKeyPreview(key, flags, sender);
    }
    void OnFocusChange(bool gained) override {
        log.Note(name, "Focus", gained);
        Base::OnFocusChange(gained);
    }
    void OnResize() override {
        log.Note(name, "OnResize");
        Base::OnResize();
    }
    void OnMove() override {
        log.Note(name, "OnMove");
        Base::OnMove();
    }
    void OnEnableChanged() override {
        log.Note(name, "OnEnableChanged");
        Base::OnEnableChanged();
    }
    void OnHover() override {
        log.Note(name, "OnHover");
        Base::OnHover();
    }
    void OnConstrainBounds(int* x, int* y, int* width, int* height) override {
        log.Note(name, "OnConstrainBounds", *x, *y, *width, *height);
        if (constrain) {
            constrain(x, y, width, height);
        }
    }
    void OnChildAdded(TmyControl* child) override {
        log.Note(name, "OnChildAdded");
        Base::OnChildAdded(child);
    }
    void OnTimer(UINT_PTR id) override {
        log.Note(name, "OnTimer", id);
        Base::OnTimer(id);
    }
    void Realign() override {
        log.Note(name, "Realign");
        Base::Realign();
    }
    void SetStyleValue(StyleValue index, std::uint32_t value, bool unshare = false) override {
        log.Note(name, "SetStyleValue", static_cast<unsigned>(index), value);
        if (styleTold) {
            styleTold(index);
        }
        Base::SetStyleValue(index, value, unshare);
    }
    void SetBackColor(COLORREF color) override {
        log.Note(name, "SetBackColor", color);
        Base::SetBackColor(color);
    }
    void SetBorderWidth(std::uint32_t width) override {
        log.Note(name, "SetBorderWidth", width);
        Base::SetBorderWidth(width);
    }
    void InvalidateRegion(HRGN region) override {
        log.Note(name, "InvalidateRegion");
        Base::InvalidateRegion(region);
    }
    void SetFont(HFONT newFont) override {
        log.Note(name, "SetFont", newFont == InheritedFont() ? "inherited" : "own");
        Base::SetFont(newFont);
    }
    void CreateCaret(int width, int height, HBITMAP bitmap) override {
        log.Note(name, "CreateCaret", width, height);
        Base::CreateCaret(width, height, bitmap);
    }
    void ShowCaret(bool show) override {
        log.Note(name, "ShowCaret", show);
        Base::ShowCaret(show);
    }
    void SetCaretPos(int x, int y) override {
        log.Note(name, "SetCaretPos", x, y);
        Base::SetCaretPos(x, y);
    }
    void DestroyCaret() override {
        log.Note(name, "DestroyCaret");
        Base::DestroyCaret();
    }

    std::function<void(HDC)> paint;
    std::function<void(int*, int*, int*, int*)> constrain;
    std::function<void(StyleValue)> styleTold;

protected:
    EventLog& log;
    std::string name;
};

using RecordingControl = Recording<TmyControl>;

/// The same with a window, whose own slots are noted too.
class RecordingComponent : public Recording<TmyComponent> {
public:
    using Recording<TmyComponent>::Recording;

    LRESULT WndProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        log.Note(name, "WndProc", message);
        return Recording<TmyComponent>::WndProc(message, wParam, lParam);
    }
    LRESULT OnEraseBackground(HDC dc) override {
        log.Note(name, "OnEraseBackground");
        return Recording<TmyComponent>::OnEraseBackground(dc);
    }
    LRESULT OnCommand(WPARAM code) override {
        log.Note(name, "OnCommand", code);
        return commandResult;
    }
    LRESULT OnNotify(NMHDR* header) override {
        log.Note(name, "OnNotify", header->code);
        return notifyResult;
    }
    void OnContextMenu(int x, int y) override {
        log.Note(name, "OnContextMenu", x, y);
        Recording<TmyComponent>::OnContextMenu(x, y);
    }
    void OnUserMessage(UINT id, WPARAM wParam, LPARAM lParam) override {
        log.Note(name, "OnUserMessage", id, wParam, lParam);
    }

    /// Puts a procedure behind the component's own, in place of the platform's default.
    void SetOriginal(WNDPROC procedure) { originalWndProc = procedure; }
    using TmyComponent::Subclass;

    LRESULT commandResult = 0;
    LRESULT notifyResult = 0;
};

} // namespace orva::toolkit
