// Finds a node among its siblings by name without walking them all.
// Held against the plain walk by tests/unit/kvxdmindex_test.cpp.
#ifndef KVXDM_SRC_KVXDMINDEX_H
#define KVXDM_SRC_KVXDMINDEX_H

#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <string_view>
#include <unordered_set>

/** What tells siblings apart: the local name and a qualifier (a child's prefix, an attribute's URI). */
struct NodeKey {
  std::string_view localName;
  std::string_view qualifier;
  bool qualified = false;

  bool operator==(const NodeKey&) const = default;
};

/**
 * An index of the nodes of one list by their `key()`; of several nodes with one key it knows the first.
 *
 * It exists only for lists of more than `threshold` nodes and only while there is memory for it; without it the owner
 * walks the list. A node whose key changes while it is indexed makes the owner drop the index.
 */
template <class Node>
class NodeIndex {
 public:
  static constexpr int threshold = 16;

  bool exists() const noexcept { return nodes_ != nullptr; }

  /** Makes room for an index; false when there is no memory for it. */
  bool create() noexcept {
    nodes_.reset(new (std::nothrow) Nodes);
    return exists();
  }

  void drop() noexcept { nodes_.reset(); }

  /** The first node with `key`, or null. REQUIRES: exists(). */
  Node* find(const NodeKey& key) const noexcept {
    auto found = nodes_->find(key);
    return found == nodes_->end() ? nullptr : *found;
  }

  /** Adds `node`, which stands before every indexed node of the same key. Without memory the index is dropped. */
  void addFirst(Node* node) noexcept {
    nodes_->erase(node);
    insert(node);
  }

  /** Adds `node`, which stands behind every indexed node of the same key. Without memory the index is dropped. */
  void addLast(Node* node) noexcept { insert(node); }

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(const NodeKey& key) const noexcept {
      const std::hash<std::string_view> hash;
      return hash(key.localName) * 31 + hash(key.qualifier);
    }
    std::size_t operator()(Node* node) const noexcept { return (*this)(node->key()); }
  };
  struct Equal {
    using is_transparent = void;
    static const NodeKey& keyOf(const NodeKey& key) noexcept { return key; }
    static NodeKey keyOf(Node* node) noexcept { return node->key(); }
    template <class Left, class Right>
    bool operator()(const Left& left, const Right& right) const noexcept {
      return keyOf(left) == keyOf(right);
    }
  };
  using Nodes = std::unordered_set<Node*, Hash, Equal>;

  // The index only saves time, so exhausted memory costs the index and nothing else.
  void insert(Node* node) noexcept {
    try {
      nodes_->insert(node);
    } catch (const std::bad_alloc&) {
      drop();
    }
  }

  std::unique_ptr<Nodes> nodes_;
};

#endif
