#include "audio/CtbWaveOut.h"

#include "audio/CtbWaveOutMsgHandlerWnd.h"
#include "audio/WaveHeader.h"
#include "toolkit/TmyApplication.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

namespace orva::audio {

namespace {

/// Blocks that the device may have beyond those that were gathered.
constexpr std::uint32_t kReserveBlocks = 2;

// The gain is 40/16 = 2.5 for each step of the volume.
constexpr std::int32_t kGainPerStep = 40;
constexpr int kGainShift = 4;

/// The limits are symmetric: -32768 is never played.
constexpr std::int32_t kLoudest = 32767;

dsp::CtbSampleBlock* BlockOf(const WAVEHDR& header) {
    return reinterpret_cast<dsp::CtbSampleBlock*>(header.dwUser);
}

} // namespace

CtbWaveOut::CtbWaveOut(std::uint32_t rate, const WaveOutPlatform& waveOut, const DeviceSetupPlatform& setup)
    : platform(waveOut),
      sampleRate(rate),
      messageWindow(std::make_unique<CtbWaveOutMsgHandlerWnd>(this)),
      virtualCard(setup) {
    messageWindow->onDestroy.Bind<&CtbWaveOut::ForgetMessageWindow>(this);
}

CtbWaveOut::~CtbWaveOut() {
    Stop();
    toolkit::TmyApplication::ProcessPendingMessages();
    Close();
    toolkit::TmyApplication::ProcessPendingMessages();
    messageWindow.reset();
    if (handle == nullptr) {
        GiveBackLostBlocks();
    }
    GiveBackGatheredBlocks();
    FreeHeaders();
}

/// The window went away, and deletes itself. (Nothing is left to release if it is we who delete it.)
void CtbWaveOut::ForgetMessageWindow(toolkit::TmyControl* /*sender*/) {
    static_cast<void>(messageWindow.release());
}

// --- settings ----------------------------------------------------------------------------------------------

void CtbWaveOut::SetPrebufferBlocks(std::uint32_t count) {
    if (running) {
        return;
    }
    prebufferBlocks = count;
    LeaveReserve();
}

void CtbWaveOut::SetMaxBlocks(std::uint32_t count) {
    if (running) {
        return;
    }
    maxBlocks = count;
    LeaveReserve();
}

/// What was gathered must not fill the device.
void CtbWaveOut::LeaveReserve() {
    if (maxBlocks <= prebufferBlocks) {
        maxBlocks = prebufferBlocks + kReserveBlocks;
    }
}

void CtbWaveOut::SetSampleRate(std::uint32_t rate) {
    if (handle == nullptr) {
        sampleRate = rate;
    }
}

void CtbWaveOut::SetDevice(std::uint32_t id) {
    if (!running) {
        deviceId = id;
    }
}

void CtbWaveOut::SetVolume(std::int32_t steps) {
    volume = static_cast<std::uint32_t>(std::clamp(steps, 0, static_cast<std::int32_t>(kMaxVolume)));
}

std::uint32_t CtbWaveOut::GetDeviceCount() const {
    return platform.getNumDevs();
}

std::string CtbWaveOut::GetDeviceName(std::uint32_t id) const {
    WAVEOUTCAPSA capabilities{};
    if (platform.getDevCaps(id, &capabilities, sizeof capabilities) != MMSYSERR_NOERROR) {
        return {};
    }
    return {capabilities.szPname, strnlen(capabilities.szPname, sizeof capabilities.szPname)};
}

// --- the device --------------------------------------------------------------------------------------------

std::uint32_t CtbWaveOut::Open() {
    if (handle != nullptr) {
        return kAlreadyOpen;
    }
    if (VirtualSoundCard::IsWanted(GetDeviceName(deviceId))) {
        virtualCard.Open();
    }
    const WAVEFORMATEX format = MonoFormat(sampleRate);
    const HWND window = messageWindow ? messageWindow->Window() : nullptr;
    const MMRESULT result =
        platform.open(&handle, deviceId, &format, reinterpret_cast<DWORD_PTR>(window), 0, CALLBACK_WINDOW);
    if (result != MMSYSERR_NOERROR) {
        handle = nullptr;
    }
    GiveBackLostBlocks();
    return result;
}

std::uint32_t CtbWaveOut::Start() {
    const std::uint32_t result = Open();
    if (result == MMSYSERR_NOERROR) {
        running = true;
        prebuffering = true;
    }
    return result;
}

std::uint32_t CtbWaveOut::Stop() {
    if (!running) {
        return kNotRunning;
    }
    if (handle == nullptr) {
        return kNoDevice;
    }
    running = false;
    return platform.reset(handle);
}

std::uint32_t CtbWaveOut::Close() {
    if (handle == nullptr) {
        return kNoDevice;
    }
    const MMRESULT result = platform.close(handle);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    handle = nullptr;
    virtualCard.Close();
    return MMSYSERR_NOERROR;
}

// --- the way of a block ------------------------------------------------------------------------------------

void CtbWaveOut::Write(dsp::CtbSampleBlock* block) {
    if (block == nullptr) {
        return;
    }
    if (!running || block->Data() == nullptr || block->Capacity() == 0) {
        GiveBack(block);
        return;
    }
    if (mute) {
        Silence(*block);
    } else {
        Scale(*block);
    }
    if (prebuffering) {
        Gather(block);
    } else {
        Send(block);
    }
}

void CtbWaveOut::Silence(dsp::CtbSampleBlock& block) {
    std::fill_n(block.Data(), block.Capacity(), std::int16_t{0});
}

void CtbWaveOut::Scale(dsp::CtbSampleBlock& block) const {
    const std::int32_t gain = static_cast<std::int32_t>(volume) * kGainPerStep;
    std::int16_t* samples = block.Data();
    const std::uint32_t count = block.Capacity();
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::int32_t scaled = (samples[i] * gain) >> kGainShift;
        samples[i] = static_cast<std::int16_t>(std::clamp(scaled, -kLoudest, kLoudest));
    }
}

