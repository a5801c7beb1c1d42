// SPDX-License-Identifier: Apache-2.0
#include "simulation/World.h"

#include <pthread.h>

#include <algorithm>
#include <new>
#include <utility>

#include "checker/Explore.h"
#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/inspect.h"
#include "tessel/journal.h"
#include "tessel/post.h"

using namespace kalStore;

namespace simulation {

namespace {

using fuzz::Text;
using fuzz::Way;
using model::Aside;
using model::Check;

constexpr std::uint32_t kCall = 7, kOtherCall = 8;
constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_AUDIO;
constexpr ConfigKey<int> kFirst{kGroup, kNames[0], 0};
constexpr ConfigKey<int> kOther{kGroup, "Other", 0};
constexpr int kAlive = 1;
constexpr std::size_t kJournalCapacity = 128;

Text TextOf(const ConfigData& value) {
  return value.IsValid() ? Text(value.ToString()) : std::nullopt;
}

bool IsAsync(Way way) {
  return way == Way::kPosted;
}

// Without what JSON would write in another way.
std::string DocumentOf(const Action& import) {
  return std::string(R"({"Audio":[{"key":"First","value":")") + import.value +
         R"("},{"key":"Second","value":")" + import.second + R"("}]})";
}

// Whether a callback may run after the removal, of a copy that was posted before.
bool MayRunLate(const Action& action) {
  return action.kind != Kind::kBind && action.through == Through::kStore && action.way == Way::kPosted;
}

}  // namespace

World::World(const Plan& plan, History& history, const std::string& file)
    : m_plan(plan),
      m_history(history),
      m_checker(*model::RunningChecker()),
      m_subjects(static_cast<std::size_t>(plan.subjects)),
      m_doing(static_cast<std::size_t>(model::kMostThreads), -1) {
  if (!plan.hasRunThread) m_checker.Refuse({.allocations = {}, .threads = {0, 2}});
  if (plan.isRecorded) {
    RecordingOptions options;
    options.journalCapacity = kJournalCapacity;
    m_recording.emplace(file, options);
  } else if (plan.isJournalOn) {
    StartJournal(kJournalCapacity);
  }
  Check((m_runThread.Start() == 0) == plan.hasRunThread, "the run thread starts unless that is refused");
  m_checker.Refuse({});
  m_store.emplace(kCall, CallStore::kEndsCall);
  if (!plan.firstValue.empty()) (*m_store)->SetKalConfig(kGroup, kNames[0], plan.firstValue, false, false);
  for (std::size_t tag = 0; tag < plan.subscribers.size(); ++tag) {
    const Subscriber& subscriber = plan.subscribers[tag];
    m_subjects[tag].id = (*m_store)->SubscribeConfig(kGroup, kNames[subscriber.name],
                                                     callbackOf(static_cast<int>(tag), subscriber.throws),
                                                     runThread(subscriber.way), IsAsync(subscriber.way));
  }
  m_live.emplace(**m_store, kFirst);
  m_facade = std::make_unique<KalConfigHelper>(kCall);
  m_lateFacade = std::make_unique<KalConfigHelper>();
}

void World::Run() {
  std::vector<Worker> workers(m_plan.threads.size());
  // As many as the checker has; each is started in the end.
  for (std::size_t i = 0; i < workers.size(); ++i) {
    workers[i].world = this;
    workers[i].number = static_cast<int>(i);
    Check(pthread_create(&workers[i].id, nullptr, &runWorker, &workers[i]) == 0, "a worker starts");
  }
  m_checker.Refuse(m_plan.refusals);
  for (const Worker& worker : workers) pthread_join(worker.id, nullptr);
  m_checker.Refuse({});
  endAll();
}

void* World::runWorker(void* worker) {
  const Worker& self = *static_cast<Worker*>(worker);
  World& world = *self.world;
  for (const Action& action : world.m_plan.threads[static_cast<std::size_t>(self.number)])
    world.perform(self.number, action);
  return nullptr;
}

std::vector<Action> World::partsOf(const Action& action) {
  if (action.kind != Kind::kImport) return {action};
  Action first{.kind = Kind::kSet, .name = 0, .value = action.value, .isImported = true};
  Action second{.kind = Kind::kSet, .name = 1, .value = action.second, .isImported = true};
  return {std::move(first), std::move(second)};
}

