/// The owner of the blocks that a wave output plays.
#pragma once

#include "dsp/CtbSampleBlock.h"

namespace orva::audio {

/// What a wave output asks of its source: nothing is pulled through it. The source pushes blocks with
/// `CtbWaveOut::Write`, and gets each of them back here, played or not.
class ItbWaveOutputDataSource {
public:
    /// Takes a block back. May call `CtbWaveOut::Write`, and must not delete the output. [window thread]
    ///
    /// \param block  one that was given to `Write`; never null
    virtual void ReturnBlock(dsp::CtbSampleBlock* block) = 0;

protected:
    ~ItbWaveOutputDataSource() = default; ///< no output deletes its source
};

} // namespace orva::audio
