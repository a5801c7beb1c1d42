// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "checker/Explore.h"

namespace model {

/// The program's scenarios: each registers itself by MODEL_SCENARIO(Name) { ... }, or
/// MODEL_SCENARIO_REUSING(Name), in which freed memory is used again at once.
class Registered {
 public:
  explicit Registered(const Scenario& scenario) : m_scenario(scenario), m_next(s_latest) { s_latest = this; }
  Registered(const Registered&) = delete;
  Registered& operator=(const Registered&) = delete;
  ~Registered() = default;

  static const Registered* Latest() { return s_latest; }
  const Scenario& Get() const { return m_scenario; }
  const Registered* Next() const { return m_next; }

 private:
  static inline const Registered* s_latest = nullptr;

  const Scenario m_scenario;
  const Registered* const m_next;
};

}  // namespace model

#define MODEL_SCENARIO_WITH(name, ...)                                                 \
  static void Run##name();                                                             \
  static const model::Registered g_registered##name({#name, &Run##name, __VA_ARGS__}); \
  static void Run##name()
#define MODEL_SCENARIO(name) MODEL_SCENARIO_WITH(name, false)
#define MODEL_SCENARIO_REUSING(name) MODEL_SCENARIO_WITH(name, true)
