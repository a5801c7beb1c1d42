// SPDX-License-Identifier: Apache-2.0
#include "util/CCmReferenceControlT.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using ReferenceControl = CCmReferenceControlT<CCmMutexThread>;

class Shared : public ReferenceControl {
 public:
  explicit Shared(int& deletions) : m_deletions(deletions) {}
  ~Shared() override { ++m_deletions; }
  int written[8] = {};

 private:
  int& m_deletions;
};

class Pooled : public ReferenceControl {
 public:
  void OnReferenceDestory() override { ++returns; }
  int returns = 0;
};

}  // namespace

TEST(ReferenceControl, CountsFromZero) {
  int deletions = 0;
  auto* object = new Shared(deletions);
  EXPECT_EQ(object->ReferenceCount(), 0u);
  EXPECT_EQ(object->AddReference(), 1u);
  EXPECT_EQ(object->AddReference(), 2u);
  EXPECT_EQ(object->ReferenceCount(), 2u);
  EXPECT_EQ(object->ReleaseReference(), 1u);
  EXPECT_EQ(deletions, 0);
  EXPECT_EQ(object->ReleaseReference(), 0u);
  EXPECT_EQ(deletions, 1);
}

TEST(ReferenceControl, LeavesTheEndToTheObject) {
  Pooled object;
  object.AddReference();
  object.AddReference();
  EXPECT_EQ(object.ReleaseReference(), 1u);
  EXPECT_EQ(object.returns, 0);
  EXPECT_EQ(object.ReleaseReference(), 0u);
  EXPECT_EQ(object.returns, 1);
}

TEST(ReferenceControl, AddsNoReferenceOnceTheLastOneIsReleased) {
  Pooled object;
  EXPECT_FALSE(object.AddReferenceUnlessZero());
  EXPECT_EQ(object.ReferenceCount(), 0u);
  object.AddReference();
  for (unsigned int count = 2; count <= 4; ++count) {
    EXPECT_TRUE(object.AddReferenceUnlessZero());
    EXPECT_EQ(object.ReferenceCount(), count);
  }
  for (int i = 0; i < 4; ++i) object.ReleaseReference();
  EXPECT_FALSE(object.AddReferenceUnlessZero());
  EXPECT_EQ(object.returns, 1);
}

TEST(ReferenceControl, DeletesOnceAfterTheWritesOfAllOwners) {
  for (int round = 0; round < 500; ++round) {
    int deletions = 0;
    auto* object = new Shared(deletions);
    std::vector<std::thread> owners;
    for (std::size_t i = 0; i < 4; ++i) object->AddReference();
    for (std::size_t i = 0; i < 4; ++i) {
      owners.emplace_back([object, i] {
        object->AddReference();
        object->written[i] = 1;
        object->ReleaseReference();
        object->ReleaseReference();
      });
    }
    for (std::thread& owner : owners) owner.join();
    ASSERT_EQ(deletions, 1);
  }
}
