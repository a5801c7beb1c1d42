// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalSource.h"

#include <utility>

namespace kalStore {

namespace internal {

namespace {

struct ThreadState {
  const char* label;
  const char* document;
  const void* caller;         // Of the outermost CallerScope; null: none.
  const JournalPlace* place;  // Of the PlaceScope; null: none.
};
constinit thread_local ThreadState t_state{};

std::string_view ViewOf(const char* text) {
  return text == nullptr ? std::string_view() : text;
}

}  // namespace

const char* JournalDocumentName() {
  return t_state.document;
}

JournalSource SourceOf(const void* caller) {
  const ThreadState& state = t_state;
  JournalSource source{.caller = state.caller != nullptr ? state.caller : caller,
                       .label = ViewOf(state.label)};
  if (state.place != nullptr) {
    source.document = ViewOf(state.place->document);
    source.line = state.place->line;
    source.column = state.place->column;
  }
  return source;
}

void CallerScope::begin(const void* caller) {
  m_outer = t_state.caller;
  if (m_outer == nullptr) t_state.caller = caller;
}

void CallerScope::end() {
  t_state.caller = m_outer;
}

PlaceScope::PlaceScope() : m_outer(std::exchange(t_state.place, &m_place)) {}

PlaceScope::~PlaceScope() {
  t_state.place = m_outer;
}

ComponentScope::ComponentScope()
    : m_caller(std::exchange(t_state.caller, nullptr)), m_place(std::exchange(t_state.place, nullptr)) {}

ComponentScope::~ComponentScope() {
  t_state.caller = m_caller;
  t_state.place = m_place;
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
