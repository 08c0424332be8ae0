#include "plugin/OwnedReceiverRecord.h"

#include "tests/plugin/RecordBuilder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace orva::plugin {

namespace {

using test::Address32;
using test::Field32;
using test::kAllSections;
using test::kModeSection;
using test::kRecordSections;
using test::RecordBuilder;
using Bytes = std::vector<std::uint8_t>;

/// The 56 bytes of the mode table, written out.
const std::array<std::uint32_t, 14> kExpectedModes = {19, 100, 0, 12500, 1, 0, 0, 2, 100, 0, 12500, 1, 0, 0};

const std::uint8_t* Data(OwnedReceiverRecord& record) {
    return reinterpret_cast<const std::uint8_t*>(record.Get());
}

Bytes BytesOf(OwnedReceiverRecord& record) {
    return {Data(record), Data(record) + record.Size()};
}

/// Offset of section `i` inside the record; 0 if it is absent.
std::uint32_t SectionOffset(OwnedReceiverRecord& record, std::size_t i) {
    const std::uint32_t pointer = Field32(Data(record), kRecordSections[i].pointerOffset);
    return pointer == 0 ? 0 : pointer - Address32(Data(record));
}

/// Which bytes of a header an announcement or a withdrawal may change: sizes, pointers, what they write.
std::set<std::size_t> WrittenBytes(std::vector<std::size_t> fields) {
    fields.insert(fields.end(), {0, 4, 228});
    for (const test::RecordSection& section : kRecordSections) {
        fields.push_back(section.pointerOffset);
    }
    std::set<std::size_t> bytes;
    for (const std::size_t field : fields) {
        for (std::size_t i = 0; i < 4; ++i) {
            bytes.insert(field + i);
        }
    }
    return bytes;
}

/// The sections of `made` are those of `source`, but for the mode table, packed in order behind the header.
void ExpectPackedSections(OwnedReceiverRecord& made, const RecordBuilder& source, const Bytes& modes) {
    std::uint32_t place = 400;
    for (std::size_t i = 0; i < kRecordSections.size(); ++i) {
        const Bytes expected = i == kModeSection ? modes : source.SectionBytes(i);
        if (expected.empty()) {
            ASSERT_EQ(SectionOffset(made, i), 0U) << "section " << i;
            continue;
        }
        ASSERT_EQ(SectionOffset(made, i), place) << "section " << i;
        ASSERT_LE(place + expected.size(), made.Size());
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), Data(made) + place)) << "section " << i;
        place += static_cast<std::uint32_t>(expected.size());
    }
    ASSERT_EQ(made.Size(), place);
    ASSERT_EQ(Field32(Data(made), 0), place);
    ASSERT_EQ(Field32(Data(made), 4), 400U);
}

void ExpectHeaderKeptExcept(OwnedReceiverRecord& made, const Bytes& source,
                            const std::set<std::size_t>& written) {
    for (std::size_t i = 0; i < 400; ++i) {
        if (!written.contains(i)) {
            ASSERT_EQ(Data(made)[i], source[i]) << "header byte " << i;
        }
    }
}

Bytes ModeBytes() {
    Bytes bytes(sizeof(kExpectedModes));
    std::memcpy(bytes.data(), kExpectedModes.data(), bytes.size());
    return bytes;
}

TEST(OwnedReceiverRecord, IsNothingForANullRecord) {
    OwnedReceiverRecord none = OwnedReceiverRecord::CloneOf(nullptr);
    EXPECT_FALSE(none);
    EXPECT_EQ(none.Get(), nullptr);
    EXPECT_EQ(none.Size(), 0U);
    EXPECT_EQ(none.DeviceType(), "");
    EXPECT_EQ(none.SerialNumber(), "");
    EXPECT_FALSE(none.Clone());
    EXPECT_FALSE(none.MakeAnnouncement());
    EXPECT_FALSE(none.MakeWithdrawal());
    EXPECT_FALSE(none.MakeSquelchOffer(true));
}

TEST(OwnedReceiverRecord, ClonesEveryCombinationOfSections) {
    for (std::uint32_t present = 0; present <= kAllSections; ++present) {
        SCOPED_TRACE(present);
        RecordBuilder source(present);
        OwnedReceiverRecord clone = OwnedReceiverRecord::CloneOf(source.Record());
        ASSERT_TRUE(clone);
        ASSERT_EQ(clone.Size(), source.Bytes().size());
        Bytes expected = source.Bytes();
        for (const test::RecordSection& section : kRecordSections) {
            const std::uint32_t pointer = Field32(expected.data(), section.pointerOffset);
            const std::uint32_t moved =
                pointer == 0 ? 0 : pointer - Address32(source.Bytes().data()) + Address32(Data(clone));
            std::memcpy(expected.data() + section.pointerOffset, &moved, sizeof(moved));
        }
        ASSERT_EQ(BytesOf(clone), expected);
    }
}

