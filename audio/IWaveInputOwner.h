/// The receiver of recorded samples.
#pragma once

#include <cstdint>

namespace orva::audio {

/// Whoever processes what a wave input records.
class IWaveInputOwner {
public:
    /// A buffer was filled. The samples are `CtbWaveIn::GetBlock(index)`; the buffer stays with the owner
    /// until he calls `CtbWaveIn::Requeue(index)`. The owner may stop, close and delete the wave input from
    /// here. [window thread]
    virtual void OnWaveInBuffer(std::int32_t index) = 0;

protected:
    ~IWaveInputOwner() = default; ///< no input deletes its owner
};

} // namespace orva::audio
