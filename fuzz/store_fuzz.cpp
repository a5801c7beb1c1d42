// SPDX-License-Identifier: Apache-2.0
// Stores, facades and the registry under any sequence of operations, with callbacks that set other values or
// throw, and deliveries of every way: direct, handed over, posted, dropped. Each result, each event and the
// registry's size must be those of a model; posted events are compared whenever their thread has been waited
// for.

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <semaphore>
#include <string>
#include <utility>
#include <vector>

#include "Check.h"
#include "FacadeModel.h"
#include "Input.h"
#include "StoreModel.h"
#include "TraceCheck.h"
#include "tessel/KalConfig.h"
#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/post.h"
#include "util/ACmThread.h"

namespace {

using fuzz::Act;
using fuzz::Callback;
using fuzz::Notification;
using fuzz::Text;
using fuzz::Way;
using kalStore::ConfigValue;
using kalStore::IKalConfig;
using kalStore::KalConfigEvent;
using kalStore::KalConfigGroup;
using kalStore::KalConfigHelper;

constexpr int kMostOperations = 80;
constexpr std::uint32_t kCallIds[] = {1, 2, 7, kalStore::kNoCallId};

/// The threads of subscribers: one that runs, one that was never started and so has no queue.
struct Threads {
  Threads() { FUZZ_EQUAL(running.Start(), 0); }
  ACmThread running{"fuzz"};
  ACmThread stopped{"fuzz_stopped"};
};
Threads& SharedThreads() {
  static Threads threads;
  return threads;
}

const char* NameOf(const Text& name) {
  return name ? name->c_str() : nullptr;
}
ConfigData ValueOf(const Text& text) {
  return text ? ConfigData(*text) : ConfigData();
}
Text TextOf(const ConfigData& value) {
  return value.IsValid() ? Text(value.ToString()) : std::nullopt;
}
KalConfigGroup GroupFrom(std::uint32_t group) {
  return static_cast<KalConfigGroup>(group);
}

bool IsOnRunThread() {
  return GetThreadSelfId() == SharedThreads().running.GetThreadId();
}

/// How many callbacks that are waited for run on this thread.
thread_local int t_running = 0;

class Deeper {
 public:
  explicit Deeper(int& depth) : m_depth(++depth) {}
  ~Deeper() { --m_depth; }
  Deeper(const Deeper&) = delete;
  Deeper& operator=(const Deeper&) = delete;

 private:
  int& m_depth;
};

/// The result of a call, or the callback whose exception left it.
template <class Operation>
auto OutcomeOf(Operation operation) {
  using Result = decltype(operation());
  std::pair<std::optional<Result>, int> outcome;
  try {
    outcome.first = operation();
  } catch (const fuzz::Thrown& thrown) {
    outcome.second = thrown.tag;
  }
  return outcome;
}

bool IsZero(std::string text) {
  if (!text.empty() && text.front() == '-') text.erase(0, 1);
  const std::size_t exponentAt = text.find_first_of("eE");
  if (exponentAt != std::string::npos) {
    std::string exponent = text.substr(exponentAt + 1);
    if (!exponent.empty() && (exponent.front() == '-' || exponent.front() == '+')) exponent.erase(0, 1);
    if (exponent.empty() || exponent.find_first_not_of("0123456789") != std::string::npos) return false;
    text.erase(exponentAt);
  }
  if (const std::size_t point = text.find('.'); point != std::string::npos && text.size() > 1)
    text.erase(point, 1);
  return !text.empty() && text.find_first_not_of('0') == std::string::npos;
}

bool IsOn(const std::string& text) {
  std::string lower = text;
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return !text.empty() && lower != "false" && !IsZero(text);
}

class World {
 public:
  explicit World(fuzz::Input& input) : m_input(input) {}

  void Run() {
    for (int i = 0; i < kMostOperations && !m_input.IsEmpty(); ++i) {
      Operate();
      FUZZ_CHECK(m_received.waitedFor == m_expected.waitedFor);
      m_received.waitedFor.clear();
      m_expected.waitedFor.clear();
      FUZZ_EQUAL(kalStore::GetKalConfigSizeForUT(), m_stores.size());
    }
    for (const auto& [callId, store] : m_stores) CompareWhole(callId);
    Shutdown();
  }

