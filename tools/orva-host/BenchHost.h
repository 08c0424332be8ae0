/// A receiver host without a receiver.
#pragma once

#include "audio/CtbWaveFile.h"
#include "plugin/HostInterface.h"
#include "tools/orva-host/CodeJournal.h"
#include "tools/orva-host/CommandSource.h"
#include "tools/orva-host/HostOptions.h"
#include "tools/orva-host/PluginLibrary.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <windows.h>

namespace orva::tools {

/// Starts instances of a plug-in, sends them what a script says, answers and writes down what they say, and
/// closes them. One per process, since the plug-in's callback has no context. [window thread]
///
/// The script runs on a timer of the host's window: it goes on inside modal loops of the plug-in too.
class BenchHost {
public:
    explicit BenchHost(const HostOptions& hostOptions);
    ~BenchHost();
    BenchHost(const BenchHost&) = delete;
    BenchHost& operator=(const BenchHost&) = delete;

    /// All of it. True if every instance answered its close and the library was unloaded. Throws
    /// std::runtime_error if it cannot begin.
    bool Run();

private:
    using Clock = std::chrono::steady_clock;

    struct Instance {
        std::uint32_t hostHandle;
        HWND window;   ///< null until the start has returned
        bool isClosed; ///< has said so with its last message
    };

    bool RunCycle();
    void StartInstances();
    bool StartInstance(std::uint32_t hostHandle);
    void RunMessages();
    void CloseInstances();
    void OnTick();
    void RunScript();
    void Send(const HostCommand& command, std::optional<std::uint32_t> onlyTo);
    void Notify(std::uint32_t hostHandle, const HostCommand& command);
    void SendFileCommand(const Instance& instance, const HostCommand& command);
    void DismissBoxes();
    void AnswerBox(HWND box, const std::string& title);
    void WriteResources(std::uint32_t cycle);
    [[nodiscard]] bool IsOver();
    Instance* FindInstance(HWND window);
    std::uint32_t Answer(HWND window, std::int32_t code, std::uint32_t param, std::uint32_t size, void* data);
    void React(std::int32_t code, std::uint32_t hostHandle);
    void KeepAudio(const plugin::AudioOffer& offer, const std::int16_t* samples);

    static std::uint32_t ORVA_HOST_CALL OnPluginCode(HWND window, std::int32_t code, std::uint32_t param,
                                                     std::uint32_t size, void* data);
    static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    static BOOL CALLBACK DismissBox(HWND window, LPARAM host);

    const HostOptions& options;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> logFile;
    CodeJournal journal;
    CommandSource commands;
    std::optional<PluginLibrary> library;
    audio::CtbWaveFile offeredAudio;
    HWND window = nullptr;
    std::vector<Instance> instances;
    Clock::time_point waitsUntil;
    std::optional<Clock::time_point> endsAt;
    std::vector<HWND> dismissed;
    bool isInScript = false;
    int reactionDepth = 0;
    bool hasFailed = false;
};

} // namespace orva::tools
