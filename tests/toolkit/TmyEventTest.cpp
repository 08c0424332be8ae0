#include "toolkit/TmyEvent.h"

#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

TmyControl* Sender() {
    static int place;
    return reinterpret_cast<TmyControl*>(&place);
}

struct First {
    virtual ~First() = default;
    int padding = 1;
};
struct Second {
    virtual ~Second() = default;
    void OnEvent(TmyControl* from, int value) {
        sender = from;
        sum += value;
    }
    virtual void OnVirtual(TmyControl* /*from*/, int value) { sum -= value; }
    TmyControl* sender = nullptr;
    int sum = 0;
};
struct Owner : First, Second {
    void OnVirtual(TmyControl* /*from*/, int value) override { sum += 100 * value; }
    void OnFlag(TmyControl* /*from*/, bool& flag) { flag = !flag; }
};

TEST(TmyEvent, DoesNothingUnbound) {
    const TmyEvent<int> event;
    EXPECT_FALSE(event.IsBound());
    event.Fire(Sender(), 5);
}

TEST(TmyEvent, DoesNothingWithoutATarget) {
    TmyEvent<int> event;
    event.Bind<&Second::OnEvent>(static_cast<Second*>(nullptr));
    EXPECT_FALSE(event.IsBound());
    event.Fire(Sender(), 5);
}

TEST(TmyEvent, CallsTheTargetWithTheSenderFirst) {
    Second target;
    TmyEvent<int> event;
    event.Bind<&Second::OnEvent>(&target);
    EXPECT_TRUE(event.IsBound());
    event.Fire(Sender(), 5);
    event.Fire(Sender(), 7);
    EXPECT_EQ(target.sum, 12);
    EXPECT_EQ(target.sender, Sender());
}

TEST(TmyEvent, AdjustsTheTargetToTheFunctionsClass) {
    Owner owner;
    TmyEvent<int> event;
    event.Bind<&Owner::OnEvent>(&owner); // a member of its second base
    event.Fire(Sender(), 3);
    EXPECT_EQ(owner.sum, 3);
    EXPECT_EQ(owner.padding, 1);
    event.Bind<&Second::OnVirtual>(&owner);
    event.Fire(Sender(), 2);
    EXPECT_EQ(owner.sum, 203);
}

TEST(TmyEvent, PassesReferencesThrough) {
    Owner owner;
    TmyEvent<bool&> event;
    event.Bind<&Owner::OnFlag>(&owner);
    bool flag = true;
    event.Fire(Sender(), flag);
    EXPECT_FALSE(flag);
}

TEST(TmyEvent, ACopyCallsTheSameTarget) {
    Second target;
    TmyEvent<int> event;
    event.Bind<&Second::OnEvent>(&target);
    const TmyEvent<int> copy = event;
    event.Clear();
    EXPECT_FALSE(event.IsBound());
    event.Fire(Sender(), 1);
    copy.Fire(Sender(), 2);
    EXPECT_EQ(target.sum, 2);
}

} // namespace
} // namespace orva::toolkit
