// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace model {

/// The options of one choice. The first one is the usual one.
class Options {
 public:
  static constexpr std::size_t kMost = 8;

  Options() = default;
  Options(std::initializer_list<int> values) {
    for (const int value : values) Add(value);
  }

  bool IsFull() const { return m_size == kMost; }
  void Add(int value) {
    if (!IsFull()) m_values[m_size++] = static_cast<std::int16_t>(value);
  }
  std::size_t Size() const { return m_size; }
  int operator[](std::size_t at) const { return m_values[at]; }

 private:
  std::int16_t m_values[kMost] = {};
  std::size_t m_size = 0;
};

/// How far an execution may go from the usual.
struct Limits {
  int preemptions = 0;  ///< a thread that could go on gives way to another
  int oddities =
      0;  ///< a load sees an older store, a weak exchange fails, a wait ends without a notification
};

/// Decides whatever an execution leaves open: which thread goes on, which store a load sees. A schedule is
/// the list of the unusual decisions, each as the number of the operation, a letter for what was decided, and
/// the decision.
class Choices {
 public:
  enum class Kind : char { kPreemption = 'p', kNext = 'n', kWaiter = 'w', kStore = 's', kFailure = 'f' };
  enum class Cost { kFree, kPreemption, kOddity };

  /// Every schedule within the limits, depth first: the next execution is the usual one.
  void Search(Limits limits);
  /// Whatever comes, from a seed.
  void Random(std::uint64_t seed);
  /// The execution that had this schedule.
  void Replay(std::string_view schedule);

  void BeginExecution();
  /// After an execution of a search: whether there is another one.
  bool HasNext();

  /// The number of the operation that decides from now on.
  void BeginOperation() { ++m_operation; }
  std::uint32_t Operation() const { return m_operation; }
  bool IsReplay() const { return m_mode == Mode::kReplay; }

  /// Whether an unusual decision of this cost may be taken.
  bool Affords(Cost cost) const { return cost == Cost::kFree || left(cost) > 0; }
  int Choose(Kind kind, Cost cost, const Options& options);
  /// For a decision that costs twice.
  void Spend(Cost cost) { --left(cost); }

  /// Of a search: whether no execution before has come here by the same decisions.
  bool IsNew() const { return m_mode == Mode::kSearch && !m_isKnown && m_depth == m_path.size(); }
  /// It has come to a state. If the search was there before with as much left, it tries whatever may follow
  /// from there: this execution goes on as usual, so that it ends what it uses of the system.
  void BeAt(std::uint64_t state);
  /// What was decided since the last call, besides which thread goes on.
  std::uint64_t TakeDecision() { return std::exchange(m_decision, 0); }

  std::string Schedule() const;

 private:
  enum class Mode { kSearch, kRandom, kReplay };
  struct Decision {
    std::uint32_t operation;
    Kind kind;
    int value;
  };
  struct Branch {
    std::uint32_t operation;
    Kind kind;
    Options options;
    std::size_t at;
  };

  int left(Cost cost) const { return cost == Cost::kPreemption ? m_left.preemptions : m_left.oddities; }
  int& left(Cost cost) { return cost == Cost::kPreemption ? m_left.preemptions : m_left.oddities; }
  std::size_t decide(Kind kind, Cost cost, const Options& options);

  Mode m_mode = Mode::kSearch;
  Limits m_limits;
  Limits m_left;
  std::uint32_t m_operation = 0;
  std::vector<Decision> m_unusual;

  std::vector<Branch> m_path;  // Of a search: the decisions of the execution, and what is left of each.
  std::size_t m_depth = 0;
  std::unordered_map<std::uint64_t, Limits> m_states;  // Where it was, each with what was left there.
  bool m_isKnown = false;                              // What is left of the execution.
  std::uint64_t m_decision = 0;
  std::minstd_rand m_random;
  std::vector<Decision> m_replayed;
};

}  // namespace model
