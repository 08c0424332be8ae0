/// The message box: buttons, keys, results, layout.

#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/TextDrawing.h"
#include "toolkit/TmyMsgBox.h"
#include "toolkit/TmyPanel.h"
#include "toolkit/Tmy_Btn2.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

std::function<void()> laterCall;

void CALLBACK CallNow(HWND /*window*/, UINT /*message*/, UINT_PTR id, DWORD /*time*/) {
    KillTimer(nullptr, id);
    const std::function<void()> call = std::exchange(laterCall, nullptr);
    call();
}

/// Calls `call` from the message loop: while a box is on show, from the box's.
void Later(std::function<void()> call) {
    laterCall = std::move(call);
    SetTimer(nullptr, 0, USER_TIMER_MINIMUM, CallNow);
}

class MsgBox : public WidgetTest {
protected:
    MsgBox() : box(std::make_unique<TmyMsgBox>(&Top(), 2)) {}
    ~MsgBox() override {
        box.reset();
        Top().SetPosition(kTopPlace.x, kTopPlace.y);
        Top().SetEnabled(true);
    }

    /// Shows the box and does `action` meanwhile.
    int Show(std::function<void()> action, const char* text = "A text", int count = 0) const {
        Later(std::move(action));
        return box->ShowMessage(text, "A title", count);
    }
    void ClickButton(int index) const {
        const RECT place = box->Button(index)->Bounds();
        ClickAt(*box, static_cast<int>(place.left) + 3, static_cast<int>(place.top) + 3);
    }
    void Press(UINT key) const {
        KeyDown(*box, key);
        KeyUp(*box, key);
    }
    [[nodiscard]] int Visible() const {
        int count = 0;
        for (int i = 0; i < TmyMsgBox::kMostButtons; ++i) {
            count += box->Button(i)->HasState(ControlState::Hidden) ? 0 : 1;
        }
        return count;
    }
    void Close() const { PostMessageA(box->Window(), WM_CLOSE, 0, 0); }

    std::unique_ptr<TmyMsgBox> box;
};

// --- buttons -----------------------------------------------------------------------------------------------

TEST_F(MsgBox, HasOneToFourButtons) {
    const std::pair<int, int> cases[] = {{0, 1}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 4}, {7, 4}, {-3, 1}};
    for (const auto& [asked, given] : cases) {
        box = std::make_unique<TmyMsgBox>(&Top(), asked);
        EXPECT_EQ(box->GetButtonCount(), given) << asked;
        EXPECT_EQ(Visible(), given) << asked;
    }
}

TEST_F(MsgBox, ButtonsSayOkUntilTheyAreTold) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(box->Button(i)->GetText() == " OK ");
    }
    box->SetButtonText(1, "No");
    EXPECT_TRUE(box->Button(1)->GetText() == "No");
    box->SetButtonText(4, "nobody");
    box->SetButtonText(-1, "nobody");
}

TEST_F(MsgBox, IsATopLevelWindowOfItsStyle) {
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongA(box->Window(), GWL_STYLE)), 0x86C00000u);
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongA(box->Window(), GWL_EXSTYLE)) & 12u, 12u);
    EXPECT_TRUE(box->IsTopLevelWindow());
    EXPECT_EQ(GetWindow(box->Window(), GW_OWNER), Top().Window());
    EXPECT_FALSE(box->IsVisible());
}

TEST_F(MsgBox, ReturnsTheIndexOfTheButtonClicked) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Show([&] { ClickButton(i); }, "A text", 4), i);
        Pump();
        EXPECT_FALSE(box->IsVisible());
    }
}

TEST_F(MsgBox, ModalResultInsideIsTheIndexAndOne) {
    box->SetMessage("A text", "A title", 3);
    Later([&] { ClickButton(2); });
    EXPECT_EQ(box->ShowModal(), 3);
}

TEST_F(MsgBox, ReleaseBesideAButtonAnswersNothing) {
    EXPECT_EQ(Show([&] {
                  const RECT place = box->Button(0)->Bounds();
                  PressAt(*box, static_cast<int>(place.left) + 3, static_cast<int>(place.top) + 3);
                  DragTo(*box, 1, 1);
                  ReleaseAt(*box, 1, 1);
                  Later([&] { ClickButton(1); });
              }),
              1);
}

