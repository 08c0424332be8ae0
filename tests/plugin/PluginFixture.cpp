#include "tests/plugin/PluginFixture.h"

#include "toolkit/TmyMsgBox.h"
#include "toolkit/Tmy_Btn2.h"

#include <algorithm>

namespace orva::test {

namespace {

PluginFixture* fixture = nullptr;

} // namespace

PluginFixture::PluginFixture()
    : platform{&waveOut.Platform(),
               &waveIn.Platform(),
               &card.Platform(),
               &audio::SystemFiles(),
               FakeReceiverLibrary::Platform(),
               &PluginFixture::Ask},
      entries({&PluginFixture::MakeInstance, &PluginFixture::Pump, &PluginFixture::PostDeferredStart}) {
    fixture = this;
}

PluginFixture::~PluginFixture() {
    host.onCall = nullptr;
    if (IsRunning()) {
        Close();
    }
    Pump(); // nothing of this test may reach the next one
    fixture = nullptr;
}

plugin::IPluginInstance* PluginFixture::MakeInstance(std::uint32_t hostHandle,
                                                     plugin::ReceiverRecord* given) {
    fixture->instance = new plugin::COrvaPlugin(hostHandle, given, fixture->platform);
    fixture->window = fixture->instance->GetWindowHandle();
    return fixture->instance;
}

void PluginFixture::PostDeferredStart(plugin::WindowHandle target) {
    PostMessageA(target, plugin::kDeferredStartMessage, 0, 0);
}

int PluginFixture::TellError(toolkit::TmyMsgBox& box, const char* text, const char* title) {
    EXPECT_STREQ(title, "ORVA Error");
    EXPECT_STREQ(box.Button(0)->GetText().Text(), "OK");
    EXPECT_EQ(box.GetKey(VK_RETURN), 0) << "the default";
    fixture->errors.push_back(std::string(title) + ": " + text);
    if (fixture->onError) {
        fixture->onError();
    }
    return 0;
}

int PluginFixture::Ask(toolkit::TmyMsgBox& box, const char* text, const char* title) {
    EXPECT_EQ(box.GetParent()->Window(), fixture->window);
    if (box.GetButtonCount() == 1) {
        return TellError(box, text, title);
    }
    EXPECT_EQ(box.GetButtonCount(), 2);
    EXPECT_STREQ(box.Button(0)->GetText().Text(), "Yes");
    EXPECT_STREQ(box.Button(1)->GetText().Text(), "No");
    EXPECT_EQ(box.GetKey(VK_RETURN), 0) << "the default";
    fixture->questions.push_back(std::string(title) + ": " + text);
    if (fixture->onQuestion) {
        fixture->onQuestion();
    }
    return fixture->button;
}

void PluginFixture::StartWithWaveInput() {
    record.SetText(44, "OTHER receiver", 32);
    Start(record.Record());
    Pump();
    host.Clear();
    log.Clear();
}

void PluginFixture::StartWithReceiver() {
    library.isPresent = true;
    record.SetText(44, "K7USB receiver", 32);
    Start(record.Record());
    Pump();
    host.Clear();
    log.Clear();
}

void PluginFixture::Start(plugin::ReceiverRecord* given, std::uint32_t handle) {
    const std::uint32_t started = entries.Start(handle, given, FakeHost::Callback());
    ASSERT_NE(instance, nullptr);
    ASSERT_NE(window, nullptr) << "is there a display?";
    ASSERT_EQ(started, Address32(window));
}

void PluginFixture::Pump() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

void PluginFixture::Process(std::span<const std::int16_t> samples, std::uint32_t blockSize) {
    for (std::size_t begin = 0; begin + blockSize <= samples.size(); begin += blockSize) {
        Plugin().ProcessData(samples.data() + begin, blockSize);
        waveOut.FinishAllBlocks();
    }
}

std::vector<std::int16_t> PluginFixture::Played() const {
    std::vector<std::int16_t> samples;
    for (const FakeWaveOut::Block& block : waveOut.played) {
        samples.insert(samples.end(), block.samples.begin(), block.samples.end());
    }
    return samples;
}

} // namespace orva::test
