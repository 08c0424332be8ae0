/// Where samples come from: the receiver's stream, on a thread of the library's, or the wave input.

#include "plugin/COrvaPlugin.h"
#include "ui/COrvaPluginWindow.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace orva::plugin {

namespace {

constexpr std::uint32_t kBytesPerSample = sizeof(std::int16_t);
constexpr UINT kInputBlockMessage = WM_USER + 1;

// The receiver's memory.
constexpr std::size_t kMemorySize = 256;
constexpr std::size_t kCrossoverOffset = 140;
constexpr std::size_t kShapeOffset = 216;
constexpr std::size_t kShapeLength = 11;
constexpr std::size_t kShapeSumOffset = 227;
constexpr int kLowestShape = 113;
constexpr int kHighestShape = 143;
constexpr int kShapeZero = 128;

/// Holds the lock of the input queues for one queue operation.
class QueueLock {
public:
    explicit QueueLock(std::optional<CRITICAL_SECTION>& inputLock) : lock(*inputLock) {
        EnterCriticalSection(&lock);
    }
    ~QueueLock() { LeaveCriticalSection(&lock); }
    QueueLock(const QueueLock&) = delete;
    QueueLock& operator=(const QueueLock&) = delete;

private:
    CRITICAL_SECTION& lock;
};

} // namespace

// --- connection --------------------------------------------------------------------------------------------

bool COrvaPlugin::ConnectReceiver(std::uint32_t handle) {
    if (handle == 0 || !receiverLibrary.Load()) {
        return false;
    }
    for (dsp::CtbSampleBlock& block : inputBlocks) {
        if (block.Acquire(kInputBlockSamples) == nullptr || !freeInputBlocks.Push(&block)) { // zeroed
            throw std::bad_alloc();
        }
    }
    // The queue takes its room here: the reader allocates nothing.
    dsp::CtbSampleBlock* first = nullptr;
    if (!filledInputBlocks.Push(first)) {
        throw std::bad_alloc();
    }
    filledInputBlocks.Pop(first);
    InitializeCriticalSection(&inputLock.emplace());
    receiverHandle = handle;
    inputSampleRate = kReceiverRate;
    BuildInputDecimator();
    spareInputBlock.Acquire(kInputBlockSamples);
    receiverStreaming = true;
    return true;
}

/// Starts the stream.
///
/// \return whether it runs
bool COrvaPlugin::TryCodecStart() {
    if (receiverLibrary.CodecStart(receiverHandle, ReaderCallback, this) == 0) {
        return false;
    }
    if (waveIn) {
        waveIn->Stop();
    }
    SetProcessingRate(inputSampleRate, false);
    return true;
}

void COrvaPlugin::RetryCodecStart() {
    const Frame frame(*this);
    if (closing) {
        return;
    }
    if (receiverStreaming && receiverLibrary.CodecStart != nullptr && !TryCodecStart()) {
        return; // at the next tick again
    }
    if (window) {
        window->StopRetryTimer();
    }
}

void COrvaPlugin::ReadReceiverMemory(std::uint32_t handle) {
    if (handle == 0) {
        return;
    }
    if ((!receiverLibrary.IsLoaded() || receiverLibrary.K7GetEEP == nullptr) && !receiverLibrary.Load()) {
        return;
    }
    std::array<std::uint8_t, kMemorySize> memory{};
    if (receiverLibrary.K7GetEEP(handle, memory.data()) == 0) {
        return;
    }
    std::memcpy(&spectrumCrossover, memory.data() + kCrossoverOffset, sizeof spectrumCrossover);

    std::array<std::int8_t, kShapeLength> shape{};
    std::uint16_t sum = 0;
    for (std::size_t i = 0; i < kShapeLength; ++i) {
        const int value = memory[kShapeOffset + i];
        // Only the sum is of limited values; the table keeps what the receiver holds.
        sum = static_cast<std::uint16_t>(sum + std::clamp(value, kLowestShape, kHighestShape));
        shape[i] = static_cast<std::int8_t>(value - kShapeZero);
    }
    std::uint16_t expected = 0;
    std::memcpy(&expected, memory.data() + kShapeSumOffset, sizeof expected);
    if (sum == expected && window) {
        window->SetSpectrumShape(shape.data(), static_cast<std::uint32_t>(shape.size()));
    }
}

// --- the library's thread ----------------------------------------------------------------------------------

