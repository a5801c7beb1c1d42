// SPDX-License-Identifier: Apache-2.0
#include <map>
#include <random>

#include "InspectTest.h"

// Random operations, each beside a model of what they leave: a look gives the model's contents after every
// one.

namespace kalStore {
namespace {

class InspectModel : public InspectTest {
 protected:
  struct Registered {
    SubscribeId_t id;
    bool isBinding;
  };

  KalConfigGroup anyGroup() { return static_cast<KalConfigGroup>(any(3) * 6); }
  std::string anyName() { return "Name" + std::to_string(any(4)); }
  int any(int count) { return std::uniform_int_distribution(0, count - 1)(m_random); }

  void step() {
    const KalConfigGroup group = anyGroup();
    const std::string name = anyName();
    switch (any(8)) {
      case 0:
      case 1:
      case 2: {
        const std::string value(static_cast<std::size_t>(any(2000)), 'v');
        set(group, name.c_str(), value);
        m_values[{group, name}] = value;
        break;
      }
      case 3:
        m_store.SetKalConfig(group, name.c_str(), 1, false, true);
        m_values.erase({group, name});
        break;
      case 4:
        m_store.RemoveKalConfig(group, name.c_str());
        m_values.erase({group, name});
        break;
      case 5:
        if (any(8) != 0) break;
        m_store.RemoveKalConfigByGroup(group);
        std::erase_if(m_values, [&](const auto& value) { return value.first.first == group; });
        break;
      case 6:
        subscribe(group, name);
        break;
      case 7:
        unsubscribe();
        break;
    }
  }

  void subscribe(KalConfigGroup group, const std::string& name) {
    const bool isBinding = any(2) == 0;
    const SubscribeId_t id =
        isBinding
            ? m_store.BindConfig(group, name.c_str(), [](const KalConfigEvent&) { return ConfigData(); })
            : m_store.SubscribeConfig(group, name.c_str(), [](const KalConfigEvent&) {}, nullptr, false);
    if (id != 0) m_registered[{group, name}].push_back({id, isBinding});
  }

  void unsubscribe() {
    if (m_registered.empty()) return;
    const auto at = std::next(m_registered.begin(), any(static_cast<int>(m_registered.size())));
    const auto which = at->second.begin() + any(static_cast<int>(at->second.size()));
    EXPECT_EQ(m_store.UnsubscribeConfig(which->id), kResultOk);
    at->second.erase(which);
    if (at->second.empty()) m_registered.erase(at);
  }

  std::vector<std::string> expectedSettings() const {
    std::vector<std::string> settings;
    for (const auto& [key, value] : m_values) {
      settings.push_back(KalConfigGroup2GroupName(key.first) + ' ' + key.second + '=' + value);
    }
    return settings;
  }
  std::vector<std::string> expectedSubscriptions() const {
    std::vector<std::string> subscriptions;
    for (const auto& [key, registered] : m_registered) {
      for (const Registered& each : registered) {
        subscriptions.push_back(std::to_string(each.id) + ' ' + KalConfigGroup2GroupName(key.first) + ' ' +
                                key.second + (each.isBinding ? " binding" : ""));
      }
    }
    return subscriptions;
  }

  std::mt19937 m_random{20261122};
  std::map<std::pair<KalConfigGroup, std::string>, std::string> m_values;
  std::map<std::pair<KalConfigGroup, std::string>, std::vector<Registered>> m_registered;
};

TEST_F(InspectModel, ALookGivesWhatTheOperationsLeft) {
  for (int steps = 0; steps < 3000; ++steps) {
    step();
    ASSERT_EQ(SettingsOf(kInspected), expectedSettings());
    ASSERT_EQ(SubscriptionsOf(kInspected), expectedSubscriptions());
  }
}

}  // namespace
}  // namespace kalStore
