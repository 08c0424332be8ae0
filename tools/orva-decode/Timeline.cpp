#include "tools/orva-decode/Timeline.h"

namespace orva::tools {

void TimeSlot::Add(const TimeSlot& other) {
    for (std::size_t row = 0; row < kFrameRows; ++row) {
        frames[row] += other.frames[row];
    }
    errorRateSum += other.errorRateSum;
    errorRateCount += other.errorRateCount;
}

TimeSlot& Timeline::At(double time) {
    while (time / slotSeconds >= static_cast<double>(kMaxSlots)) {
        JoinNeighbours();
    }
    const auto index = static_cast<std::size_t>(time / slotSeconds);
    if (index >= slots.size()) {
        slots.resize(index + 1);
    }
    return slots[index];
}

void Timeline::JoinNeighbours() {
    for (std::size_t i = 0; i < slots.size(); ++i) {
        if (i % 2 == 0) {
            slots[i / 2] = slots[i];
        } else {
            slots[i / 2].Add(slots[i]);
        }
    }
    slots.resize((slots.size() + 1) / 2);
    slotSeconds *= 2;
}

} // namespace orva::tools