 private:
  struct Store {
    explicit Store(fuzz::Log& log) : model(std::make_unique<fuzz::StoreModel>(log)) {}
    IKalConfig* pointer = nullptr;  // Null until it was handed out here.
    std::unique_ptr<fuzz::StoreModel> model;
    int counts = 1;
    int held = 0;  // References that are released here.
    bool isCleanedUp = false;
  };
  struct Facade {
    std::unique_ptr<KalConfigHelper> real;
    fuzz::FacadeModel model;
  };
  /// How a callback sets a value.
  using Setter = std::function<void(KalConfigGroup, const char*, ConfigData)>;

  // Decisions.

  Text Name() {
    constexpr const char* kNames[] = {"A", "B", "EnableMusicDetection", "KAL_FT_Unknow"};
    const std::size_t choice = m_input.Below(16);
    if (choice == 15) return std::nullopt;
    if (choice == 14) return "";
    if (choice < 12) return kNames[choice % 4];
    const std::string text = m_input.Text(3);
    return text.substr(0, text.find('\0'));
  }
  Text Value() {
    constexpr const char* kValues[] = {"", "0", "1", "False", "-0.0e5", "text"};
    const std::size_t choice = m_input.Below(16);
    if (choice == 15) return std::nullopt;
    return choice < 12 ? std::string(kValues[choice % 6]) : m_input.Text(20);
  }
  std::uint32_t Group() {
    constexpr std::uint32_t kUsual[] = {0, 1, 1, 3, 5, 12, 13, fuzz::kDefaultGroup};
    return m_input.Flag() ? m_input.Pick(kUsual) : static_cast<std::uint32_t>(m_input.Wild());
  }
  Text Document() {
    if (m_input.Below(8) == 7) return std::nullopt;
    fuzz::SettingsValues values;
    for (std::size_t left = m_input.Below(4); left > 0; --left) {
      values[m_input.Below(fuzz::kGroups)][Name().value_or("")] = Value().value_or("none");
    }
    std::string text = fuzz::DocumentOf(values, 0xFFFFFFFF);
    if (m_input.Below(8) == 7) text.pop_back();
    return text;
  }
  std::optional<Callback> NewCallback(bool isBinding) {
    constexpr Way kWays[] = {Way::kDirect, Way::kDirect, Way::kHandedOver,
                             Way::kPosted, Way::kPosted, Way::kDropped};
    constexpr Act kActs[] = {Act::kLog, Act::kLog, Act::kLog, Act::kSet, Act::kThrow};
    if (m_input.Below(16) == 15) return std::nullopt;
    Callback callback;
    callback.tag = ++m_lastTag;
    callback.way = isBinding ? Way::kDirect : m_input.Pick(kWays);
    callback.act = m_input.Pick(kActs);
    callback.target = m_input.Flag() ? "A" : "B";
    if (callback.way == Way::kPosted) callback.act = Act::kLog;
    return callback;
  }

  // Callbacks that the library calls.

