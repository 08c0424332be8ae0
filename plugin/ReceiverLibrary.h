/// The receiver maker's library, bound at run time.
#pragma once

#include <cstdint>
#include <windows.h>

namespace orva::plugin {

/// What binding a library needs of the platform. The default is the platform's own.
struct LibraryPlatform {
    HMODULE(WINAPI* loadLibrary)(const char* name) = LoadLibraryA;
    FARPROC(WINAPI* getProcAddress)(HMODULE module, const char* name) = GetProcAddress;
    BOOL(WINAPI* freeLibrary)(HMODULE module) = FreeLibrary;
};

/// Called by the library, on a thread of its own, when samples wait.
using ReaderCallbackFunction = void(WINAPI*)(void* context);

/// `TRK718API.DLL`: its functions, stdcall and undecorated. Null where one is not bound.
class ReceiverLibrary {
public:
    explicit ReceiverLibrary(const LibraryPlatform& libraryPlatform) : platform(libraryPlatform) {}
    ReceiverLibrary(const ReceiverLibrary&) = delete;
    ReceiverLibrary& operator=(const ReceiverLibrary&) = delete;
    ~ReceiverLibrary() { Unload(); }

    /// Loads the library and looks up what is not bound yet.
    ///
    /// \return whether the library and the four functions that are needed are there
    bool Load();
    /// Forgets all functions and frees the library; does nothing without one.
    void Unload();
    [[nodiscard]] bool IsLoaded() const { return module != nullptr; }

    /// Starts the stream; 0: not now. From then on `callback(context)` comes when data waits.
    std::uint32_t(WINAPI* CodecStart)(std::uint32_t receiver, ReaderCallbackFunction callback,
                                      void* context) = nullptr;
    /// Ends the stream; after it no callback comes.
    std::uint32_t(WINAPI* CodecStop)(std::uint32_t receiver) = nullptr;
    /// Copies up to `bytes` bytes of 16-bit samples; the number copied. Never blocks. [receiver thread]
    std::int32_t(WINAPI* CodecRead)(std::uint32_t receiver, void* buffer, std::uint32_t bytes) = nullptr;
    /// Fills 256 bytes with the receiver's memory; non-zero on success.
    std::uint32_t(WINAPI* K7GetEEP)(std::uint32_t receiver, void* buffer) = nullptr;
    /// May turn the spectrum of a block round, in place. Optional.
    std::uint32_t(WINAPI* K7InvertSpectrum)(std::uint32_t receiver, std::int16_t* samples,
                                            std::uint32_t count, float rate, std::uint32_t bits,
                                            std::uint32_t reserved) = nullptr;

private:
    LibraryPlatform platform;
    HMODULE module = nullptr;
};

} // namespace orva::plugin
