// SPDX-License-Identifier: Apache-2.0
#include "simulation/Judge.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <utility>

#include "simulation/Order.h"

namespace simulation {

namespace {

using fuzz::Notification;
using fuzz::Text;
using fuzz::Way;

class Trial {
 public:
  Trial(const Plan& plan, const History& history, const std::string& recording)
      : m_plan(plan), m_history(history), m_recording(recording) {
    for (const Done& done : history.done) {
      m_isShort |= MayLackMemory(plan, done);
      m_mayDrop |= done.action.kind == Kind::kStop || done.action.kind == Kind::kStart;
    }
    m_mayDrop |= !plan.hasRunThread;
  }

  std::string Verdict() {
    std::string verdict = "no order of the operations explains their results and deliveries";
    const bool isFound = FindOrder(m_plan, m_history, [&](const std::vector<Notified>& order) {
      for (const Done& done : m_history.done) {
        if (done.action.kind == Kind::kSubscribe) judgeSubscription(done, order);
      }
      if (m_verdict.empty()) return true;
      verdict = std::exchange(m_verdict, {});
      return false;
    });
    if (!isFound) return verdict;
    for (const Done& done : m_history.done) judge(done);
    judgeOrderOfDeliveries();
    judgeEvents();
    if (m_history.isJournalWhole) judgeJournal();
    if (m_plan.isRecorded && m_plan.hasRunThread && m_plan.refusals.allocations.count == 0) judgeRecording();
    if (m_history.live != numberOf(m_history.last[0])) fail("the live value is not what the store has");
    if (m_history.callsLeft != 0) fail("a call's store is left");
    if (m_history.statisticsLeft != 0) fail("a statistics object is left");
    return m_verdict;
  }

 private:
  void fail(const std::string& what) {
    if (m_verdict.empty()) m_verdict = what;
  }

  static int numberOf(const Text& text) { return text ? std::atoi(text->c_str()) : 0; }

  const Done* endOf(const Done& subscribed) const {
    for (const Done& done : m_history.done) {
      if (done.action.kind == Kind::kEnd && done.action.subject == subscribed.action.subject) return &done;
    }
    return nullptr;
  }

  void judge(const Done& done) {
    if (done.end == kNever) return fail("an operation does not end");
    if (done.outcome == Done::Outcome::kCallbackThrew && done.action.kind != Kind::kSet)
      fail("what another callback threw leaves " + Describe(done.action));
    if (done.outcome != Done::Outcome::kReturned) return;
    const bool hasShortage = m_plan.refusals.allocations.count > 0;
    switch (done.action.kind) {
      case Kind::kReadLive: {
        const bool isKnown =
            done.result == 0 || done.result == numberOf(m_plan.firstValue) ||
            std::any_of(m_history.done.begin(), m_history.done.end(), [&](const Done& other) {
              return other.action.kind == Kind::kSet && other.begin < done.end && other.action.name == 0 &&
                     numberOf(other.action.value) == done.result;
            });
        if (!isKnown) fail("the live value is none that was set");
        break;
      }
      case Kind::kBindFacade:
        if (done.result != fuzz::kResultOk) fail("the facade is not bound");
        break;
      case Kind::kShareCall:
        if (done.result != 1) fail("the call's value is lost while it is held");
        break;
      case Kind::kShareStatistics:
        if (done.result != 1) fail("a statistics object is lost while it is held");
        break;
      case Kind::kStop:
        if (done.result != 0) fail("the run thread does not stop");
        break;
      case Kind::kStart:
        if (done.result != 0 && done.result != EBUSY && done.result != EAGAIN &&
            !(hasShortage && done.result == ENOMEM))
          fail("the run thread starts with a result that is not documented");
        break;
      case Kind::kFlush:
        if (done.result != fuzz::kResultOk && m_plan.hasRunThread && !hasShortage)
          fail("the recording is not flushed");
        break;
      case Kind::kSet:
      case Kind::kGet:
        if (done.action.through != Through::kLateFacade && done.result == fuzz::kResultBadArgument)
          fail("a set or read is refused");
        if (done.action.isImported && done.result != fuzz::kResultOk) fail("a document is refused");
        break;
      default:
        break;
    }
  }

