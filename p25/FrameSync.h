/// The P25 frame synchronisation word and the measure of a window's distance from it.
#pragma once

#include <cstdlib>

namespace orva::p25 {

constexpr int kSyncLength = 24;

/// 48 bits 0x5575F5FF77FF (TIA-102.BAAA) as dibit characters: "1" is the symbol +3, "3" is -3.
inline constexpr char kSyncPattern[kSyncLength + 1] = "111113113311333313133333";

/// Distance of a window of 24 dibit characters from the sync word: the sum over all positions of the
/// difference of the character codes. One level off adds 1, "1" for "3" adds 2. `largest` receives the
/// largest single difference.
inline int SyncDistance(const char* window, int& largest) {
    int sum = 0;
    largest = 0;
    for (int i = 0; i < kSyncLength; ++i) {
        const int difference = std::abs(window[i] - kSyncPattern[i]);
        sum += difference;
        largest = difference > largest ? difference : largest;
    }
    return sum;
}

} // namespace orva::p25
