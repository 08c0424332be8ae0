#include "tests/audio/FakeWaveIn.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

FakeWaveIn* device = nullptr;

constexpr std::uintptr_t kHandleBase = 0x1A1A0000;

} // namespace

FakeWaveIn::FakeWaveIn(CallLog& callLog) : log(callLog) {
    EXPECT_EQ(device, nullptr);
    device = this;
    platform.getNumDevs = &FakeWaveIn::GetNumDevs;
    platform.getDevCaps = &FakeWaveIn::GetDevCaps;
    platform.open = &FakeWaveIn::Open;
    platform.prepareHeader = &FakeWaveIn::PrepareHeader;
    platform.addBuffer = &FakeWaveIn::AddBuffer;
    platform.start = &FakeWaveIn::Start;
    platform.reset = &FakeWaveIn::Reset;
    platform.unprepareHeader = &FakeWaveIn::UnprepareHeader;
    platform.close = &FakeWaveIn::Close;
}

FakeWaveIn::~FakeWaveIn() {
    device = nullptr;
}

HWAVEIN FakeWaveIn::Handle() const {
    return reinterpret_cast<HWAVEIN>(kHandleBase + generation);
}

MMRESULT FakeWaveIn::CheckHandle(HWAVEIN handle) const {
    if (isGone) {
        return MMSYSERR_NODRIVER;
    }
    return isOpen && handle == Handle() ? MMSYSERR_NOERROR : MMSYSERR_INVALHANDLE;
}

// --- what the test says ------------------------------------------------------------------------------------

WAVEHDR* FakeWaveIn::TakeFilled(DWORD bytes, std::int16_t firstSample) {
    if (queue.empty()) {
        ADD_FAILURE() << "there is no buffer at the device";
        return nullptr;
    }
    WAVEHDR* header = queue.front();
    queue.erase(queue.begin());
    auto* samples = reinterpret_cast<std::int16_t*>(header->lpData);
    const DWORD count = std::min(bytes, header->dwBufferLength) / sizeof(std::int16_t);
    for (DWORD i = 0; i < count; ++i) {
        samples[i] = static_cast<std::int16_t>(firstSample + static_cast<std::int16_t>(i));
    }
    header->dwBytesRecorded = bytes;
    header->dwFlags = (header->dwFlags & ~static_cast<DWORD>(WHDR_INQUEUE)) | WHDR_DONE;
    return header;
}

void FakeWaveIn::Fill(DWORD bytes, std::int16_t firstSample) {
    ReportAgain(TakeFilled(bytes, firstSample));
}

void FakeWaveIn::PostFilled(DWORD bytes, std::int16_t firstSample) {
    PostMessageA(openings.back().window, MM_WIM_DATA, reinterpret_cast<WPARAM>(Handle()),
                 reinterpret_cast<LPARAM>(TakeFilled(bytes, firstSample)));
}

void FakeWaveIn::ReportAgain(const WAVEHDR* header) const {
    Report(MM_WIM_DATA, reinterpret_cast<LPARAM>(header));
}

void FakeWaveIn::Report(UINT message, LPARAM lParam) const {
    SendMessageA(openings.back().window, message, reinterpret_cast<WPARAM>(Handle()), lParam);
}

void FakeWaveIn::Vanish() {
    isGone = true;
    isOpen = false;
    isRecording = false;
    queue.clear();
}

// --- the calls ---------------------------------------------------------------------------------------------

UINT WINAPI FakeWaveIn::GetNumDevs() {
    return static_cast<UINT>(device->deviceNames.size());
}

