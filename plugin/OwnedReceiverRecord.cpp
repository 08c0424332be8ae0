#include "plugin/OwnedReceiverRecord.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace orva::plugin {

namespace {

constexpr std::size_t kAddressSize = sizeof(RecordAddress);

/// How the length of a section is known.
enum class SectionKind {
    Fixed,     ///< `unit` bytes
    Counted,   ///< as many entries of `unit` bytes as the header's field at `countOffset` says
    SelfSized, ///< its first u32 is its length
    Modes,     ///< entries of `unit` bytes, which the plug-in writes itself
};

struct SectionRule {
    std::size_t pointerOffset;
    SectionKind kind;
    std::uint32_t unit;
    std::size_t countOffset;
};

/// All sections, in the order in which they stand behind the header.
constexpr std::array<SectionRule, 13> kSections = {{
    {offsetof(ReceiverRecord, section172), SectionKind::Fixed, 24, 0},
    {offsetof(ReceiverRecord, section184), SectionKind::Fixed, 28, 0},
    {offsetof(ReceiverRecord, section188), SectionKind::Fixed, 16, 0},
    {offsetof(ReceiverRecord, section196), SectionKind::SelfSized, 0, 0},
    {offsetof(ReceiverRecord, section224), SectionKind::Counted, 12, offsetof(ReceiverRecord, count224)},
    {offsetof(ReceiverRecord, modeTable), SectionKind::Modes, sizeof(ModeEntry), 0},
    {offsetof(ReceiverRecord, section264), SectionKind::Fixed, 24, 0},
    {offsetof(ReceiverRecord, section308), SectionKind::Fixed, 96, 0},
    {offsetof(ReceiverRecord, section316), SectionKind::SelfSized, 0, 0},
    {offsetof(ReceiverRecord, section324), SectionKind::Counted, 12, offsetof(ReceiverRecord, count324)},
    {offsetof(ReceiverRecord, section336), SectionKind::Counted, 20, offsetof(ReceiverRecord, count336)},
    {offsetof(ReceiverRecord, section360), SectionKind::Fixed, 12, 0},
    {offsetof(ReceiverRecord, section384), SectionKind::Fixed, 96, 0},
}};

// What the fields after the mode mean is the host's; hosts know the table in this form.
constexpr std::array<ModeEntry, 2> kModes = {{
    {static_cast<std::uint32_t>(ModeNumber::Digital), {100, 0, 12500, 1, 0, 0}},
    {static_cast<std::uint32_t>(ModeNumber::Fm), {100, 0, 12500, 1, 0, 0}},
}};

constexpr std::uint32_t kAudioLowHz = 0;
constexpr std::uint32_t kAudioHighHz = 8000;
constexpr std::uint32_t kSquelchLevelMin = 0;
constexpr std::uint32_t kSquelchLevelMax = 99;
constexpr std::uint32_t kVolumeMax = 31;
constexpr std::uint32_t kVolumeStep = 1;

std::uint32_t Load(const std::uint8_t* place) {
    std::uint32_t value = 0;
    std::memcpy(&value, place, sizeof(value));
    return value;
}

RecordAddress AddressOf(const void* place) {
    return static_cast<RecordAddress>(reinterpret_cast<std::uintptr_t>(place));
}

/// A run of bytes inside a block; null for a section that is absent or does not lie wholly inside.
struct Section {
    const std::uint8_t* bytes = nullptr;
    std::uint32_t size = 0;
};

/// A whole record, as far as it can be relied on.
struct RecordView {
    const std::uint8_t* bytes;
    std::uint32_t size;
    std::uint32_t headerEnd;

    [[nodiscard]] std::uint32_t Field(std::size_t offset) const {
        return offset + sizeof(std::uint32_t) <= headerEnd ? Load(bytes + offset) : 0;
    }

    /// `length` bytes from the section's pointer on, or nothing.
    [[nodiscard]] Section Run(const SectionRule& rule, std::uint64_t length) const {
        const RecordAddress pointer = Field(rule.pointerOffset);
        // An address below the block's becomes an offset far beyond its end.
        const std::uint32_t offset = pointer - AddressOf(bytes);
        if (pointer == 0 || length == 0 || offset > size || length > size - offset) {
            return {};
        }
        return {bytes + offset, static_cast<std::uint32_t>(length)};
    }