TEST(OwnedReceiverRecord, ClonesAClone) {
    RecordBuilder source(kAllSections);
    OwnedReceiverRecord first = OwnedReceiverRecord::CloneOf(source.Record());
    OwnedReceiverRecord second = first.Clone();
    ASSERT_NE(first.Get(), second.Get());
    ASSERT_EQ(second.Size(), first.Size());
    for (std::size_t i = 0; i < kRecordSections.size(); ++i) {
        EXPECT_EQ(SectionOffset(second, i), SectionOffset(first, i)) << i;
        EXPECT_NE(SectionOffset(second, i), 0U) << i;
    }
}

TEST(OwnedReceiverRecord, AnnouncesWithEveryCombinationOfSections) {
    const std::set<std::size_t> written = WrittenBytes({176, 180, 192, 200, 212, 216, 276, 280});
    for (std::uint32_t present = 0; present <= kAllSections; ++present) {
        SCOPED_TRACE(present);
        RecordBuilder source(present);
        OwnedReceiverRecord made = OwnedReceiverRecord::CloneOf(source.Record()).MakeAnnouncement();
        ASSERT_TRUE(made);
        ASSERT_NO_FATAL_FAILURE(ExpectPackedSections(made, source, ModeBytes()));
        ASSERT_NO_FATAL_FAILURE(ExpectHeaderKeptExcept(made, source.Bytes(), written));
    }
}

TEST(OwnedReceiverRecord, AnnouncesTheCapabilities) {
    RecordBuilder source(0);
    source.Set(192, 0x00000041);
    source.Set(200, 0x00000011);
    OwnedReceiverRecord made = OwnedReceiverRecord::CloneOf(source.Record()).MakeAnnouncement();
    EXPECT_EQ(Field32(Data(made), 176), 0U);
    EXPECT_EQ(Field32(Data(made), 180), 8000U);
    EXPECT_EQ(Field32(Data(made), 192), 0x10000041U);
    EXPECT_EQ(Field32(Data(made), 200), 0x00000317U);
    EXPECT_EQ(Field32(Data(made), 212), 0U);
    EXPECT_EQ(Field32(Data(made), 216), 99U);
    EXPECT_EQ(Field32(Data(made), 228), 2U);
    EXPECT_EQ(Field32(Data(made), 276), 31U);
    EXPECT_EQ(Field32(Data(made), 280), 1U);
    EXPECT_EQ(made.Size(), 456U);
}

TEST(OwnedReceiverRecord, WithdrawsWithEveryCombinationOfSections) {
    const std::set<std::size_t> written = WrittenBytes({192, 200});
    for (std::uint32_t present = 0; present <= kAllSections; ++present) {
        SCOPED_TRACE(present);
        RecordBuilder source(present);
        OwnedReceiverRecord made = OwnedReceiverRecord::CloneOf(source.Record()).MakeWithdrawal();
        ASSERT_TRUE(made);
        ASSERT_NO_FATAL_FAILURE(ExpectPackedSections(made, source, {}));
        ASSERT_NO_FATAL_FAILURE(ExpectHeaderKeptExcept(made, source.Bytes(), written));
        ASSERT_EQ(Field32(Data(made), 228), 0U);
    }
}

TEST(OwnedReceiverRecord, WithdrawsWhatItAnnounced) {
    RecordBuilder source(kAllSections);
    source.Set(192, 0x00000041);
    source.Set(200, 0x00000011);
    const OwnedReceiverRecord announced = OwnedReceiverRecord::CloneOf(source.Record()).MakeAnnouncement();
    OwnedReceiverRecord made = announced.MakeWithdrawal();
    EXPECT_EQ(Field32(Data(made), 192), 0x00000001U) << "0x10000041 & 0xefffffbf";
    EXPECT_EQ(Field32(Data(made), 200), 0x00000011U);
    EXPECT_EQ(Field32(Data(made), 180), 8000U) << "the other fields stay";
    EXPECT_EQ(Field32(Data(made), 276), 31U);
    ExpectPackedSections(made, source, {});
}

