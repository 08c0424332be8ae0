/// The receiver maker's library for tests.
#pragma once

#include "plugin/ReceiverLibrary.h"
#include "tests/audio/CallLog.h"

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace orva::test {

/// Stands behind the calls that bind a library. One at a time exists.
class FakeReceiverLibrary {
public:
    explicit FakeReceiverLibrary(CallLog& callLog);
    ~FakeReceiverLibrary();
    FakeReceiverLibrary(const FakeReceiverLibrary&) = delete;
    FakeReceiverLibrary& operator=(const FakeReceiverLibrary&) = delete;

    [[nodiscard]] static plugin::LibraryPlatform Platform();

    // What the test says.

    bool isPresent = false;
    std::set<std::string> missing;          ///< functions that it does not have
    std::deque<std::uint32_t> startResults; ///< of the next starts; 1 afterwards
    bool hasMemory = true;                  ///< `K7GetEEP` succeeds
    std::array<std::uint8_t, 256> memory{};
    std::function<void(std::int16_t* samples, std::uint32_t count)> onInvert;
    std::function<void()> onStop; ///< while the stream is being ended
    /// Answers of the next reads in bytes, whatever waits; afterwards as much as asked for and there is.
    std::deque<std::int32_t> readResults;

    /// Puts samples into the stream and has the plug-in read.
    void Deliver(std::span<const std::int16_t> samples);
    /// The plug-in's reader, called with the context it gave, or with another one.
    void CallReader() const { reader(context); }
    void CallReader(void* otherContext) const { reader(otherContext); }

    // What was asked for.

    struct Read {
        std::uint32_t receiver;
        void* buffer;
        std::uint32_t bytes;
        std::int32_t result;
    };
    struct Inversion {
        std::uint32_t receiver;
        const std::int16_t* samples;
        std::uint32_t count;
        float rate;
        std::uint32_t bits;
        std::uint32_t reserved;
    };

    std::vector<Read> reads;
    bool keepsReads = true; ///< off for tests that count allocations
    std::vector<Inversion> inversions;
    std::vector<std::string> lookups;   ///< names of functions, in order
    std::vector<std::uint32_t> handles; ///< receivers that were named, in order
    plugin::ReaderCallbackFunction reader = nullptr;
    void* context = nullptr;
    std::deque<std::int16_t> stream; ///< not read yet

private:
    static HMODULE WINAPI LoadIt(const char* name);
    static FARPROC WINAPI Find(HMODULE module, const char* name);
    static BOOL WINAPI FreeIt(HMODULE module);
    static std::uint32_t WINAPI CodecStart(std::uint32_t receiver, plugin::ReaderCallbackFunction callback,
                                           void* callbackContext);
    static std::uint32_t WINAPI CodecStop(std::uint32_t receiver);
    static std::int32_t WINAPI CodecRead(std::uint32_t receiver, void* buffer, std::uint32_t bytes);
    static std::uint32_t WINAPI K7GetEEP(std::uint32_t receiver, void* buffer);
    static std::uint32_t WINAPI K7InvertSpectrum(std::uint32_t receiver, std::int16_t* samples,
                                                 std::uint32_t count, float rate, std::uint32_t bits,
                                                 std::uint32_t reserved);

    CallLog& log;
};

} // namespace orva::test
