/// The receiver library as a plug-in finds it: by name, with stack-cleaning functions.
#include "tests/plugin/LoadedLibrary.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WavFile.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>
#include <windows.h>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

using ReceiverCallback = void(__stdcall*)(void* context);
using CodecStartFunction = int(__stdcall*)(std::uint32_t, ReceiverCallback, void*);
using CodecStopFunction = int(__stdcall*)(std::uint32_t);
using CodecReadFunction = int(__stdcall*)(std::uint32_t, void*, std::uint32_t);
using ReadMemoryFunction = int(__stdcall*)(std::uint32_t, void*);
using InvertFunction = int(__stdcall*)(std::uint32_t, std::int16_t*, std::uint32_t, float, int, int);

/// Reads a stream as the plug-in does: everything, from inside the callback.
struct Reader {
    CodecReadFunction read;
    std::uint32_t handle;
    std::vector<std::int16_t> samples;
    std::atomic<std::size_t> count{0};
    std::atomic<DWORD> thread{0};

    static void __stdcall OnSamples(void* context) {
        auto& self = *static_cast<Reader*>(context);
        self.thread = GetCurrentThreadId();
        std::int16_t block[2400];
        for (int bytes = sizeof(block); bytes == sizeof(block);) {
            bytes = self.read(self.handle, block, sizeof(block));
            self.samples.insert(self.samples.end(), block, block + bytes / 2);
        }
        self.count = self.samples.size();
    }
};

class ReceiverLibraryTest : public testing::Test {
protected:
    ReceiverLibraryTest() {
        Set("RECORDING", folder.Path("call.if.wav"));
        Set("SPEED", "20");
        Set("LOG", folder.Path("log.txt"));
        for (std::size_t i = 0; i < sent.size(); ++i) {
            sent[i] = static_cast<std::int16_t>(i);
        }
        folder.Write("call.if.wav", WavBytes(sent, 64000));
    }
    ~ReceiverLibraryTest() override {
        for (const std::string& name : set) {
            SetEnvironmentVariableA(name.c_str(), nullptr);
        }
    }

    void Set(const std::string& name, const std::string& value) {
        set.push_back("ORVA_RECEIVER_" + name);
        SetEnvironmentVariableA(set.back().c_str(), value.c_str());
    }

    std::string Log() const { return ReadWholeFile(folder.Path("log.txt")); }

    TemporaryFolder folder;
    std::vector<std::string> set;
    std::vector<std::int16_t> sent = std::vector<std::int16_t>(10000);
};

TEST_F(ReceiverLibraryTest, ExportsPlainNames) {
    const LoadedLibrary library(ORVA_RECEIVER_LIBRARY);
    ASSERT_NE(library.Module(), nullptr);
    EXPECT_EQ(library.ExportedNames(),
              (std::vector<std::string>{"CodecRead", "CodecStart", "CodecStop", "GetHwInfo",
                                        "IsSpectrumInverted", "K7GetEEP", "K7InvertSpectrum"}));
}

TEST_F(ReceiverLibraryTest, StreamsToEachHandleOnAThreadOfItsOwn) {
    const LoadedLibrary library(ORVA_RECEIVER_LIBRARY);
    const auto start = library.Find<CodecStartFunction>("CodecStart");
    const auto stop = library.Find<CodecStopFunction>("CodecStop");
    Reader first{library.Find<CodecReadFunction>("CodecRead"), 1, {}};
    Reader second{first.read, 2, {}};
    ASSERT_NE(start(1, Reader::OnSamples, &first), 0);
    ASSERT_NE(start(2, Reader::OnSamples, &second), 0);
    for (int i = 0; i < 1000 && (first.count < sent.size() || second.count < sent.size()); ++i) {
        Sleep(10);
    }
    EXPECT_NE(stop(1), 0);
    EXPECT_NE(stop(2), 0);
    EXPECT_EQ(stop(3), 0);
    EXPECT_EQ(first.samples, sent);
    EXPECT_EQ(second.samples, sent);
    EXPECT_NE(first.thread, GetCurrentThreadId());
    EXPECT_NE(first.thread, second.thread);
    std::int16_t sample = 0;
    EXPECT_EQ(first.read(1, &sample, sizeof(sample)), 0) << "nothing after the stop";
    EXPECT_NE(Log().find("CodecStop 1: 10000 delivered, 0 processed, 0 lost"), std::string::npos) << Log();
}

