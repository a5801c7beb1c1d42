// SPDX-License-Identifier: Apache-2.0
#include "tessel/StatsRef.h"

#include <thread>
#include <type_traits>
#include <utility>

#include "TypedTest.h"

namespace {

constexpr std::uint32_t kCall = 7;

bool Exists(KalTesselEntityType type) {
  return kalTesselInstant.isTesselEntityExisted(type, kCall);
}

template <class Media>
class Stats : public testing::Test {};

using AllMedia = testing::Types<AudioStats, VideoStats, ContentAudioStats, ContentVideoStats>;
TYPED_TEST_SUITE(Stats, AllMedia);

}  // namespace

TYPED_TEST(Stats, LiveAsLongAsTheirHolders) {
  constexpr KalTesselEntityType type = TypeParam::kType;
  EXPECT_FALSE(Exists(type));
  {
    const StatsRef<TypeParam> first(kCall);
    {
      const StatsRef<TypeParam> second(kCall);
      EXPECT_EQ(&*first, &*second);
    }
    EXPECT_TRUE(Exists(type));
    EXPECT_EQ(first->GetCallId(), kCall);
    EXPECT_EQ(first.CallId(), kCall);
  }
  EXPECT_FALSE(Exists(type));
}

TYPED_TEST(Stats, MoveWithTheirReference) {
  StatsRef<TypeParam> first(kCall);
  const auto* const info = &*first;
  StatsRef<TypeParam> second = std::move(first);
  EXPECT_EQ(&*second, info);
  {
    StatsRef<TypeParam> third(kCall + 1);
    third = std::move(second);
    EXPECT_FALSE(kalTesselInstant.isTesselEntityExisted(TypeParam::kType, kCall + 1));
    EXPECT_EQ(&*third, info);
    EXPECT_EQ(third.CallId(), kCall);
    StatsRef<TypeParam>& itself = third;
    third = std::move(itself);
    EXPECT_EQ(&*third, info);
  }
  EXPECT_FALSE(Exists(TypeParam::kType));
}

TYPED_TEST(Stats, MayEndOnAnotherThreadWhileTheObjectIsInUse) {
  for (int i = 0; i < 100; ++i) {
    const StatsRef<TypeParam> user(kCall);
    std::thread other([ending = StatsRef<TypeParam>(kCall)] { EXPECT_EQ(ending->GetCallId(), kCall); });
    EXPECT_EQ(&*user, &*StatsRef<TypeParam>(kCall));
    other.join();
    EXPECT_EQ(user->GetCallId(), kCall);
  }
  EXPECT_FALSE(Exists(TypeParam::kType));
}

TEST(StatsKinds, AreApart) {
  const StatsRef<AudioStats> audio(kCall);
  const StatsRef<ContentAudioStats> content(kCall);
  EXPECT_NE(&*audio, &*content);
  static_assert(std::is_same_v<StatsRef<AudioStats>::Interface, IKalAudioInfo>);
  static_assert(std::is_same_v<StatsRef<VideoStats>::Interface, IKalVideoInfo>);
  static_assert(std::is_same_v<StatsRef<ContentAudioStats>::Interface, IKalAudioInfo>);
  static_assert(std::is_same_v<StatsRef<ContentVideoStats>::Interface, IKalVideoInfo>);
}
