/// A virtual sound card for tests.
#pragma once

#include "audio/DeviceSetupPlatform.h"
#include "tests/audio/CallLog.h"

#include <set>
#include <string>
#include <vector>

namespace orva::test {

/// Stands behind the device setup calls. One at a time exists.
class FakeVirtualCard {
public:
    explicit FakeVirtualCard(CallLog& callLog);
    ~FakeVirtualCard();
    FakeVirtualCard(const FakeVirtualCard&) = delete;
    FakeVirtualCard& operator=(const FakeVirtualCard&) = delete;

    [[nodiscard]] const audio::DeviceSetupPlatform& Platform() const { return platform; }

    // What the test says.

    bool hasList = true;      ///< the list of devices can be had
    bool hasInterface = true; ///< it has a card in it
    bool hasDetail = true;    ///< the card's path can be had
    std::string path = R"(\\?\root#media#0000#{b029d310-284d-4f05-9aff-d993707aedc4}\card)";
    std::set<int> failingFiles; ///< numbers of the calls that open no file, from 1

    // What was asked for.

    struct File {
        std::string name;
        DWORD access;
        DWORD share;
        bool hasSecurity;
        DWORD disposition;
        DWORD flags;
        bool hasTemplate;
    };

    std::vector<File> files;
    std::set<HANDLE> openFiles;
    GUID listClass{};
    GUID interfaceClass{};
    DWORD listFlags = 0;
    DWORD interfaceIndex = 99;
    DWORD interfaceRecordSize = 0;
    DWORD detailBytes = 0;
    DWORD detailRecordSize = 0;

private:
    static HDEVINFO WINAPI GetClassDevs(const GUID* classGuid, PCSTR enumerator, HWND parent, DWORD flags);
    static WINBOOL WINAPI EnumDeviceInterfaces(HDEVINFO devices, PSP_DEVINFO_DATA device,
                                               const GUID* classGuid, DWORD index,
                                               PSP_DEVICE_INTERFACE_DATA found);
    static WINBOOL WINAPI GetDeviceInterfaceDetail(HDEVINFO devices, PSP_DEVICE_INTERFACE_DATA found,
                                                   PSP_DEVICE_INTERFACE_DETAIL_DATA_A detail, DWORD size,
                                                   PDWORD needed, PSP_DEVINFO_DATA device);
    static WINBOOL WINAPI DestroyDeviceInfoList(HDEVINFO devices);
    static HANDLE WINAPI CreateFileOnCard(LPCSTR name, DWORD access, DWORD share,
                                          LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                                          HANDLE templateFile);
    static WINBOOL WINAPI CloseFileOnCard(HANDLE file);

    CallLog& log;
    audio::DeviceSetupPlatform platform;
};

} // namespace orva::test
