// SPDX-License-Identifier: Apache-2.0
#include "SoakComponent.h"

#include <string>
#include <utility>

#include "tessel/CKalTessel.h"
#include "tessel/IKalAudioInfo.h"
#include "tessel/IKalVideoInfo.h"
#include "tessel/StatisticsBlocks.h"

using namespace kalStore;

namespace {

// Callbacks write here, where nobody is handed a delivery: two delivery threads never wait for each other.
constexpr KalConfigGroup kLeafGroup = KAL_CONFIG_GROUP_METRICS;
constexpr KalConfigGroup kBoundGroup = KAL_CONFIG_GROUP_TRANSMISSION;
constexpr KalConfigGroup kGroupOf[] = {KAL_CONFIG_GROUP_AUDIO, KAL_CONFIG_GROUP_VIDEO};

// Counts the callbacks that hold it, wherever they are copied to.
class Token {
 public:
  explicit Token(SoakShared& shared) : m_shared(&shared) { m_shared->callbacks.fetch_add(1); }
  Token(const Token& other) : Token(*other.m_shared) {}
  Token& operator=(const Token&) = delete;
  ~Token() { m_shared->callbacks.fetch_sub(1); }

  SoakShared& Shared() const { return *m_shared; }

 private:
  SoakShared* m_shared;
};

std::string NameOf(unsigned int number) {
  return "setting " + std::to_string(number);
}

bool IsResultOfSet(std::int32_t result) {
  return result == kResultOk || result == kResultUnchanged || result == kResultNobody;
}

}  // namespace

void SoakComponent::Run() {
  while (!m_shared.isOver) {
    const SoakCalls::Visit visit(m_shared.calls, pick(static_cast<unsigned int>(m_shared.calls.Slots())));
    stay(visit.Id());
  }
}

void SoakComponent::stay(std::uint32_t callId) {
  {
    KalConfigHelper facade;
    stayIn(facade, callId);
  }
  for (auto& group : m_subscribed) {
    for (Subscribed& subscribed : group) {
      if (subscribed.endsWithFacade) *subscribed.isRemoved = true;
      subscribed = {};
    }
  }
}

void SoakComponent::stayIn(KalConfigHelper& facade, std::uint32_t callId) {
  const bool isBoundFirst = pick(2) == 0;
  if (isBoundFirst) expect(facade.InitKalConfig(callId, kal::KAL_SESSION_AUDIO) == kResultOk);
  subscribe(facade, isBoundFirst);
  if (!isBoundFirst) expect(facade.InitKalConfig(callId, kal::KAL_SESSION_VIDEO) == kResultOk);
  const unsigned int operations = 20 + pick(60);
  for (unsigned int i = 0; i < operations; ++i) use(facade, callId);
  m_shared.operations += operations + 2;
}

void SoakComponent::subscribe(KalConfigHelper& facade, bool isBound) {
  for (unsigned int i = pick(6); i > 0; --i) {
    ACmThread* thread = m_shared.threads[pick(static_cast<unsigned int>(m_shared.threads.size()))].get();
    const unsigned int way = pick(3);  // Directly, posted, handed over.
    const unsigned int name = pick(kNames);
    const unsigned int group = pick(kGroups);
    auto isRemoved = std::make_shared<std::atomic<bool>>(false);
    const SubscribeId_t id = facade.SubscribeConfig(
        NameOf(name).c_str(), makeCallback(way == 1 ? *m_shared.lasting : facade, isRemoved), kGroupOf[group],
        way == 0 ? nullptr : thread, way == 1);
    // Before the facade is bound, the last one of a name waits for the store.
    if (id != 0 || !isBound) m_subscribed[group][name] = {std::move(isRemoved), way != 1};
  }
  const Token token(m_shared);
  facade.BindConfig(
      NameOf(pick(kNames)).c_str(),
      [token](const KalConfigEvent& event) {
        token.Shared().deliveries.fetch_add(1, std::memory_order_relaxed);
        return event.m_defaultValue;
      },
      kBoundGroup);
}

