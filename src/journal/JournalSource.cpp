// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalSource.h"

#include <utility>

namespace kalStore {

namespace internal {

namespace {

struct ThreadState {
  const char* label;
  const char* document;
  const void* scope;  // The caller of the outermost CallerScope; null: none.
  // What PassCaller() left, in the life of which journal. An operation that finds the journal off leaves it there:
  // it counts no more when the journal is on again.
  std::uint32_t passedIn;
  const void* passed;
  JournalPlace place;
};
constinit thread_local ThreadState t_state{};

std::string_view ViewOf(const char* text) {
  return text == nullptr ? std::string_view() : text;
}

}  // namespace

const char* JournalDocumentName() {
  return t_state.document;
}

void PassCaller(const void* caller, JournalPlace place) {
  ThreadState& state = t_state;
  state.passedIn = g_journalStart.load(std::memory_order_relaxed);
  state.passed = caller;
  state.place = place;
}

JournalSource TakeSource(const void* caller) {
  ThreadState& state = t_state;
  JournalSource source{.caller = caller, .label = ViewOf(state.label)};
  const std::uint32_t passedIn = std::exchange(state.passedIn, 0);
  if (passedIn != 0 && passedIn == g_journalStart.load(std::memory_order_relaxed)) {
    source.caller = state.passed;
    source.document = ViewOf(state.place.document);
    source.line = state.place.line;
    source.column = state.place.column;
  }
  if (state.scope != nullptr) source.caller = state.scope;
  return source;
}

void CallerScope::begin(const void* caller) {
  m_outer = t_state.scope;
  if (m_outer == nullptr) t_state.scope = caller;
}

void CallerScope::end() {
  t_state.scope = m_outer;
}

ComponentScope::ComponentScope() : m_hidden(std::exchange(t_state.scope, nullptr)) {}

ComponentScope::~ComponentScope() {
  t_state.scope = m_hidden;
}

}  // namespace internal

using namespace internal;

JournalOrigin::JournalOrigin(const char* label) : m_outer(std::exchange(t_state.label, label)) {}

JournalOrigin::~JournalOrigin() {
  t_state.label = m_outer;
}

JournalDocument::JournalDocument(const char* name) : m_outer(std::exchange(t_state.document, name)) {}

JournalDocument::~JournalDocument() {
  t_state.document = m_outer;
}

}  // namespace kalStore
