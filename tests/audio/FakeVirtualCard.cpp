#include "tests/audio/FakeVirtualCard.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

FakeVirtualCard* card = nullptr;

HDEVINFO List() {
    return reinterpret_cast<HDEVINFO>(std::uintptr_t{0x1157});
}

HANDLE FileHandle(std::size_t number) {
    return reinterpret_cast<HANDLE>(0xF11E0000 + number);
}

} // namespace

FakeVirtualCard::FakeVirtualCard(CallLog& callLog) : log(callLog) {
    EXPECT_EQ(card, nullptr);
    card = this;
    platform.getClassDevs = &FakeVirtualCard::GetClassDevs;
    platform.enumDeviceInterfaces = &FakeVirtualCard::EnumDeviceInterfaces;
    platform.getDeviceInterfaceDetail = &FakeVirtualCard::GetDeviceInterfaceDetail;
    platform.destroyDeviceInfoList = &FakeVirtualCard::DestroyDeviceInfoList;
    platform.createFile = &FakeVirtualCard::CreateFileOnCard;
    platform.closeHandle = &FakeVirtualCard::CloseFileOnCard;
}

FakeVirtualCard::~FakeVirtualCard() {
    card = nullptr;
}

HDEVINFO WINAPI FakeVirtualCard::GetClassDevs(const GUID* classGuid, PCSTR enumerator, HWND parent,
                                              DWORD flags) {
    card->log.Add("list");
    EXPECT_EQ(enumerator, nullptr);
    EXPECT_EQ(parent, nullptr);
    card->listClass = *classGuid;
    card->listFlags = flags;
    return card->hasList ? List() : INVALID_HANDLE_VALUE;
}

WINBOOL WINAPI FakeVirtualCard::EnumDeviceInterfaces(HDEVINFO devices, PSP_DEVINFO_DATA device,
                                                     const GUID* classGuid, DWORD index,
                                                     PSP_DEVICE_INTERFACE_DATA found) {
    card->log.Add("interface");
    EXPECT_EQ(devices, List());
    EXPECT_EQ(device, nullptr);
    card->interfaceClass = *classGuid;
    card->interfaceIndex = index;
    card->interfaceRecordSize = found->cbSize;
    return card->hasInterface ? TRUE : FALSE;
}

WINBOOL WINAPI FakeVirtualCard::GetDeviceInterfaceDetail(HDEVINFO devices, PSP_DEVICE_INTERFACE_DATA found,
                                                         PSP_DEVICE_INTERFACE_DETAIL_DATA_A detail,
                                                         DWORD size, PDWORD needed, PSP_DEVINFO_DATA device) {
    card->log.Add("detail");
    EXPECT_EQ(devices, List());
    EXPECT_NE(found, nullptr);
    EXPECT_EQ(needed, nullptr);
    EXPECT_EQ(device, nullptr);
    card->detailBytes = size;
    card->detailRecordSize = detail->cbSize;
    if (!card->hasDetail || sizeof detail->cbSize + card->path.size() + 1 > size) {
        return FALSE;
    }
    char* place = reinterpret_cast<char*>(detail) + sizeof detail->cbSize;
    std::memcpy(place, card->path.c_str(), card->path.size() + 1);
    return TRUE;
}

WINBOOL WINAPI FakeVirtualCard::DestroyDeviceInfoList(HDEVINFO devices) {
    card->log.Add("end of list");
    EXPECT_EQ(devices, List());
    return TRUE;
}

HANDLE WINAPI FakeVirtualCard::CreateFileOnCard(LPCSTR name, DWORD access, DWORD share,
                                                LPSECURITY_ATTRIBUTES security, DWORD disposition,
                                                DWORD flags, HANDLE templateFile) {
    card->log.Add("file");
    card->files.push_back(
        {name, access, share, security != nullptr, disposition, flags, templateFile != nullptr});
    if (card->failingFiles.count(static_cast<int>(card->files.size())) != 0) {
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE file = FileHandle(card->files.size());
    card->openFiles.insert(file);
    return file;
}

WINBOOL WINAPI FakeVirtualCard::CloseFileOnCard(HANDLE file) {
    card->log.Add("close file");
    EXPECT_EQ(card->openFiles.erase(file), 1U) << "closed, but not open";
    return TRUE;
}

} // namespace orva::test
