// SPDX-License-Identifier: Apache-2.0
#include "simulation/Plan.h"

#include <iterator>
#include <random>

namespace simulation {

namespace {

using fuzz::Way;

class Planner {
 public:
  explicit Planner(std::uint64_t seed) : m_random(seed) {}

  Plan Make() {
    m_plan.reusesMemory = oneOf(3);
    m_plan.hasRunThread = !oneOf(16);
    m_plan.isRecorded = oneOf(8);
    m_plan.isJournalOn = m_plan.isRecorded || oneOf(4);
    if (oneOf(2)) m_plan.firstValue = "50";
    subscribe();
    refuse();
    m_plan.threads.resize(2 + below(2));
    m_ends.resize(m_plan.threads.size());
    for (std::size_t thread = 0; thread < m_plan.threads.size(); ++thread) {
      for (std::size_t left = 1 + below(4); left > 0; --left) add(thread);
    }
    return m_plan;
  }

 private:
  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(m_random() % bound); }
  bool oneOf(std::size_t count) { return below(count) == 0; }
  Way way() {
    constexpr Way kWays[] = {Way::kDirect, Way::kDirect, Way::kPosted, Way::kHandedOver};
    return kWays[below(std::size(kWays))];
  }
  int name() { return oneOf(4) ? 1 : 0; }

  // What throws at its initial delivery is not there: the first setting may have a value.
  Subscriber subscriber() {
    const int of = name();
    return {of, way(), of != 0 && oneOf(4)};
  }

  void subscribe() {
    for (std::size_t left = below(4); left > 0; --left) {
      m_plan.subscribers.push_back(subscriber());
    }
    m_plan.subjects = static_cast<int>(m_plan.subscribers.size());
  }

  void refuse() {
    if (oneOf(3)) {
      m_plan.refusals.allocations = {static_cast<std::uint32_t>(below(60)),
                                     static_cast<std::uint32_t>(oneOf(3) ? 1 + below(20) : 1)};
    }
    if (oneOf(4)) m_plan.refusals.threads = {0, static_cast<std::uint32_t>(1 + below(2))};
  }

  std::string value(int name) {
    const std::string number = oneOf(5) ? "1" : std::to_string(100 + m_values++);
    return name == 0 ? number : number + ", a value that does not fit into the string itself";
  }

  void add(std::size_t thread) {
    constexpr Kind kUsual[] = {Kind::kSet,       Kind::kSet,       Kind::kSet,  Kind::kSet, Kind::kSubscribe,
                               Kind::kSubscribe, Kind::kSubscribe, Kind::kEnd,  Kind::kEnd, Kind::kEnd,
                               Kind::kGet,       Kind::kRemove,    Kind::kBind, Kind::kAsk, Kind::kImport,
                               Kind::kExport,    Kind::kReadLive,  Kind::kPost, Kind::kSend};
    constexpr Kind kRare[] = {Kind::kRemoveGroup, Kind::kStop,      Kind::kStart,
                              Kind::kBindFacade,  Kind::kShareCall, Kind::kShareStatistics,
                              Kind::kFlush};
    Action action;
    action.kind = oneOf(6) ? kRare[below(std::size(kRare))] : kUsual[below(std::size(kUsual))];
    action.name = name();
    switch (action.kind) {
      case Kind::kSet: {
        constexpr Through kWays[] = {Through::kStore, Through::kStore, Through::kFacade,
                                     Through::kLateFacade};
        action.through = kWays[below(std::size(kWays))];
        action.value = value(action.name);
        action.isForced = oneOf(4);
        action.isTransient = oneOf(6);
        break;
      }
      case Kind::kImport:
        action.value = value(0);
        action.second = value(1);
        break;
      case Kind::kExport:
        if (thread != 0) return;  // The store has one text: the next export overwrites it.
        break;
      case Kind::kGet:
        action.through = oneOf(3) ? Through::kLateFacade : Through::kStore;
        break;
      case Kind::kAsk:
        action.value = "asked";
        break;
      case Kind::kSubscribe: {
        constexpr Through kWays[] = {Through::kStore, Through::kFacade, Through::kHandle};
        action.through = kWays[below(std::size(kWays))];
        action.way = way();
        begin(thread, action);
        break;
      }
      case Kind::kBind:
        action.way = Way::kNone;
        begin(thread, action);
        break;
      case Kind::kEnd: {
        std::vector<Action>& ends = m_ends[thread];
        if (ends.empty()) return;
        action = ends.back();
        action.kind = Kind::kEnd;
        ends.pop_back();
        break;
      }
      case Kind::kPost:
      case Kind::kSend:
        action.subject = m_events++;
        break;
      default:
        break;
    }
    m_plan.threads[thread].push_back(action);
  }

