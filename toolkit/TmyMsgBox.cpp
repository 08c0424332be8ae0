#include "toolkit/TmyMsgBox.h"

#include "toolkit/FrameDrawing.h"
#include "toolkit/TextDrawing.h"
#include "toolkit/TmyPanel.h"
#include "toolkit/Tmy_Btn2.h"
#include "toolkit/TypeRegistry.h"
#include "toolkit/WorkArea.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace orva::toolkit {

namespace {

constexpr DWORD kBoxStyle = 0x86C00000;
static_assert(kBoxStyle == (WS_POPUP | WS_CLIPSIBLINGS | WS_CLIPCHILDREN | WS_CAPTION));
constexpr DWORD kBoxExtendedStyle = WS_EX_NOPARENTNOTIFY | WS_EX_TOPMOST;
constexpr Placement kFirstPlace{-1, -1, 260, 120};

constexpr char kFirstButtonText[] = " OK ";

constexpr int kMargin = 10;   ///< around the text and the buttons
constexpr int kButtonGap = 8; ///< between two buttons
constexpr int kLeastButtonWidth = 70;
constexpr int kLeastWidth = 220;
constexpr int kScreenPart = 2; ///< the text takes half of the screen's width at most

constexpr LPARAM kKeyWasDown = 0x40000000; ///< among the flags of a key: it repeats

/// Measures and breaks text in the box's font.
class TextMeasure {
public:
    explicit TextMeasure(HFONT font) : dc(::GetDC(nullptr)), before(SelectObject(dc, font)) {}
    ~TextMeasure() {
        SelectObject(dc, before);
        ::ReleaseDC(nullptr, dc);
    }
    TextMeasure(const TextMeasure&) = delete;
    TextMeasure& operator=(const TextMeasure&) = delete;

    /// How many characters of a line fit into `width` [pixels].
    [[nodiscard]] std::size_t CountFitting(std::string_view line, int width) const {
        int fitting = 0;
        SIZE size{};
        GetTextExtentExPointA(dc, line.data(), static_cast<int>(line.size()), width, &fitting, nullptr,
                              &size);
        return static_cast<std::size_t>(std::max(fitting, 0));
    }

private:
    HDC dc;
    HGDIOBJ before;
};

/// Where to break a line that is too long: behind the last blank or backslash, or anywhere in a long word.
std::size_t BreakPoint(std::string_view line, std::size_t fitting) {
    const std::size_t most = std::max<std::size_t>(fitting, 1);
    const std::size_t found = line.substr(0, most).find_last_of(" \\");
    return found == std::string_view::npos || found == 0 ? most : found + 1;
}

/// The text with lines no wider than `width` [pixels].
std::string BreakLines(std::string_view text, int width, const TextMeasure& measure) {
    std::string broken;
    while (true) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        for (std::size_t fitting = measure.CountFitting(line, width); fitting < line.size();
             fitting = measure.CountFitting(line, width)) {
            const std::size_t point = BreakPoint(line, fitting);
            broken.append(line.substr(0, point)).append(1, '\n');
            line.remove_prefix(point);
        }
        broken.append(line);
        if (end == std::string_view::npos) {
            return broken;
        }
        broken.append(1, '\n');
        text.remove_prefix(end + 1);
    }
}

/// Width of a title with the room that the caption needs around it.
int CaptionWidth(const char* title) {
    NONCLIENTMETRICSA metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoA(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    const HFONT font = CreateFontIndirectA(&metrics.lfCaptionFont);
    const int width = static_cast<int>(MeasureText(font, title).cx);
    DeleteObject(font);
    return width + 2 * kMargin;
}

} // namespace

TmyMsgBox::TmyMsgBox(TmyControl* owner, int count)
    : TmyComponent(owner, "", kBoxStyle, kBoxExtendedStyle, kFirstPlace),
      panel(new TmyPanel(this, "", {0, 0, 0, 0})) {
    RegisterType(this, TypeId::MsgBox, "MsgBox");
    keyTable.fill(kNoButton);
    panel->SetTextAlignment(kTextLeftMiddle);
    panel->SetStyleValue(StyleValue::BorderStyle, kFrameNone);
    for (Tmy_Btn2*& button : buttons) {
        button = new Tmy_Btn2(this, {}, kFirstButtonText);
        button->SetFocusable(true);
        button->onClick.Bind<&TmyMsgBox::OnButtonClick>(this);
        button->onFocus.Bind<&TmyMsgBox::OnButtonFocus>(this);
    }
    SetButtonCount(count);
}

void TmyMsgBox::SetButtonCount(int count) {
    buttonCount = std::clamp(count, 1, kMostButtons);
    for (int index = 0; index < kMostButtons; ++index) {
        Button(index)->SetVisible(index < buttonCount);
    }
}

void TmyMsgBox::SetButtonText(int index, const char* text) {
    if (index >= 0 && index < kMostButtons) {
        Button(index)->SetText(text);
    }
}

// --- answers -----------------------------------------------------------------------------------------------

int TmyMsgBox::IndexOf(const TmyControl* button) const {
    return static_cast<int>(std::find(buttons.begin(), buttons.end(), button) - buttons.begin());
}

void TmyMsgBox::OnButtonClick(TmyControl* sender) {
    EndModal(IndexOf(sender) + 1);
}

void TmyMsgBox::OnButtonFocus(TmyControl* sender, bool gained) {
    if (gained && keyTable[VK_RETURN] < buttonCount) {
        keyTable[VK_RETURN] = static_cast<std::uint8_t>(IndexOf(sender));
    }
}

