#include "ui/FileCommandDoor.h"

#include "ui/IPluginWindowOwner.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::ui {

namespace {

using Activity = FileCommandDoor::Activity;
using Asked = std::vector<std::string>;

/// Notes what it is asked for, and tells the door what a panel would be told.
class Owner : public IPluginWindowOwner {
public:
    explicit Owner(FileCommandDoor& itsDoor) : door(itsDoor) {}

    void DeferredStart() override { asked.emplace_back("start"); }
    void SelectFile(const char* path) override {
        asked.push_back(std::string("select ") + path);
        door.SetSupported(canPlay);
    }
    void StartPlayback() override {
        asked.emplace_back("play");
        if (canStart) {
            door.SetActivity(Activity::Playing);
        }
    }
    void StartRecording() override {
        asked.emplace_back("record");
        choice = door.TakeChoice();
        if (canStart) {
            door.SetActivity(Activity::Recording);
        }
    }
    void StopFile() override {
        asked.emplace_back("stop");
        if (canStop) {
            door.SetActivity(Activity::Rest);
        }
    }
    void SetPause(bool isOn) override { asked.emplace_back(isOn ? "pause" : "resume"); }
    void SeekFile(std::uint32_t position) override { asked.push_back("seek " + std::to_string(position)); }
    void StepFile(std::int32_t direction) override { asked.push_back("step " + std::to_string(direction)); }
    void SetPauseUnderSquelch(std::int32_t /*isOn*/) override { asked.emplace_back("squelch"); }
    void SetPauseNoOrva(std::int32_t /*isOn*/) override { asked.emplace_back("signal"); }

    FileCommandDoor& door;
    Asked asked;
    std::optional<RecordingChoice> choice;
    bool canPlay = true;
    bool canStart = true;
    bool canStop = true;
};

class FileCommandDoorTest : public testing::Test {
protected:
    FileCommandDoor door;
    Owner owner{door};
};

} // namespace

TEST_F(FileCommandDoorTest, ChoosesNameFolderAndKindOfARecording) {
    EXPECT_TRUE(door.Perform(FileCommand::RecordIf, "Z:\\a b\\call.if.wav", owner));
    ASSERT_TRUE(owner.choice);
    EXPECT_EQ(owner.choice->folder, "Z:\\a b");
    EXPECT_EQ(owner.choice->name, "call.if.wav");
    EXPECT_TRUE(owner.choice->isIntermediateFrequency);
    EXPECT_TRUE(door.HasSucceeded(FileCommand::RecordIf));
    EXPECT_FALSE(door.TakeChoice()) << "a choice serves once";
    door.Perform(FileCommand::Stop, "", owner);
    EXPECT_TRUE(door.Perform(FileCommand::RecordAudio, "call", owner));
    EXPECT_EQ(owner.choice->folder, ".");
    EXPECT_EQ(owner.choice->name, "call");
    EXPECT_FALSE(owner.choice->isIntermediateFrequency);
    EXPECT_EQ(owner.asked, (Asked{"record", "stop", "record"}));
}

TEST_F(FileCommandDoorTest, TellsWhenTheOwnerDidNotDoWhatItWasAsked) {
    owner.canStart = false;
    for (const FileCommand command : {FileCommand::RecordIf, FileCommand::RecordAudio, FileCommand::Play}) {
        EXPECT_TRUE(door.Perform(command, "call", owner));
        EXPECT_FALSE(door.HasSucceeded(command));
    }
    owner.canStop = false; // the end waits for something
    door.SetActivity(Activity::Playing);
    EXPECT_TRUE(door.Perform(FileCommand::Stop, "", owner));
    EXPECT_FALSE(door.HasSucceeded(FileCommand::Stop));
}

TEST_F(FileCommandDoorTest, DropsAChoiceThatNobodyTook) {
    class Idler : public Owner {
    public:
        using Owner::Owner;
        void StartRecording() override {}
    } idler(door);
    EXPECT_TRUE(door.Perform(FileCommand::RecordIf, "call", idler));
    door.DropChoice();
    EXPECT_FALSE(door.TakeChoice());
}

TEST_F(FileCommandDoorTest, PlaysOnlyWhatCanBePlayed) {
    owner.canPlay = false;
    EXPECT_FALSE(door.Perform(FileCommand::Play, "x.wav", owner));
    EXPECT_EQ(owner.asked, Asked{"select x.wav"});
    owner.canPlay = true;
    EXPECT_TRUE(door.Perform(FileCommand::Play, "y.wav", owner));
    EXPECT_TRUE(door.HasSucceeded(FileCommand::Play));
    EXPECT_EQ(owner.asked, (Asked{"select x.wav", "select y.wav", "play"}));
}

TEST_F(FileCommandDoorTest, StartsFromRestOnly) {
    for (const Activity activity : {Activity::Playing, Activity::Recording}) {
        door.SetActivity(activity);
        EXPECT_FALSE(door.Perform(FileCommand::RecordIf, "x", owner));
        EXPECT_FALSE(door.Perform(FileCommand::RecordAudio, "x", owner));
        EXPECT_FALSE(door.Perform(FileCommand::Play, "x", owner));
        EXPECT_TRUE(owner.asked.empty());
    }
}

TEST_F(FileCommandDoorTest, HasNothingToStopAtRest) {
    for (const FileCommand command :
         {FileCommand::Stop, FileCommand::Pause, FileCommand::Resume, FileCommand::Seek, FileCommand::Step}) {
        EXPECT_FALSE(door.Perform(command, "1", owner));
    }
    EXPECT_TRUE(owner.asked.empty());
}

TEST_F(FileCommandDoorTest, StopsAndPausesBothKindsOfWork) {
    for (const Activity activity : {Activity::Playing, Activity::Recording}) {
        door.SetActivity(activity);
        EXPECT_TRUE(door.Perform(FileCommand::Pause, "", owner));
        EXPECT_TRUE(door.Perform(FileCommand::Resume, "", owner));
        EXPECT_TRUE(door.Perform(FileCommand::Stop, "", owner));
        EXPECT_TRUE(door.HasSucceeded(FileCommand::Stop));
        EXPECT_EQ(owner.asked, (Asked{"pause", "resume", "stop"}));
        owner.asked.clear();
    }
}

TEST_F(FileCommandDoorTest, MovesInAPlayedFileOnly) {
    door.SetActivity(Activity::Recording);
    EXPECT_FALSE(door.Perform(FileCommand::Seek, "1", owner));
    EXPECT_FALSE(door.Perform(FileCommand::Step, "1", owner));
    door.SetActivity(Activity::Playing);
    EXPECT_TRUE(door.Perform(FileCommand::Seek, "4000000000", owner));
    EXPECT_TRUE(door.Perform(FileCommand::Step, "-2", owner));
    EXPECT_TRUE(door.Perform(FileCommand::Step, "1", owner));
    EXPECT_TRUE(door.Perform(FileCommand::Step, "0", owner));
    EXPECT_EQ(owner.asked, (Asked{"seek 4000000000", "step -1", "step -1", "step 1"}));
}

TEST_F(FileCommandDoorTest, IgnoresNumbersThatAreNoCommand) {
    door.SetActivity(Activity::Playing);
    EXPECT_FALSE(door.Perform(static_cast<FileCommand>(0), "", owner));
    EXPECT_FALSE(door.Perform(static_cast<FileCommand>(0x4F524309), "", owner));
    EXPECT_TRUE(owner.asked.empty());
}

} // namespace orva::ui