void World::perform(int thread, const Action& action) {
  std::size_t number = 0, parts = 0;
  {
    const Aside aside;
    number = m_history.done.size();
    for (const Action& part : partsOf(action)) {
      const int after = parts++ == 0 ? -1 : static_cast<int>(m_history.done.size()) - 1;
      m_history.done.push_back({.thread = thread, .action = part, .begin = m_history.Tick(), .after = after});
    }
    m_doing[static_cast<std::size_t>(m_checker.Current())] = static_cast<int>(number);
  }
  Result result;
  Done::Outcome outcome = Done::Outcome::kReturned;
  try {
    result = performed(action);
  } catch (const std::bad_alloc&) {
    outcome = Done::Outcome::kOutOfMemory;
  } catch (const fuzz::Thrown&) {
    outcome = Done::Outcome::kCallbackThrew;
  }
  const Aside aside;
  for (std::size_t part = number; part < number + parts; ++part) {
    Done& done = m_history.done[part];
    done.end = m_history.Tick();
    done.result = result.code;
    if (result.value) done.value = std::string(*result.value);
    // What a callback threw came from the last one: those of the first name do not throw.
    const bool isLast = part + 1 == number + parts;
    if (isLast || outcome == Done::Outcome::kOutOfMemory) done.outcome = outcome;
  }
  m_doing[static_cast<std::size_t>(m_checker.Current())] = -1;
}

World::Result World::performed(const Action& action) {
  IKalConfig& store = **m_store;
  const char* const name = kNames[action.name];
  KalConfigHelper& facade = action.through == Through::kFacade ? *m_facade : *m_lateFacade;
  switch (action.kind) {
    case Kind::kSet:
      if (action.through == Through::kStore)
        return {store.SetKalConfig(kGroup, name, action.value, action.isForced, action.isTransient)};
      return {facade.SetKalConfig(name, action.value, kGroup, action.isForced, action.isTransient)};
    case Kind::kGet: {
      ConfigData value;
      const std::int32_t result = action.through == Through::kStore
                                      ? store.GetKalConfig(kGroup, name, value)
                                      : facade.GetKalConfig(name, value, kGroup);
      return {result, TextOf(value)};
    }
    case Kind::kRemove:
      return {store.RemoveKalConfig(kGroup, name)};
    case Kind::kRemoveGroup:
      return {store.RemoveKalConfigByGroup(kGroup)};
    case Kind::kAsk: {
      ConfigData value;
      const std::int32_t result = store.GetDynamicConfig(kGroup, name, value, action.value);
      return {result, TextOf(value)};
    }
    case Kind::kBind:
      return bind(action);
    case Kind::kSubscribe:
      return subscribe(action);
    case Kind::kEnd:
      return end(action);
    case Kind::kReadLive:
      return {m_live->Get()};
    case Kind::kBindFacade:
      return {m_lateFacade->SetCallId(kCall)};
    case Kind::kShareCall:
      return shareCall(action);
    case Kind::kShareStatistics:
      return shareStatistics();
    case Kind::kImport:
      return {store.ApplyKalConfigs(DocumentOf(action).c_str())};
    case Kind::kExport:
      return {kResultOk, store.DumpKalConfigs(1U << kGroup)};
    case Kind::kPost:
      return {Post(m_runThread, [this, event = action.subject] { fire(event); })};
    case Kind::kSend:
      return {Send(m_runThread, [this, event = action.subject] { fire(event); })};
    case Kind::kStop:
      return {m_runThread.Stop()};
    case Kind::kStart:
      return {m_runThread.Start()};
    case Kind::kFlush:
      return {m_recording ? m_recording->Flush() : kResultOk};
  }
  return {};
}

World::Callback World::callbackOf(int tag, bool throws) {
  std::unique_ptr<int>& used = m_subjects[static_cast<std::size_t>(tag)].used;
  used = std::make_unique<int>(kAlive);
  return {this, tag, used.get(), throws};
}

void World::Callback::operator()(const KalConfigEvent& event) const {
  Check(*used == kAlive, "what a callback uses is there");
  {
    const Aside aside;
    world->m_history.deliveries.push_back(
        {world->m_history.Tick(),
         {tag, event.m_name, TextOf(event.m_oldValue), TextOf(event.m_newValue), TextOf(event.m_defaultValue),
          static_cast<std::uint32_t>(event.m_group), event.m_sessionType}});
  }
  if (throws) throw fuzz::Thrown{tag};
}