  void begin(std::size_t thread, Action& action) {
    action.subject = m_plan.subjects++;
    m_ends[thread].push_back(action);
  }

  std::mt19937_64 m_random;
  Plan m_plan;
  int m_values = 0;
  int m_events = 0;
  std::vector<std::vector<Action>> m_ends;  // What each thread has begun and may end.
};

const char* NameOf(Way way) {
  return way == Way::kDirect ? "direct" : way == Way::kPosted ? "posted" : "handed over";
}

std::string Describe(const char* what, const model::Refused& refused) {
  if (refused.count == 0) return {};
  return std::string(what) + " " + std::to_string(refused.first) + " to " +
         std::to_string(refused.first + refused.count - 1) + " are refused\n";
}

}  // namespace

Plan MakePlan(std::uint64_t seed) {
  return Planner(seed).Make();
}

std::string Describe(const Action& action) {
  constexpr const char* kKinds[] = {"set",
                                    "get",
                                    "remove",
                                    "remove the group",
                                    "ask",
                                    "bind",
                                    "subscribe",
                                    "end",
                                    "read the live value",
                                    "bind the facade",
                                    "share a call",
                                    "share a statistics object",
                                    "import",
                                    "export",
                                    "post",
                                    "send",
                                    "stop the run thread",
                                    "start the run thread",
                                    "flush the recording"};
  constexpr const char* kThrough[] = {"", " through the facade", " through the facade that is bound late",
                                      " by a handle"};
  std::string text = kKinds[static_cast<std::size_t>(action.kind)];
  if (action.subject >= 0) text += " #" + std::to_string(action.subject);
  if (action.kind <= Kind::kReadLive && action.kind != Kind::kRemoveGroup)
    text += std::string(" ") + kNames[action.name];
  if (!action.value.empty()) text += " \"" + action.value + "\"";
  if (!action.second.empty()) text += std::string(", ") + kNames[1] + " \"" + action.second + '"';
  if (action.isImported) text += " imported";
  if (action.isForced) text += " forced";
  if (action.isTransient) text += " transient";
  if (action.kind == Kind::kSubscribe) text += std::string(" ") + NameOf(action.way);
  return text + kThrough[static_cast<std::size_t>(action.through)];
}

std::string Describe(const Plan& plan) {
  std::string text;
  for (std::size_t tag = 0; tag < plan.subscribers.size(); ++tag) {
    const Subscriber& subscriber = plan.subscribers[tag];
    text += "subscriber #" + std::to_string(tag) + " of " + kNames[subscriber.name] + ", " +
            NameOf(subscriber.way) + (subscriber.throws ? ", throws\n" : "\n");
  }
  if (!plan.firstValue.empty()) text += std::string(kNames[0]) + " is " + plan.firstValue + '\n';
  if (!plan.hasRunThread) text += "the run thread does not start\n";
  if (plan.isRecorded) {
    text += "recorded\n";
  } else if (plan.isJournalOn) {
    text += "with the journal\n";
  }
  if (plan.reusesMemory) text += "memory is used again\n";
  text += Describe("allocations", plan.refusals.allocations) + Describe("threads", plan.refusals.threads);
  for (std::size_t thread = 0; thread < plan.threads.size(); ++thread) {
    text += "thread " + std::to_string(thread) + ":";
    for (const Action& action : plan.threads[thread]) text += "\n  " + Describe(action);
    text += '\n';
  }
  return text;
}

}  // namespace simulation
