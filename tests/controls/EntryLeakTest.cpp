/// What entries, spin buttons, pop-ups and number fields leave behind: nothing.

#include "controls/CtbNumParamControl.h"
#include "tests/support/AllocationProbe.h"
#include "tests/toolkit/LiveObjects.h"
#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/TmyFloatEdit.h"
#include "toolkit/TmyFloatingSelection.h"
#include "toolkit/TmyFloatingSelection2.h"
#include "toolkit/TmyUpDown.h"

#include <functional>

namespace orva::controls {
namespace {

using namespace orva::toolkit;

constexpr Placement kAt{10, 10, 80, 20};

class EntryLeaks : public WidgetTest {
protected:
    struct Count {
        int windows = test::CountWindows();
        int gdiObjects = test::CountGdiObjects();
        std::int64_t heapBlocks = test::CountLiveAllocations();
    };

    /// Types, turns the wheel, clicks, paints and changes the looks of a widget.
    static void Use(TmyComponent& widget) {
        widget.SetFocus();
        for (const char character : {'1', '2', '-', 'k', '\b'}) {
            Type(widget, character);
        }
        Wheel(widget, 1);
        ClickAt(widget, 5, 5);
        widget.SetSize(90, 25);
        const HFONT font = CreateFontA(-20, 0, 0, 0, FW_NORMAL, 0, 0, 0, 0, 0, 0, 0, 0, "Arial");
        widget.SetFont(font);
        RedrawWindow(widget.Window(), nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_UPDATENOW | RDW_ALLCHILDREN);
        widget.SetFont(InheritedFont());
        DeleteObject(font);
        widget.SetEnabled(false);
        Pump();
    }

    /// Makes, uses and deletes a widget many times, the first time unseen: the platform makes some things
    /// once.
    static void Check(const std::function<TmyComponent*()>& make) {
        constexpr int kRounds = 8;
        const auto round = [&] {
            TmyComponent* widget = make();
            Use(*widget);
            delete widget;
            Pump();
        };
        round();
        const Count before;
        for (int i = 0; i < kRounds; ++i) {
            round();
        }
        const Count after;
        EXPECT_EQ(after.windows, before.windows);
        EXPECT_EQ(after.gdiObjects, before.gdiObjects);
        EXPECT_EQ(after.heapBlocks, before.heapBlocks);
    }
};

TEST_F(EntryLeaks, TextEntry) {
    Check([] {
        auto* edit = new TmyEdit(&Top(), "text", kAt);
        edit->SetUnit("MHz");
        edit->SetUnitWidth(25);
        return edit;
    });
}

TEST_F(EntryLeaks, NumberEntry) {
    Check([] {
        auto* edit = new TmyIntEdit(&Top(), kAt);
        edit->SetUnitMode(UnitMode::Frequency);
        edit->SetValue(4500);
        return edit;
    });
}

TEST_F(EntryLeaks, EntryWithDecimals) {
    Check([] {
        auto* edit = new TmyFloatEdit(&Top(), 2, kAt);
        edit->SetValue(4500);
        return edit;
    });
}

TEST_F(EntryLeaks, SpinButtons) {
    auto* edit = new TmyIntEdit(&Top(), kAt);
    Check([edit] {
        auto* spin = new TmyUpDown(&Top(), {100, 10, 12, 30}, true);
        spin->SetEdit(edit);
        return spin;
    });
}

TEST_F(EntryLeaks, PopupList) {
    Check([] {
        auto* edit = new TmyIntEdit(&Top(), kAt);
        edit->SetValue(3);
        auto* list = new TmyFloatingSelection(edit, 4, 15);
        for (int number = 0; number < 20; ++number) {
            list->AddItem(number);
        }
        list->Open();
        list->Update();
        Wheel(*list, -2);
        return edit; // and with it the list, while it is open
    });
    EXPECT_EQ(Application().popupList.Count(), 0);
}

TEST_F(EntryLeaks, PopupDigits) {
    Check([] {
        auto* edit = new TmyIntEdit(&Top(), kAt);
        edit->SetValue(4500);
        auto* digits = new TmyFloatingSelection2(edit, 3, 15);
        digits->Open();
        digits->Update();
        Wheel(*digits, 1);
        return edit;
    });
    EXPECT_EQ(Application().popupList.Count(), 0);
}

TEST_F(EntryLeaks, NumberField) {
    Check([] {
        auto* field = new CtbNumParamControl(&Top(), {10, 10, 160, 20});
        field->SetMaximum(9999);
        field->SetTitle("Freq", true);
        field->SetUnit("Hz", true);
        return field;
    });
}

} // namespace
} // namespace orva::controls
