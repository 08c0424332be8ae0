/// Digits on wheels, side by side.
#pragma once

#include <array>
#include <cstdint>

namespace orva::toolkit {

/// The last 16 decimal digits of a number, each on an endless strip of ten rows that moves up and down on its
/// own. A strip's offset is how far it has been moved up: the digit times the height of a row when it is at
/// rest. The number's sign and its digits above the columns stay as they are.
class DigitColumns {
public:
    static constexpr int kCount = 16;
    static constexpr int kDigits = 10;

    /// \param height  of a row [pixels]; at least 1
    explicit DigitColumns(int height);

    /// Puts all strips to rest at the digits of `value`.
    void SetValue(std::int64_t value);
    /// The number that the strips show once they are at rest; limited to 64 bits.
    [[nodiscard]] std::int64_t Value() const;

    /// Moves a strip at once, up positive [pixels], and takes back what it still had to go.
    ///
    /// \param column  0 for the last digit; one that does not exist is ignored
    void Drag(int column, int pixels);
    /// Lets a strip go on by so many rows, up positive.
    void Roll(int column, int rows);
    /// Lets a strip go on to the nearest digit.
    void Release(int column);
    /// One step of the motion: half of what each strip has to go.
    ///
    /// \return whether one still moves
    bool Step();

    [[nodiscard]] bool IsMoving() const;
    [[nodiscard]] int Offset(int column) const; ///< [pixels], 0 .. ten rows less one
    [[nodiscard]] int RowHeight() const { return rowHeight; }

private:
    struct Strip {
        int offset = 0;
        int remaining = 0; ///< way to go, up positive [pixels]
    };

    [[nodiscard]] static bool Exists(int column) { return column >= 0 && column < kCount; }
    [[nodiscard]] int Wrap(int offset) const;
    [[nodiscard]] int DigitOf(const Strip& strip) const;

    int rowHeight;
    std::array<Strip, kCount> strips{};
    bool negative = false;
    std::uint64_t above = 0; ///< digits that have no column
};

} // namespace orva::toolkit
