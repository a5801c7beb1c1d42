// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "StoreModel.h"
#include "checker/Refusals.h"

namespace simulation {

/// The settings that there are, in one group. The second one has long values.
inline constexpr const char* kNames[] = {"First", "Second"};
inline constexpr int kNameCount = 2;

enum class Kind : std::uint8_t {
  kSet,
  kGet,
  kRemove,
  kRemoveGroup,
  kAsk,
  kBind,
  kSubscribe,
  kEnd,  ///< a subscription or binding of the same thread
  kReadLive,
  kBindFacade,
  kShareCall,
  kShareStatistics,
  kImport,  ///< both names
  kExport,
  kPost,
  kSend,
  kStop,
  kStart,
  kFlush,
};

/// What an action uses.
enum class Through : std::uint8_t { kStore, kFacade, kLateFacade, kHandle };

struct Action {
  Kind kind = Kind::kSet;
  int name = 0;
  std::string value{};
  bool isForced = false;
  bool isTransient = false;
  Through through = Through::kStore;
  fuzz::Way way = fuzz::Way::kDirect;
  int subject = -1;         ///< the number of the subscription, binding or event
  std::string second{};     ///< of an import: the value of the second name
  bool isImported = false;  ///< a set of an import; nobody learns its result
};

/// One that is there from the beginning to the end; its tag is its place in the list.
struct Subscriber {
  int name;
  fuzz::Way way;
  bool throws;
};

/// What the threads of one run do, and what the system refuses them.
struct Plan {
  std::vector<Subscriber> subscribers;
  std::string firstValue;  ///< of the first name, when the threads begin; empty: none
  bool hasRunThread = true;
  bool isJournalOn = false;
  bool isRecorded = false;
  bool reusesMemory = false;
  model::Refusals refusals;
  std::vector<std::vector<Action>> threads;

  /// How many subjects there are: the subscribers, then those of actions.
  int subjects = 0;
};

/// The plan of a number, always the same.
Plan MakePlan(std::uint64_t seed);
std::string Describe(const Plan& plan);
std::string Describe(const Action& action);

}  // namespace simulation
