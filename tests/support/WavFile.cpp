#include "tests/support/WavFile.h"

#include <string_view>

namespace orva::test {

namespace {

constexpr std::uint32_t kFormatChunkBytes = 18;
constexpr std::uint32_t kChunkHeaderBytes = 8;
constexpr std::uint16_t kFormatPcm = 1;
constexpr std::uint16_t kChannels = 1;
constexpr std::uint16_t kBytesPerSample = 2;
constexpr std::uint16_t kBitsPerSample = 16;

void AppendText(std::vector<std::uint8_t>& bytes, std::string_view text) {
    for (const char character : text) {
        bytes.push_back(static_cast<std::uint8_t>(character));
    }
}

void AppendLittleEndian(std::vector<std::uint8_t>& bytes, std::uint32_t value, int byteCount) {
    for (int byte = 0; byte < byteCount; ++byte) {
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 * byte));
    }
}

} // namespace

std::vector<std::uint8_t> WavBytes(std::span<const std::int16_t> samples, int sampleRate) {
    const auto rate = static_cast<std::uint32_t>(sampleRate);
    const auto dataBytes = static_cast<std::uint32_t>(samples.size() * kBytesPerSample);
    std::vector<std::uint8_t> bytes;
    AppendText(bytes, "RIFF");
    AppendLittleEndian(bytes, 4 + kChunkHeaderBytes + kFormatChunkBytes + kChunkHeaderBytes + dataBytes, 4);
    AppendText(bytes, "WAVEfmt ");
    AppendLittleEndian(bytes, kFormatChunkBytes, 4);
    AppendLittleEndian(bytes, kFormatPcm, 2);
    AppendLittleEndian(bytes, kChannels, 2);
    AppendLittleEndian(bytes, rate, 4);
    AppendLittleEndian(bytes, rate * kBytesPerSample, 4);
    AppendLittleEndian(bytes, kBytesPerSample, 2);
    AppendLittleEndian(bytes, kBitsPerSample, 2);
    AppendLittleEndian(bytes, 0, 2); // no extension
    AppendText(bytes, "data");
    AppendLittleEndian(bytes, dataBytes, 4);
    for (const std::int16_t sample : samples) {
        AppendLittleEndian(bytes, static_cast<std::uint16_t>(sample), kBytesPerSample);
    }
    return bytes;
}

} // namespace orva::test