  static ACmThread* ThreadOf(const std::optional<Callback>& callback) {
    if (!callback || callback->way == Way::kDirect) return nullptr;
    return callback->way == Way::kDropped ? &SharedThreads().stopped : &SharedThreads().running;
  }
  static bool IsAsync(const std::optional<Callback>& callback) {
    return callback && (callback->way == Way::kPosted || callback->tag % 2 != 0) &&
           callback->way != Way::kHandedOver;
  }
  static Notification NotificationOf(int tag, const KalConfigEvent& event) {
    return {tag,
            event.m_name,
            TextOf(event.m_oldValue),
            TextOf(event.m_newValue),
            TextOf(event.m_defaultValue),
            static_cast<std::uint32_t>(event.m_group),
            event.m_sessionType};
  }
  void RunCallback(const Callback& callback, const KalConfigEvent& event, const Setter& set) {
    if (callback.way == Way::kHandedOver) FUZZ_CHECK(IsOnRunThread());
    m_received.waitedFor.push_back(NotificationOf(callback.tag, event));
    const Deeper running(t_running);
    if (callback.act == Act::kThrow) throw fuzz::Thrown{callback.tag};
    if (callback.act != Act::kSet || m_setDepth == fuzz::kDeepestSet) return;
    const Deeper deeper(m_setDepth);
    set(event.m_group, callback.target.c_str(), event.m_newValue.ToString() + "+");
  }
  kalStore::fnConfigChangedCallBack Changed(const std::optional<Callback>& callback, Setter set) {
    if (!callback) return nullptr;
    return [this, callback = *callback, set = std::move(set)](const KalConfigEvent& event) {
      if (callback.way != Way::kPosted) return RunCallback(callback, event, set);
      // Later, and on its thread, even when that thread is the setter's.
      FUZZ_CHECK(IsOnRunThread());
      FUZZ_EQUAL(t_running, 0);
      m_received.posted.push_back(NotificationOf(callback.tag, event));
    };
  }
  kalStore::fnConfigInvokeCallBack Invoked(const std::optional<Callback>& callback, Setter set) {
    if (!callback) return nullptr;
    return [this, callback = *callback, set = std::move(set)](const KalConfigEvent& event) -> ConfigValue {
      RunCallback(callback, event, set);
      if (!event.m_defaultValue.IsValid()) return {};
      return event.m_defaultValue.ToString() + "!";
    };
  }

  // Comparison.

  template <class Real, class Model>
  void Compare(Real real, Model model) {
    const auto result = OutcomeOf(real);
    const auto expected = OutcomeOf(model);
    FUZZ_EQUAL(result.second, expected.second);
    FUZZ_CHECK(result.first.has_value() == expected.first.has_value());
    if (expected.first) FUZZ_EQUAL(*result.first, *expected.first);
  }
  /// The same for calls with an output value.
  template <class Real, class Model>
  void CompareRead(Real real, Model model) {
    const Text before = Value();
    ConfigData value = ValueOf(before);
    Text expected = before;
    Compare([&] { return real(value); }, [&] { return model(expected); });
    FUZZ_CHECK(TextOf(value) == expected);
  }
  /// Waits for what was posted; then the log of posted events is complete.
  void Drain() {
    FUZZ_EQUAL(kalStore::Send(SharedThreads().running, [] {}), 0);
    FUZZ_CHECK(m_received.posted == m_expected.posted);
    m_received.posted.clear();
    m_expected.posted.clear();
  }
  void CompareWhole(std::uint32_t callId) {
    IKalConfig* pointer = nullptr;
    FUZZ_EQUAL(kalStore::CreateKalConfig(callId, &pointer), kalStore::kResultOk);
    FUZZ_EQUAL(std::string(pointer->DumpKalConfigs(kalStore::kAllConfigGroups)),
               m_stores.at(callId).model->Dump(kalStore::kAllConfigGroups));
    FUZZ_EQUAL(kalStore::ReleaseKalConfig(pointer), kalStore::kResultOk);
  }

  // References.

  Store& AddReference(std::uint32_t callId) {
    Store& store = m_stores.try_emplace(callId, m_expected).first->second;
    ++store.counts;
    return store;
  }
  void DropReference(std::uint32_t callId) {
    if (--m_stores.at(callId).counts < 1) m_stores.erase(callId);
  }
  void DestroyFacade(std::unique_ptr<Facade>& facade) {
    Drain();
    EndFacade(facade);
  }
  void EndFacade(std::unique_ptr<Facade>& facade) {
    facade->real.reset();
    facade->model.Clean();
    if (facade->model.Store() != nullptr) DropReference(facade->model.CallId());
    facade.reset();
  }
  void Shutdown() {
    Drain();
    for (auto& facade : m_facades) {
      if (facade) EndFacade(facade);
    }
    kalStore::DestroyKalConfig();
    m_stores.clear();
    FUZZ_EQUAL(kalStore::GetKalConfigSizeForUT(), 0U);
  }

  // Operations.

  void Operate() {
    const std::size_t choice = m_input.Below(16);
    if (choice < 3) return OperateRegistry();
    if (choice < 9) return OperateStore();
    OperateFacade();
  }

