// SPDX-License-Identifier: Apache-2.0
#include "simulation/Order.h"

#include <algorithm>
#include <map>

namespace simulation {

namespace {

using fuzz::Text;
using fuzz::Way;

constexpr std::uint32_t kGroup = 3;

bool IsOfValues(const Done& done) {
  switch (done.action.kind) {
    case Kind::kSet:
    case Kind::kGet:
      // A facade that another thread binds may not be seen as bound yet.
      return done.action.through != Through::kLateFacade || done.result != fuzz::kResultBadArgument;
    case Kind::kRemove:
    case Kind::kRemoveGroup:
    case Kind::kAsk:
    case Kind::kBind:
    case Kind::kExport:
      return true;
    case Kind::kEnd:
      return done.action.way == Way::kNone;  // Of a binding.
    default:
      return false;
  }
}

// The model of one order: run from its beginning each time, since a model logs for one owner.
class Replayed {
 public:
  explicit Replayed(const Plan& plan) : m_plan(plan) {
    for (int name = 0; name < kNameCount; ++name) {
      fuzz::Callback observer;
      observer.tag = kObserver;
      m_store.Subscribe(kGroup, kNames[name], observer);
    }
    if (!plan.firstValue.empty()) m_store.Set(kGroup, kNames[0], plan.firstValue, false, false);
    for (std::size_t tag = 0; tag < plan.subscribers.size(); ++tag) {
      fuzz::Callback callback;
      callback.tag = static_cast<int>(tag);
      callback.way = plan.subscribers[tag].way;
      if (plan.subscribers[tag].throws && callback.way != Way::kPosted) callback.act = fuzz::Act::kThrow;
      m_store.Subscribe(kGroup, kNames[plan.subscribers[tag].name], callback);
    }
    take(nullptr);
  }

  // Whether the model does the same.
  bool Do(const Done& done) {
    const bool isSame = run(done);
    take(&done);
    return isSame;
  }

  const std::vector<Notified>& All() const { return m_all; }
  Text Last(int name) const {
    Text value;
    m_store.Get(kGroup, kNames[name], value);
    return value;
  }

 private:
  bool run(const Done& done) {
    const Action& action = done.action;
    const char* const name = kNames[action.name];
    Text value;
    switch (action.kind) {
      case Kind::kSet:
        try {
          const std::int32_t result =
              m_store.Set(kGroup, name, action.value, action.isForced, action.isTransient);
          return done.outcome == Done::Outcome::kReturned &&
                 (action.isImported || isSameSet(action, result, done.result));
        } catch (const fuzz::Thrown&) {
          return done.outcome == Done::Outcome::kCallbackThrew;
        }
      case Kind::kGet:
        return m_store.Get(kGroup, name, value) == done.result && value == done.value;
      case Kind::kExport:
        return m_store.Dump(1U << kGroup) == done.value;
      case Kind::kRemove:
        return m_store.Remove(kGroup, name) == done.result;
      case Kind::kRemoveGroup:
        return m_store.RemoveGroup(kGroup) == done.result;
      case Kind::kAsk: {
        const std::size_t before = m_log.waitedFor.size();
        if (m_store.GetDynamic(kGroup, name, value, action.value) != done.result) return false;
        const int asked = m_log.waitedFor.size() == before ? -1 : m_log.waitedFor.back().tag;
        return value == done.value && asked == done.asked;
      }
      case Kind::kBind: {
        fuzz::Callback callback;
        callback.tag = action.subject;
        const std::uint64_t id = m_store.Bind(kGroup, name, callback);
        m_bindings[action.subject] = id;
        return (id == 0) == (done.result == 0);
      }
      default:
        return m_store.Unsubscribe(m_bindings[action.subject]) == done.result;
    }
  }

  // The observer is not of the plan. Whether a subscription that comes or goes meanwhile is notified is
  // another question: the set looks for subscribers after it has stored.
  bool isSameSet(const Action& action, std::int32_t model, std::int64_t real) const {
    if (model == fuzz::kResultUnchanged || real == fuzz::kResultUnchanged) return model == real;
    const auto isOfName = [&](const auto& of) { return of.name == action.name; };
    const bool isNotified = std::any_of(m_plan.subscribers.begin(), m_plan.subscribers.end(), isOfName);
    return isNotified ? real == fuzz::kResultOk : real == fuzz::kResultOk || real == fuzz::kResultNobody;
  }

  void take(const Done* by) {
    std::vector<fuzz::Notification> notifications = std::move(m_log.waitedFor);
    notifications.insert(notifications.end(), m_log.posted.begin(), m_log.posted.end());
    m_log = {};
    m_all.push_back({by, std::move(notifications)});
  }