/// A close that comes after the answer must not take the window away from its owner.
LRESULT TmyMsgBox::WndProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CLOSE && !IsInModal()) {
        SetVisible(false);
        return 0;
    }
    return TmyComponent::WndProc(message, wParam, lParam);
}

void TmyMsgBox::OnKeyPreview(WPARAM& key, LPARAM flags, TmyControl* sender) {
    const LifeGuard life(this);
    TmyComponent::OnKeyPreview(key, flags, sender);
    if (!life.IsAlive() || !IsEnabled() || key >= keyTable.size() || keyTable[key] >= buttonCount) {
        return;
    }
    const int index = keyTable[key];
    key = 0; // the button in focus is not to answer, too
    if ((flags & kKeyWasDown) == 0) {
        Button(index)->OnClick();
    }
}

void TmyMsgBox::SetMessage(const char* text, const char* title, int count) {
    if (count != 0) {
        SetButtonCount(count);
    }
    SetText(title != nullptr ? title : "");
    LayOut(text != nullptr ? text : "");
    CentreOnOwner();
}

int TmyMsgBox::ShowMessage(const char* text, const char* title, int count) {
    if (IsInModal()) {
        return kClosed; // its loop runs further down on the stack
    }
    SetMessage(text, title, count);
    const std::uint8_t defaultButton = keyTable[VK_RETURN];
    const LifeGuard life(this);
    SetVisible(true);
    if (life.IsAlive()) {
        keyTable[VK_RETURN] = defaultButton; // the focus of the last message came back for a moment
        FocusDefaultButton();
    }
    if (!life.IsAlive()) {
        return kQuit;
    }
    const int result = RunModal();
    if (life.IsAlive()) {
        keyTable[VK_RETURN] = defaultButton;
    }
    return result - 1;
}

/// The owner may be anywhere inside its window: all of that is kept from input.
int TmyMsgBox::RunModal() {
    const HWND owner = OwnerWindow();
    const bool isOwnedByTop = GetParent() != nullptr && GetParent()->Window() == owner;
    return ShowModal(isOwnedByTop ? nullptr : owner);
}

void TmyMsgBox::FocusDefaultButton() {
    const int index = keyTable[VK_RETURN];
    if (index < buttonCount) {
        Button(index)->SetFocus();
    } else {
        SetFocus();
    }
}

// --- layout ------------------------------------------------------------------------------------------------

HWND TmyMsgBox::OwnerWindow() const {
    return window != nullptr ? GetWindow(window, GW_OWNER) : nullptr;
}

/// All buttons are as large as the largest needs.
SIZE TmyMsgBox::ButtonSize() const {
    SIZE largest{kLeastButtonWidth, 0};
    for (int index = 0; index < buttonCount; ++index) {
        const SIZE natural = Button(index)->NaturalSize();
        largest.cx = std::max(largest.cx, natural.cx);
        largest.cy = std::max(largest.cy, natural.cy);
    }
    return largest;
}

void TmyMsgBox::LayOut(const char* text) {
    const int screenWidth = GetSystemMetrics(SM_CXSCREEN);
    const HFONT textFont = panel->EffectiveFont();
    const std::string lines = BreakLines(text, screenWidth / kScreenPart, TextMeasure(textFont));
    panel->SetText(lines.c_str());
    const SIZE textSize = MeasureText(textFont, lines.c_str());
    const SIZE button = ButtonSize();
    const int row = buttonCount * static_cast<int>(button.cx) + (buttonCount - 1) * kButtonGap;
    const int width = std::max({static_cast<int>(textSize.cx) + 2 * kMargin, row + 2 * kMargin,
                                CaptionWidth(GetText().Text()), kLeastWidth});
    const int rowTop = static_cast<int>(textSize.cy) + 2 * kMargin;
    SetClientSize(width, rowTop + static_cast<int>(button.cy) + kMargin);
    panel->SetBounds(kMargin, kMargin, width - 2 * kMargin, static_cast<int>(textSize.cy));
    PlaceButtons(button, width, rowTop);
}

void TmyMsgBox::PlaceButtons(const SIZE& size, int rowWidth, int top) {
    const auto width = static_cast<int>(size.cx);
    const int row = buttonCount * width + (buttonCount - 1) * kButtonGap;
    int left = (rowWidth - row) / 2;
    for (int index = 0; index < buttonCount; ++index) {
        Button(index)->SetBounds(left, top, width, static_cast<int>(size.cy));
        left += width + kButtonGap;
    }
}

/// In the middle of the owner as far as the monitor has room, or of the monitor if the owner is not on show.
void TmyMsgBox::CentreOnOwner() {
    const HWND owner = OwnerWindow();
    const RECT work = WorkAreaAt(owner != nullptr ? owner : window);
    RECT around = work;
    if (owner != nullptr && IsWindowVisible(owner) != 0 && IsIconic(owner) == 0) {
        GetWindowRect(owner, &around);
    }
    const LONG width = bounds.right - bounds.left;
    const LONG height = bounds.bottom - bounds.top;
    const LONG x = (around.left + around.right - width) / 2;
    const LONG y = (around.top + around.bottom - height) / 2;
    SetPosition(static_cast<int>(std::max(std::min(x, work.right - width), work.left)),
                static_cast<int>(std::max(std::min(y, work.bottom - height), work.top)));
}

/// The panel has a style record of its own, and follows in its colours.
void TmyMsgBox::SetStyleValue(StyleValue index, std::uint32_t value, bool unshare) {
    const LifeGuard life(this);
    TmyComponent::SetStyleValue(index, value, unshare);
    if (life.IsAlive() && index != StyleValue::BorderStyle && index != StyleValue::BorderWidth) {
        panel->SetStyleValue(index, value);
    }
}

} // namespace orva::toolkit
