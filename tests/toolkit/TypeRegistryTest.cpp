#include "toolkit/TypeRegistry.h"

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

class Base : public TmyObject {
public:
    Base() { RegisterType(this, TypeId::Control, "Control"); }
};
class Derived : public Base {
public:
    Derived() { RegisterType(this, TypeId::Component, "Component"); }
};
class Other : public TmyObject {};

class TypeRegistryTest : public ::testing::Test {
protected:
    void SetUp() override {
        DeleteTypeRegistry();
        CreateTypeRegistry();
    }
    void TearDown() override { DeleteTypeRegistry(); }
};

TEST_F(TypeRegistryTest, EachConstructorRegistersItsOwnClass) {
    const Derived derived;
    const Base base;
    const TmyObject object;
    ASSERT_NE(FindType(&derived), nullptr);
    EXPECT_STREQ(FindType(&derived)->name, "Component");
    EXPECT_EQ(FindType(&derived)->typeId, 3u);
    ASSERT_NE(FindType(&base), nullptr);
    EXPECT_STREQ(FindType(&base)->name, "Control");
    EXPECT_EQ(FindType(&base)->typeId, 1u);
    ASSERT_NE(FindType(&object), nullptr);
    EXPECT_STREQ(FindType(&object)->name, "Object");
    EXPECT_EQ(FindType(&object)->typeId, 36u);
}

TEST_F(TypeRegistryTest, TheFirstRecordOfAClassStays) {
    const Base base;
    RegisterType(&base, TypeId::Label, "Label");
    EXPECT_STREQ(FindType(&base)->name, "Control");
    EXPECT_EQ(DeleteTypeRegistry().count, 2u); // and the root class
}

TEST_F(TypeRegistryTest, AClassWithoutANumberHasNoRecord) {
    const Other other;
    EXPECT_EQ(FindType(&other), nullptr);
    EXPECT_EQ(FindType(nullptr), nullptr);
}

TEST_F(TypeRegistryTest, DoesNothingWithoutARegistry) {
    DeleteTypeRegistry();
    const Base base;
    EXPECT_EQ(FindType(&base), nullptr);
    const TypeRegistryStatistics none = DeleteTypeRegistry();
    EXPECT_EQ(none.count, 0u);
    EXPECT_EQ(none.empty, 0u);
    EXPECT_EQ(none.depth, 0u);
}

TEST(TypeId, NumbersAreTheAssignedOnes) {
    EXPECT_EQ(static_cast<unsigned>(TypeId::Control), 1u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Component), 3u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Panel), 4u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Button), 5u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::ScrollBar), 6u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Edit), 7u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::ListBox), 9u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::ComboBox), 10u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::IntEdit), 14u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Label), 19u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Slider), 22u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::UpDown), 27u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::HoverMonitor), 33u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Application), 34u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Object), 36u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Btn), 38u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Btn2), 39u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::LightLabel), 40u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::MsgBox), 44u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::FloatSel), 46u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::FloatSel2), 47u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::FloatEdit), 52u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Profiler), 65u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Registry), 67u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::Buffer), 71u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::List), 74u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::TimeCounter), 76u);
    EXPECT_EQ(static_cast<unsigned>(TypeId::LightPanel), 92u);
}

} // namespace
} // namespace orva::toolkit