TEST(OwnedReceiverRecord, OffersSquelchTypesInACloneOfTheStoredRecord) {
    for (const std::uint32_t types : {0U, 0x306U, 0xFFFFFFFFU, 0x11U, 0x102U}) {
        RecordBuilder source(kAllSections);
        source.Set(200, types);
        const OwnedReceiverRecord stored = OwnedReceiverRecord::CloneOf(source.Record());
        OwnedReceiverRecord offered = stored.MakeSquelchOffer(true);
        OwnedReceiverRecord hidden = stored.MakeSquelchOffer(false);
        EXPECT_EQ(Field32(Data(offered), 200), types | 0x306U);
        EXPECT_EQ(Field32(Data(hidden), 200), types & ~0x306U);
        OwnedReceiverRecord after = stored.Clone();
        EXPECT_EQ(Field32(Data(after), 200), types) << "the stored record stays as it was";
        ExpectHeaderKeptExcept(offered, source.Bytes(), WrittenBytes({200}));
        for (std::size_t i = 0; i < kRecordSections.size(); ++i) {
            EXPECT_EQ(SectionOffset(offered, i), SectionOffset(after, i)) << i;
        }
    }
}

TEST(OwnedReceiverRecord, CopiesOnlyAsManyHeaderBytesAsThereAre) {
    for (std::uint32_t headerSize = 0; headerSize <= 400; ++headerSize) {
        SCOPED_TRACE(headerSize);
        RecordBuilder source(0, headerSize);
        OwnedReceiverRecord made = OwnedReceiverRecord::CloneOf(source.Record()).MakeAnnouncement();
        const std::set<std::size_t> written = WrittenBytes({176, 180, 192, 200, 212, 216, 276, 280});
        for (std::size_t i = 0; i < 400; ++i) {
            if (!written.contains(i)) {
                ASSERT_EQ(Data(made)[i], i < headerSize ? source.Bytes()[i] : 0) << "byte " << i;
            }
        }
        ASSERT_EQ(Field32(Data(made), 4), 400U);
        if (headerSize <= 192) {
            ASSERT_EQ(Field32(Data(made), 192), 0x10000000U);
            ASSERT_EQ(Field32(Data(made), 200), 0x306U);
        }
    }
}

TEST(OwnedReceiverRecord, TakesTheFirst400BytesOfALongerHeader) {
    RecordBuilder source(kAllSections, 0xFFFFFFFF);
    OwnedReceiverRecord made = OwnedReceiverRecord::CloneOf(source.Record()).MakeWithdrawal();
    ASSERT_NO_FATAL_FAILURE(ExpectPackedSections(made, source, {}));
}

TEST(OwnedReceiverRecord, MovesAPointerOnlyIfItLiesWhollyInTheHeader) {
    for (const test::RecordSection& section : kRecordSections) {
        for (std::uint32_t shown = 0; shown <= 4; ++shown) {
            RecordBuilder source(kAllSections, static_cast<std::uint32_t>(section.pointerOffset) + shown);
            OwnedReceiverRecord clone = OwnedReceiverRecord::CloneOf(source.Record());
            const std::uint32_t moved = Address32(Data(clone)) - Address32(source.Bytes().data());
            const std::uint32_t before = Field32(source.Bytes().data(), section.pointerOffset);
            EXPECT_EQ(Field32(Data(clone), section.pointerOffset), shown == 4 ? before + moved : before)
                << section.pointerOffset << " with " << shown << " bytes of the pointer";
        }
    }
}

TEST(OwnedReceiverRecord, ReadsItsTextsWithinTheirFields) {
    RecordBuilder source(0);
    EXPECT_EQ(OwnedReceiverRecord::CloneOf(source.Record()).DeviceType(), "K7USB receiver");
    EXPECT_EQ(OwnedReceiverRecord::CloneOf(source.Record()).SerialNumber(), "A1234567");

    // Neither text has an end of its own: the field's end is the text's.
    source.SetText(44, std::string(32, 'D').c_str(), 32);
    source.SetText(76, std::string(9, 'S').c_str(), 9);
    EXPECT_EQ(OwnedReceiverRecord::CloneOf(source.Record()).DeviceType(), std::string(32, 'D'));
    EXPECT_EQ(OwnedReceiverRecord::CloneOf(source.Record()).SerialNumber(), std::string(8, 'S'));

    source.SetText(44, "", 32);
    source.SetText(76, "", 9);
    EXPECT_EQ(OwnedReceiverRecord::CloneOf(source.Record()).DeviceType(), "");
    EXPECT_EQ(OwnedReceiverRecord::CloneOf(source.Record()).SerialNumber(), "");
}

