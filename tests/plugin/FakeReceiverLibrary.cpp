#include "tests/plugin/FakeReceiverLibrary.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

FakeReceiverLibrary* library = nullptr;

/// Only an address, which nobody may look behind.
HMODULE Module() {
    constexpr std::uintptr_t kAddress = 0x7A0000;
    return reinterpret_cast<HMODULE>(kAddress);
}

template <class Function>
FARPROC AsProcedure(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

} // namespace

FakeReceiverLibrary::FakeReceiverLibrary(CallLog& callLog) : log(callLog) {
    EXPECT_EQ(library, nullptr);
    library = this;
}

FakeReceiverLibrary::~FakeReceiverLibrary() {
    library = nullptr;
}

plugin::LibraryPlatform FakeReceiverLibrary::Platform() {
    return {&FakeReceiverLibrary::LoadIt, &FakeReceiverLibrary::Find, &FakeReceiverLibrary::FreeIt};
}

void FakeReceiverLibrary::Deliver(std::span<const std::int16_t> samples) {
    stream.insert(stream.end(), samples.begin(), samples.end());
    CallReader();
}

HMODULE WINAPI FakeReceiverLibrary::LoadIt(const char* name) {
    EXPECT_STREQ(name, "TRK718API.DLL");
    library->log.Add("load library");
    return library->isPresent ? Module() : nullptr;
}

FARPROC WINAPI FakeReceiverLibrary::Find(HMODULE module, const char* name) {
    EXPECT_EQ(module, Module());
    library->lookups.emplace_back(name);
    if (library->missing.contains(name)) {
        return nullptr;
    }
    const std::string wanted = name;
    if (wanted == "CodecStart") {
        return AsProcedure(&FakeReceiverLibrary::CodecStart);
    }
    if (wanted == "CodecStop") {
        return AsProcedure(&FakeReceiverLibrary::CodecStop);
    }
    if (wanted == "CodecRead") {
        return AsProcedure(&FakeReceiverLibrary::CodecRead);
    }
    if (wanted == "K7GetEEP") {
        return AsProcedure(&FakeReceiverLibrary::K7GetEEP);
    }
    if (wanted == "K7InvertSpectrum") {
        return AsProcedure(&FakeReceiverLibrary::K7InvertSpectrum);
    }
    return nullptr;
}

BOOL WINAPI FakeReceiverLibrary::FreeIt(HMODULE module) {
    EXPECT_EQ(module, Module());
    library->log.Add("free library");
    return TRUE;
}

std::uint32_t WINAPI FakeReceiverLibrary::CodecStart(std::uint32_t receiver,
                                                     plugin::ReaderCallbackFunction callback,
                                                     void* callbackContext) {
    library->log.Add("CodecStart");
    library->handles.push_back(receiver);
    library->reader = callback;
    library->context = callbackContext;
    if (library->startResults.empty()) {
        return 1;
    }
    const std::uint32_t result = library->startResults.front();
    library->startResults.pop_front();
    return result;
}

std::uint32_t WINAPI FakeReceiverLibrary::CodecStop(std::uint32_t receiver) {
    library->log.Add("CodecStop");
    library->handles.push_back(receiver);
    if (library->onStop) {
        library->onStop();
    }
    return 1;
}

std::int32_t WINAPI FakeReceiverLibrary::CodecRead(std::uint32_t receiver, void* buffer,
                                                   std::uint32_t bytes) {
    std::deque<std::int16_t>& stream = library->stream;
    auto result = static_cast<std::int32_t>(std::min<std::size_t>(bytes, 2 * stream.size()));
    if (!library->readResults.empty()) {
        result = library->readResults.front();
        library->readResults.pop_front();
    }
    const auto count = static_cast<std::size_t>(std::max(result, 0)) / 2;
    EXPECT_LE(count, stream.size());
    EXPECT_LE(result, static_cast<std::int32_t>(bytes));
    auto* samples = static_cast<std::int16_t*>(buffer);
    std::copy_n(stream.begin(), count, samples);
    stream.erase(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(count));
    if (library->keepsReads) {
        library->reads.push_back({receiver, buffer, bytes, result});
    }
    return result;
}

std::uint32_t WINAPI FakeReceiverLibrary::K7GetEEP(std::uint32_t receiver, void* buffer) {
    library->log.Add("K7GetEEP");
    library->handles.push_back(receiver);
    if (!library->hasMemory) {
        return 0;
    }
    std::memcpy(buffer, library->memory.data(), library->memory.size());
    return 1;
}

std::uint32_t WINAPI FakeReceiverLibrary::K7InvertSpectrum(std::uint32_t receiver, std::int16_t* samples,
                                                           std::uint32_t count, float rate,
                                                           std::uint32_t bits, std::uint32_t reserved) {
    if (library->keepsReads) {
        library->inversions.push_back({receiver, samples, count, rate, bits, reserved});
    }
    if (library->onInvert) {
        library->onInvert(samples, count);
    }
    return 1;
}

} // namespace orva::test
