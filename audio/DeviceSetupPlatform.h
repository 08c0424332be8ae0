/// The platform's lists of installed devices, and files on devices, as a table of calls.
#pragma once

// clang-format off
#include <windows.h> // what setupapi.h needs and does not include
#include <setupapi.h>
// clang-format on

namespace orva::audio {

/// The calls by which a virtual sound card is found and its files are opened. A table as it is made holds the
/// platform's own; tests put a card of theirs behind it.
struct DeviceSetupPlatform {
    decltype(&SetupDiGetClassDevsA) getClassDevs = &SetupDiGetClassDevsA;
    decltype(&SetupDiEnumDeviceInterfaces) enumDeviceInterfaces = &SetupDiEnumDeviceInterfaces;
    decltype(&SetupDiGetDeviceInterfaceDetailA) getDeviceInterfaceDetail = &SetupDiGetDeviceInterfaceDetailA;
    decltype(&SetupDiDestroyDeviceInfoList) destroyDeviceInfoList = &SetupDiDestroyDeviceInfoList;
    decltype(&CreateFileA) createFile = &CreateFileA;
    decltype(&CloseHandle) closeHandle = &CloseHandle;
};

/// The platform's own calls.
const DeviceSetupPlatform& SystemDeviceSetup();

} // namespace orva::audio