  void OperateRegistry() {
    const std::uint32_t callId = m_input.Pick(kCallIds);
    const auto found = m_stores.find(callId);
    switch (m_input.Below(10)) {
      case 0:
      case 1:
      case 2:
        return Create(callId);
      case 3:
        return Release(callId);
      case 4:
        Compare([&] { return kalStore::CleanUpKalConfig(callId); },
                [&] {
                  if (found == m_stores.end() || found->second.isCleanedUp)
                    return kalStore::kResultNoSuchOrExists;
                  found->second.isCleanedUp = true;
                  DropReference(callId);
                  return kalStore::kResultOk;
                });
        return;
      case 5:
        return ReadValue(callId);
      case 6: {
        kalStore::KalConfig other(callId);
        IKalConfig* slot = &other;
        FUZZ_EQUAL(kalStore::CreateKalConfig(callId, &slot), kalStore::kResultBadArgument);
        FUZZ_CHECK(slot == &other);
        FUZZ_EQUAL(kalStore::CreateKalConfig(callId, nullptr), kalStore::kResultBadArgument);
        FUZZ_EQUAL(kalStore::ReleaseKalConfig(&other), kalStore::kResultNoSuchOrExists);
        FUZZ_EQUAL(kalStore::ReleaseKalConfig(nullptr), kalStore::kResultBadArgument);
        return;
      }
      case 7:
        if (found != m_stores.end()) CompareWhole(callId);
        return Drain();
      case 8:
        return TearDownWithEventsPosted();
      default:
        if (m_input.Below(8) == 0) Shutdown();
    }
  }

  void Create(std::uint32_t callId) {
    IKalConfig* pointer = nullptr;
    FUZZ_EQUAL(kalStore::CreateKalConfig(callId, &pointer), kalStore::kResultOk);
    FUZZ_CHECK(pointer != nullptr);
    Store& store = AddReference(callId);
    FUZZ_CHECK(store.pointer == nullptr || store.pointer == pointer);
    store.pointer = pointer;
    ++store.held;
  }

  // A reference held here, or the registry's own when it is the last.
  void Release(std::uint32_t callId) {
    const auto found = m_stores.find(callId);
    if (found == m_stores.end() || found->second.pointer == nullptr) return;
    Store& store = found->second;
    if (store.held == 0 && (store.isCleanedUp || store.counts != 1)) return;
    if (store.held != 0) --store.held;
    FUZZ_EQUAL(kalStore::ReleaseKalConfig(store.pointer), kalStore::kResultOk);
    DropReference(callId);
  }

  void ReadValue(std::uint32_t callId) {
    const Text name = Name();
    const bool bySession = m_input.Flag();
    const std::int32_t session = m_input.Wild();
    std::uint32_t group = bySession ? fuzz::GroupOf(session) : Group();
    CompareRead(
        [&](ConfigData& value) {
          if (bySession) {
            return kalStore::GetKalConfigValue(static_cast<kal::KalSessionType>(session), NameOf(name), value,
                                               callId);
          }
          return kalStore::GetKalConfigValueEx(GroupFrom(group), NameOf(name), value, callId);
        },
        [&](Text& value) {
          if (callId == kalStore::kNoCallId) return kalStore::kResultBadArgument;
          const Store& store = AddReference(callId);
          std::int32_t result = kalStore::kResultBadArgument;
          if (name)
            result = group == fuzz::kDefaultGroup ? kalStore::kResultNotFound
                                                  : store.model->Get(group, name, value);
          DropReference(callId);
          return result;
        });
  }

  // A facade ends before its thread has run what was posted to it: none of that reaches its callbacks.
  void TearDownWithEventsPosted() {
    const Text name = Name();
    const std::uint32_t group = Group();
    const Text value = Value();
    auto& facade = m_facades[m_input.Below(m_facades.size())];
    if (!facade || facade->model.Store() == nullptr || facade->model.Store()->HasHandedOver()) return;
    Drain();
    std::binary_semaphore gate(0);
    kalStore::Post(SharedThreads().running, [&gate] { gate.acquire(); });
    SetThroughFacade(*facade, group, name, value, true, false);
    std::erase_if(m_expected.posted,
                  [&](const Notification& notification) { return facade->model.Owns(notification.tag); });
    EndFacade(facade);
    gate.release();
    Drain();
  }

