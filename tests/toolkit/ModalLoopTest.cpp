#include "tests/toolkit/DebugOutput.h"
#include "tests/toolkit/WindowSupport.h"

#include <functional>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

/// Does what the test says at user messages of a dialog.
struct Commander {
    void OnMessage(TmyControl* /*sender*/, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) {
        if (message == WM_USER + 1 && first) {
            const auto command = std::move(first);
            command();
        }
        if (message == WM_USER + 2) {
            ++seconds;
        }
    }
    std::function<void()> first;
    int seconds = 0;
};

class ModalLoop : public ::testing::Test {
protected:
    ModalLoop() {
        Pump();
        dialog->messageHook.Bind<&Commander::OnMessage>(&commander);
    }
    ~ModalLoop() override { delete dialog; }

    static bool TakeQuit() {
        MSG message{};
        return PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != 0;
    }

    Commander commander;
    TmyComponent owner{nullptr, "owner", kPopup, 0, kPlace};
    TmyComponent* dialog = new TmyComponent(&owner, "dialog", kPopupHidden, 0, {150, 150, 100, 80});
};

TEST_F(ModalLoop, CloseReturnsMinusOneAndKeepsTheWindow) {
    const DebugOutput output;
    dialog->traceEnabled = 1;
    PostMessageA(dialog->Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(dialog->ShowModal(), -1);
    dialog->traceEnabled = 0;
    EXPECT_EQ(output.Count("Ending Modal Loop"), 1);
    ASSERT_NE(IsWindow(dialog->Window()), FALSE);
    EXPECT_FALSE(dialog->IsInModal());
    EXPECT_EQ(IsWindowVisible(dialog->Window()), FALSE);
    EXPECT_NE(IsWindowEnabled(owner.Window()), FALSE);
}

TEST_F(ModalLoop, RunsShownWithItsOwnerDisabled) {
    commander.first = [this] {
        EXPECT_TRUE(dialog->IsInModal());
        EXPECT_NE(IsWindowVisible(dialog->Window()), FALSE);
        EXPECT_EQ(IsWindowEnabled(owner.Window()), FALSE);
        EXPECT_FALSE(owner.IsEnabled());
        EXPECT_TRUE(dialog->IsEnabled()); // its owner's state is not meant for it
        dialog->EndModal(42);
    };
    dialog->PostUserMessage(1, 0, 0);
    EXPECT_EQ(dialog->ShowModal(), 42);
    EXPECT_TRUE(owner.IsEnabled());
    Pump();
    EXPECT_FALSE(dialog->IsVisible());
}

TEST_F(ModalLoop, CanRunAgain) {
    for (const int result : {3, 4}) {
        commander.first = [this, result] { dialog->EndModal(result); };
        dialog->PostUserMessage(1, 0, 0);
        EXPECT_EQ(dialog->ShowModal(), result);
    }
}

TEST_F(ModalLoop, AnOwnerThatWasDisabledStaysSo) {
    owner.SetEnabled(false);
    commander.first = [this] { dialog->EndModal(1); };
    dialog->PostUserMessage(1, 0, 0);
    dialog->ShowModal();
    EXPECT_FALSE(owner.IsEnabled());
    EXPECT_EQ(IsWindowEnabled(owner.Window()), FALSE);
}

TEST_F(ModalLoop, AnOwnerBelowADisabledOneKeepsItsOwnState) {
    TmyControl outer(&owner, {0, 0, 100, 100});
    TmyControl inner(&outer, {0, 0, 50, 50});
    auto* other = new TmyComponent(&inner, "", kPopupHidden, 0, {150, 150, 100, 80});
    other->messageHook.Bind<&Commander::OnMessage>(&commander);
    outer.SetEnabled(false);
    commander.first = [&] {
        EXPECT_TRUE(inner.HasState(ControlState::Disabled));
        other->EndModal(1);
    };
    other->PostUserMessage(1, 0, 0);
    EXPECT_EQ(other->ShowModal(), 1);
    EXPECT_FALSE(inner.HasState(ControlState::Disabled));
    outer.SetEnabled(true);
    EXPECT_TRUE(inner.IsEnabled());
}

TEST_F(ModalLoop, AGivenWindowIsDisabledInstead) {
    const HWND host =
        CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    commander.first = [&] {
        EXPECT_EQ(IsWindowEnabled(host), FALSE);
        EXPECT_NE(IsWindowEnabled(owner.Window()), FALSE);
        dialog->EndModal(1);
    };
    dialog->PostUserMessage(1, 0, 0);
    EXPECT_EQ(dialog->ShowModal(host), 1);
    EXPECT_NE(IsWindowEnabled(host), FALSE);
    EnableWindow(host, FALSE);
    commander.first = [this] { dialog->EndModal(1); };
    dialog->PostUserMessage(1, 0, 0);
    dialog->ShowModal(host);
    EXPECT_EQ(IsWindowEnabled(host), FALSE); // as it was
    DestroyWindow(host);
}

TEST_F(ModalLoop, AQuitMessageEndsItAndIsPostedAgain) {
    PostQuitMessage(7);
    EXPECT_EQ(dialog->ShowModal(), 0);
    EXPECT_TRUE(owner.IsEnabled());
    EXPECT_FALSE(dialog->IsInModal());
    EXPECT_EQ(IsWindowVisible(dialog->Window()), FALSE);
    MSG message{};
    ASSERT_NE(PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE), 0);
    EXPECT_EQ(message.wParam, 7u);
}

