// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "checker/Checker.h"
#include "simulation/History.h"
#include "simulation/Plan.h"
#include "tessel/CallStore.h"
#include "tessel/LiveConfig.h"
#include "tessel/record.h"
#include "tessel/typed.h"
#include "util/ACmThread.h"

namespace simulation {

/// What the threads of a plan share, in one execution of it.
class World {
 public:
  /// Everything there is before the threads begin. `file` is the recording's.
  World(const Plan& plan, History& history, const std::string& file);
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  /// Runs the threads, ends what they have left, and looks at what there is then.
  void Run();

 private:
  // A subscription or binding. What its callback uses ends with it.
  struct Subject {
    std::unique_ptr<int> used;
    kalStore::SubscribeId_t id = 0;
    kalStore::Subscription handle;
  };
  // What a subscription's callback does, whichever thread calls it.
  struct Callback {
    World* world;
    int tag;
    const int* used;
    bool throws;
    void operator()(const kalStore::KalConfigEvent& event) const;
  };
  struct Worker {
    World* world = nullptr;
    int number = 0;
    pthread_t id{};
  };
  struct Result {
    std::int64_t code = 0;
    fuzz::Text value{};
  };

  // One after the other, in one operation.
  static std::vector<Action> partsOf(const Action& action);
  static void* runWorker(void* worker);
  void perform(int thread, const Action& action);
  Result performed(const Action& action);
  Result subscribe(const Action& action);
  Result bind(const Action& action);
  Result end(const Action& action);
  std::int32_t endSubject(Subject& subject, const Action& action);
  Result shareCall(const Action& action);
  Result shareStatistics();
  void endAll();
  void readJournal();

  ACmThread* runThread(fuzz::Way way) { return way == fuzz::Way::kDirect ? nullptr : &m_runThread; }
  Callback callbackOf(int tag, bool throws);
  void fire(int event);

  const Plan& m_plan;
  History& m_history;
  model::Checker& m_checker;
  std::vector<Subject> m_subjects;
  std::vector<int> m_doing;  // By the checker's thread, what it does.
  std::optional<kalStore::Recording> m_recording;
  std::optional<kalStore::CallStore> m_store;
  ACmThread m_runThread{"simulation"};
  std::optional<kalStore::LiveConfig<int>> m_live;
  std::unique_ptr<kalStore::KalConfigHelper> m_facade, m_lateFacade;
};

}  // namespace simulation
