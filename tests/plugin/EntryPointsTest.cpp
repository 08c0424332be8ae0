#include "plugin/EntryPoints.h"

#include <algorithm>
#include <functional>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace orva::plugin {

namespace {

using Steps = std::vector<std::string>;

WindowHandle Window(std::uintptr_t number) {
    return reinterpret_cast<WindowHandle>(number); // NOLINT(performance-no-int-to-ptr)
}

/// Everything that happened, in order, and what is to happen at each step. One per test.
struct Stage {
    Steps steps;
    std::map<std::string, std::function<void()>> reactions; ///< run when the step of that name comes
    std::map<std::uint32_t, ReceiverRecord*> records;       ///< that instances were made with
    int holds = 0;                                          ///< of the library
    int living = 0;                                         ///< instances whose memory is there
    bool makesNothing = false;

    void Take(const std::string& step) {
        steps.push_back(step);
        if (const auto reaction = reactions.find(step); reaction != reactions.end()) {
            reaction->second();
        }
    }

    /// Whatever happens at `step` first happens then, and not again.
    void Once(const std::string& step, std::function<void()> reaction) {
        reactions[step] = [this, step, once = std::move(reaction)] {
            const auto kept = once;
            reactions.erase(step);
            kept();
        };
    }
};

Stage* stage = nullptr;

std::string Name(const char* what, std::uint32_t handle) {
    return std::string(what) + ' ' + std::to_string(handle);
}

std::uint32_t ORVA_HOST_CALL AnswerHost(WindowHandle window, std::int32_t code, std::uint32_t param,
                                        std::uint32_t size, void* data) {
    const auto handle = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window) - 1000);
    std::string step = "host " + std::to_string(code) + " from " + std::to_string(handle);
    if (code == 16384) {
        EXPECT_EQ(param, 0U);
        step += ": " + std::string(static_cast<const char*>(data), size);
    }
    stage->Take(step);
    return 0;
}

/// An instance that keeps the contract on destruction: its memory goes when none of its functions runs.
class RecordedInstance final : public IPluginInstance {
public:
    explicit RecordedInstance(std::uint32_t handle) : hostHandle(handle) { ++stage->living; }
    ~RecordedInstance() { --stage->living; }

    WindowHandle GetWindowHandle() const override {
        stage->Take(Name("window", hostHandle));
        return Window(1000 + hostHandle);
    }
    void SetHostCallback(ZemHostCallback callback) override {
        Run("callback", [&] { hostCallback = callback; });
    }
    void AnnounceCapabilities() override {
        Run("announce", [&] { CallHost(16390); });
    }
    void Notify(std::int32_t code, std::uint32_t param, std::uint32_t size, void* data) override {
        Run("notify", [&] {
            stage->Take("code " + std::to_string(code) + ' ' + std::to_string(param) + ' ' +
                        std::to_string(size) + (data != nullptr ? " data" : ""));
            CallHost(code + 10000);
        });
    }
    bool BeginClosing() override {
        const bool isFirst = !isClosing;
        isClosing = true;
        return isFirst;
    }
    void WithdrawCapabilities() override {
        Run("withdraw", [&] { CallHost(16390); });
    }
    void Destroy() override {
        hostCallback = nullptr;
        stage->Take(Name("destroy", hostHandle));
        isDestroyed = true;
        if (depth == 0) {
            delete this;
        }
    }

private:
    template <class Body>
    void Run(const char* what, Body body) {
        struct Depth {
            RecordedInstance& instance;
            ~Depth() { instance.Leave(); }
        };
        ++depth;
        const Depth leave{*this};
        stage->Take(Name(what, hostHandle));
        body();
    }

    /// Never inline: where an exception passes, GCC 12 drops the store to `depth` when it sees the deletion.
    [[gnu::noinline]] void Leave() {
        if (--depth == 0 && isDestroyed) {
            delete this;
        }
    }

    void CallHost(std::int32_t code) {
        if (hostCallback != nullptr) {
            hostCallback(Window(1000 + hostHandle), code, 0, 0, nullptr);
        }
    }

    std::uint32_t hostHandle;
    ZemHostCallback hostCallback = nullptr;
    int depth = 0;
    bool isClosing = false;
    bool isDestroyed = false;
};

class EntryPointsTest : public testing::Test {
protected:
    EntryPointsTest() { stage = &theStage; }
    ~EntryPointsTest() override {
        EXPECT_EQ(theStage.living, 0) << "an instance was left behind";
        EXPECT_EQ(theStage.holds, 0) << "the library can never be unloaded";
        stage = nullptr;
    }

