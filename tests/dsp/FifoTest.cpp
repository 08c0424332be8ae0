#include "dsp/Fifo.h"

#include <gtest/gtest.h>

namespace orva::dsp {
namespace {

TEST(Fifo, StartsEmpty) {
    Fifo<int> queue;
    int value = 7;
    EXPECT_TRUE(queue.IsEmpty());
    EXPECT_EQ(queue.Count(), 0U);
    EXPECT_FALSE(queue.Pop(value));
    EXPECT_EQ(value, 7);
}

TEST(Fifo, GivesBackInOrderWhateverTheFill) {
    // Pushes and pops by turns so that the ring wraps at every fill while it grows.
    Fifo<int> queue;
    int pushed = 0;
    int popped = 0;
    for (int round = 0; round < 100; ++round) {
        for (int i = 0; i < round; ++i) {
            ASSERT_TRUE(queue.Push(pushed++));
        }
        for (int i = 0; i < round - 1; ++i) {
            int value = -1;
            ASSERT_TRUE(queue.Pop(value));
            ASSERT_EQ(value, popped++) << "round " << round;
        }
        ASSERT_EQ(queue.Count(), static_cast<std::size_t>(pushed - popped));
    }
}

TEST(Fifo, ClearForgetsAll) {
    Fifo<int> queue;
    queue.Push(1);
    queue.Push(2);
    queue.Clear();
    EXPECT_TRUE(queue.IsEmpty());
    queue.Push(3);
    int value = 0;
    EXPECT_TRUE(queue.Pop(value));
    EXPECT_EQ(value, 3);
}

} // namespace
} // namespace orva::dsp
