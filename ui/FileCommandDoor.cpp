#include "ui/FileCommandDoor.h"

#include "ui/IPluginWindowOwner.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace orva::ui {

namespace {

constexpr std::int64_t kMostSteps = 86400; // a day; longer than any recording

/// A whole decimal number, limited to 64 bits; nothing if `text` is none.
std::optional<std::int64_t> ToNumber(const std::string& text) {
    constexpr int kDecimal = 10;
    const std::size_t digits = text.starts_with('-') ? 1 : 0;
    if (text.size() == digits || text.find_first_not_of("0123456789", digits) != std::string::npos) {
        return std::nullopt;
    }
    return std::strtoll(text.c_str(), nullptr, kDecimal);
}

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
        return isPlaying && Seek(text, owner);
    case FileCommand::Step:
        return isPlaying && Step(text, owner);
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

bool FileCommandDoor::Seek(const std::string& text, IPluginWindowOwner& owner) {
    const auto position = ToNumber(text);
    if (!position || *position < 0) {
        return false;
    }
    constexpr std::int64_t kHighest = std::numeric_limits<std::uint32_t>::max();
    owner.SeekFile(static_cast<std::uint32_t>(std::min(*position, kHighest)));
    return true;
}

bool FileCommandDoor::Step(const std::string& text, IPluginWindowOwner& owner) {
    const auto seconds = ToNumber(text);
    if (!seconds) {
        return false;
    }
    const std::int32_t direction = *seconds < 0 ? -1 : 1;
    for (std::int64_t left = direction * std::clamp(*seconds, -kMostSteps, kMostSteps); left > 0; --left) {
        owner.StepFile(direction);
    }
    return true;
}

} // namespace orva::ui
