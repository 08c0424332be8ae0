/// Records found by a number, kept in an unbalanced binary tree.
#pragma once

#include "toolkit/TmyObject.h"

#include <cstdint>

namespace orva::toolkit {

/// Maps keys to records that belong to someone else.
///
/// Nothing here recurses: keys that come in rising order make a tree as deep as it has records. Only `Insert`
/// takes memory, and throws std::bad_alloc without it, the tree unchanged.
class TmyBinaryTree : public TmyObject {
public:
    /// A number or an address.
    using Key = std::uintptr_t;

    TmyBinaryTree() = default;
    ~TmyBinaryTree() override;
    TmyBinaryTree(const TmyBinaryTree&) = delete;
    TmyBinaryTree& operator=(const TmyBinaryTree&) = delete;

    /// The record of a key; null if there is none.
    void* Find(Key key) const;

    /// Adds a record; false, and nothing changes, if the key has one. A null record counts, but `Find` cannot
    /// tell it from a missing one.
    bool Insert(Key key, void* record);

    /// Number of records.
    std::uint32_t Count() const { return count; }

    /// Child links of the tree's nodes that lead to no node, 0 for an empty tree.
    std::uint32_t EmptyCount() const;

    /// Nodes on the longest way down from the root, the root included; 0 for an empty tree.
    std::uint32_t Depth() const { return depth; }

    /// Copies at most `capacity` records to `records`, in the order they were inserted, and returns how many.
    std::uint32_t Collect(void** records, std::uint32_t capacity) const;

    /// Forgets all records; the caller frees them.
    void Clear();

private:
    struct Node {
        Key key;
        void* record;
        Node* below;        ///< subtree of the smaller keys
        Node* above;        ///< subtree of the larger keys
        Node* nextInserted; ///< what came after this one
    };

    Node* root = nullptr; ///< also the first inserted
    Node* lastInserted = nullptr;
    std::uint32_t count = 0;
    std::uint32_t depth = 0;
};

} // namespace orva::toolkit
