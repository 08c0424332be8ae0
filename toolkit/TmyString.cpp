#include "toolkit/TmyString.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>
#include <string_view>

namespace orva::toolkit {
namespace {

constexpr std::uint32_t kFirstCapacity = 16;
constexpr std::uint32_t kMostCharacters = std::numeric_limits<std::int32_t>::max() / 2;
constexpr char kCaseBit = 'a' - 'A';

std::uint32_t LengthOf(const char* text) {
    if (text == nullptr) {
        return 0;
    }
    const std::size_t length = std::strlen(text);
    if (length > kMostCharacters) {
        throw std::bad_alloc();
    }
    return static_cast<std::uint32_t>(length);
}

} // namespace

// The analyzer does not follow an atomic count of references.
// NOLINTBEGIN(clang-analyzer-cplusplus.NewDelete,clang-analyzer-cplusplus.NewDeleteLeaks)

/// What copies share. The characters follow it.
struct TmyString::Block {
    std::uint32_t reserved;
    std::uint32_t length;
    std::uint32_t capacity; ///< without the terminating 0
    std::atomic<std::int32_t> referenceCount;

    char* Characters() { return reinterpret_cast<char*>(this + 1); }
};

TmyString::TmyString() : block(NewBlock(kFirstCapacity)) {}

TmyString::TmyString(const char* text) : TmyString(text, LengthOf(text)) {}

TmyString::TmyString(const char* bytes, std::uint32_t count)
    : block(NewBlock(std::max(count, kFirstCapacity))) {
    Append(bytes, count);
}

TmyString::TmyString(const TmyString& other) noexcept : block(other.block) {
    block->referenceCount.fetch_add(1, std::memory_order_relaxed);
}

// Its own text counts twice meanwhile. NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
TmyString& TmyString::operator=(const TmyString& other) noexcept {
    other.block->referenceCount.fetch_add(1, std::memory_order_relaxed);
    Replace(other.block);
    return *this;
}

TmyString::~TmyString() {
    Release(block);
}

TmyString::Block* TmyString::NewBlock(std::uint32_t capacity) {
    if (capacity > kMostCharacters) {
        throw std::bad_alloc();
    }
    auto* fresh = new (::operator new(sizeof(Block) + capacity + 1)) Block{0, 0, capacity, 1};
    fresh->Characters()[0] = '\0';
    return fresh;
}

void TmyString::Release(Block* block) {
    // The last one to let go must see what the others did.
    if (block->referenceCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        block->~Block();
        ::operator delete(block);
    }
}

bool TmyString::IsShared() const {
    return block->referenceCount.load(std::memory_order_acquire) != 1;
}

void TmyString::Replace(Block* fresh) {
    Release(block);
    block = fresh;
}

void TmyString::MakeWritable() {
    if (IsShared()) {
        *this = TmyString(Text(), Length());
    }
}

std::uint32_t TmyString::Length() const {
    return block->length;
}

std::uint32_t TmyString::Capacity() const {
    return block->capacity;
}

const char* TmyString::Text() const {
    return block->Characters();
}

char TmyString::At(std::uint32_t index) const {
    return index < Length() ? Text()[index] : '\0';
}

void TmyString::Assign(const char* text) {
    Assign(text, LengthOf(text));
}

void TmyString::Assign(const char* bytes, std::uint32_t count) {
    if (IsShared() || count > block->capacity) {
        *this = TmyString(bytes, count);
        return;
    }
    if (count > 0) {
        std::memmove(block->Characters(), bytes, count);
    }
    block->Characters()[count] = '\0';
    block->length = count;
}

void TmyString::Append(const char* text) {
    Append(text, LengthOf(text));
}

void TmyString::Append(const char* bytes, std::uint32_t count) {
    if (count == 0) {
        return;
    }
    if (count > kMostCharacters - Length()) {
        throw std::bad_alloc();
    }
    const std::uint32_t length = Length() + count;
    Block* target = block;
    if (IsShared() || length > block->capacity) {
        // Twice the room, so that appending byte by byte moves each byte a few times only.
        target = NewBlock(std::max(length, std::min(2 * block->capacity, kMostCharacters)));
        std::memcpy(target->Characters(), block->Characters(), Length());
    }
    std::memmove(target->Characters() + Length(), bytes, count);
    target->Characters()[length] = '\0';
    target->length = length;
    if (target != block) {
        Replace(target); // not before: the bytes may be in the block that is left behind
    }
}

void TmyString::SetAt(std::uint32_t index, char character) {
    if (index < Length()) {
        MakeWritable();
        block->Characters()[index] = character;
    }
}

int TmyString::CompareBytes(const char* bytes, std::uint32_t count) const {
    return std::string_view(Text(), Length()).compare(std::string_view(bytes, count));
}

int TmyString::Compare(const TmyString& other) const {
    return block == other.block ? 0 : CompareBytes(other.Text(), other.Length());
}

int TmyString::Compare(const char* text) const {
    return CompareBytes(text, LengthOf(text));
}

std::int32_t TmyString::FindBytes(const char* bytes, std::uint32_t count, std::int32_t from) const {
    const std::size_t found =
        std::string_view(Text(), Length()).find(bytes, static_cast<std::size_t>(std::max(from, 0)), count);
    return found == std::string_view::npos ? kNone : static_cast<std::int32_t>(found);
}

std::int32_t TmyString::Find(const char* text, std::int32_t from) const {
    return FindBytes(text, LengthOf(text), from);
}

std::int32_t TmyString::Find(const TmyString& text, std::int32_t from) const {
    return FindBytes(text.Text(), text.Length(), from);
}

std::int32_t TmyString::Find(char character, std::int32_t from) const {
    return FindBytes(&character, 1, from);
}

std::int32_t TmyString::FindLast(char character) const {
    const std::size_t found = std::string_view(Text(), Length()).rfind(character);
    return found == std::string_view::npos ? kNone : static_cast<std::int32_t>(found);
}

TmyString TmyString::Left(std::int32_t count) const {
    return Mid(0, count);
}

TmyString TmyString::Mid(std::int32_t start, std::int32_t count) const {
    const std::uint32_t begin = std::min(static_cast<std::uint32_t>(std::max(start, 0)), Length());
    const std::uint32_t taken = std::min(static_cast<std::uint32_t>(std::max(count, 0)), Length() - begin);
    return taken == Length() ? *this : TmyString(Text() + begin, taken);
}

TmyString TmyString::Right(std::int32_t count) const {
    const auto length = static_cast<std::int32_t>(Length());
    return Mid(length - std::clamp(count, 0, length));
}

template <class Change>
TmyString TmyString::WithEach(Change change) const {
    TmyString changed(Text(), Length());
    char* characters = changed.block->Characters();
    std::transform(characters, characters + changed.Length(), characters, change);
    return changed;
}

TmyString TmyString::UpperCase() const {
    return WithEach([](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - kCaseBit) : c; });
}

TmyString TmyString::LowerCase() const {
    return WithEach([](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + kCaseBit) : c; });
}

TmyString TmyString::FileName() const {
    return Mid(FindLast('\\') + 1);
}

TmyString TmyString::StripExtension() const {
    const std::int32_t dot = FindLast('.');
    return dot > FindLast('\\') ? Left(dot) : *this;
}

TmyString TmyString::Extension() const {
    const std::int32_t dot = FindLast('.');
    return dot == kNone ? TmyString() : Mid(dot + 1);
}

// NOLINTEND(clang-analyzer-cplusplus.NewDelete,clang-analyzer-cplusplus.NewDeleteLeaks)

} // namespace orva::toolkit
