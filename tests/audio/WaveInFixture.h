/// A wave input on a device for tests.
#pragma once

#include "tests/audio/CtbWaveInInspector.h"
#include "tests/audio/FakeWaveIn.h"
#include "toolkit/TmyApplication.h"

#include <functional>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {

/// Processes buffers as the plug-in does, and notes what was in them.
class RecordingOwner : public audio::IWaveInputOwner {
public:
    explicit RecordingOwner(std::unique_ptr<audio::CtbWaveIn>& waveInput) : input(waveInput) {}

    void OnWaveInBuffer(std::int32_t index) override {
        const dsp::CtbSampleBlock* block = input->GetBlock(index);
        ASSERT_NE(block, nullptr);
        if (keeps) {
            buffers.push_back(
                {index, std::vector<std::int16_t>(block->Data(), block->Data() + block->Used())});
        }
        if (onBuffer) {
            onBuffer();
        }
        if (input != nullptr && requeues) {
            input->Requeue(index);
        }
    }

    struct Buffer {
        std::int32_t index;
        std::vector<std::int16_t> samples;
    };

    std::vector<Buffer> buffers;
    bool keeps = true; ///< off for tests that count allocations
    bool requeues = true;
    std::function<void()> onBuffer; ///< while a buffer is processed

private:
    std::unique_ptr<audio::CtbWaveIn>& input;
};

/// Four small buffers, on device 0.
class WaveInFixture : public testing::Test {
protected:
    static constexpr std::uint32_t kBuffers = 4;
    static constexpr std::uint32_t kSamples = 6;
    static constexpr DWORD kFull = 2 * kSamples; ///< [bytes]

    WaveInFixture() {
        input = std::make_unique<audio::CtbWaveIn>(kBuffers, kSamples, device.Platform());
        input->SetOwner(&owner);
        input->SetDevice(0);
        log.Clear();
    }

    void SetUp() override { ASSERT_NE(Inside().MessageWindow()->Window(), nullptr) << "is there a display?"; }

    [[nodiscard]] audio::CtbWaveInInspector Inside() const { return {*input}; }

    static void Drain() { toolkit::TmyApplication::ProcessPendingMessages(); }

    /// As an owner does it who changes the device.
    void StopAndClose() {
        input->Stop();
        Drain();
        input->Close();
        Drain();
    }

    CallLog log;
    FakeWaveIn device{log};
    RecordingOwner owner{input};
    std::unique_ptr<audio::CtbWaveIn> input; ///< destroyed first
};

} // namespace orva::test
