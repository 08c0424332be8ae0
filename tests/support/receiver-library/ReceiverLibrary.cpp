/// The functions of the receiver library, as a plug-in finds them in TRK718API.DLL. Settings are read when
/// the library is loaded.
#include "tests/support/TemporaryFolder.h"
#include "tests/support/receiver-library/ReceiverSettings.h"
#include "tests/support/receiver-library/ReceiverStream.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <windows.h>

namespace orva::test {

namespace {

constexpr std::size_t kMemorySize = 256;

std::optional<std::string> Environment(const std::string& name) {
    char text[MAX_PATH * 4];
    const DWORD length = GetEnvironmentVariableA(name.c_str(), text, sizeof(text));
    if (length >= sizeof(text) || (length == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND)) {
        return std::nullopt;
    }
    return std::string(text, length);
}

/// The file beside the library with its name and the ending ".ini".
std::string IniText() {
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&IniText), &module);
    char path[MAX_PATH];
    const DWORD length = GetModuleFileNameA(module, path, sizeof(path));
    const std::string file(path, length);
    return ReadWholeFile(file.substr(0, file.rfind('.')) + ".ini");
}

/// All receivers of the process. [any thread]
class Receivers {
public:
    Receivers() {
        try {
            settings = ReceiverSettings::Read(Environment, IniText());
        } catch (const std::invalid_argument& error) {
            OutputDebugStringA(error.what());
        }
        startsToFail = settings.failingStarts;
    }

    int Start(std::uint32_t handle, std::function<void()> onSamples) {
        const std::lock_guard guard(lock);
        int result = 0;
        if (startsToFail > 0) {
            --startsToFail;
        } else {
            auto& stream = streams[handle];
            stream = std::make_unique<ReceiverStream>(settings);
            result = stream->Start(std::move(onSamples)) ? 1 : 0;
        }
        Log("CodecStart %u: %d", static_cast<unsigned>(handle), result);
        return result;
    }

    int Stop(std::uint32_t handle) {
        std::unique_ptr<ReceiverStream> stream;
        {
            const std::lock_guard guard(lock);
            const auto found = streams.find(handle);
            if (found == streams.end()) {
                Log("CodecStop %u: no stream", static_cast<unsigned>(handle));
                return 0;
            }
            stream = std::move(found->second);
            streams.erase(found);
        }
        // Outside the lock: the stream's thread may be reading.
        stream->Stop();
        const std::lock_guard guard(lock);
        Log("CodecStop %u: %llu delivered, %llu processed, %llu lost", static_cast<unsigned>(handle),
            stream->Delivered(), stream->Processed(), stream->Lost());
        return 1;
    }

    int Read(std::uint32_t handle, void* buffer, std::uint32_t bytes) {
        ReceiverStream* stream = Find(handle);
        return stream != nullptr ? static_cast<int>(stream->Read(buffer, bytes)) : 0;
    }

    int ReadMemory(std::uint32_t handle, void* buffer) {
        const std::string image = ReadWholeFile(settings.memory);
        const int result = image.size() == kMemorySize ? 1 : 0;
        if (result != 0) {
            std::memcpy(buffer, image.data(), kMemorySize);
        }
        const std::lock_guard guard(lock);
        Log("K7GetEEP %u: %d", static_cast<unsigned>(handle), result);
        return result;
    }

    void InvertSpectrum(std::uint32_t handle, std::int16_t* samples, std::uint32_t count) {
        if (ReceiverStream* stream = Find(handle)) {
            stream->InvertSpectrum(samples, count);
        }
    }

    bool IsInverted() const { return settings.isInverted; }

private:
    /// A stream lives until its stop, during which its thread still reads.
    ReceiverStream* Find(std::uint32_t handle) {
        const std::lock_guard guard(lock);
        const auto found = streams.find(handle);
        return found != streams.end() ? found->second.get() : nullptr;
    }

    [[gnu::format(__MINGW_PRINTF_FORMAT, 2, 3)]] void Log(const char* format, ...) const {
        if (settings.log.empty()) {
            return;
        }
        if (std::FILE* file = std::fopen(settings.log.c_str(), "ab")) {
            std::va_list values;
            va_start(values, format);
            std::vfprintf(file, format, values);
            va_end(values);
            std::fputc('\n', file);
            std::fclose(file);
        }
    }

    ReceiverSettings settings;
    std::uint32_t startsToFail = 0;
    std::mutex lock; ///< guards the streams, the count and the log
    std::map<std::uint32_t, std::unique_ptr<ReceiverStream>> streams;
};

/// Never destroyed: at the end of a process that has not stopped its streams their threads are gone, and with
/// them perhaps a lock.
Receivers& TheReceivers() {
    static auto& receivers = *new Receivers;
    return receivers;
}

} // namespace

extern "C" {

using ReceiverCallback = void(__stdcall*)(void* context);

int __stdcall CodecStart(std::uint32_t handle, ReceiverCallback callback, void* context) {
    return TheReceivers().Start(handle, [callback, context] { callback(context); });
}

int __stdcall CodecStop(std::uint32_t handle) {
    return TheReceivers().Stop(handle);
}

int __stdcall CodecRead(std::uint32_t handle, void* buffer, std::uint32_t bytes) {
    return TheReceivers().Read(handle, buffer, bytes);
}

int __stdcall K7GetEEP(std::uint32_t handle, void* buffer) {
    return TheReceivers().ReadMemory(handle, buffer);
}

int __stdcall IsSpectrumInverted(std::uint32_t /*handle*/) {
    return TheReceivers().IsInverted() ? 1 : 0;
}

int __stdcall K7InvertSpectrum(std::uint32_t handle, std::int16_t* samples, std::uint32_t count,
                               float /*rate*/, int /*bits*/, int /*reserved*/) {
    TheReceivers().InvertSpectrum(handle, samples, count);
    return 1;
}

int __stdcall GetHwInfo(std::uint32_t /*handle*/, void* /*buffer*/) {
    return 0;
}

} // extern "C"

} // namespace orva::test
