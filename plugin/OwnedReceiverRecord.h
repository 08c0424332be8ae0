/// The plug-in's own copies of the host's receiver record, and the records that it makes of them.
#pragma once

#include "plugin/HostInterface.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace orva::plugin {

/// One receiver record in a block of its own, freed as one block; or none.
///
/// Records come from another program and are taken with care. Fields are reached by offset: sections are
/// packed without alignment. Nothing outside the block is ever read, whatever the record claims about its
/// header and its sections; the one thing that has to be believed is `totalSize` of the host's record. A
/// section that does not lie wholly inside its block counts as absent.
///
/// Section pointers are 32-bit addresses. In a process with wider ones the low halves stand for them.
class OwnedReceiverRecord {
public:
    /// No record.
    OwnedReceiverRecord() = default;

    /// Larger records than this are damaged; none is copied then. [bytes]
    static constexpr std::uint32_t kMaxSize = 1U << 20;

    /// A copy of the host's record with its section pointers moved along; none for a null record or one
    /// larger than `kMaxSize`. Throws std::bad_alloc.
    static OwnedReceiverRecord CloneOf(const ReceiverRecord* record);

    /// The same of this record. Believes no more of `totalSize` than the block holds: whoever saw the record
    /// meanwhile may have changed it.
    [[nodiscard]] OwnedReceiverRecord Clone() const;

    /// The record that tells the host what this plug-in can do. None if there is no record here.
    [[nodiscard]] OwnedReceiverRecord MakeAnnouncement() const;

    /// The record that takes it back.
    [[nodiscard]] OwnedReceiverRecord MakeWithdrawal() const;

    /// A clone that offers the plug-in's squelch types to the scanner, or no longer does. To be sent with the
    /// size of the header alone.
    [[nodiscard]] OwnedReceiverRecord MakeSquelchOffer(bool isOffered) const;

    explicit operator bool() const { return block != nullptr; }

    /// The block, of at least 400 bytes, to hand to the host; null if there is none.
    [[nodiscard]] ReceiverRecord* Get() { return reinterpret_cast<ReceiverRecord*>(block.get()); }

    /// Bytes of the record, as `totalSize` said when it was copied or made. 0 if there is none.
    [[nodiscard]] std::uint32_t Size() const { return size; }

    /// Text of the header, up to its terminator; empty if the header does not reach so far.
    [[nodiscard]] std::string_view DeviceType() const;
    [[nodiscard]] std::string_view SerialNumber() const;

private:
    OwnedReceiverRecord(const std::uint8_t* source, std::uint32_t sourceSize);
    explicit OwnedReceiverRecord(std::uint32_t blockSize);

    [[nodiscard]] std::uint32_t HeaderEnd() const;
    [[nodiscard]] std::uint32_t Field(std::size_t offset) const;
    void SetField(std::size_t offset, std::uint32_t value);
    [[nodiscard]] std::string_view Text(std::size_t offset, std::size_t capacity) const;
    [[nodiscard]] RecordAddress Address() const;
    void MoveSections(RecordAddress oldAddress);
    [[nodiscard]] OwnedReceiverRecord Rebuild(const ModeEntry* modes, std::uint32_t modeCount) const;

    std::unique_ptr<std::uint8_t[]> block;
    std::uint32_t size = 0;
};

} // namespace orva::plugin
