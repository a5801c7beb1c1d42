// SPDX-License-Identifier: Apache-2.0
#include "tessel/CallStore.h"

#include <thread>
#include <utility>

#include "TypedTest.h"

namespace {

class Calls : public TypedTest {};

void SetA(const CallStore& call) {
  call->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "A", 1, false, false);
}

bool HasA(const CallStore& call) {
  ConfigData value;
  return call->GetKalConfig(KAL_CONFIG_GROUP_AUDIO, "A", value) == kResultOk;
}

}  // namespace

TEST_F(Calls, ShareTheStoreOfAnId) {
  const CallStore first(kCall);
  const CallStore second(kCall);
  const CallStore other(kCall + 1);
  EXPECT_EQ(&*first, &*second);
  EXPECT_NE(&*first, &*other);
  EXPECT_EQ(first.CallId(), kCall);
  EXPECT_EQ(GetKalConfigSizeForUT(), 2U);
}

TEST_F(Calls, LeaveTheStoreToTheCall) {
  SetA(CallStore(kCall));
  EXPECT_EQ(GetKalConfigSizeForUT(), 1U);
  EXPECT_TRUE(HasA(CallStore(kCall)));
  CleanUpKalConfig(kCall);
  EXPECT_EQ(GetKalConfigSizeForUT(), 0U);  // No reference was kept.
}

TEST_F(Calls, EndWithTheScopeWhenAsked) {
  SetA(CallStore(kCall, CallStore::kEndsCall));
  EXPECT_EQ(GetKalConfigSizeForUT(), 0U);
  EXPECT_FALSE(HasA(CallStore(kCall)));
}

TEST_F(Calls, LiveOnForTheirOtherHolders) {
  const CallStore holder(kCall);
  SetA(CallStore(kCall, CallStore::kEndsCall));
  EXPECT_EQ(GetKalConfigSizeForUT(), 1U);
  EXPECT_TRUE(HasA(holder));
}

TEST_F(Calls, MoveWithTheirReferenceAndRole) {
  CallStore first(kCall, CallStore::kEndsCall);
  const IKalConfig* const store = &*first;
  CallStore second = std::move(first);
  EXPECT_EQ(&*second, store);
  EXPECT_EQ(GetKalConfigSizeForUT(), 1U);

  CallStore third(kCall + 1, CallStore::kEndsCall);
  third = std::move(second);  // Ends the other call.
  EXPECT_EQ(&*third, store);
  EXPECT_EQ(third.CallId(), kCall);
  EXPECT_EQ(GetKalConfigSizeForUT(), 1U);

  CallStore& itself = third;
  third = std::move(itself);
  EXPECT_EQ(&*third, store);

  third = CallStore(kCall + 2, CallStore::kEndsCall);
  EXPECT_EQ(GetKalConfigSizeForUT(), 1U);
}

TEST_F(Calls, TakeTheRoleOfWhatIsAssigned) {
  CallStore call(kCall);
  call = CallStore(kCall + 1, CallStore::kEndsCall);
  {
    CallStore other(kCall + 2, CallStore::kEndsCall);
    other = CallStore(kCall + 3);
  }
  EXPECT_EQ(GetKalConfigSizeForUT(), 3U);  // The last one's call goes on, as the first one's does.
  {
    const CallStore ended = std::move(call);
  }
  EXPECT_EQ(GetKalConfigSizeForUT(), 2U);
}

TEST_F(Calls, MayEndOnAnotherThreadWhileTheStoreIsInUse) {
  for (int i = 0; i < 100; ++i) {
    const CallStore user(kCall);
    std::thread other([ending = CallStore(kCall, CallStore::kEndsCall)] { SetA(ending); });
    SetA(user);
    other.join();
    EXPECT_TRUE(HasA(user));
    EXPECT_EQ(GetKalConfigSizeForUT(), 1U);
  }
  EXPECT_EQ(GetKalConfigSizeForUT(), 0U);
}