TEST_F(MsgBox, CloseAndQuitHaveResultsOfTheirOwn) {
    EXPECT_EQ(Show([&] { Close(); }), TmyMsgBox::kClosed);
    EXPECT_EQ(TmyMsgBox::kClosed, -2);
    EXPECT_TRUE(IsWindow(box->Window())); // it can be shown again
    EXPECT_EQ(Show([&] { ClickButton(0); }), 0);
    EXPECT_EQ(Show([] { PostQuitMessage(7); }), TmyMsgBox::kQuit);
    EXPECT_EQ(TmyMsgBox::kQuit, -1);
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) { // left to the loop around
        DispatchMessageA(&message);
    }
    EXPECT_EQ(message.wParam, 7u);
}

TEST_F(MsgBox, CloseThatComesAfterTheAnswerOnlyHides) {
    EXPECT_EQ(Show([&] {
                  ClickButton(1);
                  Close();
              }),
              1);
    Pump();
    EXPECT_TRUE(IsWindow(box->Window()));
    box->SetVisible(true);
    Send(*box, WM_CLOSE);
    EXPECT_FALSE(IsWindowVisible(box->Window()));
    EXPECT_EQ(Show([&] { ClickButton(0); }), 0);
}

TEST_F(MsgBox, EndsWhenTheApplicationQuits) {
    EXPECT_EQ(Show([&] { Application().quitting = true; }), TmyMsgBox::kQuit);
    Application().quitting = false;
}

TEST_F(MsgBox, BeingDeletedMeanwhileEndsIt) {
    EXPECT_EQ(Show([&] { delete box.release(); }), TmyMsgBox::kQuit);
}

TEST_F(MsgBox, SecondMessageWhileItIsOnShowIsTurnedDown) {
    int second = 0;
    EXPECT_EQ(Show([&] {
                  second = box->ShowMessage("Another", "Another title");
                  ClickButton(1);
              }),
              1);
    EXPECT_EQ(second, TmyMsgBox::kClosed);
    EXPECT_TRUE(box->Panel()->GetText() == "A text");
}

TEST_F(MsgBox, OwnerIsKeptFromInputMeanwhile) {
    bool during = true;
    auto* child = new TmyComponent(&Top(), "", kChild, 0, {0, 0, 50, 50});
    EXPECT_EQ(Show([&] {
                  during = IsWindowEnabled(Top().Window()) != 0;
                  ClickButton(0);
              }),
              0);
    EXPECT_FALSE(during);
    EXPECT_TRUE(IsWindowEnabled(Top().Window()));
    // One owned by a child keeps the child's whole window from input.
    box = std::make_unique<TmyMsgBox>(child, 1);
    EXPECT_EQ(Show([&] {
                  during = IsWindowEnabled(Top().Window()) != 0;
                  ClickButton(0);
              }),
              0);
    EXPECT_FALSE(during);
    EXPECT_TRUE(IsWindowEnabled(Top().Window()));
    EXPECT_TRUE(Top().IsEnabled());
}

// --- keys --------------------------------------------------------------------------------------------------

TEST_F(MsgBox, KeysAnswerNothingUntilTheTableSaysSo) {
    for (int key = 0; key < 256; ++key) {
        ASSERT_EQ(box->GetKey(static_cast<std::uint8_t>(key)), 255);
    }
    EXPECT_EQ(Show([&] {
                  Press(VK_RETURN);
                  Press(VK_ESCAPE);
                  Press('Y');
                  Later([&] { ClickButton(1); });
              }),
              1);
}

TEST_F(MsgBox, KeyOfTheTableAnswersWithItsButton) {
    box->SetKey('Y', 0);
    box->SetKey('N', 1);
    box->SetKey(VK_ESCAPE, 1);
    box->SetKey('X', 2); // there are only two
    EXPECT_EQ(Show([&] { Press('Y'); }), 0);
    EXPECT_EQ(Show([&] { Press('N'); }), 1);
    EXPECT_EQ(Show([&] { Press(VK_ESCAPE); }), 1);
    EXPECT_EQ(Show([&] {
                  Press('X');
                  Press('Y');
              }),
              0);
    EXPECT_EQ(Show([&] { Press('X'); }, "A text", 3), 2);
    box->SetKey('Y', TmyMsgBox::kNoButton);
    EXPECT_EQ(Show([&] {
                  Press('Y');
                  Press('N');
              }),
              1);
}

TEST_F(MsgBox, DefaultButtonIsTheOneOfReturnAndHasTheFocus) {
    box->SetKey(VK_RETURN, 1);
    bool focused = false;
    EXPECT_EQ(Show([&] {
                  focused = box->Button(1)->HasFocus();
                  Press(VK_RETURN);
              }),
              1);
    EXPECT_TRUE(focused);
}

