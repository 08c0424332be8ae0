#include "audio/CtbWaveIn.h"

#include "audio/CtbWaveInMsgHandlerWnd.h"
#include "audio/WaveHeader.h"
#include "toolkit/TmyApplication.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace orva::audio {

namespace {

constexpr DWORD kBytesPerSample = sizeof(std::int16_t);

} // namespace

CtbWaveIn::CtbWaveIn(std::uint32_t count, std::uint32_t samples, const WaveInPlatform& waveIn)
    : platform(waveIn),
      bufferCount(count),
      bufferSamples(samples),
      messageWindow(std::make_unique<CtbWaveInMsgHandlerWnd>(this)),
      blocks(std::make_unique<dsp::CtbSampleBlock[]>(count)),
      headers(std::make_unique<WAVEHDR[]>(count)) {
    messageWindow->onDestroy.Bind<&CtbWaveIn::ForgetMessageWindow>(this);
    std::for_each_n(blocks.get(), bufferCount, [this](auto& block) { block.Acquire(bufferSamples); });
}

CtbWaveIn::~CtbWaveIn() {
    Stop();
    toolkit::TmyApplication::ProcessPendingMessages();
    Close();
    toolkit::TmyApplication::ProcessPendingMessages();
    messageWindow.reset();
    if (closing && buffersQueued > 0) {
        static_cast<void>(blocks.release());
        static_cast<void>(headers.release());
    }
}

/// The window went away, and deletes itself. (Nothing is left to release if it is we who delete it.)
void CtbWaveIn::ForgetMessageWindow(toolkit::TmyControl* /*sender*/) {
    static_cast<void>(messageWindow.release());
}

void CtbWaveIn::SetDevice(std::uint32_t id) {
    Stop();
    Close();
    deviceId = id;
}

std::uint32_t CtbWaveIn::GetDeviceCount() const {
    return platform.getNumDevs();
}

std::string CtbWaveIn::GetDeviceName(std::uint32_t id) const {
    WAVEINCAPSA capabilities{};
    if (platform.getDevCaps(id, &capabilities, sizeof capabilities) != MMSYSERR_NOERROR) {
        return {};
    }
    return {capabilities.szPname, strnlen(capabilities.szPname, sizeof capabilities.szPname)};
}

bool CtbWaveIn::Open() {
    if (deviceId == kNoDevice || closing) {
        return false;
    }
    if (handle != nullptr) {
        return Start();
    }
    const WAVEFORMATEX format = MonoFormat(kSampleRate);
    const HWND window = messageWindow ? messageWindow->Window() : nullptr;
    if (platform.open(&handle, deviceId, &format, reinterpret_cast<DWORD_PTR>(window), 0, CALLBACK_WINDOW) !=
        MMSYSERR_NOERROR) {
        handle = nullptr;
        return false;
    }
    // What a former device kept, or left started when it closed by itself, does not bind this one.
    buffersQueued = 0;
    started = false;
    PrepareHeaders();
    return Start();
}

/// What cannot be prepared will be refused when it is queued.
void CtbWaveIn::PrepareHeaders() {
    for (std::uint32_t index = 0; index < bufferCount; ++index) {
        WAVEHDR& header = headers[index];
        header.lpData = reinterpret_cast<LPSTR>(blocks[index].Data());
        header.dwBufferLength = blocks[index].Capacity() * kBytesPerSample;
        header.dwFlags = 0;
        header.dwUser = index;
        platform.prepareHeader(handle, &header, sizeof header);
    }
}

bool CtbWaveIn::Start() {
    if (handle == nullptr) {
        return false;
    }
    if (started) {
        return true;
    }
    for (std::uint32_t index = 0; index < bufferCount; ++index) {
        Requeue(static_cast<std::int32_t>(index));
    }
    stopping = false;
    started = platform.start(handle) == MMSYSERR_NOERROR;
    return started;
}

void CtbWaveIn::Stop() {
    if (handle == nullptr) {
        return;
    }
    stopping = true;
    platform.reset(handle);
    started = false;
}

void CtbWaveIn::Close() {
    for (std::uint32_t index = 0; index < bufferCount; ++index) {
        platform.unprepareHeader(handle, &headers[index], sizeof(WAVEHDR));
    }
    if (handle == nullptr) {
        return;
    }
    closing = true;
    platform.close(handle);
    handle = nullptr;
}

bool CtbWaveIn::Requeue(std::int32_t index) {
    if (!HasIndex(index)) {
        return false;
    }
    WAVEHDR& header = headers[index];
    if (IsWithDevice(header)) {
        return false; // its fields are the device's
    }
    header.dwBytesRecorded = 0;
    header.dwFlags = WHDR_PREPARED;
    if (platform.addBuffer(handle, &header, sizeof header) != MMSYSERR_NOERROR) {
        return false;
    }
    ++buffersQueued;
    return true;
}

dsp::CtbSampleBlock* CtbWaveIn::GetBlock(std::int32_t index) const {
    return HasIndex(index) ? &blocks[index] : nullptr;
}

bool CtbWaveIn::HasIndex(std::int32_t index) const {
    return index >= 0 && static_cast<std::uint32_t>(index) < bufferCount;
}

bool CtbWaveIn::IsOurs(const WAVEHDR* header) const {
    const WAVEHDR* first = headers.get();
    const std::less<> isBefore;
    return !isBefore(header, first) && isBefore(header, first + bufferCount);
}

void CtbWaveIn::OnDeviceClosed() {
    closing = false;
    stopping = false;
    handle = nullptr;
}

void CtbWaveIn::OnBufferFilled(const WAVEHDR* header) {
    if (!IsOurs(header)) {
        return;
    }
    const auto index = static_cast<std::int32_t>(header->dwUser);
    if (!HasIndex(index) || IsWithDevice(*header)) {
        return;
    }
    if (buffersQueued > 0) {
        --buffersQueued;
    }
    if (closing || stopping) {
        return;
    }
    dsp::CtbSampleBlock& block = blocks[index];
    block.SetUsed(std::min<std::uint32_t>(header->dwBytesRecorded / kBytesPerSample, block.Capacity()));
    if (owner != nullptr) {
        owner->OnWaveInBuffer(index);
    } else {
        Requeue(index);
    }
}

} // namespace orva::audio
