#include "plugin/HostNotification.h"

#include <array>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace orva::plugin {

namespace {

/// Writes down what it is told to do.
class RecordedCommands : public IHostCommands {
public:
    void ClearSavedStreamValue() override { Add("ClearSavedStreamValue"); }
    void SetPower(bool isOn) override { Add("SetPower", isOn ? 1 : 0); }
    void SetReceiverFrequency(std::uint32_t hertz) override { Add("SetReceiverFrequency", hertz); }
    bool IsInHostModeCall() const override { return isInHostModeCall; }
    void SetDemodulationMode(std::int32_t mode) override { Add("SetDemodulationMode", mode); }
    void SetSquelchSetup(std::uint32_t type, const SquelchValues* given) override {
        Add("SetSquelchSetup", type);
        values.clear();
        if (given != nullptr) {
            values.push_back(*given);
        }
    }
    void SetHostSquelch(std::uint32_t closed) override { Add("SetHostSquelch", closed); }
    void SetVolume(std::int32_t volume) override { Add("SetVolume", volume); }
    void SetMute(std::int32_t isMuted) override { Add("SetMute", isMuted); }
    void SetScanner(std::uint32_t isOn) override { Add("SetScanner", isOn); }

    std::vector<std::string> done;
    std::vector<SquelchValues> values; ///< none or one
    bool isInHostModeCall = false;

private:
    void Add(std::string what) { done.push_back(std::move(what)); }
    template <class Number>
    void Add(const std::string& what, Number value) {
        done.push_back(what + ' ' + std::to_string(value));
    }
};

using Done = std::vector<std::string>;

Done Perform(std::int32_t code, std::uint32_t param, std::uint32_t size = 0, const void* data = nullptr) {
    RecordedCommands commands;
    HostNotification{code, param, size, data}.Perform(commands);
    return commands.done;
}

TEST(HostNotification, PerformsEveryCodeOfTheHost) {
    EXPECT_EQ(Perform(0, 5), Done{"ClearSavedStreamValue"});
    EXPECT_EQ(Perform(256, 0), Done{"SetPower 0"});
    EXPECT_EQ(Perform(256, 1), Done{"SetPower 1"});
    EXPECT_EQ(Perform(256, 0x80000000U), Done{"SetPower 1"});
    EXPECT_EQ(Perform(2048, 4000000000U), Done{"SetReceiverFrequency 4000000000"});
    EXPECT_EQ(Perform(2304, 19), Done{"SetDemodulationMode 1"});
    EXPECT_EQ(Perform(2304, 2), Done{"SetDemodulationMode 2"});
    EXPECT_EQ(Perform(2817, 512), Done{"SetSquelchSetup 512"});
    EXPECT_EQ(Perform(2818, 1), Done{"SetHostSquelch 1"});
    EXPECT_EQ(Perform(2818, 0), Done{"SetHostSquelch 0"});
    EXPECT_EQ(Perform(3584, 31), Done{"SetVolume 31"});
    EXPECT_EQ(Perform(3585, 0), Done{"SetMute 0"});
    EXPECT_EQ(Perform(3585, 7), Done{"SetMute 1"});
    EXPECT_EQ(Perform(3840, 1), Done{"SetScanner 1"});
}

TEST(HostNotification, DoesNothingForAnyOtherCode) {
    const std::set<std::int32_t> known = {0, 256, 2048, 2304, 2817, 2818, 3584, 3585, 3840};
    for (std::int32_t code = -1000; code < 70000; ++code) {
        ASSERT_EQ(Perform(code, 19).size(), known.contains(code) ? 1U : 0U) << code;
    }
    EXPECT_EQ(Perform(INT32_MIN, 19), Done{});
    EXPECT_EQ(Perform(INT32_MAX, 19), Done{});
}

TEST(HostNotification, SelectsAutoByBothModesInEitherOrder) {
    const std::array<std::uint32_t, 2> rising = {2, 19};
    const std::array<std::uint32_t, 2> falling = {19, 2};
    for (const std::uint32_t param : {0U, 2U, 19U, 77U}) {
        EXPECT_EQ(Perform(2304, param, 8, rising.data()), Done{"SetDemodulationMode 0"});
        EXPECT_EQ(Perform(2304, param, 8, falling.data()), Done{"SetDemodulationMode 0"});
    }
}

TEST(HostNotification, FallsThroughToTheParamWithAnyOtherList) {
    for (const auto& list : {std::array{2U, 2U}, {19U, 19U}, {0U, 19U}, {2U, 0U}, {3U, 19U}}) {
        EXPECT_EQ(Perform(2304, 19, 8, list.data()), Done{"SetDemodulationMode 1"});
        EXPECT_EQ(Perform(2304, 2, 8, list.data()), Done{"SetDemodulationMode 2"});
        EXPECT_EQ(Perform(2304, 3, 8, list.data()), Done{});
    }
    const std::array<std::uint32_t, 2> both = {2, 19};
    for (const std::uint32_t size : {0U, 4U, 7U, 9U, 12U}) {
        EXPECT_EQ(Perform(2304, 19, size, both.data()), Done{"SetDemodulationMode 1"}) << size;
    }
    EXPECT_EQ(Perform(2304, 19, 8, nullptr), Done{"SetDemodulationMode 1"});
}

TEST(HostNotification, IgnoresAModeThatEchoesTheInstancesOwn) {
    const std::array<std::uint32_t, 2> both = {2, 19};
    RecordedCommands commands;
    commands.isInHostModeCall = true;
    HostNotification{2304, 19, 0, nullptr}.Perform(commands);
    HostNotification{2304, 2, 8, both.data()}.Perform(commands);
    EXPECT_EQ(commands.done, Done{});
    HostNotification{3584, 5, 0, nullptr}.Perform(commands);
    EXPECT_EQ(commands.done, Done{"SetVolume 5"}) << "other codes pass";
}

TEST(HostNotification, ReadsSquelchValuesFromUnalignedData) {
    const std::array<std::int32_t, 7> sent = {11, -22, 100000, 1, 2, 33, -754};
    std::array<std::uint8_t, 29> bytes{};
    std::memcpy(bytes.data() + 1, sent.data(), sizeof(sent));
    // A host that states no size still means its data.
    for (const std::uint32_t size : {28U, 29U, 0U}) {
        RecordedCommands commands;
        HostNotification{2817, 257, size, bytes.data() + 1}.Perform(commands);
        EXPECT_EQ(commands.done, Done{"SetSquelchSetup 257"});
        ASSERT_EQ(commands.values.size(), 1U) << size;
        EXPECT_EQ(commands.values[0].level, 11);
        EXPECT_EQ(commands.values[0].noise, -22);
        EXPECT_EQ(commands.values[0].ctcss, 100000);
        EXPECT_EQ(commands.values[0].voice, 33);
        EXPECT_EQ(commands.values[0].dcs, -754);
    }
}

TEST(HostNotification, SetsTheSquelchTypeAloneWithoutWholeValues) {
    const std::array<std::uint8_t, 27> tooShort{};
    for (std::uint32_t size = 1; size < 28; ++size) {
        RecordedCommands commands;
        HostNotification{2817, 4, size, tooShort.data()}.Perform(commands);
        EXPECT_EQ(commands.done, Done{"SetSquelchSetup 4"});
        EXPECT_TRUE(commands.values.empty()) << size;
    }
    RecordedCommands commands;
    HostNotification{2817, 4, 28, nullptr}.Perform(commands);
    EXPECT_TRUE(commands.values.empty());
}

} // namespace

} // namespace orva::plugin
