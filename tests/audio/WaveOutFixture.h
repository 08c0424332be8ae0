/// A wave output on a device for tests.
#pragma once

#include "tests/audio/BlockPool.h"
#include "tests/audio/CtbWaveOutInspector.h"
#include "tests/audio/FakeVirtualCard.h"
#include "tests/audio/FakeWaveOut.h"
#include "toolkit/TmyApplication.h"

#include <memory>

#include <gtest/gtest.h>

namespace orva::test {

/// As the plug-in has it: ten blocks, three of them gathered before the first is played. The blocks are
/// small.
class WaveOutFixture : public testing::Test {
protected:
    static constexpr std::uint32_t kRate = 16000;
    static constexpr std::size_t kPoolBlocks = 10;
    static constexpr std::uint32_t kBlockSamples = 8;
    static constexpr std::uint32_t kGathered = 3;
    static constexpr std::uint32_t kMostAtDevice = 6;

    WaveOutFixture() {
        output = std::make_unique<audio::CtbWaveOut>(kRate, device.Platform(), card.Platform());
        output->SetDataSource(&pool);
        output->SetPrebufferBlocks(kGathered);
    }

    void SetUp() override { ASSERT_NE(Inside().MessageWindow()->Window(), nullptr) << "is there a display?"; }

    [[nodiscard]] audio::CtbWaveOutInspector Inside() const { return {*output}; }

    /// Writes `count` free blocks, or as many as there are.
    void WriteBlocks(std::size_t count, std::int16_t value = 1) {
        for (std::size_t i = 0; i < count; ++i) {
            if (dsp::CtbSampleBlock* block = pool.Take(value)) {
                output->Write(block);
            }
        }
    }

    /// Starts, and goes on to where blocks are sent at once.
    void StartFlowing() {
        ASSERT_EQ(output->Start(), 0U);
        WriteBlocks(kGathered);
        device.FinishAllBlocks();
        Forget();
    }

    /// Forgets what the device saw.
    void Forget() {
        log.Clear();
        device.played.clear();
        device.prepared.clear();
        device.written.clear();
        device.mostInside = 0;
        pool.returned.clear();
    }

    static void Drain() { toolkit::TmyApplication::ProcessPendingMessages(); }

    /// As an owner does it who changes the device.
    void StopAndClose() {
        output->Stop();
        Drain();
        output->Close();
        Drain();
    }

    CallLog log;
    FakeWaveOut device{log};
    FakeVirtualCard card{log};
    BlockPool pool{kPoolBlocks, kBlockSamples};
    std::unique_ptr<audio::CtbWaveOut> output; ///< destroyed first
};

} // namespace orva::test
