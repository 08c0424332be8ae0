/// Figures over time, in bounded memory whatever the length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orva::tools {

/// Kinds of frame as rows of the picture, in the order they are drawn.
enum class FrameRow { Hdu, Ldu1, Ldu2, Tdu, Tdulc, Tsbk, Pdu, Unknown };
constexpr std::size_t kFrameRows = 8;

/// What happened in one stretch of input.
struct TimeSlot {
    std::uint32_t frames[kFrameRows] = {};
    double errorRateSum = 0; ///< percent, one value per voice frame or trunking block
    std::uint32_t errorRateCount = 0;

    void Add(const TimeSlot& other);
};

/// Slots of equal length. When there are too many, neighbours are joined and all slots become twice as long.
class Timeline {
public:
    static constexpr std::size_t kMaxSlots = 800;

    /// `time` in seconds of input; must not be negative.
    TimeSlot& At(double time);

    double SlotSeconds() const { return slotSeconds; }
    const std::vector<TimeSlot>& Slots() const { return slots; }

private:
    void JoinNeighbours();

    double slotSeconds = 0.02;
    std::vector<TimeSlot> slots;
};

} // namespace orva::tools
