#include "audio/VirtualSoundCard.h"

#include "tests/audio/ImportedFunction.h"
#include "tests/audio/WaveOutFixture.h"

namespace orva::test {
namespace {

using audio::VirtualSoundCard;

constexpr char kName[] = "Tessaron Virtual Sound Card";

TEST(VirtualSoundCard, CallsThePlatformItselfByDefault) {
    const audio::DeviceSetupPlatform& platform = audio::SystemDeviceSetup();
    EXPECT_EQ(ImportedFunction(platform.getClassDevs), ImportedFunction("setupapi", "SetupDiGetClassDevsA"));
    EXPECT_EQ(ImportedFunction(platform.enumDeviceInterfaces),
              ImportedFunction("setupapi", "SetupDiEnumDeviceInterfaces"));
    EXPECT_EQ(ImportedFunction(platform.getDeviceInterfaceDetail),
              ImportedFunction("setupapi", "SetupDiGetDeviceInterfaceDetailA"));
    EXPECT_EQ(ImportedFunction(platform.destroyDeviceInfoList),
              ImportedFunction("setupapi", "SetupDiDestroyDeviceInfoList"));
    EXPECT_EQ(ImportedFunction(platform.createFile), ImportedFunction("kernel32", "CreateFileA"));
    EXPECT_EQ(ImportedFunction(platform.closeHandle), ImportedFunction("kernel32", "CloseHandle"));
}

TEST(VirtualSoundCard, IsKnownByTheBeginningOfItsName) {
    EXPECT_TRUE(VirtualSoundCard::IsWanted("Tessaron Virtual Sound Card"));
    EXPECT_TRUE(VirtualSoundCard::IsWanted("Tessaron Virtual Sound Card 2"));
    EXPECT_FALSE(VirtualSoundCard::IsWanted("Tessaron Virtual Sound Car"));
    EXPECT_FALSE(VirtualSoundCard::IsWanted("tessaron virtual sound card"));
    EXPECT_FALSE(VirtualSoundCard::IsWanted(" Tessaron Virtual Sound Card"));
    EXPECT_FALSE(VirtualSoundCard::IsWanted("Loudspeaker"));
}

TEST(VirtualSoundCard, IsKnownBehindSevenCharactersOfTheSystem) {
    EXPECT_TRUE(VirtualSoundCard::IsWanted("Line 1 (Tessaron Virtual Sound"));
    EXPECT_TRUE(VirtualSoundCard::IsWanted("1234567(Tessaron Virtual Sound "));
    EXPECT_FALSE(VirtualSoundCard::IsWanted("Line 1 (Tessaron Virtual Soun"));
    EXPECT_FALSE(VirtualSoundCard::IsWanted("Line 1 (TESSARON Virtual Sound"));
    EXPECT_FALSE(VirtualSoundCard::IsWanted("123456(Tessaron Virtual Sound"));
    EXPECT_FALSE(VirtualSoundCard::IsWanted("12345678(Tessaron Virtual Sound"));
    EXPECT_FALSE(VirtualSoundCard::IsWanted("(Tessaron Virtual Sound"));
}

TEST(VirtualSoundCard, IsLeftAloneWithACapitalOAtTheEnd) {
    EXPECT_FALSE(VirtualSoundCard::IsWanted("Tessaron Virtual Sound Card O"));
    EXPECT_FALSE(VirtualSoundCard::IsWanted("Line 1 (Tessaron Virtual Sound O"));
    EXPECT_TRUE(VirtualSoundCard::IsWanted("Tessaron Virtual Sound Card o"));
    EXPECT_TRUE(VirtualSoundCard::IsWanted("Tessaron Virtual Sound Card 0"));
}

TEST(VirtualSoundCard, BearsShortNames) {
    const std::string name = "Line 1 (Tessaron Virtual Sound";
    for (std::size_t length = 0; length < name.size(); ++length) {
        EXPECT_FALSE(VirtualSoundCard::IsWanted(name.substr(0, length))) << length;
    }
    const std::string other = kName;
    for (std::size_t length = 0; length < other.size(); ++length) {
        EXPECT_FALSE(VirtualSoundCard::IsWanted(other.substr(0, length))) << length;
    }
}

class VirtualCardOutput : public WaveOutFixture {
protected:
    VirtualCardOutput() { device.deviceNames = {kName}; }

