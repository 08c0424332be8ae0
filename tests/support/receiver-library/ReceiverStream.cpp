#include "tests/support/receiver-library/ReceiverStream.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace orva::test {

namespace {

/// A second of samples that nobody has read is as much as the receiver keeps.
constexpr std::size_t kMostWaiting = kReceiverRate * sizeof(std::int16_t);

/// At speed 0: samples on their way through the plug-in, 8 blocks of 2400. Its pool holds 10.
constexpr std::uint64_t kMostUnprocessed = 19200;

std::int16_t Negated(std::int16_t sample) {
    const int negated = -static_cast<int>(sample);
    return static_cast<std::int16_t>(std::min<int>(negated, std::numeric_limits<std::int16_t>::max()));
}

} // namespace

bool ReceiverStream::Start(std::function<void()> onSamples) {
    if (thread.joinable() || reader.Open(settings.recording) != audio::WaveFault::None ||
        reader.GetSampleRate() != kReceiverRate) {
        return false;
    }
    callback = std::move(onSamples);
    mirrorsOdd = false;
    isStopping = false;
    thread = std::thread([this] { Run(); });
    return true;
}

void ReceiverStream::Stop() {
    {
        const std::lock_guard guard(lock);
        isStopping = true;
    }
    changed.notify_all();
    if (thread.joinable()) {
        thread.join();
    }
    reader.Close();
    const std::lock_guard guard(lock);
    waiting.clear();
}

std::size_t ReceiverStream::Read(void* buffer, std::size_t bytes) {
    const std::lock_guard guard(lock);
    const std::size_t count = std::min(bytes, waiting.size());
    const auto end = waiting.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(waiting.begin(), end, static_cast<std::uint8_t*>(buffer));
    waiting.erase(waiting.begin(), end);
    deliveredBytes += count;
    return count;
}

void ReceiverStream::InvertSpectrum(std::int16_t* samples, std::size_t count) {
    if (settings.isInverted) {
        // Blocks have an even number of samples, so that each begins like the first.
        for (std::size_t i = 1; i < count; i += 2) {
            samples[i] = Negated(samples[i]);
        }
    }
    {
        const std::lock_guard guard(lock);
        processedSamples += count;
    }
    changed.notify_all();
}

std::uint64_t ReceiverStream::Delivered() const {
    const std::lock_guard guard(lock);
    return deliveredBytes / sizeof(std::int16_t);
}

std::uint64_t ReceiverStream::Processed() const {
    const std::lock_guard guard(lock);
    return processedSamples;
}

std::uint64_t ReceiverStream::Lost() const {
    const std::lock_guard guard(lock);
    return lostSamples;
}

void ReceiverStream::Run() {
    const Clock::time_point start = Clock::now();
    for (std::uint64_t chunk = 1; FillChunk() && WaitForTurn(start, chunk); ++chunk) {
        Offer();
        callback();
    }
}

/// Reads the next chunk. False if there is nothing more.
bool ReceiverStream::FillChunk() {
    next.resize(kChunk);
    std::size_t count = reader.Read(next.data(), kChunk);
    if (count == 0 && settings.end == ReceiverEnd::Loop) {
        reader.Close();
        if (reader.Open(settings.recording) == audio::WaveFault::None) {
            count = reader.Read(next.data(), kChunk);
        }
    }
    if (settings.end == ReceiverEnd::Silence) {
        std::fill(next.begin() + static_cast<std::ptrdiff_t>(count), next.end(), std::int16_t{0});
        count = kChunk;
    }
    next.resize(count);
    if (settings.isInverted) {
        Mirror();
    }
    return count != 0;
}

/// A real signal about a quarter of its rate is mirrored by changing every other sign.
void ReceiverStream::Mirror() {
    for (std::int16_t& sample : next) {
        if (std::exchange(mirrorsOdd, !mirrorsOdd)) {
            sample = Negated(sample);
        }
    }
}

/// Waits until it is time for a chunk. False if the stream is stopped meanwhile.
bool ReceiverStream::WaitForTurn(Clock::time_point start, std::uint64_t chunk) {
    std::unique_lock guard(lock);
    if (settings.speed == 0) {
        return WaitForProcessing(guard);
    }
    const double seconds = static_cast<double>(chunk * kChunk) / (kReceiverRate * settings.speed);
    const auto due =
        start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    return !changed.wait_until(guard, due, [this] { return isStopping; });
}

bool ReceiverStream::WaitForProcessing(std::unique_lock<std::mutex>& guard) {
    const auto mayGoOn = [this] {
        const std::uint64_t settled = processedSamples + forgivenSamples;
        return isStopping || deliveredBytes / sizeof(std::int16_t) <= settled + kMostUnprocessed;
    };
    if (!changed.wait_for(guard, std::chrono::duration<double>(settings.patience), mayGoOn)) {
        forgivenSamples = deliveredBytes / sizeof(std::int16_t) - processedSamples;
    }
    return !isStopping;
}

void ReceiverStream::Offer() {
    const std::lock_guard guard(lock);
    const std::size_t bytes = next.size() * sizeof(std::int16_t);
    if (waiting.size() + bytes > kMostWaiting) {
        lostSamples += next.size();
        return;
    }
    const auto* first = reinterpret_cast<const std::uint8_t*>(next.data());
    waiting.insert(waiting.end(), first, first + bytes);
}

} // namespace orva::test