TEST_F(MsgBox, ReturnAnswersWithTheButtonThatTabLeadsTo) {
    box->SetKey(VK_RETURN, 0);
    EXPECT_EQ(Show([&] {
                  Press(VK_TAB);
                  EXPECT_TRUE(box->Button(1)->HasFocus());
                  Press(VK_RETURN);
              }),
              1);
    EXPECT_EQ(box->GetKey(VK_RETURN), 0); // the next message has its default again
    EXPECT_EQ(Show([&] { Press(VK_RETURN); }), 0);
}

TEST_F(MsgBox, TabGoesRoundTheButtonsOnShow) {
    EXPECT_EQ(Show([&] {
                  for (const int expected : {0, 1, 0}) {
                      Press(VK_TAB);
                      EXPECT_TRUE(box->Button(expected)->HasFocus());
                  }
                  Press(VK_SPACE);
              }),
              0);
}

TEST_F(MsgBox, KeyHeldDownSinceBeforeAnswersNothing) {
    constexpr LPARAM kRepeated = 0x40000001;
    box->SetKey(VK_RETURN, 0);
    EXPECT_EQ(Show([&] {
                  Send(*box, WM_KEYDOWN, VK_RETURN, kRepeated);
                  Later([&] { ClickButton(1); });
              }),
              1);
}

TEST_F(MsgBox, KeysAnswerNothingWhileItIsDisabled) {
    box->SetKey('Y', 0);
    box->SetKey('N', 1);
    EXPECT_EQ(Show([&] {
                  box->SetEnabled(false);
                  Press('Y');
                  box->SetEnabled(true);
                  Press('N');
              }),
              1);
}

// --- layout ------------------------------------------------------------------------------------------------

TEST_F(MsgBox, TextAndButtonsFitTheirWindow) {
    const char* texts[] = {"", "Short", "Three\nlines of\ntext", "The file: \nC:\\a.wav\nalready exists."};
    for (const char* text : texts) {
        for (int count = 1; count <= 4; ++count) {
            box->SetMessage(text, "Overwrite existing file?", count);
            const HDC screen = ::GetDC(nullptr);
            const SIZE size = MeasureText(screen, box->Panel()->EffectiveFont(), text);
            ::ReleaseDC(nullptr, screen);
            RECT area{};
            box->Panel()->GetClientArea(&area);
            EXPECT_GE(area.right, size.cx);
            EXPECT_GE(area.bottom, size.cy);
            EXPECT_LE(box->Panel()->Bounds().right, box->GetClientWidth());
            LONG left = 0;
            for (int i = 0; i < count; ++i) {
                const RECT place = box->Button(i)->Bounds();
                EXPECT_GT(place.left, left); // from left to right, without touching
                EXPECT_GE(place.top, box->Panel()->Bounds().bottom);
                EXPECT_LT(place.bottom, box->GetClientHeight());
                EXPECT_GE(place.right - place.left, box->Button(i)->NaturalSize().cx);
                left = place.right;
            }
            EXPECT_LT(left, box->GetClientWidth());
            // The row stands in the middle.
            EXPECT_NEAR(box->Button(0)->Bounds().left, box->GetClientWidth() - left, 1);
        }
    }
}

TEST_F(MsgBox, WideButtonsWidenTheBox) {
    box->SetMessage("Text", "", 4);
    const int before = box->GetClientWidth();
    box->SetButtonText(2, "A text that is much longer than the others");
    box->SetMessage("Text", "", 4);
    EXPECT_GT(box->GetClientWidth(), before);
    EXPECT_EQ(box->Button(0)->Bounds().right - box->Button(0)->Bounds().left,
              box->Button(2)->NaturalSize().cx);
}

TEST_F(MsgBox, LongLinesAreBrokenAtBlanksAndBackslashes) {
    const int most = GetSystemMetrics(SM_CXSCREEN) / 2;
    std::string path = "C:";
    for (int i = 0; i < 40; ++i) {
        path += "\\A folder" + std::to_string(i);
    }
    const std::string word(400, 'W');
    for (const std::string& text : {path, word, "The file: \n" + path + "\nalready exists."}) {
        box->SetMessage(text.c_str(), "", 2);
        EXPECT_LE(box->GetClientWidth(), most + 40);
        std::string shown = box->Panel()->GetText().Text();
        EXPECT_NE(shown.find('\n'), std::string::npos);
        std::string joined;
        std::string original = text;
        for (std::string* each : {&shown, &original}) {
            each->erase(std::remove(each->begin(), each->end(), '\n'), each->end());
        }
        EXPECT_EQ(shown, original); // nothing is lost
    }
    box->SetMessage(path.c_str(), "");
    const std::string shown = box->Panel()->GetText().Text();
    for (std::size_t at = shown.find('\n'); at != std::string::npos; at = shown.find('\n', at + 1)) {
        EXPECT_TRUE(shown[at - 1] == '\\' || shown[at - 1] == ' ');
    }
}