World::Result World::subscribe(const Action& action) {
  Subject& subject = m_subjects[static_cast<std::size_t>(action.subject)];
  const Callback callback = callbackOf(action.subject, false);
  const char* const name = kNames[action.name];
  ACmThread* const thread = runThread(action.way);
  const bool isAsync = IsAsync(action.way);
  switch (action.through) {
    case Through::kStore:
      subject.id = (*m_store)->SubscribeConfig(kGroup, name, callback, thread, isAsync);
      break;
    case Through::kHandle:
      subject.handle = Subscription(**m_store, kGroup, name, callback, thread, isAsync);
      return {subject.handle ? 1 : 0};
    default:
      subject.id = m_facade->SubscribeConfig(name, callback, kGroup, thread, isAsync);
  }
  return {static_cast<std::int64_t>(subject.id)};
}

World::Result World::bind(const Action& action) {
  Subject& subject = m_subjects[static_cast<std::size_t>(action.subject)];
  subject.used = std::make_unique<int>(kAlive);
  subject.id = (*m_store)->BindConfig(
      kGroup, kNames[action.name],
      [this, tag = action.subject, used = subject.used.get()](const KalConfigEvent& event) {
        Check(*used == kAlive, "what a binding uses is there");
        {
          const Aside aside;
          const int doing = m_doing[static_cast<std::size_t>(m_checker.Current())];
          m_history.done[static_cast<std::size_t>(doing)].asked = tag;
        }
        return ConfigData(event.m_defaultValue.ToString() + "!");
      });
  return {static_cast<std::int64_t>(subject.id)};
}

World::Result World::end(const Action& action) {
  Subject& subject = m_subjects[static_cast<std::size_t>(action.subject)];
  const std::int32_t result = endSubject(subject, action);
  if (!MayRunLate(action)) subject.used.reset();
  return {result};
}

std::int32_t World::endSubject(Subject& subject, const Action& action) {
  if (action.through == Through::kHandle) {
    subject.handle.Remove();
    return kResultOk;
  }
  if (action.through == Through::kFacade) return m_facade->UnsubscribeConfig(subject.id);
  return (*m_store)->UnsubscribeConfig(subject.id);
}

World::Result World::shareCall(const Action&) {
  const CallStore call(kOtherCall, CallStore::kEndsCall);
  kOther.Set(*call, kAlive);
  return {kOther.Get(*call)};
}

// The objects of all threads are one while they are held at once, and count from 0 otherwise.
World::Result World::shareStatistics() {
  const StatsRef<VideoStats> shared(kOtherCall);
  shared->UpdateVideoCapturedFrameCnt(kAlive);
  st_KalVideoTxBlock block;
  shared->GetTxMediaInfo(&block, false);
  return {static_cast<std::int64_t>(block.capturedFrames)};
}

void World::fire(int event) {
  const Aside aside;
  m_history.fired.push_back({m_history.Tick(), event});
}

void World::endAll() {
  // First what is posted, which would be dropped otherwise.
  Check(m_runThread.Stop() == 0, "the run thread stops");
  for (Subject& subject : m_subjects) subject.handle.Remove();
  m_facade.reset();
  m_lateFacade.reset();
  for (int name = 0; name < kNameCount; ++name) {
    ConfigData value;
    (*m_store)->GetKalConfig(kGroup, kNames[name], value);
    const Aside aside;
    m_history.last[name] = TextOf(value);
  }
  m_history.live = m_live->Get();
  m_live.reset();
  const bool wasOn = IsJournalOn();  // A recording that has ended turns it off.
  m_recording.reset();
  if (wasOn) readJournal();
  m_store.reset();
  m_history.callsLeft = GetKalConfigSizeForUT();
  m_history.statisticsLeft = InspectStatistics().size();
}

void World::readJournal() {
  JournalReader reader;
  JournalEvent event;
  bool isWhole = true;
  while (reader.Next(event)) {
    isWhole = isWhole && event.missed == 0;
    const bool isChange = event.kind <= JournalKind::kGroupRemoved && event.callId == kCall;
    if (!isChange || event.result == kResultBadArgument) continue;
    const Aside aside;
    const auto textOf = [](const std::optional<JournalString>& text) {
      return text ? Text(text->text) : std::nullopt;
    };
    m_history.journal.push_back({static_cast<Journalled::Kind>(event.kind), event.name.text,
                                 textOf(event.oldValue), textOf(event.newValue)});
  }
  m_history.isJournalWhole = isWhole && reader.Missed() == 0;
}

}  // namespace simulation
