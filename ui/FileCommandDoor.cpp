#include "ui/FileCommandDoor.h"

#include "ui/IPluginWindowOwner.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace orva::ui {

namespace {

constexpr int kDecimal = 10;
constexpr long kMostSteps = 86400; // a day; longer than any recording

} // namespace

bool FileCommandDoor::Perform(FileCommand command, const std::string& text, IPluginWindowOwner& owner) {
    const bool isAtRest = activity == Activity::Rest;
    const bool isPlaying = activity == Activity::Playing;
    switch (command) {
    case FileCommand::RecordIf:
    case FileCommand::RecordAudio:
        if (isAtRest) {
            Record(text, command == FileCommand::RecordIf, owner);
        }
        return isAtRest;
    case FileCommand::Play:
        if (!isAtRest) {
            return false;
        }
        owner.SelectFile(text.c_str()); // tells what can be played
        if (!isSupported) {
            return false;
        }
        owner.StartPlayback();
        return true;
    case FileCommand::Stop:
        if (!isAtRest) {
            owner.StopFile();
        }
        return !isAtRest;
    case FileCommand::Pause:
    case FileCommand::Resume:
        if (!isAtRest) {
            owner.SetPause(command == FileCommand::Pause);
        }
        return !isAtRest;
    case FileCommand::Seek:
        if (isPlaying) {
            owner.SeekFile(static_cast<std::uint32_t>(std::strtoul(text.c_str(), nullptr, kDecimal)));
        }
        return isPlaying;
    case FileCommand::Step:
        if (isPlaying) {
            Step(std::strtol(text.c_str(), nullptr, kDecimal), owner);
        }
        return isPlaying;
    }
    return false;
}

bool FileCommandDoor::HasSucceeded(FileCommand command) const {
    switch (command) {
    case FileCommand::RecordIf:
    case FileCommand::RecordAudio:
        return activity == Activity::Recording;
    case FileCommand::Play:
        return activity == Activity::Playing;
    case FileCommand::Stop:
        return activity == Activity::Rest;
    default:
        return true;
    }
}

std::optional<RecordingChoice> FileCommandDoor::TakeChoice() {
    return std::exchange(choice, std::nullopt);
}

void FileCommandDoor::Record(const std::string& path, bool isIntermediateFrequency,
                             IPluginWindowOwner& owner) {
    const std::size_t slash = path.find_last_of("\\/");
    const bool hasFolder = slash != std::string::npos;
    choice = {hasFolder ? path.substr(slash + 1) : path, hasFolder ? path.substr(0, slash) : ".",
              isIntermediateFrequency};
    owner.StartRecording();
}

void FileCommandDoor::Step(long seconds, IPluginWindowOwner& owner) {
    const std::int32_t direction = seconds < 0 ? -1 : 1;
    for (long left = std::min(std::labs(seconds), kMostSteps); left > 0; --left) {
        owner.StepFile(direction);
    }
}

} // namespace orva::ui
