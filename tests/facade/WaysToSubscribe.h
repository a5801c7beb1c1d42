// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <utility>

#include "FacadeTest.h"
#include "support/Gate.h"
#include "support/TestClock.h"
#include "tessel/typed.h"

namespace kalStore {

// Subscribes to "a", and returns what removes the subscription.
using Subscriber = std::function<std::function<void()>(fnConfigChangedCallBack, ACmThread*, bool)>;

struct WayToSubscribe {
  const char* name;
  Subscriber subscribe;
};
inline void PrintTo(const WayToSubscribe& way, std::ostream* out) {
  *out << way.name;
}

inline const WayToSubscribe kWaysToSubscribe[] = {
    {"FacadeById",
     [](fnConfigChangedCallBack fn, ACmThread* thread, bool isAsync) {
       const auto facade = std::make_shared<KalConfigHelper>(kCall);
       const SubscribeId_t id = facade->SubscribeConfig("a", std::move(fn), kGroup, thread, isAsync);
       return [facade, id] { EXPECT_EQ(facade->UnsubscribeConfig(id), kResultOk); };
     }},
    {"FacadeByName",
     [](fnConfigChangedCallBack fn, ACmThread* thread, bool isAsync) {
       const auto facade = std::make_shared<KalConfigHelper>(kCall);
       facade->SubscribeConfig("a", std::move(fn), kGroup, thread, isAsync);
       return [facade] { EXPECT_EQ(facade->UnsubscribeConfig("a", kGroup), kResultOk); };
     }},
    {"EndOfTheFacade",
     [](fnConfigChangedCallBack fn, ACmThread* thread, bool isAsync) {
       const auto facade = std::make_shared<std::optional<KalConfigHelper>>(std::in_place, kCall);
       (*facade)->SubscribeConfig("a", std::move(fn), kGroup, thread, isAsync);
       return [facade] { facade->reset(); };
     }},
    {"SubscriptionOfAFacade",
     [](fnConfigChangedCallBack fn, ACmThread* thread, bool isAsync) {
       const auto facade = std::make_shared<KalConfigHelper>(kCall);
       const auto subscription =
           std::make_shared<Subscription>(*facade, kGroup, "a", std::move(fn), thread, isAsync);
       return [facade, subscription] { subscription->Remove(); };
     }},
    {"SubscriptionOfAStore",
     [](fnConfigChangedCallBack fn, ACmThread* thread, bool isAsync) {
       const auto store = std::make_shared<CallStore>(kCall);
       const auto subscription =
           std::make_shared<Subscription>(**store, kGroup, "a", std::move(fn), thread, isAsync);
       return [store, subscription] { subscription->Remove(); };
     }},
};

}  // namespace kalStore
