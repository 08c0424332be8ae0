#include "tests/toolkit/EntrySupport.h"
#include "toolkit/TmyFloatEdit.h"
#include "toolkit/TmyIntEdit.h"
#include "toolkit/TypeRegistry.h"

#include <limits>
#include <vector>

namespace orva::toolkit {
namespace {

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

class IntEditTest : public EntryTest {
protected:
    IntEditTest() { changed.Watch(edit.onValueChanged); }

    /// Types over all of the text, and presses Return.
    static void Enter(TmyIntEdit& entry, const std::string& text) {
        entry.Select(0, -1);
        Type(entry, "\b");
        Type(entry, text + "\r");
    }
    /// Puts a text there that no filter has seen, as pasting does, and presses Return.
    static void Paste(TmyIntEdit& entry, const std::string& text) {
        entry.SetText(text.c_str());
        Type(entry, "\r");
    }
    static std::int64_t Wheeled(TmyIntEdit& entry, std::int64_t from, int notches) {
        entry.SetValue(from);
        Wheel(entry, notches);
        return entry.GetValue();
    }

    TmyIntEdit& edit = *new TmyIntEdit(&top, {10, 10, 120, 20});
    EventCount<std::int64_t> changed;
};

TEST_F(IntEditTest, BeginsWithoutANumber) {
    EXPECT_EQ(edit.GetValue(), 0x123456789);
    EXPECT_EQ(static_cast<std::uint32_t>(edit.GetValue()), 0x23456789u);
    EXPECT_EQ(Text(edit), "");
    const TypeRecord* type = FindType(&edit);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->typeId, 14u);
    EXPECT_STREQ(type->name, "IntEdit");
    edit.SetValue(0);
    EXPECT_EQ(changed.Take(), 1);
    EXPECT_EQ(Text(edit), "0");
}

TEST_F(IntEditTest, TellsOfChangesAlone) {
    edit.SetValue(-17);
    EXPECT_EQ(changed.Take(), 1);
    EXPECT_EQ(changed.last, -17);
    EventCount<> texts;
    texts.Watch(edit.onChange);
    edit.SetValue(-17);
    EXPECT_EQ(changed.Take(), 0);
    EXPECT_EQ(texts.Take(), 0);
    Type(edit, "9");
    EXPECT_EQ(texts.Take(), 1);
    edit.SetValue(-17); // the number is what it was, the text is not
    EXPECT_EQ(texts.Take(), 1);
    EXPECT_EQ(changed.Take(), 0);
    EXPECT_EQ(Text(edit), "-17");
}

TEST_F(IntEditTest, LimitsToItsRange) {
    edit.SetMaximum(100);
    edit.SetMinimum(-10);
    edit.SetValue(101);
    EXPECT_EQ(edit.GetValue(), 100);
    EXPECT_EQ(Text(edit), "100");
    edit.SetValue(-11);
    EXPECT_EQ(Text(edit), "-10");
    edit.SetMinimum(0);
    EXPECT_EQ(Text(edit), "0");
    edit.SetMaximum(0); // both 0: no limits
    edit.SetValue(kMax);
    EXPECT_EQ(Text(edit), "9223372036854775807");
    edit.SetValue(kMin);
    EXPECT_EQ(Text(edit), "-9223372036854775808");
}

TEST_F(IntEditTest, BringsAFreshEntryIntoTheRangeAndTells) {
    edit.SetMaximum(31);
    EXPECT_EQ(edit.GetValue(), 31);
    EXPECT_EQ(Text(edit), "31");
    EXPECT_EQ(changed.Take(), 1);
}

TEST_F(IntEditTest, MovesTheOtherLimitAlong) {
    edit.SetMinimum(50);
    EXPECT_EQ(edit.GetMaximum(), 50);
    EXPECT_EQ(edit.GetValue(), 50);
    edit.SetMaximum(80);
    EXPECT_EQ(edit.GetMinimum(), 50);
    edit.SetMaximum(20);
    EXPECT_EQ(edit.GetMinimum(), 20);
    EXPECT_EQ(edit.GetValue(), 20);
    edit.SetMinimum(-5);
    EXPECT_EQ(edit.GetMaximum(), 20);
    EXPECT_EQ(edit.GetValue(), 20);
}

TEST_F(IntEditTest, RoundsToTheStepIfAskedTo) {
    edit.SetStep(16);
    edit.SetValue(47);
    EXPECT_EQ(edit.GetValue(), 47);
    edit.SetRoundToStep(true);
    edit.SetValue(47);
    EXPECT_EQ(edit.GetValue(), 32);
    edit.SetValue(-47);
    EXPECT_EQ(edit.GetValue(), -32);
    edit.SetMaximum(20); // the limit holds though it is no multiple
    edit.SetValue(100);
    EXPECT_EQ(edit.GetValue(), 20);
    edit.SetStep(0);
    edit.SetValue(7);
    EXPECT_EQ(edit.GetValue(), 7);
}

// --- typing ------------------------------------------------------------------------------------------------

TEST_F(IntEditTest, TakesEveryCharacterByItsRule) {
    edit.SetValue(5);
    for (int code = 1; code < 256; ++code) {
        edit.SetText("12");
        edit.Select(2, 2);
        const char character = static_cast<char>(code);
        if (code == '\b' || code == '\r' || code == 27 || code < ' ') {
            continue; // control characters have tests of their own
        }
        Type(edit, std::string(1, character));
        const bool digit = code >= '0' && code <= '9';
        EXPECT_EQ(Text(edit), digit ? std::string("12") + character : "12") << code;
    }
}

TEST_F(IntEditTest, TakesHexadecimalDigitsInEitherCase) {
    edit.SetHexadecimal(NumberBase::LowerHexadecimal);
    edit.SetValue(0);
    for (int code = ' '; code < 256; ++code) {
        edit.SetText("1");
        edit.Select(1, 1);
        const char character = static_cast<char>(code);
        Type(edit, std::string(1, character));
        const bool digit = std::string("0123456789abcdefABCDEF").find(character) != std::string::npos;
        EXPECT_EQ(Text(edit), digit ? std::string("1") + character : "1") << code;
    }
}

TEST_F(IntEditTest, PassesControlCharacters) {
    edit.SetValue(123);
    edit.Select(3, 3);
    Type(edit, "\b");
    EXPECT_EQ(Text(edit), "12");
    std::vector<WPARAM> seen;
    struct Watch {
        void Note(TmyControl* /*sender*/, WPARAM& code, LPARAM /*flags*/) { seen->push_back(code); }
        std::vector<WPARAM>* seen;
    } watch{&seen};
    edit.onKey.Bind<&Watch::Note>(&watch);
    Type(edit, "\x03x");
    EXPECT_EQ(seen, std::vector<WPARAM>{3});
}

TEST_F(IntEditTest, CopiesAndPastesByControlCharacters) {
    edit.SetValue(456);
    edit.SetFocus();
    edit.Select(0, -1);
    Type(edit, "\x03"); // Ctrl+C
    edit.Select(3, 3);
    Type(edit, "\x16"); // Ctrl+V
    EXPECT_EQ(Text(edit), "456456");
    edit.Select(0, 3);
    Type(edit, "\x18"); // Ctrl+X
    EXPECT_EQ(Text(edit), "456");
}

TEST_F(IntEditTest, TakesAMinusSignAtTheBeginningOnly) {
    edit.SetValue(12);
    edit.Select(1, 1);
    Type(edit, "-");
    EXPECT_EQ(Text(edit), "12");
    edit.Select(0, 0);
    Type(edit, "-");
    EXPECT_EQ(Text(edit), "-12");
    edit.Select(0, 0);
    Type(edit, "-"); // a second one
    EXPECT_EQ(Text(edit), "-12");
    edit.Select(1, 1);
    Type(edit, "-");
    EXPECT_EQ(Text(edit), "-12");
    edit.Select(1, 3); // behind the sign
    Type(edit, "-");
    EXPECT_EQ(Text(edit), "-12");
    edit.Select(0, 1); // the sign is selected
    Type(edit, "-");
    EXPECT_EQ(Text(edit), "-12");
    edit.Select(0, -1);
    Type(edit, "-");
    EXPECT_EQ(Text(edit), "-");
    edit.SetText("");
    Type(edit, "--7");
    EXPECT_EQ(Text(edit), "-7");
}

TEST_F(IntEditTest, TakesNoMinusSignWhileHexadecimal) {
    edit.SetHexadecimal(NumberBase::UpperHexadecimal);
    edit.SetValue(1);
    edit.Select(0, 0);
    Type(edit, "-");
    EXPECT_EQ(Text(edit), "1");
}

TEST_F(IntEditTest, TakesTheTextAtReturnAndGivesTheFocusToTheParent) {
    edit.SetValue(1);
    changed.Take();
    edit.SetFocus();
    ASSERT_EQ(::GetFocus(), edit.Window());
    EventCount<> committed;
    committed.Watch(edit.onCommit);
    Enter(edit, "345");
    EXPECT_EQ(edit.GetValue(), 345);
    EXPECT_EQ(changed.Take(), 1);
    EXPECT_EQ(committed.Take(), 1);
    EXPECT_EQ(::GetFocus(), top.Window());
    EXPECT_FALSE(edit.HasFocus());
    EXPECT_FALSE(edit.IsEditing());
    EXPECT_EQ(Text(edit), "345");
}

TEST_F(IntEditTest, ShowsReturnToOnKeyAfterTheNumberIsTaken) {
    struct Watch {
        void Note(TmyControl* /*sender*/, WPARAM& code, LPARAM /*flags*/) {
            if (code == VK_RETURN) {
                valueAtReturn = edit->GetValue();
                editing = edit->IsEditing();
            }
        }
        TmyIntEdit* edit;
        std::int64_t valueAtReturn = 0;
        bool editing = false;
    } watch{&edit};
    edit.SetValue(1);
    edit.onKey.Bind<&Watch::Note>(&watch);
    Enter(edit, "77");
    EXPECT_EQ(watch.valueAtReturn, 77);
    EXPECT_TRUE(watch.editing);
}

TEST_F(IntEditTest, IsEditingUntilReturnHasGivenTheFocusAway) {
    std::vector<bool> editing;
    EventCount<bool> focus;
    edit.SetValue(1);
    edit.SetFocus();
    focus.Watch(edit.onFocus);
    focus.then = [&] { editing.push_back(edit.IsEditing()); };
    Enter(edit, "345");
    EXPECT_EQ(editing, std::vector<bool>{true});
    EXPECT_FALSE(edit.IsEditing());
}

TEST_F(IntEditTest, PutsTheNumberBackAtEscape) {
    edit.SetValue(12);
    changed.Take();
    edit.SetFocus();
    EventCount<> committed;
    committed.Watch(edit.onCommit);
    edit.Select(2, 2);
    Type(edit, "99");
    EXPECT_EQ(Text(edit), "1299");
    Type(edit, "\x1B");
    EXPECT_EQ(Text(edit), "12");
    EXPECT_EQ(edit.GetValue(), 12);
    EXPECT_EQ(changed.Take() + committed.Take(), 0);
    EXPECT_EQ(::GetFocus(), top.Window());
}

TEST_F(IntEditTest, DropsReturnEscapeAndWhatDoesNotEnter) {
    edit.SetValue(12);
    edit.SetUnitMode(UnitMode::Frequency);
    edit.Select(2, 2);
    const std::pair<WPARAM, WPARAM> cases[] = {{VK_RETURN, 0}, {VK_ESCAPE, 0}, {' ', 0},    {'-', 0},
                                               {'k', 0},       {'z', 0},       {0x1234, 0}, {'\b', '\b'},
                                               {3, 3},         {'7', '7'}};
    for (const auto& [given, left] : cases) {
        WPARAM code = given;
        edit.OnChar(code, 1);
        EXPECT_EQ(code, left) << given;
    }
}

TEST_F(IntEditTest, TakesAnEditedTextAtTheLossOfTheFocus) {
    edit.SetValue(12);
    edit.SetFocus();
    edit.Select(2, 2);
    Type(edit, "3");
    EXPECT_EQ(edit.GetValue(), 12);
    top.SetFocus();
    EXPECT_EQ(edit.GetValue(), 123);
}

TEST_F(IntEditTest, LeavesATextAloneThatNobodyEdited) {
    struct Dashes {
        void Format(TmyControl* /*sender*/, std::int64_t number, TmyString& text) {
            text = number == 0 ? TmyString("---") : text;
        }
    } dashes;
    edit.onFormat.Bind<&Dashes::Format>(&dashes);
    edit.SetMinimum(-5);
    edit.SetMaximum(5);
    edit.SetValue(0);
    EXPECT_EQ(Text(edit), "---");
    edit.SetValue(4);
    EXPECT_EQ(Text(edit), "4");
    edit.SetValue(0);
    changed.Take();
    edit.SetFocus();
    top.SetFocus();
    EXPECT_EQ(changed.Take(), 0);
    auto* fresh = new TmyIntEdit(&top, {0, 60, 50, 20});
    fresh->SetFocus();
    top.SetFocus();
    EXPECT_EQ(fresh->GetValue(), TmyIntEdit::kUnset);
}

TEST_F(IntEditTest, TakesJunkAsWhatItBeginsWith) {
    const struct {
        const char* text;
        std::int64_t value;
    } cases[]{{"", 0},
              {"junk", 0},
              {"-", 0},
              {"12 apples", 12},
              {"  -4", -4},
              {"12345678901234567890", kMax}, // 20 digits
              {"-12345678901234567890", kMin},
              {"99999999999999999999", kMax}};
    for (const auto& each : cases) {
        edit.SetValue(1);
        Paste(edit, each.text);
        EXPECT_EQ(edit.GetValue(), each.value) << each.text;
        EXPECT_EQ(Text(edit), std::to_string(each.value));
    }
    edit.SetMinimum(10);
    edit.SetMaximum(500);
    Paste(edit, "12345678901234567890");
    EXPECT_EQ(Text(edit), "500");
    Paste(edit, "");
    EXPECT_EQ(Text(edit), "10");
}

TEST_F(IntEditTest, LetsTheOwnerReadAndWriteTheText) {
    struct Names {
        void Format(TmyControl* /*sender*/, std::int64_t number, TmyString& text) {
            if (number == 1) {
                text = "one";
            }
        }
        void Parse(TmyControl* /*sender*/, const TmyString& text, std::int64_t& number) {
            if (text == "two") {
                number = 2;
            }
        }
    } names;
    edit.onFormat.Bind<&Names::Format>(&names);
    edit.onParse.Bind<&Names::Parse>(&names);
    edit.SetValue(1);
    EXPECT_EQ(Text(edit), "one");
    Paste(edit, "two");
    EXPECT_EQ(edit.GetValue(), 2);
    EXPECT_EQ(Text(edit), "2");
    EXPECT_STREQ(edit.TextOf(1).Text(), "one");
}

TEST_F(IntEditTest, ShowsHexadecimalNumbers) {
    edit.SetUnitWidth(12);
    edit.SetValue(0xF7E);
    EXPECT_EQ(Text(edit), "3966");
    edit.SetHexadecimal(NumberBase::LowerHexadecimal);
    EXPECT_EQ(Text(edit), "f7e");
    EXPECT_STREQ(edit.GetUnit().Text(), "h");
    edit.SetHexadecimal(NumberBase::UpperHexadecimal);
    EXPECT_EQ(Text(edit), "F7E");
    EXPECT_STREQ(edit.GetUnit().Text(), "h");
    Enter(edit, "fFfF");
    EXPECT_EQ(edit.GetValue(), 0xFFFF);
    EXPECT_EQ(Text(edit), "FFFF");
    edit.SetValue(-1);
    EXPECT_EQ(Text(edit), "FFFFFFFFFFFFFFFF");
    Paste(edit, "FFFFFFFFFFFFFFFE");
    EXPECT_EQ(edit.GetValue(), -2);
    Paste(edit, "0x10");
    EXPECT_EQ(edit.GetValue(), 16);
    edit.SetHexadecimal(NumberBase::Decimal);
    EXPECT_EQ(Text(edit), "16");
    EXPECT_STREQ(edit.GetUnit().Text(), "");
    auto* fresh = new TmyIntEdit(&top, {0, 60, 50, 20});
    fresh->SetHexadecimal(NumberBase::LowerHexadecimal);
    EXPECT_EQ(Text(*fresh), "");
}

TEST_F(IntEditTest, SetsTheUnitByLetters) {
    const auto unitAfter = [&](char key) {
        edit.SetUnit("?");
        edit.SetText("7");
        edit.Select(1, 1);
        Type(edit, std::string(1, key));
        EXPECT_EQ(Text(edit), "7") << key;
        return std::string(edit.GetUnit().Text());
    };
    EXPECT_EQ(unitAfter('k'), "?");
    edit.SetUnitMode(UnitMode::Frequency);
    const std::pair<char, const char*> frequencies[]{{'h', "Hz"},  {'H', "Hz"},  {'k', "kHz"}, {'K', "kHz"},
                                                     {'m', "MHz"}, {'M', "MHz"}, {'g', "GHz"}, {'G', "GHz"},
                                                     {'s', "?"},   {'S', "?"},   {'x', "?"},   {' ', "?"}};
    for (const auto& [key, unit] : frequencies) {
        EXPECT_EQ(unitAfter(key), unit) << key;
    }
    edit.SetUnitMode(UnitMode::Time);
    const std::pair<char, const char*> times[]{{'s', "s"}, {'S', "s"}, {'m', "min"}, {'M', "min"},
                                               {'h', "h"}, {'H', "h"}, {'k', "?"},   {'K', "?"},
                                               {'g', "?"}, {'G', "?"}};
    for (const auto& [key, unit] : times) {
        EXPECT_EQ(unitAfter(key), unit) << key;
    }
}

TEST_F(IntEditTest, ReadOnlyItKeepsItsUnitToo) {
    edit.SetUnitMode(UnitMode::Frequency);
    edit.SetUnit("Hz");
    edit.SetValue(1500);
    edit.SetReadOnly(true);
    Type(edit, "k");
    EXPECT_STREQ(edit.GetUnit().Text(), "Hz");
    EXPECT_EQ(Text(edit), "1500");
    edit.SetReadOnly(false);
    Type(edit, "k");
    EXPECT_STREQ(edit.GetUnit().Text(), "kHz");
}

TEST_F(IntEditTest, KeepsTheNumberWhenTheUnitChanges) {
    edit.SetUnitMode(UnitMode::Frequency);
    edit.SetValue(1500);
    changed.Take();
    Type(edit, "k");
    EXPECT_EQ(edit.GetValue(), 1500);
    EXPECT_EQ(Text(edit), "1500");
    EXPECT_EQ(changed.Take(), 0);
}

// --- the wheel ---------------------------------------------------------------------------------------------

TEST_F(IntEditTest, StepsByTheWheel) {
    EXPECT_EQ(edit.GetStep(), 1);
    edit.SetStep(5);
    EXPECT_EQ(Wheeled(edit, 10, 1), 15);
    EXPECT_EQ(Wheeled(edit, 10, -1), 5);
    EXPECT_EQ(Wheeled(edit, 10, -4), -10);
    EXPECT_EQ(Wheeled(edit, 10, 0), 10);
    EXPECT_EQ(Text(edit), "10");
}

TEST_F(IntEditTest, TakesTheTextOnShowBeforeTheWheelSteps) {
    edit.SetValue(1);
    edit.SetText("40");
    Wheel(edit, 1);
    EXPECT_EQ(edit.GetValue(), 41);
}

TEST_F(IntEditTest, CommitsAtTheWheelEvenATextThatNobodyEdited) {
    struct Reader {
        void Parse(TmyControl* /*sender*/, const TmyString& /*text*/, std::int64_t& number) {
            ++count;
            number = 70;
        }
        int count = 0;
    } reader;
    edit.SetValue(1);
    changed.Take();
    edit.onParse.Bind<&Reader::Parse>(&reader);
    Wheel(edit, 1);
    EXPECT_EQ(reader.count, 1);
    EXPECT_EQ(changed.Take(), 2) << "the text's number, and the step";
    EXPECT_EQ(edit.GetValue(), 71);
}

TEST_F(IntEditTest, StepsByTheSizeOfTheNumber) {
    edit.SetWheelDigits(1);
    EXPECT_EQ(Wheeled(edit, 4500, 1), 4600);
    EXPECT_EQ(edit.GetStep(), 100);
    EXPECT_EQ(Wheeled(edit, 0, 1), 1);
    EXPECT_EQ(edit.GetStep(), 1);
    EXPECT_EQ(Wheeled(edit, 1000, -1), 990);
    EXPECT_EQ(edit.GetStep(), 10);
    EXPECT_EQ(Wheeled(edit, 1000, 1), 1100);
    EXPECT_EQ(Wheeled(edit, -1000, 1), -900);
}

TEST_F(IntEditTest, SnapsToMultiplesOfTheStep) {
    edit.SetWheelDigits(1);
    edit.SetWheelSnap(true);
    EXPECT_TRUE(edit.GetWheelSnap());
    EXPECT_EQ(Wheeled(edit, 4550, 1), 4600);
    EXPECT_EQ(Wheeled(edit, 4550, -1), 4500);
    EXPECT_EQ(Wheeled(edit, -4550, 1), -4500);
    EXPECT_EQ(Wheeled(edit, -4550, -1), -4600);
}

TEST_F(IntEditTest, GoesThroughDecadesAndTheSign) {
    edit.SetWheelDigits(1);
    edit.SetWheelSnap(true);
    edit.SetValue(120);
    std::vector<std::int64_t> expected{110, 100};
    for (std::int64_t number = 99; number >= -99; --number) {
        expected.push_back(number);
    }
    expected.insert(expected.end(), {-100, -110, -120});
    for (const std::int64_t number : expected) {
        Wheel(edit, -1);
        ASSERT_EQ(edit.GetValue(), number);
    }
    // And back up, where the size of the number itself counts: -100 still goes by ten.
    expected = {-110, -100, -90};
    for (std::int64_t number = -89; number <= 100; ++number) {
        expected.push_back(number);
    }
    expected.push_back(110);
    for (const std::int64_t number : expected) {
        Wheel(edit, 1);
        ASSERT_EQ(edit.GetValue(), number);
    }
}

TEST_F(IntEditTest, StopsAtTheLimitInTheWheelsDirection) {
    edit.SetMinimum(-9);
    edit.SetMaximum(12);
    edit.SetStep(5);
    EXPECT_EQ(Wheeled(edit, 10, 1), 12);
    changed.Take();
    Wheel(edit, 1);
    EXPECT_EQ(changed.Take(), 0);
    Wheel(edit, -1);
    EXPECT_EQ(edit.GetValue(), 7);
    EXPECT_EQ(Wheeled(edit, -8, -1), -9);
    // At the limit the step is left as it is, even if it would follow the size.
    edit.SetWheelDigits(1);
    Wheel(edit, -1);
    EXPECT_EQ(edit.GetStep(), 5);
    Wheel(edit, 100);
    EXPECT_EQ(edit.GetValue(), 12);
}

TEST_F(IntEditTest, TellsThatTheUserIsEditing) {
    struct Watch {
        void Note(TmyControl* sender, std::int64_t /*value*/) {
            editing.push_back(static_cast<TmyIntEdit*>(sender)->IsEditing());
        }
        std::vector<bool> editing;
    } watch;
    edit.onValueChanged.Bind<&Watch::Note>(&watch);
    edit.SetValue(1);
    Wheel(edit, 1);
    Enter(edit, "5");
    edit.SetValue(7);
    edit.SetFocus();
    Type(edit, "9");
    top.SetFocus();
    EXPECT_EQ(watch.editing, (std::vector<bool>{false, true, true, false, true}));
}

TEST_F(IntEditTest, TakesTheWheelOfTheFocus) {
    edit.SetValue(3);
    edit.SetFocus();
    Send(top, WM_MOUSEWHEEL, static_cast<WPARAM>(WHEEL_DELTA) << 16U);
    EXPECT_EQ(edit.GetValue(), 4);
}

TEST_F(IntEditTest, TakesNothingWhileDisabledOrReadOnly) {
    edit.SetValue(3);
    changed.Take();
    edit.SetEnabled(false);
    Wheel(edit, 1);
    Type(edit, "4\r\x1B");
    EXPECT_EQ(Text(edit), "3");
    edit.SetEnabled(true);
    edit.SetReadOnly(true);
    Wheel(edit, 1);
    Type(edit, "4\r");
    EXPECT_EQ(Text(edit), "3");
    EXPECT_EQ(changed.Take(), 0);
    edit.SetReadOnly(false);
    Wheel(edit, 1);
    EXPECT_EQ(Text(edit), "4");
}

TEST_F(IntEditTest, LetsAHandlerDeleteItAtAnyMoment) {
    struct Deleter {
        void AtValue(TmyControl* sender, std::int64_t /*value*/) { delete sender; }
        void AtFormat(TmyControl* sender, std::int64_t /*value*/, TmyString& /*text*/) { delete sender; }
        void AtParse(TmyControl* sender, const TmyString& /*text*/, std::int64_t& /*number*/) {
            delete sender;
        }
        void AtText(TmyControl* sender) { delete sender; }
    } deleter;
    const auto make = [&] {
        auto* made = new TmyIntEdit(&top, {0, 60, 50, 20});
        made->SetValue(5);
        made->SetFocus();
        return made;
    };
    const auto send = [](HWND window, UINT message, WPARAM wParam) {
        SendMessageA(window, message, wParam, 0);
    };
    for (const auto& [message, wParam] :
         {std::pair<UINT, WPARAM>{WM_CHAR, VK_RETURN}, {WM_MOUSEWHEEL, WHEEL_DELTA << 16}}) {
        for (int which = 0; which < 4; ++which) {
            TmyIntEdit* victim = make();
            victim->SetText("77");
            switch (which) {
            case 0:
                victim->onValueChanged.Bind<&Deleter::AtValue>(&deleter);
                break;
            case 1:
                victim->onFormat.Bind<&Deleter::AtFormat>(&deleter);
                break;
            case 2:
                victim->onParse.Bind<&Deleter::AtParse>(&deleter);
                break;
            default:
                victim->onCommit.Bind<&Deleter::AtText>(&deleter);
                break;
            }
            const HWND window = victim->Window();
            send(window, message, wParam);
            if (IsWindow(window)) { // the wheel commits nothing to the owner
                EXPECT_EQ(which, 3);
                delete victim;
            }
            EXPECT_EQ(edit.NextSibling(), nullptr);
        }
    }
}

TEST_F(IntEditTest, TellsOnceWhenAHandlerSetsAnotherNumber) {
    struct Setter {
        void AtText(TmyControl* sender) { static_cast<TmyIntEdit*>(sender)->SetValue(9); }
    } setter;
    edit.SetValue(1);
    changed.Take();
    edit.onChange.Bind<&Setter::AtText>(&setter);
    edit.SetValue(2);
    EXPECT_EQ(edit.GetValue(), 9);
    EXPECT_EQ(changed.Take(), 1);
    EXPECT_EQ(changed.last, 9);
}

// --- linked controls ---------------------------------------------------------------------------------------

TEST_F(IntEditTest, KeepsLinkedControlsAtItsRight) {
    auto* up = new TmyControl(&top, {0, 0, 10, 20});
    auto* down = new TmyControl(&top, {0, 0, 12, 20});
    edit.SetLinked(up, down);
    EXPECT_EQ(up->Bounds(), (RECT{130, 10, 140, 30}));
    EXPECT_EQ(down->Bounds(), (RECT{140, 10, 152, 30}));
    edit.SetBounds(20, 40, 50, 25);
    EXPECT_EQ(up->Bounds(), (RECT{70, 40, 80, 60}));
    EXPECT_EQ(down->Bounds(), (RECT{80, 40, 92, 60}));
    edit.SetSize(60, -1);
    EXPECT_EQ(up->Bounds().left, 80);
    edit.SetAlignment(Alignment::Bottom); // by the layout
    EXPECT_EQ(up->Bounds().left, kTopPlace.width);
    EXPECT_EQ(up->Bounds().top, kTopPlace.height - 25);
    delete up;
    edit.SetAlignment(Alignment::None);
    edit.SetBounds(0, 0, 40, 20);
    EXPECT_EQ(down->Bounds().left, 40);
    delete down;
    edit.SetBounds(5, 0, 40, 20);
}

// --- the entry with decimals -------------------------------------------------------------------------------

TEST_F(IntEditTest, FloatEditShowsZeroToSixDecimals) {
    const char* const texts[]{"1234567",  "123456.7", "12345.67", "1234.567",
                              "123.4567", "12.34567", "1.234567"};
    for (int decimals = 0; decimals <= 6; ++decimals) {
        TmyFloatEdit entry(&top, decimals, {0, 60, 100, 20});
        EXPECT_EQ(entry.GetDecimals(), decimals);
        entry.SetValue(1234567);
        EXPECT_EQ(Text(entry), texts[decimals]);
        entry.SetValue(0);
        Enter(entry, texts[decimals]);
        EXPECT_EQ(entry.GetValue(), 1234567);
        Enter(entry, "-.5");
        std::int64_t half = -5;
        for (int place = 1; place < decimals; ++place) {
            half *= 10;
        }
        EXPECT_EQ(entry.GetValue(), decimals == 0 ? 0 : half);
        Paste(entry, "");
        EXPECT_EQ(entry.GetValue(), 0);
        Paste(entry, "12345678901234567890");
        EXPECT_EQ(entry.GetValue(), kMax);
    }
}

TEST_F(IntEditTest, FloatEditTakesThePointAndNoOtherCharacter) {
    TmyFloatEdit entry(&top, 1, {0, 60, 100, 20});
    const TypeRecord* type = FindType(&entry);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->typeId, 52u);
    EXPECT_STREQ(type->name, "FloatEdit");
    entry.SetValue(0);
    for (int code = ' '; code < 256; ++code) {
        entry.SetText("1");
        entry.Select(1, 1);
        const char character = static_cast<char>(code);
        Type(entry, std::string(1, character));
        const bool enters = (code >= '0' && code <= '9') || code == '.';
        EXPECT_EQ(Text(entry), enters ? std::string("1") + character : "1") << code;
    }
    entry.SetText("5");
    entry.Select(0, 0);
    Type(entry, "-");
    EXPECT_EQ(Text(entry), "-5");
}

TEST_F(IntEditTest, FloatEditCountsInUnitsOfItsLastDecimal) {
    TmyFloatEdit entry(&top, 1, {0, 60, 100, 20});
    entry.SetMaximum(120);
    entry.SetValue(0);
    Wheel(entry, 1);
    EXPECT_EQ(Text(entry), "0.1");
    Enter(entry, "6.08");
    EXPECT_EQ(entry.GetValue(), 60);
    EXPECT_EQ(Text(entry), "6.0");
    Enter(entry, "99");
    EXPECT_EQ(Text(entry), "12.0");
    entry.SetMinimum(-30);
    Enter(entry, "-0.4");
    EXPECT_EQ(entry.GetValue(), -4);
    EXPECT_EQ(Text(entry), "-0.4");
    Wheel(entry, 4);
    EXPECT_EQ(Text(entry), "0.0");
}

} // namespace
} // namespace orva::toolkit
