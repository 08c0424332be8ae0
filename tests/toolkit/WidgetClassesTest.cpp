/// What the widgets are: their numbers and names, the classes that they derive from, and whether they have a
/// window.

#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/TypeRegistry.h"
#include "toolkit/myComponents.h"

#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr Placement kPlaceOfWidget{10, 10, 100, 60};

enum class Kind { Child, TopLevel, Windowless };

Kind KindOf(const TmyControl& control) {
    if (control.Window() == nullptr) {
        return Kind::Windowless;
    }
    const bool isChild = (GetWindowLongA(control.Window(), GWL_STYLE) & WS_CHILD) != 0;
    EXPECT_EQ(control.IsTopLevelWindow(), !isChild);
    return isChild ? Kind::Child : Kind::TopLevel;
}

class WidgetClasses : public WidgetTest {
protected:
    /// Deletes the widget.
    template <class Base, class Widget>
    static void Expect(Widget* widget, std::uint32_t typeId, const std::string& name, Kind kind) {
        static_assert(std::is_base_of_v<Base, Widget>);
        const TypeRecord* type = FindType(widget);
        ASSERT_NE(type, nullptr) << name;
        EXPECT_EQ(type->typeId, typeId) << name;
        EXPECT_EQ(type->name, name);
        EXPECT_EQ(KindOf(*widget), kind) << name;
        delete widget;
    }
};

TEST_F(WidgetClasses, WithAWindowOfTheToolkit) {
    Expect<TmyComponent>(new TmyPanel(&Top(), "", kPlaceOfWidget), 4, "Panel", Kind::Child);
    Expect<TmyPanel>(new TmyLabel(&Top(), "", kPlaceOfWidget), 19, "Label", Kind::Child);
    Expect<TmyPanel>(new TmyButton(&Top(), "", kPlaceOfWidget), 5, "Button", Kind::Child);
    Expect<TmyPanel>(new TmyListBox(&Top(), kPlaceOfWidget), 9, "ListBox", Kind::Child);
    Expect<TmyPanel>(new TmyComboBox(&Top(), kPlaceOfWidget), 10, "ComboBox", Kind::Child);
    Expect<TmyPanel>(new TmyUpDown(&Top(), kPlaceOfWidget), 27, "UpDown", Kind::Child);
    Expect<TmyComponent>(new TmySlider(&Top(), SliderDirection::Horizontal, kPlaceOfWidget), 22, "Slider",
                         Kind::Child);
    Expect<TmyComponent>(new TmyMsgBox(&Top()), 44, "MsgBox", Kind::TopLevel);
}

TEST_F(WidgetClasses, WithAWindowOfThePlatform) {
    Expect<TmyComponent>(new TmyEdit(&Top(), "", kPlaceOfWidget), 7, "Edit", Kind::Child);
    Expect<TmyEdit>(new TmyIntEdit(&Top(), kPlaceOfWidget), 14, "IntEdit", Kind::Child);
    Expect<TmyIntEdit>(new TmyFloatEdit(&Top(), 2, kPlaceOfWidget), 52, "FloatEdit", Kind::Child);
}

TEST_F(WidgetClasses, AsPopupsOfAnEntry) {
    auto* entry = new TmyIntEdit(&Top(), kPlaceOfWidget);
    Expect<TmyComponent>(new TmyFloatingSelection(entry, 3, 15), 46, "FloatSel", Kind::TopLevel);
    Expect<TmyFloatingSelection>(new TmyFloatingSelection2(entry, 3, 15), 47, "FloatSel2", Kind::TopLevel);
}

TEST_F(WidgetClasses, WithoutAWindow) {
    Expect<TmyControl>(new Tmy_Panel(&Top()), 92, "_Panel", Kind::Windowless);
    Expect<TmyControl>(new Tmy_Label(&Top()), 40, "_Label", Kind::Windowless);
    Expect<TmyControl>(new Tmy_Btn(&Top()), 38, "Btn", Kind::Windowless);
    Expect<Tmy_Btn>(new Tmy_Btn2(&Top()), 39, "Btn2", Kind::Windowless);
    Expect<TmyControl>(new Tmy_ScrollBar(&Top(), ScrollDirection::Vertical), 6, "ScrollBar",
                       Kind::Windowless);
}

} // namespace
} // namespace orva::toolkit
