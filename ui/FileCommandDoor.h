/// The play and record panel's part, taken by a program.
#pragma once

#include "ui/FileCommand.h"
#include "ui/IPlayRecView.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orva::ui {

class IPluginWindowOwner;

/// Has the owner of a window do what a program's commands say. Like the panel, whose buttons are off then, it
/// asks for nothing that makes no sense at the moment: no start but from rest, no stop but from work. For
/// this it is told what the panel is told. [window thread]
///
/// The owner may delete the window, and this object with it, from inside a command.
class FileCommandDoor {
public:
    /// What is going on.
    enum class Activity { Rest, Playing, Recording };

    /// Carries a command out. Returns whether the owner was asked.
    bool Perform(FileCommand command, const std::string& text, IPluginWindowOwner& owner);

    /// Whether what the command wanted is so now.
    [[nodiscard]] bool HasSucceeded(FileCommand command) const;

    void SetActivity(Activity now) { activity = now; }
    void SetSupported(bool canBePlayed) { isSupported = canBePlayed; }

    /// What the command under way wants recorded, once.
    [[nodiscard]] std::optional<RecordingChoice> TakeChoice();
    /// The command is over: what nobody took is for nobody.
    void DropChoice() { choice.reset(); }

private:
    void Record(const std::string& path, bool isIntermediateFrequency, IPluginWindowOwner& owner);
    static bool Seek(const std::string& text, IPluginWindowOwner& owner);
    static bool Step(const std::string& text, IPluginWindowOwner& owner);

    Activity activity = Activity::Rest;
    bool isSupported = false;
    std::optional<RecordingChoice> choice;
};

} // namespace orva::ui
