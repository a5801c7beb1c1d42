// SPDX-License-Identifier: Apache-2.0
// Functions of the C and C++ libraries that access memory for the program: compiled without
// -fsanitize=thread, they do not say so themselves. The linker brings the program's calls here.
#include <cstddef>
#include <cstring>
#include <list>
#include <map>

#include "checker/Checker.h"

namespace {

using TreeNode = std::_Rb_tree_node_base;
using ListNode = std::__detail::_List_node_base;

struct Place {
  const void* code;
  const void* frame;
};
#define MODEL_PLACE                                         \
  Place {                                                   \
    __builtin_return_address(0), __builtin_frame_address(0) \
  }

bool IsSeen(const void* memory) {
  return memory != nullptr && !model::ThreadLocals::Contains(memory);
}

void Reads(const void* memory, std::size_t size, Place place) {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr || !IsSeen(memory)) return;
  const model::Operation operation(*checker, place.code, place.frame);
  checker->Read(memory, size);
}

void Writes(const void* memory, std::size_t size, Place place) {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr || !IsSeen(memory)) return;
  const model::Operation operation(*checker, place.code, place.frame);
  checker->Write(memory, size);
}

void Reads(const TreeNode* node, Place place) {
  Reads(node, sizeof *node, place);
}

void Writes(const TreeNode* node, Place place) {
  Writes(node, sizeof *node, place);
}

void Writes(const ListNode* node, Place place) {
  Writes(node, sizeof *node, place);
}

}  // namespace

// NOLINTBEGIN: the libraries' names.
extern "C" {

void* __real_memcpy(void*, const void*, std::size_t);
void* __wrap_memcpy(void* to, const void* from, std::size_t size) {
  Reads(from, size, MODEL_PLACE);
  Writes(to, size, MODEL_PLACE);
  return __real_memcpy(to, from, size);
}

void* __real_memmove(void*, const void*, std::size_t);
void* __wrap_memmove(void* to, const void* from, std::size_t size) {
  Reads(from, size, MODEL_PLACE);
  Writes(to, size, MODEL_PLACE);
  return __real_memmove(to, from, size);
}

void* __real_memset(void*, int, std::size_t);
void* __wrap_memset(void* to, int value, std::size_t size) {
  Writes(to, size, MODEL_PLACE);
  return __real_memset(to, value, size);
}

int __real_memcmp(const void*, const void*, std::size_t);
int __wrap_memcmp(const void* left, const void* right, std::size_t size) {
  Reads(left, size, MODEL_PLACE);
  Reads(right, size, MODEL_PLACE);
  return __real_memcmp(left, right, size);
}

std::size_t __real_strlen(const char*);
std::size_t __wrap_strlen(const char* text) {
  const std::size_t length = __real_strlen(text);
  Reads(text, length + 1, MODEL_PLACE);
  return length;
}

#define MODEL_INSERT _ZSt29_Rb_tree_insert_and_rebalancebPSt18_Rb_tree_node_baseS0_RS_
#define MODEL_ERASE _ZSt28_Rb_tree_rebalance_for_erasePSt18_Rb_tree_node_baseRS_
#define MODEL_INCREMENT _ZSt18_Rb_tree_incrementPSt18_Rb_tree_node_base
#define MODEL_INCREMENT_CONST _ZSt18_Rb_tree_incrementPKSt18_Rb_tree_node_base
#define MODEL_DECREMENT _ZSt18_Rb_tree_decrementPSt18_Rb_tree_node_base
#define MODEL_HOOK _ZNSt8__detail15_List_node_base7_M_hookEPS0_
#define MODEL_UNHOOK _ZNSt8__detail15_List_node_base9_M_unhookEv
#define MODEL_TRANSFER _ZNSt8__detail15_List_node_base11_M_transferEPS0_S1_
#define MODEL_JOIN(prefix, name) MODEL_JOIN_(prefix, name)
#define MODEL_JOIN_(prefix, name) prefix##name
#define MODEL_REAL(name) MODEL_JOIN(__real_, name)
#define MODEL_WRAP(name) MODEL_JOIN(__wrap_, name)

void MODEL_REAL(MODEL_INSERT)(bool, TreeNode*, TreeNode*, TreeNode&) noexcept;
void MODEL_WRAP(MODEL_INSERT)(bool isLeft, TreeNode* node, TreeNode* parent, TreeNode& header) noexcept {
  Writes(node, MODEL_PLACE);
  Writes(parent, MODEL_PLACE);
  Writes(&header, MODEL_PLACE);
  MODEL_REAL(MODEL_INSERT)(isLeft, node, parent, header);
}

TreeNode* MODEL_REAL(MODEL_ERASE)(TreeNode*, TreeNode&) noexcept;
TreeNode* MODEL_WRAP(MODEL_ERASE)(TreeNode* node, TreeNode& header) noexcept {
  Writes(node, MODEL_PLACE);
  Writes(node->_M_parent, MODEL_PLACE);
  Writes(&header, MODEL_PLACE);
  return MODEL_REAL(MODEL_ERASE)(node, header);
}

TreeNode* MODEL_REAL(MODEL_INCREMENT)(TreeNode*) noexcept;
TreeNode* MODEL_WRAP(MODEL_INCREMENT)(TreeNode* node) noexcept {
  Reads(node, MODEL_PLACE);
  return MODEL_REAL(MODEL_INCREMENT)(node);
}

const TreeNode* MODEL_REAL(MODEL_INCREMENT_CONST)(const TreeNode*) noexcept;
const TreeNode* MODEL_WRAP(MODEL_INCREMENT_CONST)(const TreeNode* node) noexcept {
  Reads(node, MODEL_PLACE);
  return MODEL_REAL(MODEL_INCREMENT_CONST)(node);
}

TreeNode* MODEL_REAL(MODEL_DECREMENT)(TreeNode*) noexcept;
TreeNode* MODEL_WRAP(MODEL_DECREMENT)(TreeNode* node) noexcept {
  Reads(node, MODEL_PLACE);
  return MODEL_REAL(MODEL_DECREMENT)(node);
}

void MODEL_REAL(MODEL_HOOK)(ListNode*, ListNode*) noexcept;
void MODEL_WRAP(MODEL_HOOK)(ListNode* node, ListNode* position) noexcept {
  Writes(node, MODEL_PLACE);
  Writes(position, MODEL_PLACE);
  Writes(position->_M_prev, MODEL_PLACE);
  MODEL_REAL(MODEL_HOOK)(node, position);
}

void MODEL_REAL(MODEL_UNHOOK)(ListNode*) noexcept;
void MODEL_WRAP(MODEL_UNHOOK)(ListNode* node) noexcept {
  Writes(node, MODEL_PLACE);
  Writes(node->_M_next, MODEL_PLACE);
  Writes(node->_M_prev, MODEL_PLACE);
  MODEL_REAL(MODEL_UNHOOK)(node);
}

void MODEL_REAL(MODEL_TRANSFER)(ListNode*, ListNode*, ListNode*) noexcept;
void MODEL_WRAP(MODEL_TRANSFER)(ListNode* position, ListNode* first, ListNode* last) noexcept {
  Writes(position, MODEL_PLACE);
  Writes(first, MODEL_PLACE);
  Writes(last, MODEL_PLACE);
  MODEL_REAL(MODEL_TRANSFER)(position, first, last);
}

}  // extern "C"
// NOLINTEND
