#include "audio/VirtualSoundCard.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <new>

namespace orva::audio {

namespace {

constexpr char kCardName[] = "Tessaron Virtual Sound Card";

/// How newer systems name the card: in parentheses, behind characters of their own.
constexpr char kCardNameInParentheses[] = "(Tessaron Virtual Sound";
constexpr std::size_t kSystemPrefixLength = 7;

constexpr char kExemptCardEnding = 'O';

constexpr GUID kCardInterface = {
    0xB029D310, 0x284D, 0x4F05, {0x9A, 0xFF, 0xD9, 0x93, 0x70, 0x7A, 0xED, 0xC4}};
constexpr char kFile1[] = "b029d310-284d-4f05-9aff-d993707aedc4";
constexpr char kFile2[] = "0d13c528-a6fc-47f1-8fee-c5dd46f1fbb1";

constexpr DWORD kFirstInterface = 0;
constexpr std::size_t kDetailBytes = 265;

/// What the detail record says of its own size: without the path, and without padding.
constexpr DWORD kDetailRecordSize = 5;
static_assert(sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A) == kDetailRecordSize);

/// Path of the first card present; empty if there is none.
std::string FindCard(const DeviceSetupPlatform& platform, HDEVINFO devices) {
    SP_DEVICE_INTERFACE_DATA found{};
    found.cbSize = sizeof found;
    if (platform.enumDeviceInterfaces(devices, nullptr, &kCardInterface, kFirstInterface, &found) == FALSE) {
        return {};
    }
    alignas(SP_DEVICE_INTERFACE_DETAIL_DATA_A) std::array<char, kDetailBytes> buffer{};
    auto* detail = new (buffer.data()) SP_DEVICE_INTERFACE_DETAIL_DATA_A;
    detail->cbSize = kDetailRecordSize;
    if (platform.getDeviceInterfaceDetail(devices, &found, detail, static_cast<DWORD>(buffer.size()), nullptr,
                                          nullptr) == FALSE) {
        return {};
    }
    constexpr std::size_t kPathOffset = offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_A, DevicePath);
    const char* path = buffer.data() + kPathOffset;
    return {path, strnlen(path, buffer.size() - kPathOffset)};
}

} // namespace

bool VirtualSoundCard::IsWanted(const std::string& deviceName) {
    const bool isCard = deviceName.starts_with(kCardName) ||
                        (deviceName.size() > kSystemPrefixLength &&
                         deviceName.compare(kSystemPrefixLength, sizeof kCardNameInParentheses - 1,
                                            kCardNameInParentheses) == 0);
    return isCard && !deviceName.ends_with(kExemptCardEnding);
}

void VirtualSoundCard::Open() {
    if (virtualCardHandle1 != INVALID_HANDLE_VALUE) {
        return;
    }
    Close(); // an earlier card's second file, when its first could not be opened
    const HDEVINFO devices =
        platform.getClassDevs(&kCardInterface, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    if (devices == INVALID_HANDLE_VALUE) {
        return;
    }
    OpenFilesOf(devices);
    platform.destroyDeviceInfoList(devices);
}

void VirtualSoundCard::OpenFilesOf(HDEVINFO devices) {
    const std::string path = FindCard(platform, devices);
    if (path.empty()) {
        return;
    }
    virtualCardHandle1 = OpenFile(path, kFile1);
    virtualCardHandle2 = OpenFile(path, kFile2);
}

HANDLE VirtualSoundCard::OpenFile(const std::string& path, const char* file) const {
    const std::string name = path + '\\' + file;
    constexpr DWORD kNotShared = 0;
    constexpr DWORD kNoFlags = 0;
    return platform.createFile(name.c_str(), GENERIC_READ, kNotShared, nullptr, OPEN_EXISTING, kNoFlags,
                               nullptr);
}

void VirtualSoundCard::Close() {
    CloseFile(virtualCardHandle1);
    CloseFile(virtualCardHandle2);
}

void VirtualSoundCard::CloseFile(HANDLE& file) const {
    if (file != INVALID_HANDLE_VALUE) {
        platform.closeHandle(file);
        file = INVALID_HANDLE_VALUE;
    }
}

} // namespace orva::audio
