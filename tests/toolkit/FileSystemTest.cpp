#include "toolkit/FileSystem.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

/// An empty folder of the test's own, gone at the end with what the test made in it.
class FileSystemTest : public testing::Test {
protected:
    FileSystemTest() {
        char temp[MAX_PATH];
        GetTempPathA(MAX_PATH, temp);
        base = temp + ("orva" + std::to_string(GetCurrentProcessId()));
        CreateDirectoryA(base.c_str(), nullptr);
    }
    ~FileSystemTest() override { Remove(base); }

    static void Remove(const std::string& folder) {
        WIN32_FIND_DATAA found{};
        HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
        do {
            const std::string path = folder + "\\" + found.cFileName;
            if (std::strcmp(found.cFileName, ".") == 0 || std::strcmp(found.cFileName, "..") == 0) {
                continue;
            }
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
                Remove(path);
            } else {
                DeleteFileA(path.c_str());
            }
        } while (FindNextFileA(search, &found) != 0);
        FindClose(search);
        RemoveDirectoryA(folder.c_str());
    }

    std::string Path(const char* name) const { return base + "\\" + name; }

    void MakeFile(const char* name, const char* text) const {
        HANDLE file = CreateFileA(Path(name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
        DWORD written = 0;
        WriteFile(file, text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
        CloseHandle(file);
    }

    bool IsFolder(const char* name) const {
        const DWORD attributes = GetFileAttributesA(Path(name).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    }

    bool IsThere(const char* name) const {
        return GetFileAttributesA(Path(name).c_str()) != INVALID_FILE_ATTRIBUTES;
    }

    std::string base;
};

TEST_F(FileSystemTest, FileExistsTellsTheDirectoryBit) {
    MakeFile("file.txt", "12345");
    EXPECT_EQ(FileExists(base.c_str()), 0x10U);
    EXPECT_EQ(FileExists(Path("file.txt").c_str()), 0U) << "a file has no such bit";
    EXPECT_EQ(FileExists(Path("missing").c_str()), 0U);
    EXPECT_EQ(FileExists(Path("missing\\file.txt").c_str()), 0U);
    EXPECT_EQ(FileExists(""), 0U);
}

TEST_F(FileSystemTest, FileExistsCopiesWhatItFound) {
    MakeFile("file.txt", "12345");
    WIN32_FIND_DATAA found{};
    FileExists(Path("file.txt").c_str(), &found);
    EXPECT_STREQ(found.cFileName, "file.txt");
    EXPECT_EQ(found.nFileSizeLow, 5U);
    WIN32_FIND_DATAA untouched{};
    std::strcpy(untouched.cFileName, "before");
    FileExists(Path("missing").c_str(), &untouched);
    EXPECT_STREQ(untouched.cFileName, "before");
}

TEST_F(FileSystemTest, FileExistsTakesWildcards) {
    CreateDirectoryA(Path("folder").c_str(), nullptr);
    EXPECT_EQ(FileExists(Path("fol*").c_str()), 0x10U);
    EXPECT_EQ(FileExists(Path("fil*").c_str()), 0U);
}

TEST_F(FileSystemTest, FileExistsKeepsNothingOpen) {
    for (int i = 0; i < 100; ++i) {
        FileExists(base.c_str());
    }
    EXPECT_TRUE(RemoveDirectoryA(base.c_str()));
    CreateDirectoryA(base.c_str(), nullptr);
}

TEST_F(FileSystemTest, CreatesEachMissingLevel) {
    EXPECT_TRUE(CreateFolderTree(Path("one\\two\\three").c_str()));
    EXPECT_TRUE(IsFolder("one\\two\\three"));
    EXPECT_TRUE(CreateFolderTree(Path("one\\two\\three").c_str())) << "all there";
    EXPECT_TRUE(CreateFolderTree(Path("one\\two\\four\\five\\").c_str())) << "some there";
    EXPECT_TRUE(IsFolder("one\\two\\four\\five"));
}

TEST_F(FileSystemTest, TakesBackslashesAsTheyCome) {
    EXPECT_TRUE(CreateFolderTree(Path("one\\\\two\\\\").c_str()));
    EXPECT_TRUE(IsFolder("one\\two"));
}

TEST_F(FileSystemTest, StopsAtTheFirstFailure) {
    MakeFile("file", "x");
    EXPECT_FALSE(CreateFolderTree(Path("file\\two\\three").c_str()));
    EXPECT_FALSE(IsFolder("file"));
    EXPECT_FALSE(CreateFolderTree(Path("one\\in*valid\\three").c_str()));
    EXPECT_TRUE(IsFolder("one")) << "what came before stays";
    EXPECT_FALSE(IsThere("one\\three"));
}

TEST_F(FileSystemTest, FollowsRelativePaths) {
    char before[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, before);
    SetCurrentDirectoryA(base.c_str());
    EXPECT_TRUE(CreateFolderTree("relative\\two"));
    EXPECT_TRUE(CreateFolderTree("alone"));
    SetCurrentDirectoryA(before);
    EXPECT_TRUE(IsFolder("relative\\two"));
    EXPECT_TRUE(IsFolder("alone"));
}

TEST_F(FileSystemTest, MakesNoRoots) {
    EXPECT_TRUE(CreateFolderTree("C:\\"));
    EXPECT_FALSE(CreateFolderTree("Q:\\folder")) << "no such drive";
    EXPECT_FALSE(CreateFolderTree("\\\\no-such-server\\share\\folder"));
    EXPECT_FALSE(CreateFolderTree(""));
    EXPECT_FALSE(CreateFolderTree(nullptr));
}

} // namespace
} // namespace orva::toolkit
