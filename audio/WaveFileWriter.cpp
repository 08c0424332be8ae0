#include "audio/WaveFileWriter.h"

#include <bit>

namespace orva::audio {

namespace {

static_assert(std::endian::native == std::endian::little, "samples are written as they lie in memory");

constexpr std::uint32_t kFormatSize = 18;
constexpr std::uint32_t kBytesPerSample = 2;
constexpr std::uint32_t kChunkHeaderSize = 8;
constexpr std::uint32_t kHeaderSize = 3 * kChunkHeaderSize + 4 + kFormatSize;
constexpr std::uint32_t kMaxDataBytes = 0xFFFFFFFF - kHeaderSize;

/// The header's bytes, in order.
class HeaderBytes {
public:
    void Id(const char* id) {
        for (int i = 0; i < 4; ++i) {
            bytes[count++] = static_cast<std::uint8_t>(id[i]);
        }
    }
    void Number(std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i) {
            bytes[count++] = static_cast<std::uint8_t>(value >> 8 * i);
        }
    }
    const std::uint8_t* Data() const { return bytes; }
    std::size_t Count() const { return count; }

private:
    std::uint8_t bytes[kHeaderSize] = {};
    std::size_t count = 0;
};

} // namespace

bool WaveFileWriter::Create(const std::string& path, std::uint32_t sampleRate) {
    Close();
    file = std::fopen(path.c_str(), "wb");
    rate = sampleRate;
    dataBytes = 0;
    failed = file == nullptr || !WriteHeader(0);
    return !failed;
}

bool WaveFileWriter::WriteHeader(std::uint32_t riffSize) {
    HeaderBytes header;
    header.Id("RIFF");
    header.Number(riffSize, 4);
    header.Id("WAVE");
    header.Id("fmt ");
    header.Number(kFormatSize, 4);
    header.Number(1, 2); // PCM
    header.Number(1, 2); // mono
    header.Number(rate, 4);
    header.Number(rate * kBytesPerSample, 4);
    header.Number(kBytesPerSample, 2);
    header.Number(8 * kBytesPerSample, 2);
    header.Number(0, 2); // no extra bytes
    header.Id("data");
    header.Number(dataBytes, 4);
    return std::fwrite(header.Data(), 1, header.Count(), file) == header.Count();
}

bool WaveFileWriter::Write(const std::int16_t* samples, std::size_t count) {
    if (file == nullptr || failed || count > (kMaxDataBytes - dataBytes) / kBytesPerSample) {
        failed = true;
        return false;
    }
    failed = std::fwrite(samples, kBytesPerSample, count, file) != count;
    dataBytes += static_cast<std::uint32_t>(count) * kBytesPerSample;
    return !failed;
}

bool WaveFileWriter::Close() {
    if (file == nullptr) {
        return !failed;
    }
    if (!failed) {
        failed =
            std::fseek(file, 0, SEEK_SET) != 0 || !WriteHeader(kHeaderSize - kChunkHeaderSize + dataBytes);
    }
    failed = std::fclose(file) != 0 || failed;
    file = nullptr;
    return !failed;
}

} // namespace orva::audio
