#include "tests/audio/FakeWaveOut.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

FakeWaveOut* device = nullptr;

constexpr std::uintptr_t kHandleBase = 0x5A5A0000;

} // namespace

FakeWaveOut::FakeWaveOut(CallLog& callLog) : log(callLog) {
    EXPECT_EQ(device, nullptr);
    device = this;
    platform.getNumDevs = &FakeWaveOut::GetNumDevs;
    platform.getDevCaps = &FakeWaveOut::GetDevCaps;
    platform.open = &FakeWaveOut::Open;
    platform.prepareHeader = &FakeWaveOut::PrepareHeader;
    platform.write = &FakeWaveOut::Write;
    platform.unprepareHeader = &FakeWaveOut::UnprepareHeader;
    platform.reset = &FakeWaveOut::Reset;
    platform.close = &FakeWaveOut::Close;
}

FakeWaveOut::~FakeWaveOut() {
    device = nullptr;
}

HWAVEOUT FakeWaveOut::Handle() const {
    return reinterpret_cast<HWAVEOUT>(kHandleBase + generation);
}

MMRESULT FakeWaveOut::CheckHandle(HWAVEOUT handle) const {
    if (isGone) {
        return MMSYSERR_NODRIVER;
    }
    return isOpen && handle == Handle() ? MMSYSERR_NOERROR : MMSYSERR_INVALHANDLE;
}

// --- what the test says ------------------------------------------------------------------------------------

WAVEHDR* FakeWaveOut::TakeOldest() {
    if (queue.empty()) {
        ADD_FAILURE() << "there is no block at the device";
        return nullptr;
    }
    WAVEHDR* header = queue.front();
    queue.erase(queue.begin());
    header->dwFlags = (header->dwFlags & ~static_cast<DWORD>(WHDR_INQUEUE)) | WHDR_DONE;
    return header;
}

void FakeWaveOut::FinishBlock() {
    Report(MM_WOM_DONE, reinterpret_cast<LPARAM>(TakeOldest()));
}

void FakeWaveOut::FinishAllBlocks() {
    while (!queue.empty()) {
        FinishBlock();
    }
}

void FakeWaveOut::FinishHeader(WAVEHDR* header) {
    const auto found = std::find(queue.begin(), queue.end(), header);
    ASSERT_NE(found, queue.end());
    std::rotate(queue.begin(), found, found + 1);
    FinishBlock();
}

void FakeWaveOut::Vanish() {
    isGone = true;
    isOpen = false;
    queue.clear();
}

void FakeWaveOut::ReportAgain(WAVEHDR* header) const {
    Report(MM_WOM_DONE, reinterpret_cast<LPARAM>(header));
}

void FakeWaveOut::Report(UINT message, LPARAM lParam) const {
    SendMessageA(openings.back().window, message, reinterpret_cast<WPARAM>(Handle()), lParam);
}

void FakeWaveOut::PostFinishedBlock() {
    PostMessageA(openings.back().window, MM_WOM_DONE, reinterpret_cast<WPARAM>(Handle()),
                 reinterpret_cast<LPARAM>(TakeOldest()));
}

// --- the calls ---------------------------------------------------------------------------------------------

UINT WINAPI FakeWaveOut::GetNumDevs() {
    return static_cast<UINT>(device->deviceNames.size());
}

MMRESULT WINAPI FakeWaveOut::GetDevCaps(UINT_PTR id, LPWAVEOUTCAPSA capabilities, UINT size) {
    EXPECT_EQ(size, sizeof(WAVEOUTCAPSA));
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

MMRESULT WINAPI FakeWaveOut::Open(LPHWAVEOUT handle, UINT id, LPCWAVEFORMATEX format, DWORD_PTR callback,
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
    PostMessageA(device->openings.back().window, MM_WOM_OPEN, reinterpret_cast<WPARAM>(*handle), 0);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI FakeWaveOut::PrepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    if (device->logsTraffic) {
        device->log.Add("prepare");
    }
    EXPECT_EQ(size, 32U);
    if (device->keepsPlayed) {
        device->prepared.push_back(*header);
    }
    const MMRESULT result = device->CheckHandle(handle);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    if (device->prepareFault.Strikes()) {
        return MMSYSERR_NOMEM;
    }
    EXPECT_EQ(header->dwFlags & WHDR_INQUEUE, 0U) << "prepared while the device has it";
    header->dwFlags |= WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI FakeWaveOut::Write(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    if (device->logsTraffic) {
        device->log.Add("write");
    }
    EXPECT_EQ(size, 32U);
    const MMRESULT result = device->CheckHandle(handle);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    if (device->writeFault.Strikes()) {
        return MMSYSERR_ERROR;
    }
    EXPECT_EQ(header->dwFlags, static_cast<DWORD>(WHDR_PREPARED));
    EXPECT_EQ(std::count(device->queue.begin(), device->queue.end(), header), 0) << "written twice";
    header->dwFlags |= WHDR_INQUEUE;
    device->queue.push_back(header);
    device->mostInside = std::max(device->mostInside, device->queue.size());
    if (device->keepsPlayed) {
        const auto* samples = reinterpret_cast<const std::int16_t*>(header->lpData);
        device->played.push_back(
            {reinterpret_cast<dsp::CtbSampleBlock*>(header->dwUser),
             std::vector<std::int16_t>(samples, samples + header->dwBufferLength / sizeof(std::int16_t))});
        device->written.push_back(header);
    }
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI FakeWaveOut::UnprepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
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

MMRESULT WINAPI FakeWaveOut::Reset(HWAVEOUT handle) {
    device->log.Add("reset");
    const MMRESULT result = device->CheckHandle(handle);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    while (!device->isStalled && !device->queue.empty()) {
        device->PostFinishedBlock();
    }
    return device->resetResult;
}

MMRESULT WINAPI FakeWaveOut::Close(HWAVEOUT handle) {
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
    PostMessageA(device->openings.back().window, MM_WOM_CLOSE, reinterpret_cast<WPARAM>(handle), 0);
    return MMSYSERR_NOERROR;
}

} // namespace orva::test