    static EntryCalls Calls() {
        return {[](std::uint32_t handle, ReceiverRecord* record) -> IPluginInstance* {
                    stage->records[handle] = record;
                    stage->Take(Name("make", handle));
                    return stage->makesNothing ? nullptr : new RecordedInstance(handle);
                },
                [] { stage->Take("messages"); },
                [](WindowHandle window) {
                    stage->Take("post to " + std::to_string(reinterpret_cast<std::uintptr_t>(window)));
                },
                [] { ++stage->holds; }, [] { --stage->holds; }};
    }

    std::uint32_t Start(std::uint32_t handle) { return entryPoints.Start(handle, nullptr, AnswerHost); }
    void Notify(std::uint32_t handle, std::int32_t code, std::uint32_t param = 0) {
        entryPoints.Notify(handle, code, param, 0, nullptr);
    }
    void Close(std::uint32_t handle) { Notify(handle, 16384); }

    /// The steps since the last call.
    Steps Taken() { return std::exchange(theStage.steps, {}); }
    int Times(const std::string& step) const {
        return static_cast<int>(std::ranges::count(theStage.steps, step));
    }

    Stage theStage;
    EntryPoints entryPoints{Calls()};
};

TEST(EntryPointsInit, CopiesTheNameAndFillsTheRest) {
    std::string buffer(10, '#');
    EXPECT_EQ(EntryPoints::Init(buffer.data(), 8), 1153U);
    EXPECT_EQ(buffer, std::string("ORVA\0\0\0\0##", 10));
}

TEST(EntryPointsInit, CopiesNoMoreThanFits) {
    const char* const expected[] = {"######", "O#####", "OR####", "ORV###", "ORVA##"};
    for (std::int32_t size = 0; size <= 4; ++size) {
        std::string buffer(6, '#');
        EXPECT_EQ(EntryPoints::Init(buffer.data(), size), 1153U);
        EXPECT_EQ(buffer, expected[size]);
    }
    std::string buffer(6, '#');
    EXPECT_EQ(EntryPoints::Init(buffer.data(), -1), 1153U);
    EXPECT_EQ(buffer, "######");
    EXPECT_EQ(EntryPoints::Init(nullptr, 8), 1153U);
}

TEST_F(EntryPointsTest, StartsInOrder) {
    ReceiverRecord record{};
    EXPECT_EQ(entryPoints.Start(5, &record, AnswerHost), 1005U);
    EXPECT_EQ(Taken(), (Steps{"make 5", "window 5", "callback 5", "announce 5", "host 16390 from 5",
                              "messages", "post to 1005"}));
    EXPECT_EQ(theStage.records[5], &record);
    EXPECT_EQ(entryPoints.Instances().Count(), 1U);
    EXPECT_EQ(entryPoints.Instances().FindByHandle(5)->window, Window(1005));
    EXPECT_EQ(entryPoints.Instances().FindByHandle(5)->hostCallback, &AnswerHost);
    Close(5);
}

TEST_F(EntryPointsTest, ClosesInOrder) {
    Start(5);
    Taken();
    Close(5);
    EXPECT_EQ(Taken(), (Steps{"withdraw 5", "host 16390 from 5", "destroy 5", "host 16384 from 5: ORVA"}));
    EXPECT_EQ(entryPoints.Instances().Count(), 0U);
}

TEST_F(EntryPointsTest, RefusesAHandleInTheListAndChangesNothing) {
    Start(5);
    const PluginHandleEntry* entry = entryPoints.Instances().FindByHandle(5);
    Taken();
    EXPECT_EQ(Start(5), 0xFFFFFFFFU);
    EXPECT_EQ(Taken(), Steps{});
    EXPECT_EQ(entryPoints.Instances().Count(), 1U);
    EXPECT_EQ(entryPoints.Instances().FindByHandle(5), entry);
    Close(5);
}

TEST_F(EntryPointsTest, KeepsInstancesApart) {
    Start(1);
    Start(0);
    Start(0xFFFFFFFF);
    Taken();
    entryPoints.Notify(0, 3584, 12, 4, this);
    EXPECT_EQ(Taken(), (Steps{"notify 0", "code 3584 12 4 data", "host 13584 from 0"}));
    Close(0);
    EXPECT_EQ(entryPoints.Instances().Count(), 2U);
    Taken();
    Notify(0, 3584, 12);
    EXPECT_EQ(Taken(), Steps{}) << "its handle is unknown again";
    Notify(1, 3584, 12);
    EXPECT_EQ(Taken().size(), 3U);
    EXPECT_EQ(Start(0), 1000U) << "and free again";
    for (const std::uint32_t handle : {0U, 1U, 0xFFFFFFFFU}) {
        Close(handle);
    }
}

