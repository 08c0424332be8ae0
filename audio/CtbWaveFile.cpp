#include "audio/CtbWaveFile.h"

#include <algorithm>
#include <limits>
#include <new>

namespace orva::audio {

namespace {

constexpr std::uint32_t kWaveForm = FourCharacters("WAVE");
constexpr std::uint32_t kFormatId = FourCharacters("fmt ");
constexpr std::uint32_t kDataId = FourCharacters("data");

constexpr std::uint16_t kFormatPcm = 1;
constexpr std::uint16_t kFormatExtensible = 0xFFFE;
constexpr std::uint16_t kMono = 1;
constexpr std::uint16_t kBytesPerSample = 2;
constexpr std::uint16_t kBitsPerSample = 16;
constexpr std::uint32_t kUnknownSize = 0xFFFFFFFF; ///< of a chunk whose writer could not seek back

/// What an extensible format adds: valid bits, a channel mask, and the sub-format, of which the first two
/// bytes are a format tag.
#pragma pack(push, 1)
struct FormatExtension {
    std::uint16_t validBits;
    std::uint32_t channelMask;
    std::uint16_t subFormatTag;
};
#pragma pack(pop)
static_assert(sizeof(FormatExtension) == 8);

} // namespace

bool CtbWaveFile::Open(const char* newPath) {
    Close();
    if (!OpenFile(newPath, &RiffFile::OpenForReading)) {
        return FinishOpening(WaveOpening::CannotOpen);
    }
    fileSize = static_cast<std::uint32_t>(file.GetSize());
    return FinishOpening(OpenChunks());
}

bool CtbWaveFile::OpenStandardInput() {
    Close();
    fileSize = kNoFileSize;
    return FinishOpening(file.OpenStandardInput() ? OpenChunks() : WaveOpening::CannotOpen);
}

/// Stores a path, unless it is null, and what its name tells; opens the file in one of two ways.
bool CtbWaveFile::OpenFile(const char* newPath, bool (RiffFile::*open)(const char*)) {
    try {
        if (newPath != nullptr) {
            path = newPath;
        }
        fileName = path.FileName().StripExtension();
        isIF = fileName.Extension() == "if";
        return !path.IsEmpty() && (file.*open)(path.Text());
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool CtbWaveFile::FinishOpening(WaveOpening result) {
    opening = result;
    if (result != WaveOpening::Opened) {
        file.Close();
        ForgetFile();
    }
    return result == WaveOpening::Opened;
}

/// Finds the format and the samples.
WaveOpening CtbWaveFile::OpenChunks() {
    RiffChunk riff;
    const RiffSearch search = file.Descend(riff, kRiffId, kWaveForm);
    if (search == RiffSearch::HeaderCut) {
        return WaveOpening::CutShort;
    }
    if (search != RiffSearch::Found) {
        return file.GetPosition() == 0 ? WaveOpening::Empty : WaveOpening::NotWave;
    }
    const std::uint64_t chunksStart = file.GetPosition();
    WaveOpening result = ReadFormat();
    if (result == WaveOpening::Opened) {
        result = OpenData(riff.size);
    }
    RiffChunk misplaced;
    if (result == WaveOpening::NoData && file.Seek(chunksStart) &&
        file.Descend(misplaced, kDataId) == RiffSearch::Found) {
        result = WaveOpening::DataBeforeFormat;
    }
    return result;
}

WaveOpening CtbWaveFile::ReadFormat() {
    RiffChunk chunk;
    const RiffSearch search = file.Descend(chunk, kFormatId);
    if (search != RiffSearch::Found) {
        return search == RiffSearch::ContentsCut ? WaveOpening::CutShort : WaveOpening::NoFormat;
    }
    formatSize = chunk.size;
    // A format of 16 bytes lends two of the next chunk's name; the way on is from the chunk's own end.
    const std::size_t count = file.Read(&format, sizeof(format));
    if (count != sizeof(format)) {
        return count < formatSize ? WaveOpening::NoFormat : WaveOpening::NoData;
    }
    FormatExtension extension{};
    if (formatSize >= sizeof(format) + sizeof(extension)) {
        file.Read(&extension, sizeof(extension));
    }
    subFormat = extension.subFormatTag;
    return file.Ascend(chunk) ? WaveOpening::Opened : WaveOpening::CutShort;
}

WaveOpening CtbWaveFile::OpenData(std::uint32_t riffSize) {
    RiffChunk chunk;
    const RiffSearch search = file.Descend(chunk, kDataId);
    if (search != RiffSearch::Found) {
        return search == RiffSearch::ContentsCut ? WaveOpening::CutShort : WaveOpening::NoData;
    }
    dataSize = chunk.size;
    dataStart = static_cast<std::int32_t>(file.GetPosition());
    isUnfinished = dataSize == kUnknownSize || (dataSize == 0 && riffSize == 0);
    return WaveOpening::Opened;
}

std::uint32_t CtbWaveFile::GetFormatTag() const {
    return format.formatTag == kFormatExtensible ? subFormat : format.formatTag;
}

bool CtbWaveFile::Create(const char* newPath, std::uint32_t sampleRate) {
    if (newPath == nullptr) {
        return false;
    }
    Close();
    if (!OpenFile(newPath, &RiffFile::Create)) {
        ForgetFile();
        return false;
    }
    writing = true;
    if (!CreateChunks(sampleRate)) {
        Close();
        return false;
    }
    fileSize = static_cast<std::uint32_t>(file.GetPosition());
    return true;
}

bool CtbWaveFile::CreateChunks(std::uint32_t sampleRate) {
    RiffChunk formatChunk;
    if (!file.CreateChunk(riffChunk, kRiffId, 0, kWaveForm) ||
        !file.CreateChunk(formatChunk, kFormatId, sizeof(format))) {
        return false;
    }
    format = {.formatTag = kFormatPcm,
              .channels = kMono,
              .samplesPerSecond = sampleRate,
              .bytesPerSecond = sampleRate * kBytesPerSample,
              .blockAlignment = kBytesPerSample,
              .bitsPerSample = kBitsPerSample,
              .extraSize = 0};
    return file.Write(&format, sizeof(format)) == sizeof(format) && file.Ascend(formatChunk) &&
           file.CreateChunk(dataChunk, kDataId, 0);
}

bool CtbWaveFile::Close() {
    if (!IsOpen()) {
        return true;
    }
    bool whole = !hasLostSamples;
    whole = (!writing || FinishChunks()) && whole;
    whole = file.Close() && whole;
    ForgetFile();
    return whole;
}

/// Writes the sizes of what there is. A disk that became full in the middle of a sample leaves half of it,
/// which is not counted.
bool CtbWaveFile::FinishChunks() {
    bool whole = file.Flush();
    file.DropUnwritten();
    if (dataChunk.isBeingMade && (file.GetPosition() - dataChunk.dataOffset) % kBytesPerSample != 0) {
        whole = file.Seek(file.GetPosition() - 1) && whole;
    }
    whole = file.Ascend(dataChunk) && whole;
    whole = file.Ascend(riffChunk) && whole;
    return file.Flush() && whole;
}

void CtbWaveFile::ForgetFile() {
    fileSize = kNoFileSize;
    dataSize = 0;
    dataStart = -1;
    isIF = false;
    dataPosition = 0;
    writing = false;
    riffChunk = dataChunk = {};
    isUnfinished = false;
    hasLostSamples = false;
}

std::uint32_t CtbWaveFile::Seconds(std::uint32_t bytes) const {
    return format.bytesPerSecond == 0 ? 0 : bytes / format.bytesPerSecond;
}

bool CtbWaveFile::Seek(std::uint32_t position) {
    if (writing) {
        return false;
    }
    const std::uint32_t wanted = std::min(position, dataSize) & ~std::uint32_t{kBytesPerSample - 1};
    if (wanted == dataPosition) {
        return false;
    }
    dataPosition = wanted;
    return IsOpen() && file.Seek(std::uint64_t{static_cast<std::uint32_t>(dataStart)} + wanted);
}

bool CtbWaveFile::Rewind() {
    if (writing || !IsOpen() || dataStart < 0) {
        return false;
    }
    dataPosition = 0;
    return file.Seek(static_cast<std::uint64_t>(dataStart));
}

std::uint32_t CtbWaveFile::Read(std::int16_t* buffer, std::uint32_t samples) {
    if (buffer == nullptr || !IsOpen()) {
        return 0;
    }
    constexpr std::size_t kMostSamples = std::numeric_limits<std::size_t>::max() / kBytesPerSample;
    const std::size_t bytes = std::min<std::size_t>(samples, kMostSamples) * kBytesPerSample;
    const std::size_t done = file.Read(buffer, bytes);
    dataPosition += static_cast<std::uint32_t>(done);
    return static_cast<std::uint32_t>(done / kBytesPerSample);
}

std::uint32_t CtbWaveFile::ReadBlock(dsp::CtbSampleBlock& block) {
    const std::uint32_t count = writing ? 0 : Read(block.Data(), block.Capacity());
    block.SetUsed(count);
    return count;
}

bool CtbWaveFile::Write(const std::int16_t* buffer, std::uint32_t samples) {
    if (!IsOpen() || !writing) {
        return false;
    }
    const std::uint64_t bytes = std::uint64_t{samples} * kBytesPerSample;
    const bool isFull = maxFileSize > 0 && fileSize >= maxFileSize;
    if (isFull || !WriteBytes(buffer, bytes)) {
        hasLostSamples = true;
        return false;
    }
    dataSize += static_cast<std::uint32_t>(bytes);
    fileSize += static_cast<std::uint32_t>(bytes);
    return true;
}

bool CtbWaveFile::WriteBytes(const void* bytes, std::uint64_t count) {
    if (count > std::numeric_limits<std::size_t>::max() || (bytes == nullptr && count > 0)) {
        return false;
    }
    return file.Write(bytes, static_cast<std::size_t>(count)) == count;
}

} // namespace orva::audio
