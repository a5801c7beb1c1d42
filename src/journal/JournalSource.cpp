// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalSource.h"

namespace kalStore {

using namespace internal;

constinit thread_local JournalThread internal::t_journal{};

JournalOrigin::JournalOrigin(const char* label) : m_outer(std::exchange(t_journal.label, label)) {}

JournalOrigin::~JournalOrigin() {
  t_journal.label = m_outer;
}

JournalDocument::JournalDocument(const char* name) : m_outer(std::exchange(t_journal.document, name)) {}

JournalDocument::~JournalDocument() {
  t_journal.document = m_outer;
}

}  // namespace kalStore