  void OperateStore() {
    auto found = m_stores.find(m_input.Pick(kCallIds));
    if (found == m_stores.end() || found->second.held == 0) return;
    IKalConfig& real = *found->second.pointer;
    fuzz::StoreModel& model = *found->second.model;
    const std::uint32_t group = Group();
    const Text name = Name();
    const Setter set = [&real](KalConfigGroup in, const char* target, ConfigData value) {
      real.SetKalConfig(in, target, std::move(value), false, false);
    };
    switch (m_input.Below(14)) {
      case 0: {
        const std::optional<Callback> callback = NewCallback(false);
        return Compare(
            [&] {
              return real.SubscribeConfig(GroupFrom(group), NameOf(name), Changed(callback, set),
                                          ThreadOf(callback), IsAsync(callback));
            },
            [&] { return model.Subscribe(group, name, callback); });
      }
      case 1: {
        const std::optional<Callback> callback = NewCallback(true);
        return Compare(
            [&] { return real.BindConfig(GroupFrom(group), NameOf(name), Invoked(callback, set)); },
            [&] { return model.Bind(group, name, callback); });
      }
      case 2: {
        // Not one of a facade, which would then use an id that is no longer its own.
        const std::uint64_t id = m_input.Byte();
        if (IsFacadeBound(found->first)) return;
        return Compare([&] { return real.UnsubscribeConfig(id); }, [&] { return model.Unsubscribe(id); });
      }
      case 3:
        return CompareRead(
            [&](ConfigData& value) { return real.GetKalConfig(GroupFrom(group), NameOf(name), value); },
            [&](Text& value) { return model.Get(group, name, value); });
      case 4: {
        const Text other = Value();
        return CompareRead(
            [&](ConfigData& value) {
              return real.GetDynamicConfig(GroupFrom(group), NameOf(name), value, ValueOf(other));
            },
            [&](Text& value) { return model.GetDynamic(group, name, value, other); });
      }
      case 5:
        return Compare([&] { return real.RemoveKalConfig(GroupFrom(group), NameOf(name)); },
                       [&] { return model.Remove(group, name); });
      case 6:
        return Compare([&] { return real.RemoveKalConfigByGroup(GroupFrom(group)); },
                       [&] { return model.RemoveGroup(group); });
      case 7: {
        const auto mask = m_input.As<std::uint32_t>();
        FUZZ_EQUAL(std::string(real.DumpKalConfigs(mask)), model.Dump(mask));
        return;
      }
      case 8: {
        const Text document = Document();
        return Compare([&] { return real.ApplyKalConfigs(NameOf(document)); },
                       [&] { return model.Apply(document); });
      }
      default: {
        const Text value = Value();
        const bool force = m_input.Flag(), transient = m_input.Below(4) == 3;
        return Compare(
            [&] {
              return real.SetKalConfig(GroupFrom(group), NameOf(name), ValueOf(value), force, transient);
            },
            [&] { return model.Set(group, name, value, force, transient); });
      }
    }
  }

  bool IsFacadeBound(std::uint32_t callId) const {
    for (const auto& facade : m_facades) {
      if (facade && facade->model.Store() != nullptr && facade->model.CallId() == callId) return true;
    }
    return false;
  }

  void SetThroughFacade(Facade& facade, std::uint32_t group, const Text& name, const Text& value, bool force,
                        bool transient) {
    Compare(
        [&] {
          return facade.real->SetKalConfig(NameOf(name), ValueOf(value), GroupFrom(group), force, transient);
        },
        [&] {
          std::uint32_t resolved = group;
          if (const std::int32_t refusal = facade.model.Refusal(name, resolved)) return refusal;
          return facade.model.Store()->Set(resolved, name, value, force, transient);
        });
  }

  void BindFacade(Facade& facade, std::uint32_t callId) {
    Compare([&] { return facade.real->SetCallId(callId); },
            [&] {
              if (facade.model.CanBind(callId)) {
                facade.model.BindTo(callId, *AddReference(callId).model);
                return 0;
              }
              return facade.model.CallId() == callId && callId != kalStore::kNoCallId
                         ? kalStore::kResultOk
                         : kalStore::kResultNotFound;
            });
    FUZZ_EQUAL(facade.real->GetCallId(), facade.model.CallId());
  }

