// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace kalStore::internal {

/// Gives a document that is being parsed its nodes: while it lives, json::detail::AllocateNode() on its
/// thread cuts them out of blocks, one after the other. A block is freed with its last node. That costs less
/// than an allocation for each node, which is larger than what the C library keeps apart.
///
/// Nodes know their block: where an object or a part of one is moved to, on which thread and in which order
/// nodes are freed, does not matter. One node that stays keeps its whole block, up to 4 kB.
class NodeBlocks {
 public:
  NodeBlocks() noexcept;
  ~NodeBlocks();
  NodeBlocks(const NodeBlocks&) = delete;
  NodeBlocks& operator=(const NodeBlocks&) = delete;

  /// Memory for one node; null when there are no blocks on this thread, or none for this size.
  static void* Take(std::size_t size);
  /// Memory for one node, in a block of its own.
  static void* TakeAlone(std::size_t size);
  /// Whether a block has the node.
  static bool Has(const void* node) noexcept;
  /// REQUIRES: Has(node), and nobody uses it any more.
  static void Release(void* node, std::size_t size) noexcept;

  /// While it lives, nodes that are freed on its thread one after the other, and lie in one block, are taken
  /// off the block's count together: one locked instruction for all of them.
  class ReleasedTogether {
   public:
    ReleasedTogether() noexcept;
    ~ReleasedTogether();
    ReleasedTogether(const ReleasedTogether&) = delete;
    ReleasedTogether& operator=(const ReleasedTogether&) = delete;
  };

 private:
  struct Block;
  struct Released;

  [[gnu::tls_model("initial-exec")]] static thread_local Released t_released;

  void* cut(std::size_t size);
  void replace(Block* next) noexcept;

  NodeBlocks* const m_outer;
  Block* m_block = nullptr;  // The one that nodes are cut out of.
  std::byte* m_next = nullptr;
  std::byte* m_end = nullptr;
  std::size_t m_count = 0;   // Nodes cut out of it so far.
  std::size_t m_size = 256;  // Of the block, header included: small documents take small ones.
};

}  // namespace kalStore::internal