    static const GUID& CardClass() {
        static const GUID guid = {
            0xB029D310, 0x284D, 0x4F05, {0x9A, 0xFF, 0xD9, 0x93, 0x70, 0x7A, 0xED, 0xC4}};
        return guid;
    }
};

TEST_F(VirtualCardOutput, OpensTheFilesBeforeTheDevice) {
    ASSERT_EQ(output->Open(), 0U);
    EXPECT_EQ(log.calls, (std::vector<std::string>{"list", "interface", "detail", "file", "file",
                                                   "end of list", "open"}));
}

TEST_F(VirtualCardOutput, AsksForTheFirstCardPresent) {
    ASSERT_EQ(output->Open(), 0U);
    EXPECT_TRUE(IsEqualGUID(card.listClass, CardClass()));
    EXPECT_EQ(card.listFlags, 18U);
    EXPECT_TRUE(IsEqualGUID(card.interfaceClass, CardClass()));
    EXPECT_EQ(card.interfaceIndex, 0U);
    EXPECT_EQ(card.interfaceRecordSize, 28U);
    EXPECT_EQ(card.detailBytes, 265U);
    EXPECT_EQ(card.detailRecordSize, 5U);
}

TEST_F(VirtualCardOutput, OpensTwoFilesForReading) {
    ASSERT_EQ(output->Open(), 0U);
    ASSERT_EQ(card.files.size(), 2U);
    EXPECT_EQ(card.files[0].name, card.path + "\\b029d310-284d-4f05-9aff-d993707aedc4");
    EXPECT_EQ(card.files[1].name, card.path + "\\0d13c528-a6fc-47f1-8fee-c5dd46f1fbb1");
    for (const FakeVirtualCard::File& file : card.files) {
        EXPECT_EQ(file.access, GENERIC_READ);
        EXPECT_EQ(file.share, 0U);
        EXPECT_FALSE(file.hasSecurity);
        EXPECT_EQ(file.disposition, static_cast<DWORD>(OPEN_EXISTING));
        EXPECT_EQ(file.flags, 0U);
        EXPECT_FALSE(file.hasTemplate);
    }
    EXPECT_EQ(card.openFiles.count(Inside().Card().Handle1()), 1U);
    EXPECT_EQ(card.openFiles.count(Inside().Card().Handle2()), 1U);
    EXPECT_NE(Inside().Card().Handle1(), Inside().Card().Handle2());
}

TEST_F(VirtualCardOutput, TakesThePathAsLongAsItMayBe) {
    card.path = std::string(260, 'p'); // with its end and the size field 265 bytes
    ASSERT_EQ(output->Open(), 0U);
    ASSERT_EQ(card.files.size(), 2U);
    EXPECT_EQ(card.files[0].name, card.path + "\\b029d310-284d-4f05-9aff-d993707aedc4");
}

TEST_F(VirtualCardOutput, OpensNoFilesOfOtherCards) {
    device.deviceNames = {"Loudspeaker", "Tessaron Virtual Sound Card O", "Line 1"};
    for (std::uint32_t id = 0; id < 4; ++id) {
        output->SetDevice(id);
        output->Open();
        output->Close();
        Drain();
    }
    EXPECT_EQ(log.Count("list"), 0);
    EXPECT_EQ(log.Count("open"), 4);
}

TEST_F(VirtualCardOutput, ClosesTheFilesWithTheDevice) {
    ASSERT_EQ(output->Start(), 0U);
    ASSERT_EQ(output->Stop(), 0U);
    EXPECT_EQ(card.openFiles.size(), 2U);
    ASSERT_EQ(output->Close(), 0U);
    EXPECT_TRUE(card.openFiles.empty());
    EXPECT_EQ(Inside().Card().Handle1(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(Inside().Card().Handle2(), INVALID_HANDLE_VALUE);
    Drain();
    ASSERT_EQ(output->Start(), 0U);
    EXPECT_EQ(card.openFiles.size(), 2U) << "opened anew";
}

TEST_F(VirtualCardOutput, KeepsTheFilesOfADeviceThatCannotBeClosed) {
    ASSERT_EQ(output->Open(), 0U);
    device.closeResult = MMSYSERR_ERROR;
    output->Close();
    EXPECT_EQ(card.openFiles.size(), 2U);
    device.closeResult = MMSYSERR_NOERROR;
}

TEST_F(VirtualCardOutput, KeepsTheFilesOverAFailureToOpenTheDevice) {
    device.openResult = MMSYSERR_ERROR;
    output->Open();
    EXPECT_EQ(card.openFiles.size(), 2U);
    output->Open();
    EXPECT_EQ(card.files.size(), 2U) << "they are open already";
    output.reset();
    EXPECT_TRUE(card.openFiles.empty());
}

TEST_F(VirtualCardOutput, OpensWithoutAList) {
    card.hasList = false;
    EXPECT_EQ(output->Open(), 0U);
    EXPECT_EQ(log.calls, (std::vector<std::string>{"list", "open"}));
    EXPECT_EQ(Inside().Card().Handle1(), INVALID_HANDLE_VALUE);
}

TEST_F(VirtualCardOutput, OpensWithoutACard) {
    card.hasInterface = false;
    EXPECT_EQ(output->Open(), 0U);
    EXPECT_EQ(log.calls, (std::vector<std::string>{"list", "interface", "end of list", "open"}));
    EXPECT_EQ(Inside().Card().Handle2(), INVALID_HANDLE_VALUE);
}

TEST_F(VirtualCardOutput, OpensWithoutThePath) {
    card.hasDetail = false;
    EXPECT_EQ(output->Open(), 0U);
    EXPECT_EQ(log.calls, (std::vector<std::string>{"list", "interface", "detail", "end of list", "open"}));
}

TEST_F(VirtualCardOutput, OpensWithoutEitherFile) {
    card.failingFiles = {1, 2};
    EXPECT_EQ(output->Open(), 0U);
    EXPECT_EQ(card.files.size(), 2U);
    EXPECT_EQ(output->Close(), 0U);
    EXPECT_EQ(log.Count("close file"), 0) << "what is not open is not closed";
}

TEST_F(VirtualCardOutput, ClosesTheOneFileThatItHas) {
    card.failingFiles = {2};
    ASSERT_EQ(output->Open(), 0U);
    EXPECT_EQ(card.openFiles.size(), 1U);
    ASSERT_EQ(output->Close(), 0U);
    EXPECT_TRUE(card.openFiles.empty());
}

TEST_F(VirtualCardOutput, LosesNoFileWhenTheFirstKeepsFailing) {
    device.openResult = MMSYSERR_ERROR; // so that nothing closes the second in between
    card.failingFiles = {1};
    output->Open();
    EXPECT_EQ(card.openFiles.size(), 1U);
    output->Open();
    EXPECT_EQ(card.openFiles.size(), 2U);
    EXPECT_EQ(card.openFiles.count(Inside().Card().Handle1()), 1U);
    EXPECT_EQ(card.openFiles.count(Inside().Card().Handle2()), 1U);
}

} // namespace
} // namespace orva::test
