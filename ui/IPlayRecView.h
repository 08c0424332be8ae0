/// The play and record panel, as the top window sees it.
#pragma once

#include <cstdint>
#include <string>

namespace orva::audio {
class CtbWaveFile;
}

namespace orva::ui {

/// What the user wants recorded, and where.
struct RecordingChoice {
    std::string name;   ///< as typed; extensions may be missing
    std::string folder; ///< empty if even the default folder could not be found
    bool isIntermediateFrequency = false;
};

/// Shows the state of recording and playback, and knows what the user chose. Told something by these
/// operations, it fires no event in return.
class IPlayRecView {
public:
    virtual ~IPlayRecView() = default;

    /// The file that is chosen, for its name, format and length; a closed one, or null, empties the
    /// read-outs.
    ///
    /// \param file       not kept
    /// \param supported  it can be played
    virtual void SetFile(const audio::CtbWaveFile* file, bool supported) = 0;

    virtual void SetPlaying() = 0;
    virtual void SetRecording() = 0;
    virtual void SetStopped() = 0;
    virtual void SetPaused(bool paused) = 0; ///< the pause button

    virtual void SetPosition(std::uint32_t seconds) = 0;
    virtual void SetSliderPosition(std::uint32_t bytes) = 0; ///< of the samples
    virtual void SetSize(std::uint32_t bytes) = 0;           ///< -1 is unknown

    /// The default folder stands for one that was never chosen.
    [[nodiscard]] virtual RecordingChoice GetRecordingChoice() const = 0;

    /// Chooses the next file, and has it played if there was one.
    virtual void SelectNext() = 0;
};

} // namespace orva::ui
