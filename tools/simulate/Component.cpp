#include "simulate/Component.h"

#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "util/ICmEvent.h"

namespace simulate {

namespace {

class Task : public ICmEvent {
 public:
  explicit Task(std::function<void()> run) : m_run(std::move(run)) {}
  int OnEventFire() override {
    m_run();
    return 0;
  }

 private:
  const std::function<void()> m_run;
};

}  // namespace

void Component::Start() {
  if (const int error = m_thread.Start(); error != 0) {
    throw std::runtime_error(std::string("no thread for a component: ") +
                             std::generic_category().message(error));
  }
  m_lastTick = m_call.recorder.Now();
  settings().Join(m_call.callId);
}

void Component::Tick() {
  if (m_isTickPending.exchange(true)) return;
  Post([this] {
    m_isTickPending = false;
    const RunTime now = m_call.recorder.Now();
    const double elapsed = Seconds(now - m_lastTick);
    m_lastTick = now;
    work(now, elapsed);
  });
}

void Component::Post(std::function<void()> task) {
  if (ICmEventQueue* const queue = m_thread.GetEventQueue()) {
    queue->PostEvent(new Task(std::move(task)), ICmEventQueue::kDefaultPriority, 0);
  }
}

void Component::Drain() {
  if (ICmEventQueue* const queue = m_thread.GetEventQueue()) queue->SendEvent(new Task([] {}), 0);
}

}  // namespace simulate
