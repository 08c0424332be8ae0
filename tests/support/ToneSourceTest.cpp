#include "tests/support/ToneSource.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

namespace orva::test {

TEST(ToneSource, IsASineFromZero) {
    ToneSource tone(1000.0, 48000.0, 0.5);
    for (int n = 0; n < 1000; ++n) {
        EXPECT_NEAR(tone.Next(), 0.5 * std::sin(2.0 * std::numbers::pi * n / 48.0), 1e-12) << n;
    }
}

} // namespace orva::test
