// SPDX-License-Identifier: Apache-2.0
#include "json/NodeBlocks.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>
#include <new>
#include <utility>

#include "tessel/json_node_allocator.h"

// In a process without AddressSanitizer they are null. With it, it finds uses of a node that was freed.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
extern "C" {
[[gnu::weak]] void __asan_poison_memory_region(void const volatile* begin, std::size_t size);
[[gnu::weak]] void __asan_unpoison_memory_region(void const volatile* begin, std::size_t size);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)

namespace kalStore::internal {

namespace {

// What operator new returns lies at a multiple of 16, a node in a block 8 behind one: so they differ. The 8
// bytes before a node point to its block. Where operator new promises less than 16, there are no blocks. A
// program's own may keep the promise only for sizes that are a multiple of 16, or not at all: a block asks
// for its alignment, and what lies elsewhere becomes a node in a block of its own.
constexpr std::size_t kStep = 16;
constexpr std::align_val_t kAlignment{kStep};
constexpr std::size_t kBlockPointer = sizeof(void*);  // Before each node.
constexpr std::size_t kMaxBlock = 4080;               // A page, with what the C library adds.
constexpr bool kHasBlocks = __STDCPP_DEFAULT_NEW_ALIGNMENT__ >= kStep && sizeof(void*) == 8;

// At a fixed distance from the thread's pointer: read for each node, without a call that looks it up.
[[gnu::tls_model("initial-exec")]] constinit thread_local NodeBlocks* t_innermost = nullptr;

// Of a block that nodes are still cut out of: more than it can ever have, so that it is not freed meanwhile.
constexpr std::size_t kOpen = std::numeric_limits<std::size_t>::max() / 2;

}  // namespace

struct alignas(kStep) NodeBlocks::Block {
  explicit Block(std::size_t bytes) : size(bytes) {}

  // Nodes are freed on any thread. Each release comes after that thread's last use of the node (release), and
  // the block is freed after all of them (acquire).
  void Drop(std::size_t count) noexcept {
    if (nodes.fetch_sub(count, std::memory_order_acq_rel) != count) return;
    const std::size_t bytes = size;
    if (__asan_unpoison_memory_region) __asan_unpoison_memory_region(this, bytes);
    ::operator delete(static_cast<void*>(this), kAlignment);
  }

  std::atomic<std::size_t> nodes{kOpen};
  const std::size_t size;
};

// The nodes that a thread has freed and not yet taken off their block's count.
struct NodeBlocks::Released {
  void Add(Block& freed) noexcept {
    if (m_block == &freed) {
      ++m_count;
    } else {
      replace(&freed);
    }
  }
  void Drop() noexcept { replace(nullptr); }

  std::size_t depth = 0;  // Of the ReleasedTogether that live.

 private:
  // Begins with one node of the next block. The last step frees a block: a program's own operator delete may
  // free documents as well.
  void replace(Block* next) noexcept {
    Block* const last = std::exchange(m_block, next);
    const std::size_t lastCount = std::exchange(m_count, 1);
    if (last) last->Drop(lastCount);
  }

  Block* m_block = nullptr;
  std::size_t m_count = 0;
};

[[gnu::tls_model("initial-exec")]] constinit thread_local NodeBlocks::Released NodeBlocks::t_released;

NodeBlocks::ReleasedTogether::ReleasedTogether() noexcept {
  ++t_released.depth;
}

NodeBlocks::ReleasedTogether::~ReleasedTogether() {
  if (--t_released.depth == 0) t_released.Drop();
}

NodeBlocks::NodeBlocks() noexcept : m_outer(std::exchange(t_innermost, this)) {}

NodeBlocks::~NodeBlocks() {
  t_innermost = m_outer;
  replace(nullptr);
}

void* NodeBlocks::Take(std::size_t size) {
  return kHasBlocks && t_innermost ? t_innermost->cut(size) : nullptr;
}

void* NodeBlocks::TakeAlone(std::size_t size) {
  NodeBlocks blocks;
  blocks.m_size = 0;
  // The analyzer does not count: the node keeps its block.
  return blocks.cut(size);  // NOLINT(clang-analyzer-cplusplus.NewDelete)
}

bool NodeBlocks::Has(const void* node) noexcept {
  return kHasBlocks && reinterpret_cast<std::uintptr_t>(node) % kStep != 0;
}

void NodeBlocks::Release(void* node, std::size_t size) noexcept {
  Block* const block = static_cast<Block**>(node)[-1];
  if (__asan_poison_memory_region) __asan_poison_memory_region(node, size);
  if (t_released.depth == 0) {
    block->Drop(1);
  } else {
    t_released.Add(*block);
  }
}

void* NodeBlocks::cut(std::size_t size) {
  const std::size_t taken = (kBlockPointer + size + kStep - 1) / kStep * kStep;
  while (static_cast<std::size_t>(m_end - m_next) < taken) {
    if (taken > kMaxBlock - sizeof(Block)) return nullptr;
    const std::size_t bytes = std::max(std::min(2 * m_size, kMaxBlock), taken + sizeof(Block));
    void* const memory = ::operator new(bytes, kAlignment);
    m_size = bytes;
    m_next = static_cast<std::byte*>(memory) + sizeof(Block);
    m_end = static_cast<std::byte*>(memory) + bytes;
    replace(new (memory) Block(bytes));
  }
  Block** const place = reinterpret_cast<Block**>(m_next);
  // The analyzer takes it for possible that a node takes nothing, not even the pointer before it.
  *place = m_block;  // NOLINT(clang-analyzer-core.NullDereference)
  m_next += taken;
  ++m_count;
  return place + 1;
}

// The last step may free a block: a program's own operator delete may make nodes here, too.
void NodeBlocks::replace(Block* next) noexcept {
  Block* const last = std::exchange(m_block, next);
  const std::size_t lastCount = std::exchange(m_count, 0);
  if (last) last->Drop(kOpen - lastCount);
}

}  // namespace kalStore::internal

namespace json::detail {

using kalStore::internal::NodeBlocks;

void* AllocateNode(std::size_t size) {
  if (void* const node = NodeBlocks::Take(size)) return node;
  void* const node = ::operator new(size);
  if (!NodeBlocks::Has(node)) return node;
  ::operator delete(node);
  return NodeBlocks::TakeAlone(size);
}

void FreeNode(void* node, std::size_t size) noexcept {
  if (NodeBlocks::Has(node)) {
    NodeBlocks::Release(node, size);
  } else {
    // The analyzer does not see that a node in a block never comes here.
    ::operator delete(node);  // NOLINT(clang-analyzer-cplusplus.NewDelete)
  }
}

}  // namespace json::detail