void CtbWaveOut::Gather(dsp::CtbSampleBlock* block) {
    if (!prebufferQueue.Push(block)) {
        GiveBack(block);
        return;
    }
    if (prebufferQueue.Count() < prebufferBlocks) {
        return;
    }
    for (dsp::CtbSampleBlock* oldest = nullptr; prebufferQueue.Pop(oldest);) {
        Send(oldest);
    }
    prebuffering = false;
}

void CtbWaveOut::Send(dsp::CtbSampleBlock* block) {
    if (blocksInDevice.Count() >= maxBlocks) {
        GiveBack(block);
        return;
    }
    WAVEHDR* header = TakeHeader();
    if (header == nullptr) {
        GiveBack(block);
        return;
    }
    if (!SendWith(header, block)) {
        GiveBack(block);
        Recycle(header);
    }
}

bool CtbWaveOut::SendWith(WAVEHDR* header, dsp::CtbSampleBlock* block) {
    *header = {};
    header->lpData = reinterpret_cast<LPSTR>(block->Data());
    header->dwBufferLength = block->Capacity() * sizeof(std::int16_t);
    header->dwUser = reinterpret_cast<DWORD_PTR>(block);
    // It counts as the device's before the device has it: there must be no failure once it does.
    if (header->lpData == nullptr || !blocksInDevice.Push(header)) {
        return false;
    }
    const bool sent = platform.prepareHeader(handle, header, sizeof *header) == MMSYSERR_NOERROR &&
                      platform.write(handle, header, sizeof *header) == MMSYSERR_NOERROR;
    if (!sent) {
        header->dwFlags = 0;
        static_cast<void>(TakeFromDevice(header));
    }
    return sent;
}

WAVEHDR* CtbWaveOut::TakeHeader() {
    WAVEHDR* header = nullptr;
    return freeHeaders.Pop(header) ? header : new (std::nothrow) WAVEHDR{};
}

void CtbWaveOut::Recycle(WAVEHDR* header) {
    if (!freeHeaders.Push(header)) {
        delete header;
    }
}

void CtbWaveOut::OnBlockDone(WAVEHDR* header) {
    if (header == nullptr || !TakeFromDevice(header)) {
        return;
    }
    dsp::CtbSampleBlock* block = BlockOf(*header);
    if (handle != nullptr) {
        platform.unprepareHeader(handle, header, sizeof *header);
    } else {
        header->dwFlags = 0;
    }
    GiveBack(block);
    Recycle(header);
}

/// Takes a header off those at the device; false if it is not there, or if the device tells that it is not
/// done with it. The order of the others stays. `header` is looked at only if it is one of ours.
bool CtbWaveOut::TakeFromDevice(const WAVEHDR* header) {
    bool found = false;
    const std::size_t count = blocksInDevice.Count();
    for (std::size_t i = 0; i < count; ++i) {
        WAVEHDR* oldest = nullptr;
        blocksInDevice.Pop(oldest);
        if (oldest == header && !IsWithDevice(*header)) {
            found = true;
        } else {
            static_cast<void>(blocksInDevice.Push(oldest)); // where it was: there is room
        }
    }
    return found;
}

void CtbWaveOut::GiveBack(dsp::CtbSampleBlock* block) {
    if (dataSource != nullptr) {
        dataSource->ReturnBlock(block);
    }
}

/// Blocks whose device is gone.
void CtbWaveOut::GiveBackLostBlocks() {
    // Counted: the source may write new blocks meanwhile, which the new device gets.
    for (std::size_t lost = blocksInDevice.Count(); lost > 0; --lost) {
        WAVEHDR* header = nullptr;
        blocksInDevice.Pop(header);
        GiveBack(BlockOf(*header));
        Recycle(header);
    }
}

void CtbWaveOut::GiveBackGatheredBlocks() {
    for (dsp::CtbSampleBlock* block = nullptr; prebufferQueue.Pop(block);) {
        GiveBack(block);
    }
}

void CtbWaveOut::FreeHeaders() {
    for (WAVEHDR* header = nullptr; freeHeaders.Pop(header);) {
        delete header;
    }
}

} // namespace orva::audio