  void OperateFacade() {
    auto& slot = m_facades[m_input.Below(m_facades.size())];
    if (!slot) {
      const std::uint32_t callId = m_input.Pick(kCallIds);
      slot = std::make_unique<Facade>();
      slot->real = std::make_unique<KalConfigHelper>(callId);
      if (callId != kalStore::kNoCallId) slot->model.BindTo(callId, *AddReference(callId).model);
      return;
    }
    Facade& facade = *slot;
    KalConfigHelper& real = *facade.real;
    fuzz::FacadeModel& model = facade.model;
    std::uint32_t group = Group();
    const KalConfigGroup given = GroupFrom(group);
    const Text name = Name();
    const Setter set = [&real](KalConfigGroup in, const char* target, ConfigData value) {
      real.SetKalConfig(target, std::move(value), in);
    };
    switch (m_input.Below(20)) {
      case 0:
        return DestroyFacade(slot);
      case 1:
        return BindFacade(facade, m_input.Pick(kCallIds));
      case 2: {
        const std::int32_t session = m_input.Wild();
        Compare([&] { return real.SetKalSessionType(static_cast<kal::KalSessionType>(session)); },
                [&] { return model.SetSessionType(session); });
        return FUZZ_EQUAL(real.GetKalSessionType(), model.SessionType());
      }
      case 3:
        return Compare([&] { return real.SetDefaultGroup(given); },
                       [&] { return model.SetDefaultGroup(group); });
      case 4:
      case 5:
      case 6: {
        const std::optional<Callback> callback = NewCallback(false);
        return Compare(
            [&] {
              return real.SubscribeConfig(NameOf(name), Changed(callback, set), given, ThreadOf(callback),
                                          IsAsync(callback));
            },
            [&] { return model.Subscribe(group, name, callback, false); });
      }
      case 7: {
        const std::optional<Callback> callback = NewCallback(true);
        return Compare([&] { return real.BindConfig(NameOf(name), Invoked(callback, set), given); },
                       [&] { return model.Subscribe(group, name, callback, true); });
      }
      case 8: {
        const std::uint64_t id = m_input.Byte();
        Drain();  // What was posted and has not run is dropped with the subscription.
        return Compare([&] { return real.UnsubscribeConfig(id); }, [&] { return model.Unsubscribe(id); });
      }
      case 9:
        Drain();
        return Compare([&] { return real.UnsubscribeConfig(NameOf(name), given); },
                       [&] { return model.Unsubscribe(name, group); });
      case 10:
        CompareRead([&](ConfigData& value) { return real.GetKalConfig(NameOf(name), value, given); },
                    [&](Text& value) {
                      const std::int32_t refusal = model.Refusal(name, group);
                      return refusal != 0 ? refusal : model.Store()->Get(group, name, value);
                    });
        return CheckShortReads(facade, name, given);
      case 11: {
        const Text other = Value();
        return CompareRead(
            [&](ConfigData& value) {
              return real.GetDynamicConfig(NameOf(name), value, given, ValueOf(other));
            },
            [&](Text& value) {
              const std::int32_t refusal = model.Refusal(name, group);
              return refusal != 0 ? refusal : model.Store()->GetDynamic(group, name, value, other);
            });
      }
      case 12:
        return Compare([&] { return real.RemoveKalConfig(NameOf(name), given); },
                       [&] {
                         const std::int32_t refusal = model.Refusal(name, group);
                         return refusal != 0 ? refusal : model.Store()->Remove(group, name);
                       });
      case 13:
        return Compare([&] { return real.RemoveKalConfigByGroup(given); },
                       [&] {
                         const std::int32_t refusal = model.Refusal("", group);
                         return refusal != 0 ? refusal : model.Store()->RemoveGroup(group);
                       });
      case 14: {
        const auto mask = m_input.As<std::uint32_t>();
        const char* text = real.DumpKalConfigs(mask);
        FUZZ_EQUAL(text != nullptr, model.Store() != nullptr);
        if (text != nullptr) FUZZ_EQUAL(std::string(text), model.Store()->Dump(mask));
        return;
      }
      case 15: {
        const Text document = Document();
        return Compare([&] { return real.ApplyKalConfigs(NameOf(document)); },
                       [&] {
                         if (!document || model.Store() == nullptr) return kalStore::kResultBadArgument;
                         return model.Store()->Apply(document);
                       });
      }
      case 16:
        return Toggle(facade);
      default: {
        const Text value = Value();
        const bool force = m_input.Flag();
        return SetThroughFacade(facade, group, name, value, force, m_input.Below(4) == 3);
      }
    }
  }