void WINAPI COrvaPlugin::ReaderCallback(void* context) {
    if (context != nullptr) {
        static_cast<COrvaPlugin*>(context)->ReadAvailableSamples();
    }
}

/// Copies what waits in the library into blocks of the pool, and posts a message for each full one. With no
/// block free the samples are read and lost. [receiver thread]
void COrvaPlugin::ReadAvailableSamples() {
    if (!receiverStreaming) {
        return;
    }
    // Kept from round to round: when the pool runs dry in the very call that handed a block over, the next
    // samples go into that block's memory once more.
    std::int16_t* target = nullptr;
    std::uint32_t read = 1;
    while (read != 0) {
        if (fillingInputBlock == nullptr) {
            TakeBlockToFill();
        }
        if (fillingInputBlock != nullptr) {
            target = fillingInputBlock->Data();
        }
        if (target == nullptr) {
            target = spareInputBlock.Data();
        }
        if (target == nullptr) {
            return;
        }
        const std::uint32_t wanted = kInputBlockSamples - inputBlockFill;
        const std::int32_t bytes =
            receiverLibrary.CodecRead(receiverHandle, target + inputBlockFill, wanted * kBytesPerSample);
        read = bytes > 0 ? std::min(static_cast<std::uint32_t>(bytes) / kBytesPerSample, wanted) : 0;
        inputBlockFill += read;
        if (inputBlockFill >= kInputBlockSamples) {
            if (fillingInputBlock != nullptr) {
                HandOverFilledBlock();
            }
            inputBlockFill = 0;
        }
        if (read < wanted) {
            read = 0;
        }
    }
}

/// There is none when the pool has run dry. [receiver thread]
void COrvaPlugin::TakeBlockToFill() {
    {
        const QueueLock lock(inputLock);
        freeInputBlocks.Pop(fillingInputBlock);
    }
    inputBlockFill = 0;
}

/// [receiver thread]
void COrvaPlugin::HandOverFilledBlock() {
    fillingInputBlock->SetUsed(kInputBlockSamples);
    {
        const QueueLock lock(inputLock);
        filledInputBlocks.Push(fillingInputBlock);
    }
    fillingInputBlock = nullptr;
    if (const HWND receiver = windowHandle; receiver != nullptr) {
        PostMessageA(receiver, kInputBlockMessage, 0, 0);
    }
}

// --- the window's thread -----------------------------------------------------------------------------------

void COrvaPlugin::ProcessNextInputBlock() {
    const Frame frame(*this);
    if (walking) {
        ++waitingInputBlocks; // the host pumps messages inside a call of ours
        return;
    }
    TakeInputBlock();
    ProcessWaitingInput();
}

void COrvaPlugin::TakeInputBlock() {
    if (!receiverStreaming || closing) {
        return;
    }
    dsp::CtbSampleBlock* block = nullptr;
    {
        const QueueLock lock(inputLock);
        filledInputBlocks.Pop(block);
    }
    if (block == nullptr) {
        return;
    }
    if (skipInputSamples != 0) {
        skipInputSamples -= std::min(skipInputSamples, block->Used());
    } else {
        ProcessData(block->Data(), block->Used());
    }
    const QueueLock lock(inputLock);
    freeInputBlocks.Push(block);
}

void COrvaPlugin::OnWaveInBuffer(std::int32_t index) {
    const Frame frame(*this);
    if (walking) {
        if (!waitingWaveInBuffers.Push(index) && waveIn) {
            waveIn->Requeue(index); // unprocessed, but not lost to the device
        }
        return;
    }
    TakeWaveInBuffer(index);
    ProcessWaitingInput();
}

void COrvaPlugin::TakeWaveInBuffer(std::int32_t index) {
    if (!waveIn) {
        return;
    }
    const dsp::CtbSampleBlock* block = waveIn->GetBlock(index);
    if (block != nullptr && !closing) {
        ProcessData(block->Data(), block->Used());
    }
    waveIn->Requeue(index);
}

/// Takes what arrived while a block was under way, in its order.
void COrvaPlugin::ProcessWaitingInput() {
    std::int32_t index = 0;
    while (!walking && (waitingInputBlocks > 0 || waitingWaveInBuffers.Pop(index))) {
        if (waitingInputBlocks > 0) {
            --waitingInputBlocks;
            TakeInputBlock();
        } else {
            TakeWaveInBuffer(index);
        }
    }
}

} // namespace orva::plugin