  // One that comes, and may go, while others set.
  void judgeSubscription(const Done& subscribed, const std::vector<Notified>& order) {
    const Action& action = subscribed.action;
    const Done* const ended = endOf(subscribed);
    const bool isMade = subscribed.outcome == Done::Outcome::kReturned && subscribed.result != 0;
    if (!isMade && subscribed.outcome == Done::Outcome::kReturned && action.through != Through::kFacade)
      return fail("a subscription is refused");
    const Moment goesAt = ended == nullptr ? kNever : ended->end;
    const Moment leavesAt = ended == nullptr ? kNever : ended->begin;
    const bool runsLate = action.through == Through::kStore && action.way == Way::kPosted;
    if (ended != nullptr && isMade && ended->result != fuzz::kResultOk) fail("a removal finds nothing");

    std::vector<Notification> received;
    for (const auto& [at, notification] : m_history.deliveries) {
      if (notification.tag != action.subject) continue;
      if (at < subscribed.begin) fail("a callback is called before it is subscribed");
      if (at > goesAt && !runsLate) fail("a callback is called after its removal");
      received.push_back(notification);
      received.back().tag = kObserver;
    }
    // Each is of a change that may reach it, or the one at the beginning. Two changes may be alike: first
    // come those that must.
    std::vector<Notification> left = received;
    const bool isComplete = isMade && !m_isShort && !(m_mayDrop && action.way != Way::kDirect) &&
                            !(ended != nullptr && action.way == Way::kPosted && !runsLate);
    for (const bool isDue : {true, false}) {
      for (const Notified& notified : order) {
        const Done* const by = notified.by;
        if (by == nullptr || by->end < subscribed.begin || by->begin > goesAt) continue;
        if ((by->begin > subscribed.end && by->end < leavesAt) != isDue) continue;
        for (const Notification& change : notified.notifications) {
          if (change.tag != kObserver || change.name != kNames[action.name]) continue;
          const auto found = std::find(left.begin(), left.end(), change);
          if (found != left.end()) {
            left.erase(found);
          } else if (isDue && isComplete) {
            fail("a subscription misses a change");
          }
        }
      }
    }
    if (left.size() > 1) return fail("a subscription receives what did not happen");
    if (left.size() == 1 && (left[0].oldValue || !wasValue(action.name, left[0].newValue)))
      return fail("a subscription receives a value that was not set");
    // Whatever came before it was subscribed, or meanwhile: the last value is not lost.
    if (!isComplete || ended != nullptr || !m_history.last[action.name]) return;
    const bool hasLast = std::any_of(received.begin(), received.end(), [&](const Notification& notification) {
      return notification.newValue == m_history.last[action.name];
    });
    if (!hasLast) fail("a subscription does not have the last value");
  }

  bool wasValue(int name, const Text& value) const {
    if (name == 0 && value == m_plan.firstValue) return true;
    return std::any_of(m_history.done.begin(), m_history.done.end(), [&](const Done& done) {
      return done.action.kind == Kind::kSet && done.action.name == name && value == done.action.value;
    });
  }

  // A set that ended before another one began is delivered before it, to each.
  void judgeOrderOfDeliveries() {
    std::map<int, std::vector<const Done*>> latest;
    for (const auto& [at, notification] : m_history.deliveries) {
      const Done* const by = setterOf(notification);
      if (by == nullptr) continue;
      for (const Done* earlier : latest[notification.tag]) {
        if (by->end < earlier->begin)
          fail("a subscriber receives changes in another order than that of their sets");
      }
      latest[notification.tag].push_back(by);
    }
  }

  // Null unless one set alone has the value.
  const Done* setterOf(const Notification& notification) const {
    const Done* by = nullptr;
    for (const Done& done : m_history.done) {
      if (done.action.kind != Kind::kSet || done.action.value != notification.newValue) continue;
      if (kNames[done.action.name] != notification.name) continue;
      if (by != nullptr) return nullptr;
      by = &done;
    }
    // An initial delivery has no set.
    return notification.oldValue || by == nullptr || hasPermanent(notification.tag) ? by : nullptr;
  }
  bool hasPermanent(int tag) const { return tag < static_cast<int>(m_plan.subscribers.size()); }

