/// What an instance listens for.
#pragma once

#include <cstdint>

namespace orva::plugin {

/// What runs. The numbers are those of the settings and of the window's buttons.
enum class DemodulationMode : std::int32_t {
    Auto = 0,    ///< the digital chain always; FM audio whenever there is no digital signal
    Digital = 1, ///< the digital chain only
    Fm = 2,      ///< FM audio only; the demodulator still runs, the frame decoder gets nothing
};

} // namespace orva::plugin
