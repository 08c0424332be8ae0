#include "toolkit/TmyRegistry.h"

#include "tests/toolkit/FakeDiagnostics.h"
#include "tests/toolkit/OpenHandles.h"

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Lines = std::vector<std::string>;

constexpr REGSAM kFullAccess = KEY_ALL_ACCESS;

/// A key of the test's own, gone at the end.
class TmyRegistryTest : public testing::Test {
protected:
    TmyRegistryTest() : path("Software\\Orva Registry Test " + std::to_string(GetCurrentProcessId())) {}

    void SetUp() override {
        Delete();
        ASSERT_TRUE(registry.OpenKey(path.c_str(), true, kFullAccess));
    }
    void TearDown() override { Delete(); }

    void Delete() const { RegDeleteTreeA(HKEY_CURRENT_USER, path.c_str()); }

    bool Exists(const std::string& name) const {
        HKEY key = nullptr;
        if (RegOpenKeyExA(HKEY_CURRENT_USER, name.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
            return false;
        }
        RegCloseKey(key);
        return true;
    }

    /// Writes a value without the class under test.
    void Put(const char* name, DWORD type, const void* data, DWORD size) const {
        ASSERT_EQ(RegSetKeyValueA(HKEY_CURRENT_USER, path.c_str(), name, type, data, size), ERROR_SUCCESS);
    }

    /// Type and bytes of a value, read without the class under test.
    std::pair<DWORD, std::string> Raw(const char* name) const {
        DWORD type = 0;
        DWORD size = 0;
        RegGetValueA(HKEY_CURRENT_USER, path.c_str(), name, RRF_RT_ANY | RRF_NOEXPAND, &type, nullptr, &size);
        std::string bytes(size, '\0');
        RegGetValueA(HKEY_CURRENT_USER, path.c_str(), name, RRF_RT_ANY | RRF_NOEXPAND, &type, bytes.data(),
                     &size);
        bytes.resize(size);
        return {type, bytes};
    }

    std::string GetText(const char* name, const char* absent = "absent") const {
        const TmyString text = registry.GetString(name, absent);
        return {text.Text(), text.Length()};
    }

    const std::string path;
    test::FakeDiagnostics platform;
    test::TraceSwitch trace{1};
    TmyRegistry registry{HKEY_CURRENT_USER, kFullAccess};
};

TEST_F(TmyRegistryTest, ReadsTheNumbersItWrote) {
    for (const std::int32_t value : {0, 1, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_TRUE(registry.SetInt("Number", value));
        EXPECT_EQ(registry.GetInt("Number", 77), value);
    }
    EXPECT_TRUE(registry.SetInt("Number", -2));
    EXPECT_EQ(Raw("Number"), (std::pair{static_cast<DWORD>(REG_DWORD), std::string("\xFE\xFF\xFF\xFF", 4)}));
}

TEST_F(TmyRegistryTest, ANumberOfAnotherTypeIsAbsent) {
    EXPECT_EQ(registry.GetInt("Missing", 77), 77);
    EXPECT_TRUE(registry.SetString("Text", "12"));
    EXPECT_EQ(registry.GetInt("Text", 77), 77);
    EXPECT_TRUE(registry.SetString("Short", "abc"));
    EXPECT_EQ(registry.GetInt("Short", 77), 77) << "four bytes, but no number";
    EXPECT_TRUE(registry.SetBinary("Binary", "1234", 4));
    EXPECT_EQ(registry.GetInt("Binary", 77), 77);
    Put("Wide", REG_QWORD, "12345678", 8);
    EXPECT_EQ(registry.GetInt("Wide", 77), 77);
    Put("Narrow", REG_DWORD, "12", 2);
    EXPECT_EQ(registry.GetInt("Narrow", 77), 77);
    Put("Long", REG_DWORD, "12345", 5);
    EXPECT_EQ(registry.GetInt("Long", 77), 77);
}

TEST_F(TmyRegistryTest, ReadsTheTextsItWrote) {
    for (const char* text : {"", "a", "C:\\folder\\file", "%TEMP%"}) {
        EXPECT_TRUE(registry.SetString("Text", text));
        EXPECT_EQ(GetText("Text"), text);
    }
    EXPECT_TRUE(registry.SetString("Text", "abc"));
    EXPECT_EQ(Raw("Text"), (std::pair{static_cast<DWORD>(REG_SZ), std::string("abc\0", 4)}));
}

TEST_F(TmyRegistryTest, ReadsTextsOfAnyLength) {
    for (const std::size_t length : {std::size_t{254}, std::size_t{255}, std::size_t{256}, std::size_t{257},
                                     std::size_t{1000}, std::size_t{100000}}) {
        std::string text(length, 'x');
        text.back() = 'y';
        EXPECT_TRUE(registry.SetString("Text", text.c_str()));
        EXPECT_EQ(GetText("Text"), text) << length;
    }
}

TEST_F(TmyRegistryTest, ATextOfAnotherTypeIsAbsent) {
    EXPECT_EQ(GetText("Missing"), "absent");
    EXPECT_EQ(GetText("Missing", ""), "");
    EXPECT_TRUE(registry.SetInt("Number", 0x41424344));
    EXPECT_EQ(GetText("Number"), "absent");
    EXPECT_TRUE(registry.SetBinary("Binary", "text", 5));
    EXPECT_EQ(GetText("Binary"), "absent");
    const std::string bytes(1000, 'x');
    EXPECT_TRUE(registry.SetBinary("Long", bytes.data(), 1000));
    EXPECT_EQ(GetText("Long"), "absent");
}

TEST_F(TmyRegistryTest, TakesTextsThatOthersWroteOddly) {
    Put("Unterminated", REG_SZ, "abc", 3);
    EXPECT_EQ(GetText("Unterminated"), "abc");
    Put("Nothing", REG_SZ, "", 0);
    EXPECT_EQ(GetText("Nothing"), "");
    Put("Two", REG_SZ, "abc\0def", 8);
    EXPECT_EQ(GetText("Two"), "abc");
    Put("Variables", REG_EXPAND_SZ, "%TEMP%\\x", 9);
    EXPECT_EQ(GetText("Variables"), "%TEMP%\\x");
}

TEST_F(TmyRegistryTest, ReadsTheBytesItWrote) {
    EXPECT_TRUE(registry.SetBinary("Bytes", "a\0b\xFF", 4));
    EXPECT_EQ(Raw("Bytes"), (std::pair{static_cast<DWORD>(REG_BINARY), std::string("a\0b\xFF", 4)}));
    char bytes[8] = "#######";
    EXPECT_EQ(registry.GetBinary("Bytes", bytes, 4), 4U);
    EXPECT_EQ(std::string(bytes, 5), std::string("a\0b\xFF#", 5));
    EXPECT_EQ(registry.GetBinary("Bytes", bytes, 8), 4U);
}

TEST_F(TmyRegistryTest, BytesOfAnotherTypeAreAbsent) {
    char bytes[16] = {};
    EXPECT_EQ(registry.GetBinary("Missing", bytes, 16), 0U);
    EXPECT_TRUE(registry.SetString("Text", "text"));
    EXPECT_EQ(registry.GetBinary("Text", bytes, 16), 0U);
    EXPECT_TRUE(registry.SetInt("Number", 1));
    EXPECT_EQ(registry.GetBinary("Number", bytes, 16), 0U);
}

TEST_F(TmyRegistryTest, BytesThatDoNotFitAreAbsent) {
    EXPECT_TRUE(registry.SetBinary("Bytes", "12345", 5));
    char bytes[5] = {};
    bytes[4] = '#';
    EXPECT_EQ(registry.GetBinary("Bytes", bytes, 4), 0U);
    EXPECT_EQ(bytes[4], '#');
}

TEST_F(TmyRegistryTest, OpensKeysBelowThePresentOne) {
    EXPECT_TRUE(registry.OpenKey("Inner", true, kFullAccess));
    EXPECT_TRUE(registry.OpenKey("Innermost", true, kFullAccess));
    EXPECT_TRUE(registry.SetInt("Number", 5));
    EXPECT_TRUE(Exists(path + "\\Inner\\Innermost"));
    TmyRegistry other(HKEY_CURRENT_USER, KEY_READ);
    EXPECT_TRUE(other.OpenKey((path + "\\Inner\\Innermost").c_str(), false, KEY_READ));
    EXPECT_EQ(other.GetInt("Number", 0), 5);
}

TEST_F(TmyRegistryTest, ThereIsNoMakingWithoutAskingForIt) {
    platform.lines.clear();
    EXPECT_FALSE(registry.OpenKey("Inner", false, kFullAccess));
    EXPECT_EQ(platform.Texts(), Lines{"Key Inner not opened, err=2"});
    EXPECT_FALSE(Exists(path + "\\Inner"));
}

TEST_F(TmyRegistryTest, MakingAKeyTracesThatItWasNotThere) {
    platform.lines.clear();
    EXPECT_TRUE(registry.OpenKey("Inner", true, kFullAccess));
    EXPECT_EQ(platform.Texts(), Lines{"Key Inner not opened, err=2"});
    platform.lines.clear();
    TmyRegistry other(HKEY_CURRENT_USER, kFullAccess);
    EXPECT_TRUE(other.OpenKey((path + "\\Inner").c_str(), true, kFullAccess));
    EXPECT_TRUE(platform.lines.empty());
}

TEST_F(TmyRegistryTest, AFailedOpenStaysOnTheKeyItHad) {
    EXPECT_TRUE(registry.SetInt("Number", 5));
    EXPECT_FALSE(registry.OpenKey("Missing", false, kFullAccess));
    EXPECT_EQ(registry.GetInt("Number", 0), 5);
    // At first that is the root.
    TmyRegistry other(HKEY_CURRENT_USER, kFullAccess);
    EXPECT_FALSE(other.OpenKey((path + "\\Missing").c_str(), false, kFullAccess));
    EXPECT_TRUE(other.OpenKey(path.c_str(), false, kFullAccess));
    EXPECT_EQ(other.GetInt("Number", 0), 5);
}

TEST_F(TmyRegistryTest, FailsToMakeAKeyWhereItMayNot) {
    TmyRegistry other(HKEY_CURRENT_USER, kFullAccess);
    EXPECT_TRUE(other.OpenKey(path.c_str(), false, kFullAccess));
    platform.lines.clear();
    const std::string tooLong(300, 'x'); // a key's name has at most 255 characters
    EXPECT_FALSE(other.OpenKey(tooLong.c_str(), true, kFullAccess));
    ASSERT_EQ(platform.lines.size(), 2U);
    EXPECT_EQ(platform.Texts()[0].rfind("Key " + tooLong + " not opened, err=", 0), 0U);
    EXPECT_EQ(platform.Texts()[1].rfind("Key " + tooLong + " not created, err=", 0), 0U);
    EXPECT_TRUE(other.SetInt("Number", 1)) << "still on the key before";
}

TEST_F(TmyRegistryTest, AKeyForReadingTakesNoValues) {
    EXPECT_TRUE(registry.SetInt("Number", 5));
    TmyRegistry other(HKEY_CURRENT_USER, KEY_READ);
    EXPECT_TRUE(other.OpenKey(path.c_str(), false, KEY_READ));
    EXPECT_FALSE(other.SetInt("Number", 6));
    EXPECT_FALSE(other.SetString("Text", "text"));
    EXPECT_FALSE(other.SetBinary("Bytes", "1", 1));
    EXPECT_EQ(other.GetInt("Number", 0), 5);
}

TEST_F(TmyRegistryTest, WithoutARootAllFails) {
    TmyRegistry other(nullptr, kFullAccess);
    char byte = 0;
    EXPECT_FALSE(other.OpenKey(path.c_str(), true, kFullAccess));
    EXPECT_FALSE(other.SetInt("Number", 1));
    EXPECT_EQ(other.GetInt("Number", 77), 77);
    EXPECT_EQ(other.GetString("Text", "absent"), "absent");
    EXPECT_EQ(other.GetBinary("Bytes", &byte, 1), 0U);
}

TEST_F(TmyRegistryTest, ClosesItsKeys) {
    const int before = test::CountOpenHandles();
    for (int i = 0; i < 100; ++i) {
        TmyRegistry other(HKEY_CURRENT_USER, kFullAccess);
        EXPECT_TRUE(other.OpenKey(path.c_str(), false, kFullAccess));
        EXPECT_TRUE(other.OpenKey("Inner", true, kFullAccess));
        EXPECT_FALSE(other.OpenKey("Missing", false, kFullAccess));
    }
    EXPECT_EQ(test::CountOpenHandles(), before);
}

} // namespace
} // namespace orva::toolkit
