/// An instance whose host uses its squelch.
#pragma once

#include "tests/plugin/PluginFixture.h"

#include <cstring>
#include <span>
#include <vector>

namespace orva::test {

/// The parameter is the rate of the input: 48000 Hz from the wave input, 64000 Hz from the receiver.
class SquelchFixture : public PluginFixture, public testing::WithParamInterface<int> {
protected:
    static int Rate() { return GetParam(); }

    void StartAtRate() {
        if (Rate() == 48000) {
            StartWithWaveInput();
        } else {
            StartWithReceiver();
        }
    }
    void SetUpType(std::uint32_t type, const plugin::SquelchValues& values) {
        plugin::SquelchValues copy = values;
        Notify(2817, type, sizeof copy, &copy);
    }
    /// Lets the host scan, and tunes.
    void Scan() {
        Notify(3840, 1);
        Notify(2048, 155000000);
    }
    static plugin::SquelchValues ValuesOf(const FakeHost::Call& call) {
        plugin::SquelchValues values{};
        EXPECT_EQ(call.size, sizeof values);
        std::memcpy(&values, call.bytes.data(), sizeof values);
        return values;
    }
    /// Blocks until the first answer, that of the answer included; 0 without one.
    int BlocksToAnswer(std::span<const std::int16_t> signal, std::size_t blockSize = kInputBlock) {
        int blocks = 0;
        for (std::size_t i = 0; i + blockSize <= signal.size(); i += blockSize) {
            ++blocks;
            Plugin().ProcessData(signal.data() + i, static_cast<std::uint32_t>(blockSize));
            waveOut.FinishAllBlocks();
            if (!host.Of(2818).empty()) {
                return blocks;
            }
        }
        return 0;
    }
    /// The one answer to a whole signal.
    FakeHost::Call Answer(std::span<const std::int16_t> signal) {
        host.Clear();
        Process(signal);
        const auto answers = host.Of(2818);
        EXPECT_EQ(answers.size(), 1U);
        return answers.empty() ? FakeHost::Call{} : answers[0];
    }
};

} // namespace orva::test
