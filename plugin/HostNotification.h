/// The host's codes, read.
#pragma once

#include "plugin/DemodulationMode.h"
#include "plugin/HostInterface.h"
#include "plugin/IHostCommands.h"

#include <cstdint>
#include <optional>

namespace orva::plugin {

/// One call of `zemPluginNotify`. The data stays the host's, and need not be aligned.
struct HostNotification {
    std::int32_t code;
    std::uint32_t param;
    std::uint32_t size;
    const void* data;

    /// The demodulation mode that a notification of code 2304 selects, none if it selects nothing.
    [[nodiscard]] std::optional<DemodulationMode> SelectedMode() const;

    /// The values that came along; none without data, or when the stated size is too small for them. A size
    /// of 0 with data counts as not stated.
    [[nodiscard]] std::optional<SquelchValues> Values() const;

    /// Has `commands` do what the code asks for. An unknown code, and `HostCode::Close`, do nothing here.
    void Perform(IHostCommands& commands) const;
};

} // namespace orva::plugin
