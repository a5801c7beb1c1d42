// SPDX-License-Identifier: Apache-2.0
#include "Watcher.h"

#include <iostream>
#include <stdexcept>
#include <system_error>

#include "Change.h"
#include "Colour.h"
#include "ConfigPath.h"
#include "tessel/post.h"

namespace {

void PrintEvent(const kalStore::KalConfigEvent& event, Watcher::Form form, const char* thread) {
  if (form == Watcher::Form::kJson) {
    PrintChangeAsJson(std::cout, {event.m_group, event.m_name, event.m_oldValue, event.m_newValue}, "thread",
                      thread);
    std::cout << std::flush;
    return;
  }
  std::cout << "  " << Coloured(Colour::kCyan, "event") << "    " << ShownPath(event.m_group, event.m_name)
            << ": " << ShownValue(event.m_oldValue) << " -> " << ShownValue(event.m_newValue) << " (on "
            << thread << ")\n"
            << std::flush;
}

}  // namespace

Watcher::Watcher(kalStore::IKalConfig& store, Way way, Form form) : m_store(store), m_form(form) {
  if (way == Way::kDirect) return;
  m_worker.emplace("worker");
  if (const int error = m_worker->Start(); error != 0) {
    throw std::runtime_error(std::string("no worker thread: ") + std::generic_category().message(error));
  }
}

Watcher::~Watcher() {
  for (const kalStore::SubscribeId_t id : m_subscriptions) m_store.UnsubscribeConfig(id);
}

void Watcher::Watch(kalStore::KalConfigGroup group, const std::string& name) {
  ACmThread* const worker = m_worker ? &*m_worker : nullptr;
  const auto print = [worker, form = m_form](const kalStore::KalConfigEvent& event) {
    PrintEvent(event, form,
               worker != nullptr && worker->GetThreadId() == GetThreadSelfId() ? "worker" : "main");
  };
  const kalStore::SubscribeId_t id =
      m_store.SubscribeConfig(group, name.c_str(), print, worker, worker != nullptr);
  if (id == 0) throw std::runtime_error("no subscription to " + ShownPath(group, name));
  m_subscriptions.push_back(id);
}

void Watcher::Drain() {
  if (m_worker) kalStore::Send(*m_worker, [] {});
}