  const Plan& m_plan;
  fuzz::Log m_log;
  fuzz::StoreModel m_store{m_log};
  std::map<int, std::uint64_t> m_bindings;
  std::vector<Notified> m_all;
};

class Search {
 public:
  using IsRight = std::function<bool(const std::vector<Notified>&)>;

  Search(const Plan& plan, const History& history, const IsRight& isRight)
      : m_plan(plan), m_history(history), m_isRight(isRight) {
    for (const Done& done : history.done) {
      if (IsOfValues(done)) m_left.push_back(&done);
    }
    // What ended first was mostly done first.
    std::sort(m_left.begin(), m_left.end(), [](const Done* a, const Done* b) { return a->end < b->end; });
    for (const Done& done : history.done) {
      const bool isOut = done.outcome == Done::Outcome::kOutOfMemory;
      m_mayMiss |= done.action.kind == Kind::kSet && MayLackMemory(plan, done);
      m_hasHalfBound |= isOut && done.action.kind == Kind::kBind;
      m_mayDrop |= done.action.kind == Kind::kStop || done.action.kind == Kind::kStart;
    }
    m_mayDrop |= !plan.hasRunThread;
    for (const Delivery& delivery : history.deliveries)
      m_received[delivery.notification.tag].push_back(&delivery);
  }

  bool Run() { return extend(); }

 private:
  bool extend() {
    if (m_left.empty()) return isComplete();
    for (std::size_t i = 0; i < m_left.size(); ++i) {
      const Done* const next = m_left[i];
      const bool isLater = std::any_of(m_left.begin(), m_left.end(), [&](const Done* other) {
        return other->end < next->begin || isBefore(*other, *next);
      });
      if (isLater) continue;
      m_left.erase(m_left.begin() + static_cast<std::ptrdiff_t>(i));
      const bool isFound = take(*next);
      m_left.insert(m_left.begin() + static_cast<std::ptrdiff_t>(i), next);
      if (isFound) return true;
    }
    return false;
  }

  // Whether one operation did both, the one before the other.
  bool isBefore(const Done& one, const Done& other) const {
    return other.after >= 0 && &one == &m_history.done[static_cast<std::size_t>(other.after)];
  }

  bool take(const Done& next) {
    // A binding that ran out of memory was there for a moment: what asked or bound then is not compared.
    const bool isOfBindings =
        next.action.kind == Kind::kAsk || next.action.kind == Kind::kBind || next.action.kind == Kind::kEnd;
    if (isOfBindings && (m_hasHalfBound || next.outcome == Done::Outcome::kOutOfMemory)) return extend();
    if (next.outcome == Done::Outcome::kOutOfMemory && extend()) return true;
    m_order.push_back(&next);
    Replayed model(m_plan);
    bool isSame = true;
    for (const Done* done : m_order) {
      const bool isAsDone = model.Do(*done);
      isSame = isAsDone || done->outcome == Done::Outcome::kOutOfMemory;
    }
    const bool isFound = isSame && extend();
    m_order.pop_back();
    return isFound;
  }

  bool isComplete() {
    Replayed model(m_plan);
    for (const Done* done : m_order) model.Do(*done);
    for (int name = 0; name < kNameCount; ++name) {
      if (model.Last(name) != m_history.last[name]) return false;
    }
    for (std::size_t tag = 0; tag < m_plan.subscribers.size(); ++tag) {
      if (!isReceived(static_cast<int>(tag), model.All())) return false;
    }
    return m_isRight(model.All());
  }

  bool isReceived(int tag, const std::vector<Notified>& all) {
    std::vector<fuzz::Notification> expected;
    for (const Notified& notified : all) {
      for (const fuzz::Notification& notification : notified.notifications) {
        if (notification.tag == tag) expected.push_back(notification);
      }
    }
    for (const Delivery* delivery : m_received[tag]) {
      const auto found = std::find(expected.begin(), expected.end(), delivery->notification);
      if (found == expected.end()) return false;
      expected.erase(found);
    }
    const bool isOnRunThread = m_plan.subscribers[static_cast<std::size_t>(tag)].way != Way::kDirect;
    return expected.empty() || m_mayMiss || (m_mayDrop && isOnRunThread);
  }

  const Plan& m_plan;
  const History& m_history;
  const IsRight& m_isRight;
  bool m_mayMiss = false;       // A set ran out of memory: who is not notified is not known.
  bool m_mayDrop = false;       // The run thread does not always run.
  bool m_hasHalfBound = false;  // A binding ran out of memory.
  std::map<int, std::vector<const Delivery*>> m_received;
  std::vector<const Done*> m_left;
  std::vector<const Done*> m_order;
};

}  // namespace

bool FindOrder(const Plan& plan, const History& history,
               const std::function<bool(const std::vector<Notified>&)>& isRight) {
  return Search(plan, history, isRight).Run();
}

}  // namespace simulation
