#include "toolkit/TmyString.h"

#include "tests/support/AllocationProbe.h"
#include "tests/support/RandomSource.h"

#include <cstring>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {

/// How GoogleTest shows a string.
void PrintTo(const TmyString& text, std::ostream* stream) {
    *stream << '"' << std::string(text.Text(), text.Length()) << '"';
}

namespace {

std::string Copy(const TmyString& text) {
    return {text.Text(), text.Length()};
}

TEST(TmyString, IsOnePointer) {
    EXPECT_EQ(sizeof(TmyString), sizeof(void*));
}

TEST(TmyString, StartsEmptyWithRoomFor16) {
    const TmyString empty;
    EXPECT_EQ(empty.Length(), 0U);
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(empty.Capacity(), 16U);
    EXPECT_STREQ(empty.Text(), "");
}

TEST(TmyString, IsMadeOfText) {
    EXPECT_EQ(Copy(TmyString("text")), "text");
    EXPECT_EQ(Copy(TmyString("")), "");
    EXPECT_EQ(Copy(TmyString(static_cast<const char*>(nullptr))), "");
    EXPECT_EQ(Copy(TmyString("text", 2)), "te");
    EXPECT_EQ(Copy(TmyString("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(Copy(TmyString(nullptr, 0)), "");
    EXPECT_EQ(TmyString("a text of 21 letters.").Capacity(), 21U);
}

TEST(TmyString, TextEndsWithZero) {
    for (const std::uint32_t length : {0U, 1U, 15U, 16U, 17U, 100U}) {
        const std::string model(length, 'x');
        EXPECT_STREQ(TmyString(model.c_str()).Text(), model.c_str());
        EXPECT_STREQ(TmyString(model.c_str(), length).Text(), model.c_str());
    }
}

TEST(TmyString, CopiesShareTheirText) {
    const TmyString first("text");
    const std::uint64_t before = test::CountAllocations();
    const TmyString second(first);
    TmyString third;
    const std::uint64_t withThird = test::CountAllocations();
    third = first;
    EXPECT_EQ(withThird, before + 1) << "only the empty third took memory";
    EXPECT_EQ(test::CountAllocations(), withThird);
    EXPECT_EQ(second.Text(), first.Text());
    EXPECT_EQ(third.Text(), first.Text());
}

TEST(TmyString, WritingToASharedTextLeavesTheOthersAlone) {
    const TmyString original("text");
    TmyString appended(original);
    TmyString assigned(original);
    TmyString changed(original);
    appended.Append("s");
    assigned.Assign("new");
    changed.SetAt(0, 'n');
    EXPECT_EQ(Copy(original), "text");
    EXPECT_EQ(Copy(appended), "texts");
    EXPECT_EQ(Copy(assigned), "new");
    EXPECT_EQ(Copy(changed), "next");
}

TEST(TmyString, WritingToAnUnsharedTextTakesNoMemory) {
    TmyString text("text");
    {
        const TmyString copy(text);
        text.Append("s");
    }
    const std::uint64_t before = test::CountAllocations();
    text.Append("?");
    text.SetAt(0, 'T');
    text.Assign("16 letters fit..");
    EXPECT_EQ(test::CountAllocations(), before);
    EXPECT_EQ(Copy(text), "16 letters fit..");
}

TEST(TmyString, TheLastCopyIsAsGoodAsTheFirst) {
    auto first = std::make_unique<TmyString>("text");
    TmyString second(*first);
    first.reset();
    EXPECT_EQ(Copy(second), "text");
    second.Append("s");
    EXPECT_EQ(Copy(second), "texts");
}

TEST(TmyString, AssignsAnyText) {
    TmyString text("text");
    const TmyString& itself = text;
    text = itself;
    EXPECT_EQ(Copy(text), "text");
    text.Assign(TmyString("other"));
    EXPECT_EQ(Copy(text), "other");
    text.Assign("a much longer text than before");
    EXPECT_EQ(Copy(text), "a much longer text than before");
    text.Assign("ab\0d", 4);
    EXPECT_EQ(Copy(text), std::string("ab\0d", 4));
    text.Assign(static_cast<const char*>(nullptr));
    EXPECT_EQ(Copy(text), "");
    text = "converted";
    EXPECT_EQ(Copy(text), "converted");
}

TEST(TmyString, AssignsAndAppendsItsOwnBytes) {
    TmyString text("0123456789");
    text.Assign(text.Text() + 3, 4);
    EXPECT_EQ(Copy(text), "3456");
    text.Append(text);
    EXPECT_EQ(Copy(text), "34563456");
    text.Append(text.Text() + 1, 2);
    EXPECT_EQ(Copy(text), "3456345645");
    text.Append(text); // in new memory
    EXPECT_EQ(Copy(text), "34563456453456345645");
    TmyString shared(text);
    shared.Append(shared.Text(), 2);
    EXPECT_EQ(Copy(shared), "3456345645345634564534");
    shared = text;
    shared.Assign(shared.Text() + 18, 2);
    EXPECT_EQ(Copy(shared), "45");
    EXPECT_EQ(Copy(text), "34563456453456345645");
}

TEST(TmyString, AppendsAnyText) {
    TmyString text;
    text.Append("one");
    text.Append(TmyString(" two"));
    text.Append(" three and more", 6);
    text.Append(static_cast<const char*>(nullptr));
    text.Append("");
    text.Append("\0", 1);
    EXPECT_EQ(Copy(text), std::string("one two three\0", 14));
}

TEST(TmyString, AppendingByteByByteTakesMemorySeldom) {
    TmyString text;
    const std::uint64_t before = test::CountAllocations();
    for (int i = 0; i < 100000; ++i) {
        text.Append("x");
    }
    EXPECT_LE(test::CountAllocations() - before, 14U);
    EXPECT_EQ(Copy(text), std::string(100000, 'x'));
}

TEST(TmyString, SetAtIgnoresAnIndexOutside) {
    TmyString text("text");
    text.SetAt(4, '!');
    text.SetAt(UINT32_MAX, '!');
    EXPECT_EQ(Copy(text), "text");
    EXPECT_EQ(text.At(3), 't');
    EXPECT_EQ(text.At(4), '\0');
}

TEST(TmyString, ComparesBytesExactly) {
    const struct {
        const char* smaller;
        const char* larger;
    } rows[] = {{"", "a"}, {"a", "b"}, {"a", "aa"}, {"A", "a"}, {"abc", "abd"}, {"z", "\xE4"}};
    for (const auto& row : rows) {
        const TmyString smaller(row.smaller);
        const TmyString larger(row.larger);
        EXPECT_LT(smaller.Compare(larger), 0) << row.smaller;
        EXPECT_GT(larger.Compare(smaller), 0) << row.smaller;
        EXPECT_LT(smaller.Compare(row.larger), 0) << row.smaller;
        EXPECT_EQ(smaller.Compare(TmyString(row.smaller)), 0) << row.smaller;
        EXPECT_EQ(smaller.Compare(row.smaller), 0) << row.smaller;
        EXPECT_TRUE(smaller < larger && larger > smaller && smaller != larger) << row.smaller;
        EXPECT_TRUE(smaller == TmyString(row.smaller) && smaller == row.smaller) << row.smaller;
    }
    EXPECT_EQ(TmyString("").Compare(static_cast<const char*>(nullptr)), 0);
    EXPECT_GT(TmyString("a\0b", 3).Compare("a"), 0);
}

TEST(TmyString, FindsTextFromAPlaceOn) {
    const TmyString text("one two one");
    EXPECT_EQ(text.Find("one"), 0);
    EXPECT_EQ(text.Find("one", 1), 8);
    EXPECT_EQ(text.Find(TmyString("one"), 9), -1);
    EXPECT_EQ(text.Find("two", -5), 4);
    EXPECT_EQ(text.Find("One"), -1);
    EXPECT_EQ(text.Find("one two one!"), -1);
    EXPECT_EQ(text.Find("one", 100), -1);
    EXPECT_EQ(text.Find('t'), 4);
    EXPECT_EQ(text.Find('e', 3), 10);
    EXPECT_EQ(text.Find('x'), -1);
    EXPECT_EQ(text.Find(""), 0);
    EXPECT_EQ(text.Find("", 11), 11);
    EXPECT_EQ(text.Find("", 12), -1);
    EXPECT_EQ(TmyString("a\0b", 3).Find('b'), 2);
}

TEST(TmyString, LeftMidAndRightCutAtTheEnds) {
    const TmyString text("0123456789");
    const struct {
        TmyString part;
        const char* expected;
    } rows[] = {
        {text.Left(3), "012"},
        {text.Left(10), "0123456789"},
        {text.Left(11), "0123456789"},
        {text.Left(0), ""},
        {text.Left(-1), ""},
        {text.Right(3), "789"},
        {text.Right(10), "0123456789"},
        {text.Right(INT32_MAX), "0123456789"},
        {text.Right(0), ""},
        {text.Right(INT32_MIN), ""},
        {text.Mid(3), "3456789"},
        {text.Mid(3, 4), "3456"},
        {text.Mid(8, 4), "89"},
        {text.Mid(10), ""},
        {text.Mid(100, 1), ""},
        {text.Mid(-3, 2), "01"},
        {text.Mid(3, 0), ""},
        {text.Mid(3, -1), ""},
        {text.Mid(0, INT32_MAX), "0123456789"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Copy(row.part), row.expected) << &row - rows;
    }
    EXPECT_EQ(text.Left(10).Text(), text.Text()) << "the whole text is shared";
}

TEST(TmyString, ChangesTheCaseOfLettersOnly) {
    const TmyString text("Az09 [`{@\xE4\xC4\xFF mZ");
    EXPECT_EQ(Copy(text.UpperCase()), "AZ09 [`{@\xE4\xC4\xFF MZ");
    EXPECT_EQ(Copy(text.LowerCase()), "az09 [`{@\xE4\xC4\xFF mz");
    EXPECT_EQ(Copy(text), "Az09 [`{@\xE4\xC4\xFF mZ");
    EXPECT_EQ(Copy(TmyString().UpperCase()), "");
}

TEST(TmyString, TakesPathsApart) {
    const struct {
        const char* path;
        const char* fileName;
        const char* stripped;
        const char* extension;
    } rows[] = {
        {"C:\\folder\\call.wav", "call.wav", "C:\\folder\\call", "wav"},
        {"call.if.wav", "call.if.wav", "call.if", "wav"},
        {"call", "call", "call", ""},
        {"", "", "", ""},
        {"folder\\", "", "folder\\", ""},
        {"a.b\\call", "call", "a.b\\call",
         "b\\call"}, // a dot in the folder counts for the one, not for the other
        {"a.b\\call.wav", "call.wav", "a.b\\call", "wav"},
        {"a\\.wav", ".wav", "a\\", "wav"},
        {".wav", ".wav", "", "wav"},
        {"call.", "call.", "call", ""},
        {"a\\b/c.d", "b/c.d", "a\\b/c", "d"}, // a slash is a character like others
        {"\\", "", "\\", ""},
        {".", ".", "", ""},
    };
    for (const auto& row : rows) {
        const TmyString path(row.path);
        EXPECT_EQ(Copy(path.FileName()), row.fileName) << row.path;
        EXPECT_EQ(Copy(path.StripExtension()), row.stripped) << row.path;
        EXPECT_EQ(Copy(path.Extension()), row.extension) << row.path;
    }
}

TEST(TmyString, TooLongIsBadAllocAndChangesNothing) {
    TmyString text("text");
    EXPECT_THROW(text.Append("x", UINT32_MAX), std::bad_alloc);
    EXPECT_THROW(text.Append("x", 0x7FFFFFFF), std::bad_alloc);
    EXPECT_THROW(text.Assign("x", UINT32_MAX), std::bad_alloc);
    EXPECT_THROW(TmyString("x", 0x7FFFFFFF), std::bad_alloc);
    EXPECT_EQ(Copy(text), "text");
}

TEST(TmyString, AgreesWithAStandardString) {
    test::RandomSource random(11);
    std::vector<TmyString> texts(8);
    std::vector<std::string> models(8);
    for (int i = 0; i < 50000; ++i) {
        const std::size_t a = random.Below(8);
        const std::size_t b = random.Below(8);
        switch (random.Below(6)) {
        case 0:
            texts[a] = texts[b];
            models[a] = models[b];
            break;
        case 1:
            if (models[a].size() < 200) {
                texts[a].Append(texts[b]);
                models[a] += models[b];
            }
            break;
        case 2: {
            const std::string word(random.Below(20), static_cast<char>('a' + random.Below(26)));
            texts[a].Assign(word.c_str());
            models[a] = word;
            break;
        }
        case 3:
            if (!models[a].empty()) {
                const std::uint32_t place = random.Below(static_cast<std::uint32_t>(models[a].size()));
                texts[a].SetAt(place, '.');
                models[a][place] = '.';
            }
            break;
        case 4: {
            const std::uint32_t start = random.Below(static_cast<std::uint32_t>(models[b].size()) + 1);
            const std::uint32_t count = random.Below(30);
            texts[a] = texts[b].Mid(static_cast<std::int32_t>(start), static_cast<std::int32_t>(count));
            models[a] = models[b].substr(start, count);
            break;
        }
        default:
            ASSERT_EQ(texts[a] < texts[b], models[a] < models[b]);
            ASSERT_EQ(texts[a] == texts[b], models[a] == models[b]);
            ASSERT_EQ(texts[a].Find(texts[b]), static_cast<std::int32_t>(models[a].find(models[b])));
        }
        ASSERT_EQ(Copy(texts[a]), models[a]) << i;
        ASSERT_EQ(texts[a].Text()[models[a].size()], '\0');
    }
}

TEST(TmyString, CopiesMayLiveInSeveralThreads) {
    const TmyString text("shared by all of them");
    std::vector<std::thread> threads;
    std::vector<int> spoiled(4);
    for (std::size_t t = 0; t < spoiled.size(); ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 20000; ++i) {
                TmyString copy(text);
                const TmyString second(copy);
                copy.SetAt(0, static_cast<char>('0' + t));
                spoiled[t] += second != text || copy.At(0) != static_cast<char>('0' + t) ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(spoiled, std::vector<int>(4, 0));
    EXPECT_EQ(Copy(text), "shared by all of them");
}

} // namespace
} // namespace orva::toolkit
