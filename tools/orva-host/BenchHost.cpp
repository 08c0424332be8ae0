#include "tools/orva-host/BenchHost.h"

#include "tools/orva-host/ProcessResources.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

namespace orva::tools {

using json = nlohmann::ordered_json;
using plugin::HostCode;
using plugin::PluginCode;

namespace {

constexpr const char* kWindowClass = "OrvaBenchHost";
constexpr const char* kPlatformBoxClass = "#32770"; ///< of the platform's message boxes
constexpr const char* kErrorBoxTitle = "ORVA Error";
constexpr const char* kOverwriteBoxTitle = "Overwrite existing file?";
constexpr UINT kTickMilliseconds = 10;
constexpr UINT_PTR kTickTimer = 1;
constexpr int kNameSize = 32;

/// A reaction that brings on its own code again is not to go on for ever.
constexpr int kDeepestReaction = 4;

BenchHost* theHost = nullptr;

std::FILE* OpenLog(const std::string& path) {
    std::FILE* file = path == "-" ? stdout : std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        throw std::runtime_error("cannot write " + path);
    }
    return file;
}

int CloseLog(std::FILE* file) {
    return file == stdout ? 0 : std::fclose(file);
}

template <std::size_t Size>
void PutText(char (&field)[Size], const std::string& text) {
    std::memcpy(field, text.data(), std::min(text.size(), Size - 1));
}

const char* NameOf(ui::FileCommand command) {
    switch (command) {
    case ui::FileCommand::RecordIf:
        return "record if";
    case ui::FileCommand::RecordAudio:
        return "record audio";
    case ui::FileCommand::Play:
        return "play";
    case ui::FileCommand::Stop:
        return "stop";
    case ui::FileCommand::Pause:
        return "pause";
    case ui::FileCommand::Resume:
        return "resume";
    case ui::FileCommand::Seek:
        return "seek";
    case ui::FileCommand::Step:
        return "step";
    }
    return "";
}

std::chrono::steady_clock::duration ToDuration(double seconds) {
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(seconds));
}

} // namespace

BenchHost::BenchHost(const HostOptions& hostOptions)
    : options(hostOptions),
      logFile(OpenLog(hostOptions.log), CloseLog),
      journal(logFile.get()),
      commands(hostOptions.script) {
    theHost = this;
    WNDCLASSA windowClass{};
    windowClass.lpfnWndProc = OnMessage;
    windowClass.hInstance = GetModuleHandleA(nullptr);
    windowClass.lpszClassName = kWindowClass;
    RegisterClassA(&windowClass);
    window = CreateWindowExA(0, kWindowClass, "orva-host", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                             CW_USEDEFAULT, CW_USEDEFAULT, nullptr, nullptr, windowClass.hInstance, nullptr);
    if (window == nullptr) {
        throw std::runtime_error("cannot make a window");
    }
}

BenchHost::~BenchHost() {
    DestroyWindow(window);
    theHost = nullptr;
}

bool BenchHost::Run() {
    // A host has it already: loaded and unloaded with every cycle, it would appear in the account of
    // resources.
    LoadLibraryA("winmm.dll");
    if (!options.libraries.empty()) {
        SetDllDirectoryA(options.libraries.c_str());
    }
    bool isGood = true;
    std::uint32_t nextCount = 1;
    for (std::uint32_t cycle = 1; cycle <= options.cycles; ++cycle) {
        isGood = RunCycle() && isGood;
        if (cycle == nextCount || cycle == options.cycles) {
            constexpr std::uint32_t kBetweenCounts = 10;
            WriteResources(cycle);
            nextCount *= kBetweenCounts;
        }
    }
    return isGood && !hasFailed;
}

/// From loading to unloading.
bool BenchHost::RunCycle() {
    library.emplace(options.library);
    std::array<char, kNameSize> name{};
    const std::uint32_t number = library->init(0, 0, name.data(), kNameSize - 1);
    journal.WriteEvent("loaded", {{"name", name.data()}, {"interface", number}});

    instances.clear();
    waitsUntil = Clock::now();
    StartInstances();
    if (options.seconds > 0) {
        endsAt = Clock::now() + ToDuration(options.seconds);
    }
    RunMessages();
    if (options.abandons) {
        journal.WriteEvent("abandoned");
        std::fflush(logFile.get());
        std::exit(0); // with everything running
    }
    CloseInstances();
    library->done();
    const bool isUnloaded = library->Unload();
    journal.WriteEvent(isUnloaded ? "unloaded" : "still loaded");
    return isUnloaded && std::ranges::all_of(instances, &Instance::isClosed);
}

void BenchHost::StartInstances() {
    for (std::uint32_t i = 0; i < options.instances; ++i) {
        hasFailed = !StartInstance(options.firstHandle + i) || hasFailed;
    }
    if (!options.audio.empty() && !offeredAudio.IsOpen()) {
        constexpr std::uint32_t kOfferedRate = 16000;
        if (!offeredAudio.Create(options.audio.c_str(), kOfferedRate)) {
            throw std::runtime_error("cannot write " + options.audio);
        }
    }
}

