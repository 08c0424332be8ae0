/// The platform's own files, as recordings reach them.
#include "audio/FilePlatform.h"

#include "audio/CtbWaveFile.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

namespace orva::audio {

namespace {

#ifdef _WIN32
constexpr char kSeparator = '\\';
#else
constexpr char kSeparator = '/';
#endif

class FilePlatformTest : public testing::Test {
protected:
    /// The path of a file in the folder, its name as it is, whatever its bytes.
    std::string Path(const std::string& name) const {
        return std::filesystem::path(folder.Path("x")).parent_path().make_preferred().string() + kSeparator +
               name;
    }

    std::string ReadBack(const std::string& path) const {
        const FileHandle file = files.openForReading(path.c_str());
        if (file == kNoFile) {
            return "cannot be opened";
        }
        std::string text(100, '?');
        const std::int64_t count = files.read(file, text.data(), text.size());
        text.resize(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
        EXPECT_TRUE(files.close(file));
        return text;
    }

    void ExpectWrittenAndRead(const std::string& path) const {
        const FileHandle file = files.create(path.c_str());
        ASSERT_NE(file, kNoFile) << path;
        EXPECT_EQ(files.write(file, "text", 4), 4);
        EXPECT_TRUE(files.isInPlace(file, path.c_str()));
        EXPECT_TRUE(files.close(file));
        EXPECT_EQ(ReadBack(path), "text");
    }

    test::TemporaryFolder folder;
    const FilePlatform& files = SystemFiles();
};

TEST_F(FilePlatformTest, WritesAndReadsAnywhereInAFile) {
    const std::string path = Path("file");
    FileHandle file = files.create(path.c_str());
    ASSERT_NE(file, kNoFile);
    EXPECT_EQ(files.write(file, "0123456789", 10), 10);
    EXPECT_TRUE(files.seek(file, 3));
    EXPECT_EQ(files.write(file, "xy", 2), 2);
    EXPECT_TRUE(files.seek(file, 12));
    EXPECT_EQ(files.write(file, "z", 1), 1);
    EXPECT_TRUE(files.close(file));

    file = files.openForReading(path.c_str());
    ASSERT_NE(file, kNoFile);
    EXPECT_EQ(files.size(file), 13);
    char text[20] = {};
    EXPECT_TRUE(files.seek(file, 2));
    EXPECT_EQ(files.read(file, text, 4), 4);
    EXPECT_EQ(std::string(text, 4), "2xy5");
    EXPECT_EQ(files.read(file, text, sizeof(text)), 7);
    EXPECT_EQ(std::string(text, 7), std::string("6789\0\0z", 7));
    EXPECT_EQ(files.read(file, text, sizeof(text)), 0) << "the end";
    EXPECT_TRUE(files.seek(file, 0x1'0000'0000)) << "beyond it";
    EXPECT_EQ(files.read(file, text, sizeof(text)), 0);
    EXPECT_TRUE(files.close(file));
}

TEST_F(FilePlatformTest, ReplacesAnOlderFile) {
    folder.Write("file", std::string(1000, 'x'));
    ExpectWrittenAndRead(Path("file"));
}

TEST_F(FilePlatformTest, RefusesWhatIsNoFile) {
    EXPECT_EQ(files.openForReading(Path("absent").c_str()), kNoFile);
    EXPECT_EQ(files.openForReading(Path("").c_str()), kNoFile) << "a folder";
    EXPECT_EQ(files.create(Path("").c_str()), kNoFile);
    EXPECT_EQ(files.create(Path(std::string("absent") + kSeparator + "file").c_str()), kNoFile);
    EXPECT_EQ(files.openForReading(""), kNoFile);
    EXPECT_EQ(files.create(""), kNoFile);
}

TEST_F(FilePlatformTest, TakesAnyNameThatTheFileSystemDoes) {
    ExpectWrittenAndRead(Path("two words.if.wav"));
    ExpectWrittenAndRead(Path("154+785 MHz+.if.wav"));
    ExpectWrittenAndRead(Path("caf\xE9 \xFC\xDF.wav")); // no UTF-8
    ExpectWrittenAndRead(Path("caf\xC3\xA9.wav"));
    ExpectWrittenAndRead(Path(std::string(200, 'n') + ".if.wav"));
}

TEST_F(FilePlatformTest, TakesPathsLongerThanAnOldLimit) {
    std::string path = Path("");
    path.pop_back();
    for (int depth = 0; depth < 4; ++depth) {
        path += kSeparator + std::string(100, static_cast<char>('a' + depth));
#ifdef _WIN32
        ASSERT_NE(CreateDirectoryW((L"\\\\?\\" + std::wstring(path.begin(), path.end())).c_str(), nullptr),
                  0);
#else
        ASSERT_TRUE(std::filesystem::create_directory(path));
#endif
    }
    ASSERT_GT(path.size(), 400U);
    ExpectWrittenAndRead(path + kSeparator + "call.if.wav");
    ExpectWrittenAndRead(path + kSeparator + "." + kSeparator + "call.if.wav");
#ifdef _WIN32
    ExpectWrittenAndRead("\\\\?\\" + path + "\\call.if.wav");
    // What made the folder cannot remove it.
    DeleteFileW((L"\\\\?\\" + std::wstring(path.begin(), path.end()) + L"\\call.if.wav").c_str());
    for (int depth = 0; depth < 4; ++depth) {
        RemoveDirectoryW((L"\\\\?\\" + std::wstring(path.begin(), path.end())).c_str());
        path.resize(path.size() - 101);
    }
#endif
}

TEST_F(FilePlatformTest, ReadsAFileWhileAnotherWritesIt) {
    // As another program does; a recording of ours is closed to others on Windows.
    const std::string path = folder.Write("file", std::string_view("first"));
    const FileHandle reader = files.openForReading(path.c_str());
    ASSERT_NE(reader, kNoFile);
    std::ofstream writer(path, std::ios::binary | std::ios::app);
    writer << " second" << std::flush;
    ASSERT_TRUE(writer.good());
    EXPECT_EQ(ReadBack(path), "first second");
    EXPECT_TRUE(files.close(reader));
}

#ifdef _WIN32

TEST_F(FilePlatformTest, KeepsAFileBeingWrittenToItself) {
    const std::string path = Path("file");
    const FileHandle file = files.create(path.c_str());
    ASSERT_NE(file, kNoFile);
    EXPECT_EQ(files.openForReading(path.c_str()), kNoFile);
    EXPECT_EQ(files.create(path.c_str()), kNoFile);
    EXPECT_EQ(DeleteFileA(path.c_str()), 0);
    EXPECT_TRUE(files.close(file));
    EXPECT_EQ(ReadBack(path), "");
}

#else

TEST_F(FilePlatformTest, NoticesThatAFileIsNoLongerInItsPlace) {
    const std::string path = Path("file");
    const FileHandle file = files.create(path.c_str());
    ASSERT_NE(file, kNoFile);
    EXPECT_TRUE(files.isInPlace(file, path.c_str()));
    std::filesystem::rename(path, Path("other"));
    EXPECT_FALSE(files.isInPlace(file, path.c_str()));
    folder.Write("file", std::string_view("another one of that name"));
    EXPECT_FALSE(files.isInPlace(file, path.c_str()));
    std::filesystem::rename(Path("other"), path);
    EXPECT_TRUE(files.isInPlace(file, path.c_str()));
    std::filesystem::remove(path);
    EXPECT_FALSE(files.isInPlace(file, path.c_str()));
    EXPECT_TRUE(files.close(file));
}

TEST_F(FilePlatformTest, KnowsNoSizeOfWhatIsNoFile) {
    const FileHandle file = files.openForReading("/dev/null");
    ASSERT_NE(file, kNoFile);
    EXPECT_LT(files.size(file), 0);
    EXPECT_TRUE(files.close(file));
}

#endif

} // namespace

} // namespace orva::audio