  void judgeEvents() {
    std::map<int, Moment> fired;
    for (const auto& [at, event] : m_history.fired) {
      if (!fired.emplace(event, at).second) fail("an event fires twice");
    }
    std::vector<const Done*> taken;
    for (const Done& done : m_history.done) {
      const bool isSent = done.action.kind == Kind::kSend;
      if (!isSent && done.action.kind != Kind::kPost) continue;
      const bool isTaken = done.outcome == Done::Outcome::kReturned && done.result == 0;
      const auto at = fired.find(done.action.subject);
      if (isTaken != (at != fired.end()))
        fail("an event that is taken does not fire, or one that is not does");
      if (!isTaken && done.outcome == Done::Outcome::kReturned && done.result != ESHUTDOWN)
        fail("an event is refused with a result that is not documented");
      if (!isTaken && !m_isShort && !m_mayDrop) fail("a running thread refuses an event");
      if (at == fired.end()) continue;
      if (isSent && at->second > done.end) fail("a send returns before its event has fired");
      if (at->second < done.begin) fail("an event fires before it is posted");
      taken.push_back(&done);
    }
    for (const Done* first : taken) {
      for (const Done* second : taken) {
        if (first->end < second->begin && fired[first->action.subject] > fired[second->action.subject])
          fail("events fire in another order than that of their posts");
      }
    }
    for (const auto& [event, at] : fired) {
      if (!mayRunAt(at)) fail("an event fires after the thread has stopped");
    }
  }

  bool mayRunAt(Moment at) const {
    for (const Done& stopped : m_history.done) {
      if (stopped.action.kind != Kind::kStop || stopped.end > at) continue;
      const bool hasStarted =
          std::any_of(m_history.done.begin(), m_history.done.end(), [&](const Done& started) {
            return started.action.kind == Kind::kStart && started.begin < at && started.end > stopped.begin;
          });
      if (!hasStarted) return false;
    }
    return true;
  }

  // Each change has the value before it, as the journal's numbers say, and each set is in it.
  void judgeJournal() {
    std::map<std::string, Text> values;
    std::size_t sets = 0;
    for (const Journalled& entry : m_history.journal) {
      if (entry.kind == Journalled::Kind::kGroupRemoved) {
        values.clear();
        continue;
      }
      Text& value = values[entry.name];
      if (value != entry.oldValue) fail("the journal's numbers are not in the order of the changes");
      const bool isSet = entry.kind == Journalled::Kind::kSet;
      value = isSet ? entry.newValue : Text();
      sets += isSet || entry.kind == Journalled::Kind::kTransientSet ? 1 : 0;
    }
    for (int name = 0; name < kNameCount; ++name) {
      if (values[kNames[name]] != m_history.last[name]) fail("the journal ends with another value");
    }
    if (!m_isShort && sets != setsOfStore()) fail("the journal does not have each set once");
  }

  std::size_t setsOfStore() const {
    const auto sets = std::count_if(m_history.done.begin(), m_history.done.end(), [](const Done& done) {
      return done.action.kind == Kind::kSet && done.result != fuzz::kResultBadArgument;
    });
    return static_cast<std::size_t>(sets) + (m_plan.firstValue.empty() ? 0 : 1);
  }

  void judgeRecording() {
    std::size_t sets = 0;
    std::string last;
    for (std::size_t at = 0; at < m_recording.size();) {
      const std::size_t end = m_recording.find('\n', at);
      if (end == std::string::npos) return fail("the recording's last line is cut off");
      last = m_recording.substr(at, end - at);
      const bool isOfStore = last.find("\"call\":7,") != std::string::npos;
      const bool isPicture = last.find("\"picture\":true") != std::string::npos;
      if (last.starts_with("{\"type\":\"set\"") && isOfStore && !isPicture) ++sets;
      if (last.starts_with("{\"type\":\"lost\"")) fail("the recording has lost something");
      at = end + 1;
    }
    if (last.find("\"event\":\"ended\"") == std::string::npos || last.find("\"reason\"") != std::string::npos)
      fail("the recording does not end as it should");
    if (sets != setsOfStore()) fail("the recording does not have each set once");
  }

  const Plan& m_plan;
  const History& m_history;
  const std::string& m_recording;
  bool m_isShort = false;  // Something ran out of memory.
  bool m_mayDrop = false;  // The run thread does not always run.
  std::string m_verdict;
};

}  // namespace

std::string Judge(const Plan& plan, const History& history, const std::string& recording) {
  return Trial(plan, history, recording).Verdict();
}

}  // namespace simulation