  void CheckShortReads(Facade& facade, const Text& name, KalConfigGroup given) {
    auto group = static_cast<std::uint32_t>(given);
    Text expected;
    const bool isThere =
        facade.model.Refusal(name, group) == 0 && facade.model.Store()->Get(group, name, expected) == 0;
    FUZZ_EQUAL(facade.real->HaveKalConfig(NameOf(name), given), isThere);
    FUZZ_CHECK(TextOf(facade.real->GetKalConfig(NameOf(name), given)) == expected);
    FUZZ_EQUAL(facade.real->GetKalSessionType(), facade.model.SessionType());
  }

  void Toggle(Facade& facade) {
    struct Row {
      std::int32_t id;
      const char* key;
    };
    constexpr Row kRows[] = {
        {5, "EnableMusicDetection"}, {351, "KAL_FT_Unknow"}, {352, nullptr}, {-1, nullptr}};
    const Row& row = m_input.Pick(kRows);
    const auto id = static_cast<kalStore::KalFeatureToggleID>(row.id);
    const Text key = row.key == nullptr ? std::nullopt : Text(row.key);
    const std::uint32_t group = 1;
    const bool isUsable = key && facade.model.Store() != nullptr;

    switch (m_input.Below(5)) {
      case 0: {
        const Text value = Value();
        Compare([&] { return facade.real->SetFeatureToggle(id, ValueOf(value)); },
                [&] {
                  return isUsable ? facade.model.Store()->Set(group, key, value, false, false)
                                  : kalStore::kResultBadArgument;
                });
        break;
      }
      case 1:
        Compare([&] { return facade.real->RemoveFeatureToggle(id); },
                [&] {
                  return isUsable ? facade.model.Store()->Remove(group, key) : kalStore::kResultBadArgument;
                });
        break;
      case 2: {
        const std::optional<Callback> callback = NewCallback(false);
        KalConfigHelper& real = *facade.real;
        const Setter set = [&real](KalConfigGroup in, const char* target, ConfigData value) {
          real.SetKalConfig(target, std::move(value), in);
        };
        Compare(
            [&] {
              return real.SubscribeFeatureToggle(id, Changed(callback, set), ThreadOf(callback),
                                                 IsAsync(callback));
            },
            [&] { return facade.model.Subscribe(group, key, callback, false); });
        break;
      }
      case 3:
        Drain();  // As for a name.
        Compare([&] { return facade.real->UnsubscribeFeatureToggle(id); },
                [&] { return facade.model.Unsubscribe(key, group); });
        break;
      default:
        break;
    }
    Text value;
    const bool isThere = isUsable && facade.model.Store()->Get(group, key, value) == 0;
    FUZZ_EQUAL(facade.real->HaveFeatureToggle(id), isThere);
    FUZZ_CHECK(TextOf(facade.real->GetFeatureToggle(id)) == value);
    FUZZ_EQUAL(facade.real->IsFeatureToggleDefaultOn(id), !isThere || IsOn(*value));
  }

  fuzz::Input& m_input;
  // What callbacks received, and must receive. Posted callbacks run beside the operations, and write to
  // m_received.posted alone; all others are waited for.
  fuzz::Log m_received;
  fuzz::Log m_expected;
  int m_setDepth = 0;
  int m_lastTag = 0;
  std::map<std::uint32_t, Store> m_stores;
  std::array<std::unique_ptr<Facade>, 3> m_facades;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::CheckTraceLines();
  SharedThreads();
  fuzz::Input input(data, size);
  World(input).Run();
  return 0;
}