TEST_F(EntryPointsTest, IgnoresCodesForUnknownHandles) {
    Start(5);
    Taken();
    for (const std::int32_t code : {0, 256, 2048, 2304, 2817, 2818, 3584, 3585, 3840, 16384, 1, -1}) {
        Notify(6, code, 1);
    }
    EXPECT_EQ(Taken(), Steps{});
    Close(5);
}

TEST_F(EntryPointsTest, WorksWithoutAHostCallback) {
    EXPECT_EQ(entryPoints.Start(5, nullptr, nullptr), 1005U);
    Taken();
    Close(5);
    EXPECT_EQ(Taken(), (Steps{"withdraw 5", "destroy 5"}));
}

TEST_F(EntryPointsTest, RefusesToStartWhenNoInstanceCanBeMade) {
    theStage.makesNothing = true;
    EXPECT_EQ(Start(5), 0xFFFFFFFFU);
    theStage.makesNothing = false;
    theStage.Once("make 5", [] { throw std::bad_alloc(); });
    EXPECT_EQ(Start(5), 0xFFFFFFFFU);
    EXPECT_EQ(entryPoints.Instances().Count(), 0U);
    EXPECT_EQ(Start(5), 1005U) << "the handle is free";
    Close(5);
}

TEST_F(EntryPointsTest, DestroysAnInstanceThatCannotBeEntered) {
    theStage.Once("window 5", [] { throw std::runtime_error("no window"); });
    EXPECT_EQ(Start(5), 0xFFFFFFFFU);
    EXPECT_EQ(Taken(), (Steps{"make 5", "window 5", "destroy 5"}));
    EXPECT_EQ(entryPoints.Instances().Count(), 0U);
}

TEST_F(EntryPointsTest, CarriesOnWhenAStepThrows) {
    theStage.Once("announce 5", [] { throw std::bad_alloc(); });
    theStage.Once("messages", [] { throw 1; });
    EXPECT_EQ(Start(5), 1005U);
    EXPECT_EQ(Taken().back(), "post to 1005");
    theStage.Once("notify 5", [] { throw std::runtime_error("no"); });
    Notify(5, 3584);
    theStage.Once("withdraw 5", [] { throw std::bad_alloc(); });
    theStage.Once("host 16384 from 5: ORVA", [] { throw std::bad_alloc(); });
    Taken();
    Close(5);
    EXPECT_EQ(Taken(), (Steps{"withdraw 5", "destroy 5", "host 16384 from 5: ORVA"}));
    EXPECT_EQ(entryPoints.Instances().Count(), 0U);
}

TEST_F(EntryPointsTest, SurvivesACloseFromInsideTheAnnouncement) {
    theStage.Once("host 16390 from 5", [this] { Close(5); });
    EXPECT_EQ(Start(5), 0xFFFFFFFFU);
    EXPECT_EQ(Taken(), (Steps{"make 5", "window 5", "callback 5", "announce 5", "host 16390 from 5",
                              "withdraw 5", "host 16390 from 5", "destroy 5", "host 16384 from 5: ORVA"}))
        << "nothing is posted to a window that is gone";
    EXPECT_EQ(entryPoints.Instances().Count(), 0U);
}

TEST_F(EntryPointsTest, SurvivesACloseFromAMessageOfTheStart) {
    theStage.Once("messages", [this] { Close(5); });
    EXPECT_EQ(Start(5), 0xFFFFFFFFU);
    EXPECT_EQ(Times("post to 1005"), 0);
    EXPECT_EQ(Times("host 16384 from 5: ORVA"), 1);
}

TEST_F(EntryPointsTest, TellsARestartInsideAStartFromTheFirst) {
    std::uint32_t inner = 0;
    theStage.Once("messages", [&] {
        Close(5);
        inner = Start(5);
    });
    EXPECT_EQ(Start(5), 0xFFFFFFFFU) << "the first instance is gone";
    EXPECT_EQ(inner, 1005U) << "the second is there";
    EXPECT_EQ(Times("post to 1005"), 1);
    EXPECT_EQ(entryPoints.Instances().Count(), 1U);
    Close(5);
}

