/// The toolkit's string.
#pragma once

#include <compare>
#include <cstdint>
#include <limits>

namespace orva::toolkit {

/// A byte string that shares its characters with its copies until one of them is written to.
///
/// Copies may live in different threads, each used by one of them at a time. Any byte may stand in the
/// string, 0 too; a terminating 0 follows the last. An operation that takes memory throws std::bad_alloc
/// without it, the string unchanged; copying takes none. A null text is an empty one. Indices and counts
/// below 0 are 0, and what reaches beyond the end is cut.
class TmyString {
public:
    static constexpr std::int32_t kNone = -1;
    static constexpr std::int32_t kRest = std::numeric_limits<std::int32_t>::max();

    /// Empty, with room for 16 characters.
    TmyString();
    TmyString(const char* text);
    TmyString(const char* bytes, std::uint32_t count);
    TmyString(const TmyString& other) noexcept;
    TmyString& operator=(const TmyString& other) noexcept;
    ~TmyString();

    std::uint32_t Length() const;
    bool IsEmpty() const { return Length() == 0; }
    /// Characters that fit without new memory while the string is not shared.
    std::uint32_t Capacity() const;
    /// The characters with their terminating 0, valid until the string changes.
    const char* Text() const;
    /// The character at `index`; 0 outside the string.
    char At(std::uint32_t index) const;

    /// The bytes may be the string's own, here and in `Append`.
    void Assign(const char* text);
    void Assign(const char* bytes, std::uint32_t count);
    void Assign(const TmyString& other) { *this = other; }
    void Append(const char* text);
    void Append(const char* bytes, std::uint32_t count);
    void Append(const TmyString& other) { Append(other.Text(), other.Length()); }
    /// Replaces one character; an index outside the string does nothing.
    void SetAt(std::uint32_t index, char character);

    /// Below 0, 0 or above 0 as this string's bytes, unsigned, come before, equal or come after the other's.
    int Compare(const TmyString& other) const;
    int Compare(const char* text) const;

    /// Index of the first occurrence that begins at `from` or behind, or -1. An empty text is found at once.
    std::int32_t Find(const char* text, std::int32_t from = 0) const;
    std::int32_t Find(const TmyString& text, std::int32_t from = 0) const;
    std::int32_t Find(char character, std::int32_t from = 0) const;

    TmyString Left(std::int32_t count) const;
    TmyString Mid(std::int32_t start, std::int32_t count = kRest) const;
    TmyString Right(std::int32_t count) const;

    /// With the letters A to Z in the one or other case; all other bytes stay, whatever the code page.
    TmyString UpperCase() const;
    TmyString LowerCase() const;

    /// Of a path, what follows the last backslash, or all of it.
    TmyString FileName() const;
    /// The path up to the last dot behind the last backslash, or all of it.
    TmyString StripExtension() const;
    /// What follows the last dot, wherever it is: of "a.b\c" it is "b\c". Empty without a dot.
    TmyString Extension() const;

    friend bool operator==(const TmyString& a, const TmyString& b) { return a.Compare(b) == 0; }
    friend bool operator==(const TmyString& a, const char* b) { return a.Compare(b) == 0; }
    friend std::strong_ordering operator<=>(const TmyString& a, const TmyString& b) {
        return a.Compare(b) <=> 0;
    }

private:
    struct Block;

    static Block* NewBlock(std::uint32_t capacity);
    static void Release(Block* block);
    bool IsShared() const;
    void Replace(Block* fresh);
    void MakeWritable();
    int CompareBytes(const char* bytes, std::uint32_t count) const;
    std::int32_t FindBytes(const char* bytes, std::uint32_t count, std::int32_t from) const;
    std::int32_t FindLast(char character) const;
    template <class Change>
    TmyString WithEach(Change change) const;

    Block* block;
};

} // namespace orva::toolkit