    [[nodiscard]] Section Find(const SectionRule& rule) const {
        switch (rule.kind) {
        case SectionKind::Fixed:
            return Run(rule, rule.unit);
        case SectionKind::Counted:
            return Run(rule, std::uint64_t{rule.unit} * Field(rule.countOffset));
        case SectionKind::SelfSized: {
            const Section length = Run(rule, sizeof(std::uint32_t));
            if (length.bytes == nullptr || Load(length.bytes) < sizeof(std::uint32_t)) {
                return {};
            }
            return Run(rule, Load(length.bytes));
        }
        case SectionKind::Modes:
            break;
        }
        return {};
    }
};

} // namespace

OwnedReceiverRecord::OwnedReceiverRecord(std::uint32_t blockSize)
    // The host may be told of a whole header even if its own record was shorter than one.
    : block(std::make_unique<std::uint8_t[]>(std::max(blockSize, kReceiverRecordHeaderSize))),
      size(blockSize) {}

OwnedReceiverRecord::OwnedReceiverRecord(const std::uint8_t* source, std::uint32_t sourceSize)
    : OwnedReceiverRecord(sourceSize) {
    std::memcpy(block.get(), source, sourceSize);
    MoveSections(AddressOf(source));
}

OwnedReceiverRecord OwnedReceiverRecord::CloneOf(const ReceiverRecord* record) {
    if (record == nullptr) {
        return {};
    }
    const auto* source = reinterpret_cast<const std::uint8_t*>(record);
    const std::uint32_t sourceSize = Load(source);
    if (sourceSize > kMaxSize) {
        return {};
    }
    return {source, sourceSize};
}

OwnedReceiverRecord OwnedReceiverRecord::Clone() const {
    if (!block) {
        return {};
    }
    return {block.get(), std::min(size, Load(block.get()))};
}

OwnedReceiverRecord OwnedReceiverRecord::MakeAnnouncement() const {
    OwnedReceiverRecord record = Rebuild(kModes.data(), kModes.size());
    if (record) {
        const std::uint32_t features = record.Field(offsetof(ReceiverRecord, featureFlags));
        const std::uint32_t squelchTypes = record.Field(offsetof(ReceiverRecord, squelchTypes));
        record.SetField(offsetof(ReceiverRecord, audioLowHz), kAudioLowHz);
        record.SetField(offsetof(ReceiverRecord, audioHighHz), kAudioHighHz);
        record.SetField(offsetof(ReceiverRecord, featureFlags), features | kFeatureDemodulator);
        record.SetField(offsetof(ReceiverRecord, squelchTypes), squelchTypes | squelch_type::kAll);
        record.SetField(offsetof(ReceiverRecord, squelchLevelMin), kSquelchLevelMin);
        record.SetField(offsetof(ReceiverRecord, squelchLevelMax), kSquelchLevelMax);
        record.SetField(offsetof(ReceiverRecord, volumeMax), kVolumeMax);
        record.SetField(offsetof(ReceiverRecord, volumeStep), kVolumeStep);
    }
    return record;
}

OwnedReceiverRecord OwnedReceiverRecord::MakeWithdrawal() const {
    OwnedReceiverRecord record = Rebuild(nullptr, 0);
    if (record) {
        const std::uint32_t features = record.Field(offsetof(ReceiverRecord, featureFlags));
        const std::uint32_t squelchTypes = record.Field(offsetof(ReceiverRecord, squelchTypes));
        record.SetField(offsetof(ReceiverRecord, featureFlags), features & kFeaturesLeftAtClose);
        record.SetField(offsetof(ReceiverRecord, squelchTypes), squelchTypes & ~squelch_type::kAll);
    }
    return record;
}

OwnedReceiverRecord OwnedReceiverRecord::MakeSquelchOffer(bool isOffered) const {
    OwnedReceiverRecord record = Clone();
    constexpr std::size_t kOffset = offsetof(ReceiverRecord, squelchTypes);
    // Beyond a shorter header the same bytes are something else.
    if (record && record.HeaderEnd() >= kOffset + sizeof(std::uint32_t)) {
        const std::uint32_t others = record.Field(kOffset) & ~squelch_type::kAll;
        record.SetField(kOffset, isOffered ? others | squelch_type::kAll : others);
    }
    return record;
}