MMRESULT WINAPI FakeWaveIn::GetDevCaps(UINT_PTR id, LPWAVEINCAPSA capabilities, UINT size) {
    EXPECT_EQ(size, sizeof(WAVEINCAPSA));
    if (id >= device->deviceNames.size()) {
        return MMSYSERR_BADDEVICEID;
    }
    // As long as it may be, the name has no zero at its end.
    std::memset(capabilities, 'x', sizeof *capabilities);
    const std::string& name = device->deviceNames[id];
    const std::size_t length = std::min(name.size() + 1, sizeof capabilities->szPname);
    std::memcpy(capabilities->szPname, name.c_str(), length);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI FakeWaveIn::Open(LPHWAVEIN handle, UINT id, LPCWAVEFORMATEX format, DWORD_PTR callback,
                                 DWORD_PTR instance, DWORD flags) {
    device->log.Add("open");
    device->openings.push_back({id, *format, reinterpret_cast<HWND>(callback), instance, flags});
    EXPECT_FALSE(device->isOpen);
    ++device->generation;
    *handle = device->Handle(); // also when it fails: nobody may look at it then
    if (device->isGone) {
        return MMSYSERR_NODRIVER;
    }
    if (id >= device->deviceNames.size()) {
        return MMSYSERR_BADDEVICEID;
    }
    if (device->openResult != MMSYSERR_NOERROR) {
        return device->openResult;
    }
    device->isOpen = true;
    PostMessageA(device->openings.back().window, MM_WIM_OPEN, reinterpret_cast<WPARAM>(*handle), 0);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI FakeWaveIn::PrepareHeader(HWAVEIN handle, LPWAVEHDR header, UINT size) {
    if (device->logsTraffic) {
        device->log.Add("prepare");
    }
    EXPECT_EQ(size, 32U);
    device->prepared.push_back(*header);
    const MMRESULT result = device->CheckHandle(handle);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    if (device->prepareFault.Strikes()) {
        return MMSYSERR_NOMEM;
    }
    header->dwFlags |= WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI FakeWaveIn::AddBuffer(HWAVEIN handle, LPWAVEHDR header, UINT size) {
    if (device->logsTraffic) {
        device->log.Add("add");
    }
    EXPECT_EQ(size, 32U);
    const MMRESULT result = device->CheckHandle(handle);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    if (device->addFault.Strikes()) {
        return MMSYSERR_ERROR;
    }
    if (header->lpData == nullptr) {
        return MMSYSERR_INVALPARAM;
    }
    EXPECT_EQ(std::count(device->queue.begin(), device->queue.end(), header), 0) << "queued twice";
    device->added.push_back(*header);
    header->dwFlags |= WHDR_INQUEUE;
    device->queue.push_back(header);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI FakeWaveIn::Start(HWAVEIN handle) {
    device->log.Add("start");
    const MMRESULT result = device->CheckHandle(handle);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    device->isRecording = device->startResult == MMSYSERR_NOERROR;
    return device->startResult;
}

MMRESULT WINAPI FakeWaveIn::Reset(HWAVEIN handle) {
    device->log.Add("reset");
    const MMRESULT result = device->CheckHandle(handle);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    device->isRecording = false;
    while (!device->isStalled && !device->queue.empty()) {
        device->PostFilled(0);
    }
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI FakeWaveIn::UnprepareHeader(HWAVEIN handle, LPWAVEHDR header, UINT size) {
    if (device->logsTraffic) {
        device->log.Add("unprepare");
    }
    EXPECT_EQ(size, 32U);
    const MMRESULT result = device->CheckHandle(handle);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    if ((header->dwFlags & WHDR_INQUEUE) != 0) {
        return WAVERR_STILLPLAYING;
    }
    header->dwFlags &= ~static_cast<DWORD>(WHDR_PREPARED);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI FakeWaveIn::Close(HWAVEIN handle) {
    device->log.Add("close");
    if (device->onClose) {
        device->onClose();
    }
    const MMRESULT result = device->CheckHandle(handle);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    if (device->closeResult != MMSYSERR_NOERROR) {
        return device->closeResult;
    }
    if (!device->queue.empty()) {
        return WAVERR_STILLPLAYING;
    }
    device->isOpen = false;
    PostMessageA(device->openings.back().window, MM_WIM_CLOSE, reinterpret_cast<WPARAM>(handle), 0);
    return MMSYSERR_NOERROR;
}

} // namespace orva::test