TEST_F(MsgBox, StandsInTheMiddleOfItsOwner) {
    box->SetMessage("Text", "", 1);
    RECT place{};
    GetWindowRect(box->Window(), &place);
    EXPECT_NEAR((place.left + place.right) / 2, kTopPlace.x + kTopPlace.width / 2, 1);
    EXPECT_NEAR((place.top + place.bottom) / 2, kTopPlace.y + kTopPlace.height / 2, 1);
}

TEST_F(MsgBox, StaysOnTheScreen) {
    const int screenWidth = GetSystemMetrics(SM_CXSCREEN);
    const int screenHeight = GetSystemMetrics(SM_CYSCREEN);
    for (const POINT corner : {POINT{-350, -280}, POINT{screenWidth - 50, screenHeight - 20}}) {
        Top().SetPosition(static_cast<int>(corner.x), static_cast<int>(corner.y));
        box->SetMessage("Text", "", 3);
        RECT place{};
        GetWindowRect(box->Window(), &place);
        EXPECT_GE(place.left, 0);
        EXPECT_GE(place.top, 0);
        EXPECT_LE(place.right, screenWidth);
        EXPECT_LE(place.bottom, screenHeight);
    }
}

TEST_F(MsgBox, WithoutAnOwnerStandsInTheMiddleOfTheScreen) {
    box = std::make_unique<TmyMsgBox>(nullptr, 1);
    bool answered = false;
    EXPECT_EQ(Show([&] {
                  RECT place{};
                  GetWindowRect(box->Window(), &place);
                  EXPECT_NEAR((place.left + place.right) / 2, GetSystemMetrics(SM_CXSCREEN) / 2, 1);
                  answered = true;
                  ClickButton(0);
              }),
              0);
    EXPECT_TRUE(answered);
}

TEST_F(MsgBox, TakesTheColoursOfItsOwner) {
    TmyComponent owner(nullptr, "", kPopupHidden, 0, kPlace);
    owner.SetWindowColor(0x203040);
    box = std::make_unique<TmyMsgBox>(&owner, 1);
    owner.SetTextColor(0x00FFFF);
    EXPECT_EQ(box->Panel()->GetStyleValue(StyleValue::WindowColor), 0x203040u);
    EXPECT_EQ(box->Panel()->GetStyleValue(StyleValue::TextColor), 0x00FFFFu);
    box->SetMessage("Some text to see", "");
    box->SetVisible(true);
    Settle(*box);
    const Snapshot picture(*box);
    EXPECT_EQ(picture.At(1, 1), 0x203040u);
    EXPECT_GT(picture.Count(box->Panel()->Bounds(), 0x00FFFF), 20);
    box.reset();
}

TEST_F(MsgBox, NullTextsAreEmpty) {
    EXPECT_EQ(Show([&] { ClickButton(0); }, nullptr), 0);
    EXPECT_TRUE(box->Panel()->GetText().IsEmpty());
    box->SetMessage("text", nullptr);
    EXPECT_TRUE(box->GetText().IsEmpty());
}

TEST_F(MsgBox, RealKeysAndMouseAnswer) {
    box->SetKey(VK_RETURN, 0);
    const auto sendKey = [](WORD key) {
        INPUT inputs[2]{};
        inputs[0].type = inputs[1].type = INPUT_KEYBOARD;
        inputs[0].ki.wVk = inputs[1].ki.wVk = key;
        inputs[1].ki.dwFlags = KEYEVENTF_KEYUP;
        SendInput(2, inputs, sizeof inputs[0]);
    };
    EXPECT_EQ(Show([&] { sendKey(VK_RETURN); }), 0);
    EXPECT_EQ(Show([&] {
                  sendKey(VK_TAB);
                  sendKey(VK_RETURN);
              }),
              1);
    EXPECT_EQ(Show([&] {
                  POINT corner{box->Button(1)->Bounds().left + 5, box->Button(1)->Bounds().top + 5};
                  ClientToScreen(box->Window(), &corner);
                  SetCursorPos(static_cast<int>(corner.x), static_cast<int>(corner.y));
                  INPUT inputs[2]{};
                  inputs[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
                  inputs[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
                  SendInput(2, inputs, sizeof inputs[0]);
              }),
              1);
}

} // namespace
} // namespace orva::toolkit