TEST_F(ReceiverLibraryTest, FailsToStartAsOftenAsTold) {
    Set("FAILING_STARTS", "2");
    const LoadedLibrary library(ORVA_RECEIVER_LIBRARY);
    const auto start = library.Find<CodecStartFunction>("CodecStart");
    Reader reader{library.Find<CodecReadFunction>("CodecRead"), 1, {}};
    EXPECT_EQ(start(1, Reader::OnSamples, &reader), 0);
    EXPECT_EQ(start(1, Reader::OnSamples, &reader), 0);
    EXPECT_NE(start(1, Reader::OnSamples, &reader), 0);
    library.Find<CodecStopFunction>("CodecStop")(1);
}

TEST_F(ReceiverLibraryTest, ReadsItsMemoryFromAFile) {
    std::uint8_t memory[257] = {};
    memory[256] = 0xEE;
    {
        const LoadedLibrary library(ORVA_RECEIVER_LIBRARY);
        EXPECT_EQ(library.Find<ReadMemoryFunction>("K7GetEEP")(1, memory), 0) << "there is no file";
    }
    std::vector<std::uint8_t> image(256);
    for (std::size_t i = 0; i < image.size(); ++i) {
        image[i] = static_cast<std::uint8_t>(255 - i);
    }
    Set("MEMORY", folder.Write("memory.bin", image));
    const LoadedLibrary library(ORVA_RECEIVER_LIBRARY);
    EXPECT_NE(library.Find<ReadMemoryFunction>("K7GetEEP")(1, memory), 0);
    EXPECT_EQ(std::vector<std::uint8_t>(memory, memory + 256), image);
    EXPECT_EQ(memory[256], 0xEE);
}

TEST_F(ReceiverLibraryTest, TurnsAMirroredSpectrumRound) {
    Set("INVERTED", "1");
    const LoadedLibrary library(ORVA_RECEIVER_LIBRARY);
    Reader reader{library.Find<CodecReadFunction>("CodecRead"), 1, {}};
    ASSERT_NE(library.Find<CodecStartFunction>("CodecStart")(1, Reader::OnSamples, &reader), 0);
    for (int i = 0; i < 1000 && reader.count < sent.size(); ++i) {
        Sleep(10);
    }
    std::vector<std::int16_t> block(reader.samples.begin(), reader.samples.begin() + 2400);
    EXPECT_EQ(block[7], -7);
    library.Find<InvertFunction>("K7InvertSpectrum")(1, block.data(), 2400, 64000.0F, 16, 0);
    EXPECT_TRUE(std::equal(block.begin(), block.end(), sent.begin()));
    library.Find<CodecStopFunction>("CodecStop")(1);
}

TEST_F(ReceiverLibraryTest, ReadsSettingsFromTheFileBesideIt) {
    const std::string copy = folder.Path("TRK718API.DLL");
    ASSERT_TRUE(CopyFileA(ORVA_RECEIVER_LIBRARY, copy.c_str(), FALSE));
    folder.Write("TRK718API.ini", "failing_starts = 1\n");
    {
        const LoadedLibrary library(copy);
        ASSERT_NE(library.Module(), nullptr);
        Reader reader{library.Find<CodecReadFunction>("CodecRead"), 1, {}};
        const auto start = library.Find<CodecStartFunction>("CodecStart");
        EXPECT_EQ(start(1, Reader::OnSamples, &reader), 0);
        EXPECT_NE(start(1, Reader::OnSamples, &reader), 0);
        library.Find<CodecStopFunction>("CodecStop")(1);
    }
}

} // namespace

} // namespace orva::test