TEST_F(ModalLoop, TheApplicationsQuittingEndsItWithZero) {
    commander.first = [this] {
        dialog->EndModal(9);
        Application().quitting = true;
    };
    dialog->PostUserMessage(1, 0, 0);
    EXPECT_EQ(dialog->ShowModal(), 0);
    EXPECT_EQ(dialog->ShowModal(), 0); // at once
    Application().quitting = false;
    EXPECT_TRUE(owner.IsEnabled());
    EXPECT_EQ(IsWindowVisible(dialog->Window()), FALSE);
}

TEST_F(ModalLoop, CancelledLeavesAtTheNextMessageWithZero) {
    commander.first = [this] { dialog->CancelModal(); };
    dialog->PostUserMessage(1, 0, 0);
    dialog->PostUserMessage(2, 0, 0);
    EXPECT_EQ(dialog->ShowModal(), 0);
    EXPECT_TRUE(owner.IsEnabled());
    EXPECT_EQ(IsWindowVisible(dialog->Window()), FALSE);
    Pump();
    EXPECT_EQ(commander.seconds, 1); // no message is lost
}

TEST_F(ModalLoop, ADialogDeletedInItsLoopReturnsZero) {
    TmyComponent* doomed = dialog;
    commander.first = [doomed] { delete doomed; };
    dialog->PostUserMessage(1, 0, 0);
    dialog = nullptr;
    EXPECT_EQ(doomed->ShowModal(), 0);
    EXPECT_TRUE(owner.IsEnabled());
    EXPECT_NE(IsWindowEnabled(owner.Window()), FALSE);
}

TEST_F(ModalLoop, AnOwnerDestroyedInTheLoopTakesTheDialogAlong) {
    auto* parent = new TmyComponent(nullptr, "", kPopup, 0, kPlace);
    auto* child = new TmyComponent(parent, "", kPopupHidden, 0, kPlace);
    child->messageHook.Bind<&Commander::OnMessage>(&commander);
    commander.first = [parent] { delete parent; };
    child->PostUserMessage(1, 0, 0);
    EXPECT_EQ(child->ShowModal(), 0);
}

TEST_F(ModalLoop, QuitEndsNestedLoopsOneAfterTheOther) {
    auto* inner = new TmyComponent(dialog, "", kPopupHidden, 0, kPlace);
    int innerResult = -5;
    commander.first = [&] {
        PostQuitMessage(3);
        innerResult = inner->ShowModal();
    };
    dialog->PostUserMessage(1, 0, 0);
    EXPECT_EQ(dialog->ShowModal(), 0);
    EXPECT_EQ(innerResult, 0);
    EXPECT_TRUE(owner.IsEnabled());
    EXPECT_TRUE(TakeQuit());
    EXPECT_FALSE(TakeQuit());
}

} // namespace
} // namespace orva::toolkit
