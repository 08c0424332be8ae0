#include "audio/WaveFileReader.h"

#include <algorithm>
#include <limits>

namespace orva::audio {

namespace {

constexpr std::uint32_t kMinFormatSize = 16;
constexpr std::uint32_t kFormatPcm = 1;
constexpr std::uint32_t kBitsPerSample = 16;

} // namespace

const char* Describe(WaveFault fault) {
    switch (fault) {
    case WaveFault::None:
        return "no fault";
    case WaveFault::CannotOpen:
        return "cannot be opened";
    case WaveFault::NotWave:
        return "is not a WAV file";
    case WaveFault::NotPcm:
        return "does not hold plain PCM samples";
    case WaveFault::NotMono:
        return "has more than one channel; a mono recording is needed";
    case WaveFault::NotSixteenBit:
        return "does not have 16 bits a sample";
    case WaveFault::HeaderCutShort:
        return "is cut short inside its header";
    case WaveFault::NoSamples:
        return "is empty: there are no samples in it";
    }
    return "unknown fault";
}

WaveFault WaveFileReader::Open(const std::string& path) {
    Close();
    file.Open(path.c_str());
    return Check();
}

WaveFault WaveFileReader::OpenStandardInput() {
    Close();
    file.OpenStandardInput();
    return Check();
}

void WaveFileReader::Close() {
    file.Close();
    sampleRate = promisedBytes = 0;
    readSamples = 0;
    hasFirstSample = atEnd = false;
}

WaveFault WaveFileReader::Check() {
    const WaveFault fault = Fault();
    if (fault != WaveFault::None) {
        Close();
        return fault;
    }
    hasFirstSample = file.Read(&firstSample, 1) == 1;
    if (!hasFirstSample) {
        Close();
        return WaveFault::NoSamples;
    }
    sampleRate = file.GetSampleRate();
    promisedBytes = file.IsUnfinished() ? 0 : file.GetDataSize();
    return WaveFault::None;
}

/// What the header says against decoding.
WaveFault WaveFileReader::Fault() const {
    switch (file.GetOpening()) {
    case WaveOpening::Opened:
        break;
    case WaveOpening::CannotOpen:
        return WaveFault::CannotOpen;
    case WaveOpening::NotWave:
    case WaveOpening::DataBeforeFormat:
        return WaveFault::NotWave;
    case WaveOpening::NoFormat:
    case WaveOpening::CutShort:
        return WaveFault::HeaderCutShort;
    case WaveOpening::Empty:
    case WaveOpening::NoData:
        return WaveFault::NoSamples;
    }
    if (file.GetFormatSize() < kMinFormatSize) {
        return WaveFault::NotWave;
    }
    if (file.GetFormatTag() != kFormatPcm) {
        return WaveFault::NotPcm;
    }
    if (file.GetChannels() != 1) {
        return WaveFault::NotMono;
    }
    if (file.GetBitsPerSample() != kBitsPerSample) {
        return WaveFault::NotSixteenBit;
    }
    if (file.GetSampleRate() == 0) {
        return WaveFault::NotWave;
    }
    const bool hasSamples = file.IsUnfinished() || file.GetDataSize() >= sizeof(std::int16_t);
    return hasSamples ? WaveFault::None : WaveFault::NoSamples;
}

std::size_t WaveFileReader::Read(std::int16_t* samples, std::size_t capacity) {
    if (!file.IsOpen() || samples == nullptr || capacity == 0 || atEnd) {
        return 0;
    }
    std::uint64_t wanted = std::min<std::uint64_t>(capacity, std::numeric_limits<std::uint32_t>::max());
    if (!file.IsUnfinished()) {
        wanted = std::min(wanted, GetPromisedSamples() - readSamples);
    }
    std::uint32_t count = 0;
    if (hasFirstSample && wanted > 0) {
        samples[count++] = firstSample;
        hasFirstSample = false;
    }
    count += file.Read(samples + count, static_cast<std::uint32_t>(wanted) - count);
    readSamples += count;
    atEnd = count < capacity;
    return count;
}

} // namespace orva::audio
