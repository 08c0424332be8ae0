#include "plugin/RecordingPath.h"

#include <gtest/gtest.h>

namespace orva::plugin {

namespace {

struct Name {
    const char* typed;
    const char* audio;
    const char* intermediateFrequency;
};

} // namespace

TEST(RecordingPath, TakesWavAndThenIfFromTheTypedName) {
    for (const Name& name : {Name{"call", "F:\\r\\call.wav", "F:\\r\\call.if.wav"},
                             {"call.wav", "F:\\r\\call.wav", "F:\\r\\call.if.wav"},
                             {"call.if", "F:\\r\\call.wav", "F:\\r\\call.if.wav"},
                             {"call.if.wav", "F:\\r\\call.wav", "F:\\r\\call.if.wav"},
                             {"call.wav.wav", "F:\\r\\call.wav.wav", "F:\\r\\call.wav.if.wav"},
                             {"call.wav.if", "F:\\r\\call.wav.wav", "F:\\r\\call.wav.if.wav"},
                             {"call.mp3", "F:\\r\\call.mp3.wav", "F:\\r\\call.mp3.if.wav"},
                             {"two words", "F:\\r\\two words.wav", "F:\\r\\two words.if.wav"},
                             {"a+b", "F:\\r\\a+b.wav", "F:\\r\\a+b.if.wav"}}) {
        EXPECT_EQ(RecordingPath("F:\\r", name.typed, true), name.audio) << name.typed;
        EXPECT_EQ(RecordingPath("F:\\r", name.typed, false), name.intermediateFrequency) << name.typed;
    }
}

TEST(RecordingPath, KeepsANameThatIsOnlyAnExtensionsLetters) {
    EXPECT_EQ(RecordingPath("f", "wav", true), "f\\wav.wav");
    EXPECT_EQ(RecordingPath("f", "if", false), "f\\if.if.wav");
    EXPECT_EQ(RecordingPath("f", "if.wav", false), "f\\if.if.wav");
}

TEST(RecordingPath, KnowsExtensionsByTheirExactLetters) {
    EXPECT_EQ(RecordingPath("f", "x.WAV", true), "f\\x.WAV.wav");
    EXPECT_EQ(RecordingPath("f", "x.IF.wav", false), "f\\x.IF.if.wav");
    EXPECT_EQ(RecordingPath("f", "x.wave", true), "f\\x.wave.wav");
}

TEST(RecordingPath, CallsAnEmptyNameUnnamed) {
    for (const char* typed : {"", ".wav", ".if", ".if.wav"}) {
        EXPECT_EQ(RecordingPath("f", typed, true), "f\\unnamed.wav") << typed;
        EXPECT_EQ(RecordingPath("f", typed, false), "f\\unnamed.if.wav") << typed;
    }
}

TEST(RecordingPath, AsksWithThePathOrWithout) {
    EXPECT_EQ(OverwriteQuestion("C:\\x.wav"),
              "The file: \nC:\\x.wav\nalready exists.\nDo you want to overwrite it?");
    EXPECT_EQ(OverwriteQuestion(""), "File with that name already exists.\nDo you want to overwrite it?");
}

} // namespace orva::plugin