TEST(OwnedReceiverRecord, ReadsNoTextBeyondAShortHeader) {
    for (std::uint32_t headerSize = 0; headerSize < 90; ++headerSize) {
        RecordBuilder source(0, headerSize);
        const OwnedReceiverRecord clone = OwnedReceiverRecord::CloneOf(source.Record());
        const auto shown = [headerSize](const std::string& text, std::uint32_t start) {
            return text.substr(0, headerSize > start ? headerSize - start : 0);
        };
        EXPECT_EQ(clone.DeviceType(), shown("K7USB receiver", 44)) << headerSize;
        EXPECT_EQ(clone.SerialNumber(), shown("A1234567", 76)) << headerSize;
    }
}

TEST(OwnedReceiverRecord, RefusesARecordOfAbsurdSize) {
    for (const std::uint32_t size : {OwnedReceiverRecord::kMaxSize + 1, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(OwnedReceiverRecord::CloneOf(reinterpret_cast<const ReceiverRecord*>(&size))) << size;
    }
    Bytes largest(OwnedReceiverRecord::kMaxSize);
    const std::uint32_t size = OwnedReceiverRecord::kMaxSize;
    std::memcpy(largest.data(), &size, sizeof(size));
    EXPECT_TRUE(OwnedReceiverRecord::CloneOf(reinterpret_cast<const ReceiverRecord*>(largest.data())));
}

TEST(OwnedReceiverRecord, MakesWholeRecordsOfTheSmallestOnes) {
    for (std::uint32_t size = 0; size < 400; ++size) {
        SCOPED_TRACE(size);
        // The heap block ends where the record does, so that the sanitizer sees any reading behind it.
        Bytes block(std::max<std::size_t>(size, 4), 0xFF);
        std::memcpy(block.data(), &size, sizeof(size));
        const OwnedReceiverRecord clone =
            OwnedReceiverRecord::CloneOf(reinterpret_cast<const ReceiverRecord*>(block.data()));
        ASSERT_TRUE(clone);
        EXPECT_EQ(clone.Size(), size);
        OwnedReceiverRecord made = clone.MakeAnnouncement();
        EXPECT_EQ(Field32(Data(made), 0), 456U);
        EXPECT_EQ(Field32(Data(made), 228), 2U);
        const std::uint32_t types = clone.Size() >= 204 ? 0xFFFFFCF9U : 0;
        OwnedReceiverRecord offer = clone.MakeSquelchOffer(false);
        if (size >= 204 || size < 200) {
            EXPECT_EQ(Field32(Data(offer), 200), types) << "changed only if the header reaches so far";
        }
    }
}

/// Gives section `i` of a record with all sections another pointer, count or length, and expects it gone.
void ExpectDropped(std::size_t i, std::size_t offset, std::uint32_t value) {
    RecordBuilder source(kAllSections);
    source.Set(offset, value);
    OwnedReceiverRecord made = OwnedReceiverRecord::CloneOf(source.Record()).MakeWithdrawal();
    EXPECT_EQ(SectionOffset(made, i), 0U) << "section " << i << ", " << value << " at " << offset;
    if (kRecordSections[i].countOffset != 0) {
        EXPECT_EQ(Field32(Data(made), kRecordSections[i].countOffset), 0U);
    }
    for (std::size_t other = 0; other < kRecordSections.size(); ++other) {
        if (other != i && other != kModeSection) {
            EXPECT_NE(SectionOffset(made, other), 0U) << "section " << other << " is gone too";
        }
    }
}

TEST(OwnedReceiverRecord, DropsSectionsThatLieOutsideTheBlock) {
    for (std::size_t i = 0; i < kRecordSections.size(); ++i) {
        const test::RecordSection& section = kRecordSections[i];
        if (i == kModeSection) {
            continue;
        }
        RecordBuilder probe(kAllSections);
        const std::uint32_t length = section.isSelfSized ? 4 : section.size;
        RecordBuilder source(kAllSections);
        const std::uint32_t start = Address32(source.Bytes().data());
        const auto end = start + static_cast<std::uint32_t>(source.Bytes().size());
        for (const std::uint32_t pointer :
             {end - length + 1, end - 1, end, end + 1, start - 1, 1U, 0xFFFFFFFFU}) {
            source.Set(section.pointerOffset, pointer);
            OwnedReceiverRecord made = OwnedReceiverRecord::CloneOf(source.Record()).MakeWithdrawal();
            EXPECT_EQ(SectionOffset(made, i), 0U) << "section " << i << " at " << pointer - start;
        }
    }
}

TEST(OwnedReceiverRecord, DropsCountedSectionsWhoseEntriesDoNotFit) {
    for (const std::size_t i : {4U, 9U, 10U}) {
        // The products overflow 32 bits in ways that look harmless: 0x15555556 x 12 is 8, 0x0ccccccd x 20
        // is 4.
        for (const std::uint32_t count :
             {0xFFFFFFFFU, 0x15555556U, 0x0CCCCCCDU, 0x80000000U, 0x40000000U, 200U, 0U}) {
            ExpectDropped(i, kRecordSections[i].countOffset, count);
        }
    }
}

TEST(OwnedReceiverRecord, DropsSelfSizedSectionsWithAFalseLength) {
    for (const std::size_t i : {3U, 8U}) {
        RecordBuilder probe(kAllSections);
        const std::uint32_t offset =
            Field32(probe.Bytes().data(), kRecordSections[i].pointerOffset) - Address32(probe.Bytes().data());
        const auto room = static_cast<std::uint32_t>(probe.Bytes().size()) - offset;
        for (const std::uint32_t length : {0U, 1U, 3U, room + 1, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
            ExpectDropped(i, offset, length);
        }
        RecordBuilder source(kAllSections);
        source.Set(offset, room);
        OwnedReceiverRecord made = OwnedReceiverRecord::CloneOf(source.Record()).MakeWithdrawal();
        EXPECT_NE(SectionOffset(made, i), 0U) << "a section may reach to the very end";
    }
}

TEST(OwnedReceiverRecord, BelievesNoSizeThatAHostWroteIntoItsRecord) {
    RecordBuilder source(kAllSections);
    OwnedReceiverRecord sent = OwnedReceiverRecord::CloneOf(source.Record()).MakeAnnouncement();
    const std::uint32_t size = sent.Size();
    sent.Get()->totalSize = 0xFFFFFFFF;
    sent.Get()->headerSize = 0xFFFFFFFF;
    EXPECT_EQ(sent.Clone().Size(), size);
    EXPECT_EQ(sent.MakeWithdrawal().Size(), size - 56);
    sent.Get()->totalSize = 100;
    EXPECT_EQ(sent.Clone().Size(), 100U);
    EXPECT_EQ(sent.Clone().DeviceType(), "K7USB receiver");
}

TEST(OwnedReceiverRecord, StaysWithinAnyBlockOfRubbish) {
    std::mt19937 generator(20);
    const auto random = [&generator] { return static_cast<std::uint32_t>(generator()); };
    for (int round = 0; round < 20000; ++round) {
        // Exactly as long as it says, so that the sanitizer sees any reading behind it.
        const std::uint32_t size = 4 + random() % 900;
        const auto block = std::make_unique<std::uint8_t[]>(size);
        for (std::uint32_t i = 0; i < size; ++i) {
            block[i] = static_cast<std::uint8_t>(random());
        }
        const auto set = [&](std::size_t offset, std::uint32_t value) {
            if (offset + 4 <= size) {
                std::memcpy(block.get() + offset, &value, 4);
            }
        };
        set(0, size);
        set(4, random() % 3 == 0 ? random() : random() % 500);
        for (const test::RecordSection& section : kRecordSections) {
            const std::uint32_t inside = Address32(block.get()) + random() % (size + 8) - 4;
            set(section.pointerOffset, random() % 4 == 0 ? 0 : inside);
            if (section.countOffset != 0) {
                set(section.countOffset, random() % 8);
            }
        }
        const OwnedReceiverRecord clone =
            OwnedReceiverRecord::CloneOf(reinterpret_cast<const ReceiverRecord*>(block.get()));
        ASSERT_EQ(clone.Size(), size);
        OwnedReceiverRecord announced = clone.MakeAnnouncement();
        OwnedReceiverRecord withdrawn = announced.Clone().MakeWithdrawal();
        ASSERT_TRUE(clone.MakeSquelchOffer(true));
        for (OwnedReceiverRecord* made : {&announced, &withdrawn}) {
            ASSERT_EQ(Field32(Data(*made), 0), made->Size());
            for (std::size_t i = 0; i < kRecordSections.size(); ++i) {
                ASSERT_LT(SectionOffset(*made, i), made->Size());
            }
        }
        ASSERT_EQ(withdrawn.Size() + 56, announced.Size());
    }
}

} // namespace

} // namespace orva::plugin