std::string_view OwnedReceiverRecord::DeviceType() const {
    return Text(offsetof(ReceiverRecord, deviceType), sizeof(ReceiverRecord::deviceType));
}

std::string_view OwnedReceiverRecord::SerialNumber() const {
    // A record without the terminator does not make the serial number longer.
    return Text(offsetof(ReceiverRecord, serialNumber), sizeof(ReceiverRecord::serialNumber) - 1);
}

/// End of the header's bytes that are the record's own. [bytes from its start]
std::uint32_t OwnedReceiverRecord::HeaderEnd() const {
    constexpr std::size_t kOffset = offsetof(ReceiverRecord, headerSize);
    if (size < kOffset + sizeof(std::uint32_t)) {
        return 0;
    }
    return std::min({kReceiverRecordHeaderSize, size, Load(block.get() + kOffset)});
}

std::uint32_t OwnedReceiverRecord::Field(std::size_t offset) const {
    return Load(block.get() + offset);
}

void OwnedReceiverRecord::SetField(std::size_t offset, std::uint32_t value) {
    std::memcpy(block.get() + offset, &value, sizeof(value));
}

std::string_view OwnedReceiverRecord::Text(std::size_t offset, std::size_t capacity) const {
    const std::size_t end = std::min<std::size_t>(block ? HeaderEnd() : 0, offset + capacity);
    if (end <= offset) {
        return {};
    }
    const char* text = reinterpret_cast<const char*>(block.get()) + offset;
    return {text, static_cast<std::size_t>(std::find(text, text + (end - offset), '\0') - text)};
}

RecordAddress OwnedReceiverRecord::Address() const {
    return AddressOf(block.get());
}

void OwnedReceiverRecord::MoveSections(RecordAddress oldAddress) {
    const std::uint32_t headerEnd = HeaderEnd();
    for (const SectionRule& rule : kSections) {
        if (rule.pointerOffset + kAddressSize <= headerEnd && Field(rule.pointerOffset) != 0) {
            SetField(rule.pointerOffset, Field(rule.pointerOffset) + (Address() - oldAddress));
        }
    }
}

/// A record with a whole header, all sections that can be relied on, and these modes instead of the record's
/// own.
OwnedReceiverRecord OwnedReceiverRecord::Rebuild(const ModeEntry* modes, std::uint32_t modeCount) const {
    if (!block) {
        return {};
    }
    const RecordView view{block.get(), size, HeaderEnd()};
    const Section modeSection{reinterpret_cast<const std::uint8_t*>(modes),
                              modeCount * static_cast<std::uint32_t>(sizeof(ModeEntry))};
    std::array<Section, kSections.size()> sections;
    std::uint32_t newSize = kReceiverRecordHeaderSize;
    for (std::size_t i = 0; i < kSections.size(); ++i) {
        sections[i] = kSections[i].kind == SectionKind::Modes ? modeSection : view.Find(kSections[i]);
        newSize += sections[i].size;
    }

    OwnedReceiverRecord record(newSize);
    std::memcpy(record.block.get(), block.get(), view.headerEnd);
    record.SetField(offsetof(ReceiverRecord, totalSize), newSize);
    record.SetField(offsetof(ReceiverRecord, headerSize), kReceiverRecordHeaderSize);
    record.SetField(offsetof(ReceiverRecord, modeCount), modeCount);
    std::uint32_t place = kReceiverRecordHeaderSize;
    for (std::size_t i = 0; i < kSections.size(); ++i) {
        const SectionRule& rule = kSections[i];
        const Section& section = sections[i];
        if (section.bytes != nullptr) {
            std::memcpy(record.block.get() + place, section.bytes, section.size);
            record.SetField(rule.pointerOffset, record.Address() + place);
            place += section.size;
        } else {
            const bool wasDropped = view.Field(rule.pointerOffset) != 0;
            record.SetField(rule.pointerOffset, 0);
            if (wasDropped && rule.kind == SectionKind::Counted) {
                record.SetField(rule.countOffset, 0);
            }
        }
    }
    return record;
}

} // namespace orva::plugin
