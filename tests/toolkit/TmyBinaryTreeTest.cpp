#include "toolkit/TmyBinaryTree.h"

#include "tests/support/RandomSource.h"

#include <cstdint>
#include <map>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Key = TmyBinaryTree::Key;

/// Records are told apart by their place in here.
class Records {
public:
    void* operator[](std::size_t i) { return &bytes.at(i); }

private:
    std::vector<char> bytes = std::vector<char>(100000);
};

TmyBinaryTree& Fill(TmyBinaryTree& tree, Records& records, const std::vector<Key>& keys) {
    for (std::size_t i = 0; i < keys.size(); ++i) {
        EXPECT_TRUE(tree.Insert(keys[i], records[i])) << "key " << keys[i];
    }
    return tree;
}

TEST(TmyBinaryTree, StartsEmpty) {
    const TmyBinaryTree tree;
    void* record = nullptr;
    EXPECT_EQ(tree.Find(0), nullptr);
    EXPECT_EQ(tree.Count(), 0U);
    EXPECT_EQ(tree.EmptyCount(), 0U);
    EXPECT_EQ(tree.Depth(), 0U);
    EXPECT_EQ(tree.Collect(&record, 1), 0U);
}

TEST(TmyBinaryTree, FindsWhatWasInserted) {
    Records records;
    TmyBinaryTree tree;
    const std::vector<Key> keys{50, 30, 70, 20, 40, 60, 80, 0, UINTPTR_MAX};
    Fill(tree, records, keys);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        EXPECT_EQ(tree.Find(keys[i]), records[i]) << "key " << keys[i];
    }
    EXPECT_EQ(tree.Find(1), nullptr);
    EXPECT_EQ(tree.Find(55), nullptr);
    EXPECT_EQ(tree.Find(UINTPTR_MAX - 1), nullptr);
    EXPECT_EQ(tree.Count(), 9U);
}

TEST(TmyBinaryTree, KeepsTheFirstRecordOfAKey) {
    Records records;
    TmyBinaryTree tree;
    Fill(tree, records, {5, 3});
    EXPECT_FALSE(tree.Insert(3, records[9]));
    EXPECT_FALSE(tree.Insert(5, records[9]));
    EXPECT_EQ(tree.Find(3), records[1]);
    EXPECT_EQ(tree.Find(5), records[0]);
    EXPECT_EQ(tree.Count(), 2U);
    EXPECT_EQ(tree.Depth(), 2U);
}

TEST(TmyBinaryTree, ANullRecordTakesItsKey) {
    Records records;
    TmyBinaryTree tree;
    EXPECT_TRUE(tree.Insert(7, nullptr));
    EXPECT_FALSE(tree.Insert(7, records[0]));
    EXPECT_EQ(tree.Find(7), nullptr);
    EXPECT_EQ(tree.Count(), 1U);
}

TEST(TmyBinaryTree, TellsItsShape) {
    Records records;
    const struct {
        std::vector<Key> keys;
        std::uint32_t depth;
        std::uint32_t emptyLinks;
    } shapes[] = {
        {{4}, 1, 2},                   // a lone root
        {{4, 2}, 2, 3},                // one child, three open links
        {{4, 2, 6}, 2, 4},             // both children
        {{4, 2, 6, 1, 3, 5, 7}, 3, 8}, // full, four leaves
        {{1, 2, 3, 4, 5}, 5, 6},       // a chain upwards
        {{5, 4, 3, 2, 1}, 5, 6},       // a chain downwards
        {{1, 5, 2, 4, 3}, 5, 6},       // a zigzag
        {{10, 5, 20, 15, 17}, 4, 6},
    };
    for (const auto& shape : shapes) {
        TmyBinaryTree tree;
        Fill(tree, records, shape.keys);
        EXPECT_EQ(tree.Depth(), shape.depth) << testing::PrintToString(shape.keys);
        EXPECT_EQ(tree.EmptyCount(), shape.emptyLinks) << testing::PrintToString(shape.keys);
        EXPECT_EQ(tree.Count(), shape.keys.size()) << testing::PrintToString(shape.keys);
    }
}

TEST(TmyBinaryTree, CollectsInTheOrderOfInsertion) {
    Records records;
    TmyBinaryTree tree;
    Fill(tree, records, {50, 30, 70, 20});
    std::vector<void*> all(6, records[99]);
    ASSERT_EQ(tree.Collect(all.data(), 6), 4U);
    EXPECT_EQ(all,
              (std::vector<void*>{records[0], records[1], records[2], records[3], records[99], records[99]}));
    std::vector<void*> some(3, records[99]);
    ASSERT_EQ(tree.Collect(some.data(), 2), 2U);
    EXPECT_EQ(some, (std::vector<void*>{records[0], records[1], records[99]}));
    EXPECT_EQ(tree.Collect(nullptr, 0), 0U);
}

TEST(TmyBinaryTree, ClearForgetsAllAndTheTreeCanBeUsedAgain) {
    Records records;
    TmyBinaryTree tree;
    Fill(tree, records, {2, 1, 3});
    tree.Clear();
    EXPECT_EQ(tree.Find(2), nullptr);
    EXPECT_EQ(tree.Count(), 0U);
    EXPECT_EQ(tree.EmptyCount(), 0U);
    EXPECT_EQ(tree.Depth(), 0U);
    tree.Clear();
    EXPECT_TRUE(tree.Insert(2, records[8]));
    EXPECT_EQ(tree.Find(2), records[8]);
    EXPECT_EQ(tree.Depth(), 1U);
}

TEST(TmyBinaryTree, AgreesWithAnOrderedMap) {
    test::RandomSource random(42);
    Records records;
    TmyBinaryTree tree;
    std::map<Key, void*> model;
    for (std::size_t i = 0; i < 20000; ++i) {
        const Key key = random.Below(30000);
        EXPECT_EQ(tree.Insert(key, records[i]), model.emplace(key, records[i]).second) << "key " << key;
    }
    ASSERT_EQ(tree.Count(), model.size());
    for (Key key = 0; key < 30000; ++key) {
        const auto found = model.find(key);
        EXPECT_EQ(tree.Find(key), found == model.end() ? nullptr : found->second) << "key " << key;
    }
}

TEST(TmyBinaryTree, ADeepTreeNeedsNoStack) {
    constexpr Key kKeys = 20000;
    Records records;
    TmyBinaryTree tree;
    for (Key key = 0; key < kKeys; ++key) {
        ASSERT_TRUE(tree.Insert(key, records[key]));
    }
    EXPECT_EQ(tree.Depth(), kKeys);
    EXPECT_EQ(tree.Find(kKeys - 1), records[kKeys - 1]);
    std::vector<void*> all(kKeys);
    EXPECT_EQ(tree.Collect(all.data(), kKeys), kKeys);
    EXPECT_EQ(all.back(), records[kKeys - 1]);
}

} // namespace
} // namespace orva::toolkit
