#include "plugin/HostNotification.h"

#include <array>
#include <cstring>

namespace orva::plugin {

namespace {

constexpr auto kDigitalMode = static_cast<std::uint32_t>(ModeNumber::Digital);
constexpr auto kFmMode = static_cast<std::uint32_t>(ModeNumber::Fm);

} // namespace

std::optional<DemodulationMode> HostNotification::SelectedMode() const {
    if (size == kModeListSize && data != nullptr) {
        std::array<std::uint32_t, 2> modes{};
        static_assert(sizeof(modes) == kModeListSize);
        std::memcpy(modes.data(), data, sizeof(modes));
        if (modes == std::array{kFmMode, kDigitalMode} || modes == std::array{kDigitalMode, kFmMode}) {
            return DemodulationMode::Auto;
        }
    }
    switch (param) {
    case kDigitalMode:
        return DemodulationMode::Digital;
    case kFmMode:
        return DemodulationMode::Fm;
    default:
        return std::nullopt;
    }
}

std::optional<SquelchValues> HostNotification::Values() const {
    if (data == nullptr || (size != 0 && size < sizeof(SquelchValues))) {
        return std::nullopt;
    }
    SquelchValues values{};
    std::memcpy(&values, data, sizeof(values));
    return values;
}

void HostNotification::Perform(IHostCommands& commands) const {
    switch (static_cast<HostCode>(code)) {
    case HostCode::Reset:
        commands.ClearSavedStreamValue();
        break;
    case HostCode::Power:
        commands.SetPower(param != 0);
        break;
    case HostCode::Frequency:
        commands.SetReceiverFrequency(param);
        break;
    case HostCode::Mode:
        if (const auto mode = SelectedMode(); mode && !commands.IsInHostModeCall()) {
            commands.SetDemodulationMode(static_cast<std::int32_t>(*mode));
        }
        break;
    case HostCode::SquelchSetup: {
        const auto values = Values();
        commands.SetSquelchSetup(param, values ? &*values : nullptr);
        break;
    }
    case HostCode::SquelchState:
        commands.SetHostSquelch(param);
        break;
    case HostCode::Volume:
        commands.SetVolume(static_cast<std::int32_t>(param));
        break;
    case HostCode::Mute:
        commands.SetMute(param != 0 ? 1 : 0);
        break;
    case HostCode::Scanner:
        commands.SetScanner(param);
        break;
    case HostCode::Close:
        break;
    }
}

} // namespace orva::plugin
