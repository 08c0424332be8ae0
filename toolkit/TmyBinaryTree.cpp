#include "toolkit/TmyBinaryTree.h"

#include <algorithm>

namespace orva::toolkit {

TmyBinaryTree::~TmyBinaryTree() {
    Clear();
}

void* TmyBinaryTree::Find(Key key) const {
    const Node* node = root;
    while (node != nullptr && node->key != key) {
        node = key < node->key ? node->below : node->above;
    }
    return node == nullptr ? nullptr : node->record;
}

bool TmyBinaryTree::Insert(Key key, void* record) {
    Node** link = &root;
    std::uint32_t level = 1;
    for (; *link != nullptr; ++level) {
        Node* node = *link;
        if (node->key == key) {
            return false;
        }
        link = key < node->key ? &node->below : &node->above;
    }

    *link = new Node{key, record, nullptr, nullptr, nullptr};
    if (lastInserted != nullptr) {
        lastInserted->nextInserted = *link;
    }
    lastInserted = *link;
    depth = std::max(depth, level);
    ++count;
    return true;
}

std::uint32_t TmyBinaryTree::EmptyCount() const {
    // Every node brings two links and takes up one, but for the root, which no link leads to.
    return count == 0 ? 0 : count + 1;
}

std::uint32_t TmyBinaryTree::Collect(void** records, std::uint32_t capacity) const {
    std::uint32_t collected = 0;
    for (const Node* node = root; node != nullptr && collected < capacity; node = node->nextInserted) {
        records[collected++] = node->record;
    }
    return collected;
}

void TmyBinaryTree::Clear() {
    while (root != nullptr) {
        Node* next = root->nextInserted;
        delete root;
        root = next;
    }
    lastInserted = nullptr;
    count = 0;
    depth = 0;
}

} // namespace orva::toolkit
