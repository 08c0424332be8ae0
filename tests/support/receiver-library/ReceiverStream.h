/// One receiver's stream of samples.
#pragma once

#include "audio/WaveFileReader.h"
#include "tests/support/receiver-library/ReceiverSettings.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace orva::test {

constexpr std::uint32_t kReceiverRate = 64000; ///< [Hz]

/// Plays a recording from a thread of its own, and calls back on that thread when samples are waiting.
class ReceiverStream {
public:
    /// Samples that reach the reader between two callbacks, 10 ms.
    static constexpr std::size_t kChunk = kReceiverRate / 100;

    explicit ReceiverStream(const ReceiverSettings& receiverSettings) : settings(receiverSettings) {}
    ~ReceiverStream() { Stop(); }
    ReceiverStream(const ReceiverStream&) = delete;
    ReceiverStream& operator=(const ReceiverStream&) = delete;

    /// Opens the recording and starts the thread. False if it is not there, has another rate, or the stream
    /// runs already.
    bool Start(std::function<void()> onSamples);

    /// Ends the stream; when this returns, no callback comes any more. Not to be called from a callback.
    void Stop();

    /// Copies up to `bytes` bytes, returns how many. Never waits. [any thread]
    std::size_t Read(void* buffer, std::size_t bytes);

    /// Mirrors the spectrum back, if the stream is mirrored, and takes note that these samples have been
    /// processed. [any thread]
    void InvertSpectrum(std::int16_t* samples, std::size_t count);

    std::uint64_t Delivered() const; ///< samples that were read
    std::uint64_t Processed() const; ///< samples that went through `InvertSpectrum`
    std::uint64_t Lost() const;      ///< samples that nobody read in time

private:
    using Clock = std::chrono::steady_clock;

    void Run();
    bool FillChunk();
    void Mirror();
    bool WaitForTurn(Clock::time_point start, std::uint64_t chunk);
    bool WaitForProcessing(std::unique_lock<std::mutex>& guard);
    void Offer();

    ReceiverSettings settings;
    std::function<void()> callback;
    audio::WaveFileReader reader;
    std::thread thread;
    std::vector<std::int16_t> next; ///< the thread's own
    bool mirrorsOdd = false;

    mutable std::mutex lock; ///< guards what follows
    std::condition_variable changed;
    std::deque<std::uint8_t> waiting; ///< bytes: a reader may ask for an odd number
    std::uint64_t deliveredBytes = 0;
    std::uint64_t lostSamples = 0;
    std::uint64_t processedSamples = 0;
    std::uint64_t forgivenSamples = 0; ///< delivered, but never to be processed
    bool isStopping = false;
};

} // namespace orva::test
