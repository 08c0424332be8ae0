/// A small plug-in behind the real entry points: it answers each code from the host with one of its own, so
/// that a host can be tried with every code there is.
#include "plugin/HostInterface.h"
#include "plugin/IPluginInstance.h"
#include "plugin/LibraryModule.h"
#include "plugin/OwnedReceiverRecord.h"

#include <array>
#include <cstring>
#include <utility>
#include <vector>
#include <windows.h>

namespace orva::plugin {

namespace {

constexpr const char* kWindowClass = "OrvaEchoPlugin";
constexpr UINT kDeferredStart = WM_USER;

/// With this param, code 0 asks whether a receiver library can be found.
constexpr std::uint32_t kReceiverAsked = 718;

/// And with this one it is answered only when the user has seen a box.
constexpr std::uint32_t kBoxAsked = 719;

std::uint32_t FindReceiverLibrary() {
    const HMODULE library = LoadLibraryA("TRK718API.DLL");
    return library != nullptr && FreeLibrary(library) != FALSE ? kReceiverAsked : 0;
}

class EchoInstance final : public IPluginInstance {
public:
    EchoInstance(std::uint32_t handle, const ReceiverRecord* hostRecord)
        : hostHandle(handle), record(OwnedReceiverRecord::CloneOf(hostRecord)) {
        WNDCLASSA windowClass{};
        windowClass.lpfnWndProc = OnMessage;
        windowClass.hInstance = LibraryModule();
        windowClass.lpszClassName = kWindowClass;
        RegisterClassA(&windowClass);
        window = CreateWindowExA(0, kWindowClass, "Echo", WS_POPUP, 0, 0, 100, 100, nullptr, nullptr,
                                 LibraryModule(), nullptr);
        SetWindowLongA(window, GWLP_USERDATA, reinterpret_cast<LONG>(this));
    }
    ~EchoInstance() {
        DestroyWindow(window);
        UnregisterClassA(kWindowClass, LibraryModule());
    }

    WindowHandle GetWindowHandle() const override { return window; }
    void SetHostCallback(ZemHostCallback callback) override { hostCallback = callback; }
    void AnnounceCapabilities() override { Announce(record.MakeAnnouncement()); }
    bool BeginClosing() override { return !std::exchange(isClosing, true); }
    void WithdrawCapabilities() override { Announce(record.MakeWithdrawal()); }
    void Destroy() override {
        hostCallback = nullptr;
        isDestroyed = true;
        if (depth == 0) {
            delete this;
        }
    }

    void Notify(std::int32_t code, std::uint32_t param, std::uint32_t size, void* data) override {
        ++depth;
        Answer(static_cast<HostCode>(code), param, size, data);
        Leave();
    }

private:
    void Leave() {
        if (--depth == 0 && isDestroyed) {
            delete this;
        }
    }

    std::uint32_t CallHost(PluginCode code, std::uint32_t param, std::uint32_t size = 0,
                           void* data = nullptr) {
        if (hostCallback == nullptr) {
            return kUnsupported;
        }
        return hostCallback(window, static_cast<std::int32_t>(code), param, size, data);
    }

    void Announce(OwnedReceiverRecord made) {
        ++depth;
        if (made) {
            CallHost(PluginCode::ReceiverRecord, 0, made.Size(), made.Get());
            record = made.Clone();
        }
        Leave();
    }

    void Answer(HostCode code, std::uint32_t param, std::uint32_t size, void* data) {
        SquelchValues values{};
        switch (code) {
        case HostCode::Reset:
            if (param == kBoxAsked) {
                MessageBoxA(window, "Failed to open WaveIn device.", "ORVA Error", MB_OK);
            }
            CallHost(PluginCode::StreamValue, param == kReceiverAsked ? FindReceiverLibrary() : hostHandle);
            break;
        case HostCode::Power:
            if (OwnedReceiverRecord offer = record.MakeSquelchOffer(param != 0)) {
                CallHost(PluginCode::ReceiverRecord, 0, kReceiverRecordHeaderSize, offer.Get());
            }
            break;
        case HostCode::Frequency:
            ReportTrunking(param);
            break;
        case HostCode::Mode: {
            std::array<std::uint32_t, 2> modes = {2, 19};
            CallHost(PluginCode::Mode, param, sizeof(modes), modes.data());
            break;
        }
        case HostCode::SquelchSetup:
            if (data != nullptr && size == sizeof(values)) {
                std::memcpy(&values, data, sizeof(values));
            }
            CallHost(PluginCode::SquelchResult, param, sizeof(values), &values);
            break;
        case HostCode::SquelchState:
            values = {1, 2, 3, {0, 0}, 4, -5};
            CallHost(PluginCode::SquelchSetup, param, sizeof(values), &values);
            break;
        case HostCode::Volume:
            CallHost(PluginCode::VolumeChanged, param);
            break;
        case HostCode::Mute:
            CallHost(PluginCode::MuteChanged, param);
            break;
        case HostCode::Scanner:
            OfferAudio();
            break;
        case HostCode::Close:
            break;
        }
    }

    void OfferAudio() {
        const std::array<std::int16_t, 4> samples = {100, -200, 300, -400};
        const AudioOffer head = {16000, 16, 1, samples.size()};
        std::vector<std::uint8_t> offer(AudioOfferSize(samples.size()));
        std::memcpy(offer.data(), &head, sizeof(head));
        std::memcpy(offer.data() + sizeof(head), samples.data(), sizeof(samples));
        CallHost(PluginCode::AudioOffer, kAudioOfferParam, static_cast<std::uint32_t>(offer.size()),
                 offer.data());
    }

    void ReportTrunking(std::uint32_t frequency) {
        TrunkingReport head{};
        std::memcpy(head.source, "K728 ORVA", 9);
        head.version = 256;
        head.count = 1;
        head.sizeFromHere = kTrunkingReportRecordSize + 4;
        std::vector<std::uint8_t> report(TrunkingReportSize(1));
        std::memcpy(report.data(), &head, sizeof(head));
        report[sizeof(head)] = 1;
        std::memcpy(report.data() + sizeof(head) + 8, &frequency, sizeof(frequency));
        CallHost(PluginCode::TrunkingReport, 0, static_cast<std::uint32_t>(report.size()), report.data());
    }

    /// Asks all there is to ask, and tells the answer to the last as its volume.
    void StartDeferred() {
        ++depth;
        std::uint32_t answer = 0;
        for (const QueryCode query : {QueryCode::Frequency, QueryCode::Scanner, QueryCode::SquelchState,
                                      QueryCode::Power, QueryCode::StreamValue}) {
            answer = CallHost(PluginCode::Query, static_cast<std::uint32_t>(query));
        }
        CallHost(PluginCode::VolumeChanged, answer);
        Leave();
    }

    static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* instance = reinterpret_cast<EchoInstance*>(GetWindowLongA(window, GWLP_USERDATA));
        if (message == kDeferredStart && instance != nullptr && !instance->isClosing) {
            instance->StartDeferred();
            return 0;
        }
        return DefWindowProcA(window, message, wParam, lParam);
    }

    std::uint32_t hostHandle;
    OwnedReceiverRecord record;
    HWND window = nullptr;
    ZemHostCallback hostCallback = nullptr;
    int depth = 0;
    bool isClosing = false;
    bool isDestroyed = false;
};

} // namespace

IPluginInstance* MakePluginInstance(std::uint32_t hostHandle, ReceiverRecord* record) {
    return new EchoInstance(hostHandle, record);
}

} // namespace orva::plugin