bool BenchHost::StartInstance(std::uint32_t hostHandle) {
    plugin::ReceiverRecord record{};
    record.totalSize = sizeof(record);
    record.headerSize = sizeof(record);
    PutText(record.deviceType, options.deviceType);
    PutText(record.serialNumber, options.serialNumber);

    // The plug-in speaks before its window is known here: what it says until then is this instance's.
    instances.push_back({hostHandle, nullptr, false});
    const std::uint32_t answer =
        library->start(hostHandle, options.hasRecord ? &record : nullptr, OnPluginCode, 0);
    journal.WriteEvent("started", {{"handle", hostHandle}, {"window", answer}});
    const auto started = std::ranges::find(instances, hostHandle, &Instance::hostHandle);
    if (answer == plugin::kStartRefused) {
        // Unless a reaction has closed it meanwhile, there never was one.
        const bool isClosed = started->isClosed;
        if (!isClosed) {
            instances.erase(started);
        }
        return isClosed;
    }
    started->window = reinterpret_cast<HWND>(answer);
    if (!options.isHidden) {
        ShowWindow(started->window, SW_SHOWNOACTIVATE);
    }
    return true;
}

void BenchHost::RunMessages() {
    SetTimer(window, kTickTimer, kTickMilliseconds, nullptr);
    MSG message;
    // Even a run without a script lets the instances finish their starts.
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    while (!IsOver() && GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    KillTimer(window, kTickTimer);
}

bool BenchHost::IsOver() {
    if (std::ranges::all_of(instances, &Instance::isClosed)) {
        return true;
    }
    const Clock::time_point now = Clock::now();
    return endsAt ? now >= *endsAt : commands.IsAtEnd() && now >= waitsUntil;
}

/// Those that the script has left open.
void BenchHost::CloseInstances() {
    HostCommand close;
    close.code = static_cast<std::int32_t>(HostCode::Close);
    Send(close, std::nullopt);
}

void BenchHost::OnTick() {
    DismissBoxes();
    // A command whose effect runs messages is still under way then.
    if (!isInScript) {
        isInScript = true;
        RunScript();
        isInScript = false;
    }
}

void BenchHost::RunScript() {
    while (Clock::now() >= waitsUntil) {
        try {
            const auto command = commands.Next();
            if (!command) {
                return;
            }
            if (command->kind == HostCommand::Kind::Wait) {
                waitsUntil = Clock::now() + ToDuration(command->seconds);
            } else {
                Send(*command, command->hostHandle);
            }
        } catch (const std::invalid_argument& error) {
            journal.WriteEvent("bad command", {{"why", error.what()}});
            hasFailed = true;
        }
    }
}

void BenchHost::Send(const HostCommand& command, std::optional<std::uint32_t> onlyTo) {
    // By index: an instance may be added or go while a command runs.
    for (std::size_t i = 0; i < instances.size(); ++i) {
        const Instance instance = instances[i];
        if (instance.isClosed || (onlyTo && *onlyTo != instance.hostHandle)) {
            continue;
        }
        if (command.kind == HostCommand::Kind::File) {
            SendFileCommand(instance, command);
        } else {
            Notify(instance.hostHandle, command);
        }
    }
}

/// Works the plug-in's recording and playback as a user would.
void BenchHost::SendFileCommand(const Instance& instance, const HostCommand& command) {
    std::string text = command.text;
    std::array<char, MAX_PATH> full{};
    if (command.HasPath() &&
        GetFullPathNameA(text.c_str(), full.size(), full.data(), nullptr) < full.size()) {
        text = full.data();
    }
    COPYDATASTRUCT data{};
    data.dwData = static_cast<ULONG_PTR>(command.file);
    data.cbData = static_cast<DWORD>(text.size());
    data.lpData = text.data();
    const LRESULT answer = SendMessageA(instance.window, WM_COPYDATA, reinterpret_cast<WPARAM>(window),
                                        reinterpret_cast<LPARAM>(&data));
    journal.WriteEvent("file", {{"handle", instance.hostHandle},
                                {"command", NameOf(command.file)},
                                {"text", text},
                                {"done", answer != 0}});
}

void BenchHost::Notify(std::uint32_t hostHandle, const HostCommand& command) {
    std::vector<std::uint32_t> data = command.data;
    void* place = data.empty() ? nullptr : data.data();
    const auto size = static_cast<std::uint32_t>(data.size() * sizeof(data[0]));
    journal.WriteFromHost(hostHandle, command.code, command.param, size, place);
    library->notify(hostHandle, command.code, command.param, size, place);
}

std::uint32_t BenchHost::Answer(HWND sender, std::int32_t code, std::uint32_t param, std::uint32_t size,
                                void* data) {
    const Instance* instance = FindInstance(sender);
    const std::uint32_t hostHandle = instance != nullptr ? instance->hostHandle : 0;
    const auto known = static_cast<PluginCode>(code);
    std::uint32_t answer = 0;
    if (known == PluginCode::Query) {
        const auto found = options.answers.find(param);
        answer = found != options.answers.end() ? found->second : plugin::kUnsupported;
    }
    if (options.refusesAll) {
        answer = plugin::kUnsupported;
    }
    journal.WriteFromPlugin(hostHandle, code, param, size, data, answer);
    if (known == PluginCode::AudioOffer && data != nullptr && size >= sizeof(plugin::AudioOffer)) {
        plugin::AudioOffer offer;
        std::memcpy(&offer, data, sizeof(offer));
        if (hostHandle == options.firstHandle && size >= plugin::AudioOfferSize(offer.sampleCount)) {
            KeepAudio(offer,
                      reinterpret_cast<const std::int16_t*>(static_cast<const char*>(data) + sizeof(offer)));
        }
    }
    if (known == PluginCode::Closing) {
        if (Instance* closed = FindInstance(sender)) {
            closed->isClosed = true;
        }
    }
    React(code, hostHandle);
    return answer;
}

void BenchHost::React(std::int32_t code, std::uint32_t hostHandle) {
    const auto found = options.reactions.find(code);
    if (found == options.reactions.end() || reactionDepth >= kDeepestReaction) {
        return;
    }
    ++reactionDepth;
    for (const HostCommand& command : found->second) {
        if (command.kind == HostCommand::Kind::File) {
            Send(command, command.hostHandle.value_or(hostHandle));
        } else {
            Notify(command.hostHandle.value_or(hostHandle), command);
        }
    }
    --reactionDepth;
}

void BenchHost::KeepAudio(const plugin::AudioOffer& offer, const std::int16_t* samples) {
    if (offeredAudio.IsOpen()) {
        offeredAudio.Write(samples, offer.sampleCount);
    }
}

/// The instance whose window this is; the one that is being started if the window is not known yet.
BenchHost::Instance* BenchHost::FindInstance(HWND sender) {
    for (Instance& instance : instances) {
        if (instance.window == sender && sender != nullptr) {
            return &instance;
        }
    }
    const auto starting = std::ranges::find_if(
        instances, [](const Instance& instance) { return instance.window == nullptr && !instance.isClosed; });
    return starting != instances.end() ? &*starting : nullptr;
}

void BenchHost::DismissBoxes() {
    // A box may be shown again, and a later one may come by the handle of one that is gone.
    std::erase_if(dismissed, [](HWND box) { return IsWindowVisible(box) == FALSE; });
    EnumWindows(DismissBox, reinterpret_cast<LPARAM>(this));
}

/// Boxes of the plug-in wait for a user; here is none.
BOOL CALLBACK BenchHost::DismissBox(HWND box, LPARAM host) {
    DWORD process = 0;
    GetWindowThreadProcessId(box, &process);
    std::array<char, kNameSize> title{};
    if (process != GetCurrentProcessId() || IsWindowVisible(box) == FALSE) {
        return TRUE;
    }
    GetWindowTextA(box, title.data(), kNameSize);
    if (title.data() != std::string(kErrorBoxTitle) && title.data() != std::string(kOverwriteBoxTitle)) {
        return TRUE;
    }
    auto& self = *reinterpret_cast<BenchHost*>(host);
    if (std::ranges::find(self.dismissed, box) == self.dismissed.end()) {
        self.dismissed.push_back(box);
        self.AnswerBox(box, title.data());
    }
    return TRUE;
}

void BenchHost::AnswerBox(HWND box, const std::string& title) {
    const bool isQuestion = title == kOverwriteBoxTitle;
    std::array<char, kNameSize> className{};
    GetClassNameA(box, className.data(), kNameSize);
    if (isQuestion) {
        journal.WriteEvent("box", {{"title", title}, {"answer", options.overwrites ? "Yes" : "No"}});
    } else {
        journal.WriteEvent("box", {{"title", title}});
    }
    if (className.data() == std::string(kPlatformBoxClass)) {
        PostMessageA(box, WM_COMMAND, IDOK, 0);
    } else if (isQuestion && options.overwrites) {
        PostMessageA(box, WM_KEYDOWN, VK_RETURN, 1); // Yes is the default
    } else {
        PostMessageA(box, WM_CLOSE, 0, 0);
    }
}

void BenchHost::WriteResources(std::uint32_t cycle) {
    const ProcessResources held = ProcessResources::Count();
    journal.WriteEvent("resources", {{"cycle", cycle},
                                     {"handles", held.handles},
                                     {"windows", held.windows},
                                     {"graphicsObjects", held.graphicsObjects},
                                     {"heapBlocks", held.heapBlocks},
                                     {"threads", held.threads},
                                     {"memory", held.memory}});
}

std::uint32_t ORVA_HOST_CALL BenchHost::OnPluginCode(HWND sender, std::int32_t code, std::uint32_t param,
                                                     std::uint32_t size, void* data) {
    return theHost != nullptr ? theHost->Answer(sender, code, param, size, data) : plugin::kUnsupported;
}

LRESULT CALLBACK BenchHost::OnMessage(HWND hostWindow, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_TIMER && wParam == kTickTimer && theHost != nullptr) {
        theHost->OnTick();
        return 0;
    }
    return DefWindowProcA(hostWindow, message, wParam, lParam);
}

} // namespace orva::tools
