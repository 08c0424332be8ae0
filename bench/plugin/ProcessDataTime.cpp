// What a block of 2400 samples costs on its way through all stages of an instance, window and output
// included, and what it costs while the host scans, before its answer and after it: median and 99.9th
// percentile. A plain program for Windows and Wine.
#include "plugin/COrvaPlugin.h"
#include "tests/plugin/PluginSignals.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace orva::bench {
namespace {

constexpr std::uint32_t kBlock = 2400;
constexpr std::size_t kBlocks = 4000;
constexpr std::uint32_t kHandle = 1;
constexpr double kSeconds = 12.0;
constexpr int kSuperframes = 33; // 360 ms each

std::uint32_t WINAPI Answer(plugin::WindowHandle /*window*/, std::int32_t /*code*/, std::uint32_t /*param*/,
                            std::uint32_t /*size*/, void* /*data*/) {
    return plugin::kUnsupported;
}

HMODULE WINAPI LoadNothing(const char* /*name*/) {
    return nullptr;
}

/// A device that is done with its blocks when it is told so.
struct Output {
    static MMRESULT WINAPI Open(LPHWAVEOUT handle, UINT /*id*/, LPCWAVEFORMATEX /*format*/,
                                DWORD_PTR callback, DWORD_PTR /*instance*/, DWORD /*flags*/) {
        constexpr std::uintptr_t kAnyHandle = 0x1000;
        *handle = reinterpret_cast<HWAVEOUT>(kAnyHandle);
        window = reinterpret_cast<HWND>(callback);
        return MMSYSERR_NOERROR;
    }
    static MMRESULT WINAPI Prepare(HWAVEOUT /*handle*/, LPWAVEHDR header, UINT /*size*/) {
        header->dwFlags = WHDR_PREPARED;
        return MMSYSERR_NOERROR;
    }
    static MMRESULT WINAPI Write(HWAVEOUT /*handle*/, LPWAVEHDR header, UINT /*size*/) {
        header->dwFlags |= WHDR_INQUEUE;
        queue.push_back(header);
        ++written;
        return MMSYSERR_NOERROR;
    }
    static MMRESULT WINAPI Unprepare(HWAVEOUT /*handle*/, LPWAVEHDR header, UINT /*size*/) {
        header->dwFlags = 0;
        return MMSYSERR_NOERROR;
    }
    static MMRESULT WINAPI Succeed(HWAVEOUT /*handle*/) { return MMSYSERR_NOERROR; }

    static void FinishAll() {
        std::vector<LPWAVEHDR> done;
        done.swap(queue);
        for (LPWAVEHDR header : done) {
            header->dwFlags = WHDR_PREPARED | WHDR_DONE;
            SendMessageA(window, MM_WOM_DONE, 0, reinterpret_cast<LPARAM>(header));
        }
    }

    static inline HWND window = nullptr;
    static inline std::vector<LPWAVEHDR> queue;
    static inline std::size_t written = 0;
};

/// beforeBlock  what the host says before each block, by its number
void Measure(const char* name, int rate, const std::vector<std::int16_t>& signal,
             const std::function<void(plugin::COrvaPlugin&, std::size_t)>& beforeBlock = {}) {
    audio::WaveOutPlatform waveOut;
    waveOut.open = &Output::Open;
    waveOut.prepareHeader = &Output::Prepare;
    waveOut.write = &Output::Write;
    waveOut.unprepareHeader = &Output::Unprepare;
    waveOut.reset = &Output::Succeed;
    waveOut.close = &Output::Succeed;
    plugin::PluginPlatform platform = plugin::RealPlatform();
    platform.waveOut = &waveOut;
    platform.library.loadLibrary = &LoadNothing;

    auto* instance = new plugin::COrvaPlugin(kHandle, nullptr, platform);
    instance->SetHostCallback(&Answer);
    instance->SetProcessingRate(static_cast<std::uint32_t>(rate), false);
    Output::written = 0;
    std::vector<double> times;
    times.reserve(kBlocks);
    std::size_t warmUp = signal.size() / kBlock;
    std::size_t place = 0;
    for (std::size_t block = 0; times.size() < kBlocks; ++block) {
        if (place + kBlock > signal.size()) {
            place = 0;
        }
        if (beforeBlock) {
            beforeBlock(*instance, block);
        }
        const auto start = std::chrono::steady_clock::now();
        instance->ProcessData(signal.data() + place, kBlock);
        const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
        place += kBlock;
        if (warmUp > 0) {
            --warmUp;
        } else {
            times.push_back(elapsed.count());
        }
        Output::FinishAll();
    }
    std::sort(times.begin(), times.end());
    std::printf("%-24s %6d Hz %9.2f us %9.2f us   %zu blocks played\n", name, rate, times[kBlocks / 2],
                times[kBlocks * 999 / 1000], Output::written);
    instance->Destroy();
    Output::FinishAll();
}

/// A scanner that is tuned away from each channel before it can answer, and one that has answered.
void MeasureScanner(const char* test, std::uint32_t type, int rate, const std::vector<std::int16_t>& signal) {
    // No test of these answers within so many blocks.
    constexpr std::size_t kBlocksPerChannel = 10;
    const auto scan = [type](plugin::COrvaPlugin& instance, std::size_t block) {
        if (block == 0) {
            constexpr plugin::SquelchValues kAnything{};
            instance.SetSquelchSetup(type, &kAnything);
            instance.SetScanner(1);
        }
    };
    Measure((std::string(test) + ", scanning").c_str(), rate, signal,
            [&](plugin::COrvaPlugin& instance, std::size_t block) {
                scan(instance, block);
                if (block % kBlocksPerChannel == 0) {
                    instance.SetReceiverFrequency(0);
                }
            });
    Measure((std::string(test) + ", answered").c_str(), rate, signal, scan);
}

void MeasureAll() {
    std::printf("%-24s %9s %12s %12s\n", "2400 samples of", "", "median", "99.9 %");
    for (const int rate : {48000, 64000}) {
        Measure("a call", rate, test::CallSignal(rate, test::kAlgorithmClear, kSuperframes));
        Measure("an FM carrier with tone", rate, test::FmTone(rate, kSeconds));
        Measure("noise", rate, test::Noise(rate, kSeconds));
        const std::vector<std::int16_t> tone = test::FmTone(rate, kSeconds);
        MeasureScanner("tone", plugin::squelch_type::kCtcss, rate, tone);
        MeasureScanner("code", plugin::squelch_type::kDcs, rate, tone);
        MeasureScanner("voice", plugin::squelch_type::kVoice, rate, tone);
    }
}

} // namespace
} // namespace orva::bench

int main() {
    orva::bench::MeasureAll();
    return 0;
}