fnConfigChangedCallBack SoakComponent::makeCallback(KalConfigHelper& used,
                                                    std::shared_ptr<const std::atomic<bool>> isRemoved) {
  return [token = Token(m_shared), &used, isRemoved = std::move(isRemoved)](const KalConfigEvent& event) {
    if (*isRemoved) {
      ++token.Shared().late;
      return;  // What it uses may be gone.
    }
    const std::uint64_t count = token.Shared().deliveries.fetch_add(1, std::memory_order_relaxed);
    if (!event.m_newValue.IsValid()) ++token.Shared().faults;
    switch (count % 8) {
      case 0:
        used.SetKalConfig(event.m_name.c_str(), event.m_newValue, kLeafGroup);
        break;
      case 1:
        used.GetKalConfig(event.m_name.c_str(), event.m_group);
        break;
      case 2:
        used.GetDynamicConfig(event.m_name.c_str(), kBoundGroup);
        break;
      case 3:
        used.UnsubscribeConfig(
            used.SubscribeConfig("from a callback", [](const KalConfigEvent&) {}, kLeafGroup));
        break;
      default:
        break;
    }
  };
}

void SoakComponent::use(KalConfigHelper& facade, std::uint32_t callId) {
  const unsigned int number = pick(kNames);
  const std::string name = NameOf(number);
  const unsigned int groupNumber = pick(kGroups);
  const KalConfigGroup group = kGroupOf[groupNumber];
  const unsigned int kind = pick(100);
  if (kind < 40) {
    expect(IsResultOfSet(facade.SetKalConfig(name.c_str(), pick(8), group, pick(4) == 0, pick(16) == 0)));
  } else if (kind < 60) {
    ConfigData value;
    const std::int32_t result = facade.GetKalConfig(name.c_str(), value, group);
    expect(result == kResultOk ? value.ToInt(-1) >= 0 : result == kResultNotFound && !value.IsValid());
  } else if (kind < 68) {
    ConfigData value;
    const std::int32_t result = facade.GetDynamicConfig(name.c_str(), value, kBoundGroup, 7);
    expect(result == kResultOk ? value.ToInt() == 7 : result == kResultNobody);
  } else if (kind < 72) {
    const ConfigMultGroup_t groups = 1U << group | 1U << kLeafGroup;
    expect(facade.DumpKalConfigs(groups) != nullptr);
  } else if (kind < 76) {
    const std::string text = R"({"Audio":[{"key":")" + name + R"(","value":"3"}],"Video":[{"key":")" + name +
                             R"(","value":"4"}]})";
    expect(facade.ApplyKalConfigs(text.c_str()) == kResultOk);
  } else if (kind < 80) {
    subscribe(facade, true);
  } else if (kind < 86) {
    Subscribed& subscribed = m_subscribed[groupNumber][number];
    const bool isSubscribed = subscribed.isRemoved != nullptr;
    expect(facade.UnsubscribeConfig(name.c_str(), group) == (isSubscribed ? kResultOk : kResultNotFound));
    if (isSubscribed) *subscribed.isRemoved = true;
    subscribed = {};
  } else if (kind < 90) {
    expect(facade.RemoveKalConfig(name.c_str(), group) == kResultOk);
  } else if (kind < 91) {
    expect(facade.RemoveKalConfigByGroup(group) == kResultOk);
  } else if (kind < 93) {
    const auto toggle = static_cast<KalFeatureToggleID>(pick(352));
    expect(IsResultOfSet(facade.SetFeatureToggle(toggle, pick(2) == 0)));
    facade.IsFeatureToggleDefaultOn(toggle);
  } else if (kind < 94) {
    ConfigData value;
    expect(GetKalConfigValueEx(group, name.c_str(), value, kSoakReadOnlyCall) == kResultNotFound);
  } else {
    record(callId);
  }
}

void SoakComponent::record(std::uint32_t callId) {
  const auto type = static_cast<KalTesselEntityType>(pick(4));
  void* entity = nullptr;
  expect(createTesselEntity(type, callId, &entity) == kResultOk);
  if (type == KAL_TESSEL_VIDEO || type == KAL_TESSEL_CONTENT_VIDEO) {
    auto* video = static_cast<IKalVideoInfo*>(entity);
    st_KalVideoTxBlock block;
    video->UpdateVideoEncFrameCnt(pick(1000));
    video->UpdateNoiseLevel(static_cast<int>(pick(100)));
    video->UpdateAV1Metrics(1, "first", "second");
    expect(video->GetTxMediaInfo(&block, pick(2) == 0) == kResultOk);
  } else {
    auto* audio = static_cast<IKalAudioInfo*>(entity);
    st_KalAudioBlock block;
    audio->updateTxBitRate(pick(64000));
    audio->updateNoiseLevel(1, 2, 3);
    expect(audio->GetTxMediaInfo(&block, pick(2) == 0) == kResultOk);
  }
  expect(releaseTesselEntity(type, callId, entity) >= 0);
}
