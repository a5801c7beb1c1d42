// SPDX-License-Identifier: Apache-2.0
// The library as a program loads it at run time: closed, twice, and in two versions.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

#include "tessel/tessel.h"

namespace kalStore {
namespace {

/// What is used of a library that was loaded at run time.
class Loaded {
 public:
  explicit Loaded(const std::string& file) : m_handle(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (m_handle == nullptr) ADD_FAILURE() << dlerror();  // NOLINT(concurrency-mt-unsafe)
  }

  template <class Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(dlsym(m_handle, name));
  }
  void Close() const { EXPECT_EQ(dlclose(m_handle), 0); }

 private:
  void* const m_handle;
};

/// Uses both registries of a loaded library. What this program is linked with has nothing of it, and the
/// other way round.
void ExpectOwnRegistries(const Loaded& other) {
  const auto otherSize = other.Find<std::uint32_t()>("GetKalConfigSizeForUT");
  const auto otherCreate = other.Find<std::int32_t(std::uint32_t, IKalConfig**)>("CreateKalConfig");
  const auto otherCleanUp = other.Find<std::int32_t(std::uint32_t)>("CleanUpKalConfig");
  const auto otherRelease = other.Find<std::int32_t(IKalConfig*)>("ReleaseKalConfig");
  const auto otherMake = other.Find<int(KalTesselEntityType, std::uint32_t, void**)>("createTesselEntity");
  const auto otherEnd = other.Find<int(KalTesselEntityType, std::uint32_t, void*)>("releaseTesselEntity");

  IKalConfig* mine = nullptr;
  IKalConfig* others = nullptr;
  ASSERT_EQ(CreateKalConfig(7, &mine), kResultOk);
  EXPECT_EQ(otherSize(), 0U);
  ASSERT_EQ(otherCreate(7, &others), kResultOk);
  EXPECT_NE(mine, others);
  mine->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "name", "mine", false, false);
  others->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "name", "others", false, false);
  ConfigData value;
  mine->GetKalConfig(KAL_CONFIG_GROUP_AUDIO, "name", value);
  EXPECT_STREQ(value.ToCstr(), "mine");
  others->GetKalConfig(KAL_CONFIG_GROUP_AUDIO, "name", value);
  EXPECT_STREQ(value.ToCstr(), "others");
  EXPECT_EQ(ReleaseKalConfig(others), kResultNoSuchOrExists);
  EXPECT_EQ(otherRelease(others), kResultOk);
  EXPECT_EQ(otherCleanUp(7), kResultOk);
  EXPECT_EQ(ReleaseKalConfig(mine), kResultOk);
  EXPECT_EQ(CleanUpKalConfig(7), kResultOk);

  void* statistics = nullptr;
  void* otherStatistics = nullptr;
  createTesselEntity(KAL_TESSEL_VIDEO, 7, &statistics);
  otherMake(KAL_TESSEL_VIDEO, 7, &otherStatistics);
  EXPECT_NE(statistics, otherStatistics);
  EXPECT_EQ(otherEnd(KAL_TESSEL_VIDEO, 7, otherStatistics), 0);
  EXPECT_TRUE(kalTesselInstant.isTesselEntityExisted(KAL_TESSEL_VIDEO, 7));
  EXPECT_EQ(releaseTesselEntity(KAL_TESSEL_VIDEO, 7, statistics), 0);
}

/// Keeps objects of this program's library alive while another copy is loaded.
class Loading : public testing::Test {
 protected:
  Loading() { createTesselEntity(KAL_TESSEL_AUDIO, 1, &m_entity); }
  ~Loading() override { EXPECT_EQ(releaseTesselEntity(KAL_TESSEL_AUDIO, 1, m_entity), 0); }

  void* m_entity = nullptr;
  KalConfigHelper m_facade;
};

TEST_F(Loading, OfASecondCopyLeavesTheFirstAsItIs) {
  const Loaded copy(TESSEL_SECOND_COPY);
  EXPECT_TRUE(kalTesselInstant.isTesselEntityExisted(KAL_TESSEL_AUDIO, 1));
  ExpectOwnRegistries(copy);
}

TEST_F(Loading, OfAnotherVersionLeavesTheFirstAsItIs) {
  const Loaded version(TESSEL_OTHER_VERSION);
  EXPECT_TRUE(kalTesselInstant.isTesselEntityExisted(KAL_TESSEL_AUDIO, 1));
  ExpectOwnRegistries(version);
}

// What is linked with one version finds that one, though the other was loaded before.
TEST_F(Loading, OfAComponentLinkedWithAnotherVersionBindsItToThat) {
  const Loaded component(TESSEL_COMPONENT_OF_OTHER_VERSION);
  const auto storesOfComponent = component.Find<std::uint32_t()>("StoresOfComponent");
  KalConfigHelper facade(7);
  EXPECT_EQ(GetKalConfigSizeForUT(), 1U);
  EXPECT_EQ(storesOfComponent(), 0U);
  CleanUpKalConfig(7);
}

TEST(Unloading, IsRefused) {
  const Loaded copy(TESSEL_THIRD_COPY);
  const auto size = copy.Find<std::uint32_t()>("GetKalConfigSizeForUT");
  const auto create = copy.Find<std::int32_t(std::uint32_t, IKalConfig**)>("CreateKalConfig");
  const auto release = copy.Find<std::int32_t(IKalConfig*)>("ReleaseKalConfig");
  IKalConfig* store = nullptr;
  ASSERT_EQ(create(7, &store), kResultOk);
  std::atomic<bool> isOver{false};
  std::thread user([&] {
    while (!isOver) {
      IKalConfig* again = nullptr;
      create(7, &again);
      release(again);
    }
  });
  copy.Close();
  EXPECT_EQ(size(), 1U);
  const Loaded again(TESSEL_THIRD_COPY);
  EXPECT_EQ(again.Find<std::uint32_t()>("GetKalConfigSizeForUT"), size);
  again.Close();
  isOver = true;
  user.join();
  EXPECT_EQ(release(store), kResultOk);
}

}  // namespace
}  // namespace kalStore
