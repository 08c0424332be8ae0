/// The virtual sound card of this system's maker.
#pragma once

#include "audio/DeviceSetupPlatform.h"

#include <string>

namespace orva::audio {

/// Two files of the virtual sound card's driver, which are held open for as long as its wave output is. No
/// data passes through them. All failures are silent: the wave output works without them.
class VirtualSoundCard {
public:
    /// \param setupPlatform  must outlive the object
    explicit VirtualSoundCard(const DeviceSetupPlatform& setupPlatform) : platform(setupPlatform) {}
    ~VirtualSoundCard() { Close(); }
    VirtualSoundCard(const VirtualSoundCard&) = delete;
    VirtualSoundCard& operator=(const VirtualSoundCard&) = delete;

    /// Whether the wave output of this product name needs the files: it is a virtual card, and not one of
    /// those whose name ends in a capital O.
    [[nodiscard]] static bool IsWanted(const std::string& deviceName);

    /// Opens both files of the first card present; does nothing when the first file is open.
    void Open();

    /// Closes what is open.
    void Close();

private:
    friend struct VirtualSoundCardInspector;

    void OpenFilesOf(HDEVINFO devices);
    [[nodiscard]] HANDLE OpenFile(const std::string& path, const char* file) const;
    void CloseFile(HANDLE& file) const;

    const DeviceSetupPlatform& platform;
    HANDLE virtualCardHandle1 = INVALID_HANDLE_VALUE;
    HANDLE virtualCardHandle2 = INVALID_HANDLE_VALUE;
};

} // namespace orva::audio
