/// An instance of the plug-in between a host, devices and a receiver library for tests.
#pragma once

#include "plugin/EntryPoints.h"
#include "plugin/PluginPlatform.h"
#include "tests/audio/FakeVirtualCard.h"
#include "tests/audio/FakeWaveIn.h"
#include "tests/audio/FakeWaveOut.h"
#include "tests/plugin/COrvaPluginInspector.h"
#include "tests/plugin/FakeHost.h"
#include "tests/plugin/FakeReceiverLibrary.h"
#include "tests/plugin/RecordBuilder.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {

/// Starts instances by the entry points, as a host does. Instances that a test leaves open are closed at its
/// end.
class PluginFixture : public testing::Test {
protected:
    static constexpr std::uint32_t kHandle = 77;
    static constexpr std::uint32_t kInputBlock = 2400; ///< samples

    PluginFixture();
    ~PluginFixture() override;

    /// A record of another kind of receiver: samples come from the wave input.
    void StartWithWaveInput();
    /// A record of the kind that has a library, and the library.
    void StartWithReceiver();
    /// Starts, without running the deferred start.
    void Start(plugin::ReceiverRecord* given, std::uint32_t handle = kHandle);
    /// Dispatches what waits in the message queue.
    static void Pump();

    void Notify(std::int32_t code, std::uint32_t param, std::uint32_t size = 0, void* data = nullptr) {
        entries.Notify(kHandle, code, param, size, data);
    }
    void Close() { Notify(16384, 0); }
    [[nodiscard]] bool IsRunning() const { return entries.Instances().FindByHandle(kHandle) != nullptr; }
    /// The instance was deleted.
    [[nodiscard]] bool IsDestroyed() const { return IsWindow(window) == FALSE; }

    [[nodiscard]] plugin::COrvaPlugin& Plugin() const { return *instance; }
    [[nodiscard]] plugin::COrvaPluginInspector Inside() const { return {*instance}; }

    /// Takes samples through the stages a block at a time; the output device is done with everything after
    /// each.
    void Process(std::span<const std::int16_t> samples, std::uint32_t blockSize = kInputBlock);
    /// All that reached the output device, one block behind the other.
    [[nodiscard]] std::vector<std::int16_t> Played() const;

    CallLog log;
    FakeWaveOut waveOut{log};
    FakeWaveIn waveIn{log};
    FakeVirtualCard card{log};
    FakeReceiverLibrary library{log};
    FakeHost host;
    RecordBuilder record{0};
    plugin::PluginPlatform platform;
    plugin::EntryPoints entries;
    plugin::COrvaPlugin* instance = nullptr; ///< the last one started
    HWND window = nullptr;                   ///< its window
    std::vector<std::string> errors;         ///< boxes shown: title, colon, text
    std::function<void()> onError;           ///< while one is open
    std::vector<std::string> questions;      ///< boxes that asked something: title, colon, text
    std::function<void()> onQuestion;        ///< while one is open
    int button = 1;                          ///< the answer: index of the button

private:
    static plugin::IPluginInstance* MakeInstance(std::uint32_t hostHandle, plugin::ReceiverRecord* given);
    static void PostDeferredStart(plugin::WindowHandle target);
    static int TellError(toolkit::TmyMsgBox& box, const char* text, const char* title);
    static int Ask(toolkit::TmyMsgBox& box, const char* text, const char* title);
};

} // namespace orva::test
