/// A message to the user, with up to four answers.
#pragma once

#include "toolkit/TmyComponent.h"
#include "toolkit/TmyString.h"

#include <array>
#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

class Tmy_Btn2;
class TmyPanel;

/// Keeps its owner from input until it is answered.
///
/// | input                     | effect                                                             |
/// |---------------------------|--------------------------------------------------------------------|
/// | a click on a button       | answers with it                                                    |
/// | a key of the key table    | the same, whoever has the focus; not one held down since before    |
/// | Tab                       | moves the focus from button to button                              |
/// | Space, Return on a button | answers with it                                                    |
/// | the window's close        | ends without an answer                                             |
///
/// The key table's entry for Return is the default button. It has the focus when the box opens, and takes
/// over from it while it moves, so that Return always answers with the button that is marked.
class TmyMsgBox : public TmyComponent {
public:
    static constexpr int kMostButtons = 4;
    /// Entry of a key that answers nothing.
    static constexpr std::uint8_t kNoButton = 255;

    // What `ShowMessage` returns beside the index of a button.
    static constexpr int kClosed = -2;
    static constexpr int kQuit = -1;

    /// \param owner        on which it is centred; null for the middle of the screen
    /// \param buttonCount  1 to 4; 0 gives 1, more give 4
    explicit TmyMsgBox(TmyControl* owner, int buttonCount = 1);

    /// " OK " until it is set; an index out of range does nothing.
    void SetButtonText(int index, const char* text);
    /// Lets a key (a virtual key code, 0 to 255) answer with a button; `kNoButton` takes that back.
    void SetKey(std::uint8_t key, std::uint8_t buttonIndex) { keyTable[key] = buttonIndex; }
    [[nodiscard]] std::uint8_t GetKey(std::uint8_t key) const { return keyTable[key]; }
    /// As in the constructor.
    void SetButtonCount(int count);
    [[nodiscard]] int GetButtonCount() const { return buttonCount; }
    [[nodiscard]] Tmy_Btn2* Button(int index) const { return buttons[static_cast<std::size_t>(index)]; }
    [[nodiscard]] TmyPanel* Panel() const { return panel; }

    /// Shows the box until it is answered. Lines too long for the screen are broken.
    ///
    /// \param text, title  copied; null is empty
    /// \param count        of buttons; 0 keeps what it has
    /// \return index of the button; `kClosed` after a close, and at once if the box is on show already;
    /// `kQuit`
    ///         if the application quits, and if there is no window
    int ShowMessage(const char* text, const char* title, int count = 0);
    /// What `ShowMessage` does before it shows the box; the same arguments.
    void SetMessage(const char* text, const char* title, int count = 0);

    LRESULT WndProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnKeyPreview(WPARAM& key, LPARAM flags, TmyControl* sender) override;
    void SetStyleValue(StyleValue index, std::uint32_t value, bool unshare = false) override;

private:
    [[nodiscard]] HWND OwnerWindow() const;
    void LayOut(const char* text);
    [[nodiscard]] SIZE ButtonSize() const;
    void PlaceButtons(const SIZE& size, int rowWidth, int top);
    void CentreOnOwner();
    void FocusDefaultButton();
    [[nodiscard]] int RunModal();
    [[nodiscard]] int IndexOf(const TmyControl* button) const;
    void OnButtonClick(TmyControl* sender);
    void OnButtonFocus(TmyControl* sender, bool gained);

    TmyPanel* panel;
    std::array<Tmy_Btn2*, kMostButtons> buttons{};
    int buttonCount = 1;
    std::array<std::uint8_t, 256> keyTable{}; ///< button of each key
};

} // namespace orva::toolkit
