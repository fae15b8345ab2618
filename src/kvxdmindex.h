// Finds a node among its siblings by name without walking them all.
// Held against the plain walk by tests/unit/kvxdmindex_test.cpp.
#ifndef KVXDM_SRC_KVXDMINDEX_H
#define KVXDM_SRC_KVXDMINDEX_H

#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <utility>

/** What tells siblings apart: the local name and a qualifier (a child's prefix, an attribute's URI). */
struct NodeKey {
  std::string_view localName;
  std::string_view qualifier;
  bool qualified = false;

  bool operator==(const NodeKey&) const = default;

  std::size_t hash() const noexcept {
    const std::hash<std::string_view> hashOf;
    return qualifier.empty() ? hashOf(localName) : hashOf(localName) * 31 + hashOf(qualifier);
  }
};

/**
 * An index of the nodes of one list by their `key()`; of several nodes with one key it knows the first.
 *
 * It exists only for lists of more than `threshold` nodes and only while there is memory for it; without it the owner
 * walks the list. A node whose key changes while it is indexed makes the owner drop the index.
 *
 * It is a hash table with open addressing that keeps the hashes: a search looks at one place of the table and at the
 * one node that it finds, and both looks wait for memory when there are many nodes.
 */
template <class Node>
class NodeIndex {
 public:
  static constexpr int threshold = 16;

  bool exists() const noexcept { return table_ != nullptr; }

  /** Makes room for an index; false when there is no memory for it. */
  bool create() noexcept {
    table_.reset(new (std::nothrow) Table);
    if (exists() && !table_->resize(4 * threshold)) drop();
    return exists();
  }

  void drop() noexcept { table_.reset(); }

  /** The first node with `key`, or null. REQUIRES: exists(). */
  Node* find(const NodeKey& key) const noexcept { return table_->slotOf(key, key.hash())->node; }

  /** Adds `node`, unless a node of the same key is indexed for which `stays` holds. Without memory the index is
   * dropped. */
  template <class Stays>
  void addUnless(Node* node, Stays stays) noexcept {
    if (2 * table_->used == table_->size && !table_->resize(2 * table_->size)) return drop();
    const NodeKey key = node->key();
    const std::size_t hash = key.hash();
    Slot* slot = table_->slotOf(key, hash);
    if (!slot->node) ++table_->used;
    if (!slot->node || !stays(slot->node)) *slot = {hash, node};
  }

  /** Adds `node`, which stands behind every indexed node of the same key. Without memory the index is dropped. */
  void addLast(Node* node) noexcept {
    addUnless(node, [](Node*) { return true; });
  }

 private:
  struct Slot {
    std::size_t hash = 0;
    Node* node = nullptr;
  };

  struct Table {
    std::unique_ptr<Slot[]> slots;
    std::size_t size = 0;  // a power of two
    std::size_t used = 0;  // half of the slots at most

    /** The slot of the node with `key`, or the empty one where it belongs. */
    Slot* slotOf(const NodeKey& key, std::size_t hash) const noexcept {
      return probe(hash, [&](const Slot& slot) { return slot.hash == hash && slot.node->key() == key; });
    }

    /** The first slot for `hash` that `matches`, or the empty one behind them. */
    template <class Matches>
    Slot* probe(std::size_t hash, Matches matches) const noexcept {
      const std::size_t mask = size - 1;
      std::size_t at = hash & mask;
      while (slots[at].node && !matches(slots[at])) at = (at + 1) & mask;
      return &slots[at];
    }

    /** Moves what is indexed to other slots; false, with nothing changed, when there is no memory for them. */
    bool resize(std::size_t newSize) noexcept {
      std::unique_ptr<Slot[]> old(new (std::nothrow) Slot[newSize]);
      if (!old) return false;
      old.swap(slots);
      const std::size_t oldSize = std::exchange(size, newSize);
      for (const Slot& slot : std::span(old.get(), oldSize)) {
        if (slot.node) *probe(slot.hash, [](const Slot&) { return false; }) = slot;
      }
      return true;
    }
  };

  std::unique_ptr<Table> table_;
};

#endif