TEST_F(EntryPointsTest, RefusesAHandleWhoseInstanceIsBeingMade) {
    std::uint32_t inner = 0;
    theStage.Once("make 5", [&] { inner = Start(5); });
    EXPECT_EQ(Start(5), 1005U);
    EXPECT_EQ(inner, 0xFFFFFFFFU);
    EXPECT_EQ(entryPoints.Instances().Count(), 1U);
    Close(5);
}

TEST_F(EntryPointsTest, StartsAnotherInstanceFromInsideACallback) {
    theStage.Once("host 16390 from 5", [this] { EXPECT_EQ(Start(6), 1006U); });
    EXPECT_EQ(Start(5), 1005U);
    EXPECT_EQ(entryPoints.Instances().Count(), 2U);
    Close(6);
    Close(5);
}

TEST_F(EntryPointsTest, SurvivesACloseFromInsideEveryCode) {
    for (const std::int32_t code : {0, 256, 2048, 2304, 2817, 2818, 3584, 3585, 3840, 1}) {
        SCOPED_TRACE(code);
        Start(5);
        theStage.Once("host " + std::to_string(code + 10000) + " from 5", [this] { Close(5); });
        Taken();
        Notify(5, code);
        EXPECT_EQ(entryPoints.Instances().Count(), 0U);
        EXPECT_EQ(theStage.living, 0);
        EXPECT_EQ(Times("host 16384 from 5: ORVA"), 1);
        EXPECT_EQ(Times("destroy 5"), 1);
    }
}

TEST_F(EntryPointsTest, ClosesOnceWhenClosedAgainFromInsideAClose) {
    for (const std::string step :
         {"withdraw 5", "host 16390 from 5", "destroy 5", "host 16384 from 5: ORVA"}) {
        SCOPED_TRACE(step);
        Start(5);
        Taken();
        theStage.Once(step, [this] { Close(5); });
        Close(5);
        EXPECT_EQ(Taken(),
                  (Steps{"withdraw 5", "host 16390 from 5", "destroy 5", "host 16384 from 5: ORVA"}));
        EXPECT_EQ(entryPoints.Instances().Count(), 0U);
    }
}

TEST_F(EntryPointsTest, LetsCodesThroughUntilTheInstanceGoes) {
    Start(5);
    theStage.Once("host 16390 from 5", [this] { Notify(5, 3584, 1); });
    theStage.Once("destroy 5", [this] { Notify(5, 3584, 2); });
    theStage.Once("host 16384 from 5: ORVA", [this] { Notify(5, 3584, 3); });
    Taken();
    Close(5);
    EXPECT_EQ(Times("code 3584 1 0"), 1) << "the instance still lives while it withdraws";
    EXPECT_EQ(Times("code 3584 2 0"), 0);
    EXPECT_EQ(Times("code 3584 3 0"), 0);
}

TEST_F(EntryPointsTest, KeepsAHandleInUseUntilTheLastMessageIsAnswered) {
    Start(5);
    std::uint32_t answer = 0;
    theStage.Once("host 16384 from 5: ORVA", [&] { answer = Start(5); });
    Close(5);
    EXPECT_EQ(answer, 0xFFFFFFFFU);
    EXPECT_EQ(Start(5), 1005U);
    Close(5);
}

TEST_F(EntryPointsTest, SurvivesAHostThatCallsBackIntoEveryCallback) {
    // Each answer of the host sends another code, as deep as the host cares to go.
    int depth = 0;
    theStage.reactions["host 13584 from 5"] = [&] {
        if (++depth < 50) {
            Notify(5, 3584, static_cast<std::uint32_t>(depth));
        } else {
            Close(5);
        }
    };
    Start(5);
    Notify(5, 3584);
    EXPECT_EQ(depth, 50);
    EXPECT_EQ(theStage.living, 0);
    EXPECT_EQ(Times("destroy 5"), 1);
}

TEST_F(EntryPointsTest, StartsAndClosesAThousandTimes) {
    for (std::uint32_t i = 0; i < 1000; ++i) {
        ASSERT_EQ(Start(i), 1000 + i);
        if (i >= 16) {
            Close(i - 16);
        }
        ASSERT_EQ(entryPoints.Instances().Count(), std::min(i + 1, 16U));
    }
    for (std::uint32_t i = 984; i < 1000; ++i) {
        Close(i);
    }
    EXPECT_EQ(entryPoints.Instances().Count(), 0U);
}

} // namespace

} // namespace orva::plugin
