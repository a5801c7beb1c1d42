// SPDX-License-Identifier: Apache-2.0
#include "util/CKalUnknownImpl.h"

#include <gtest/gtest.h>

#include "tessel/ResultCode.h"

namespace {

class Unknown : public kal::CKalUnknownImpl {
 public:
  explicit Unknown(bool& deleted) : m_deleted(deleted) {}
  ~Unknown() override { m_deleted = true; }

 private:
  bool& m_deleted;
};

constexpr kal::_tagUUID kSome{0x01234567, 0x89ab, 0xcdef, {1, 2, 3, 4, 5, 6, 7, 8}};

}  // namespace

TEST(Unknown, KnowsNoInterface) {
  bool deleted = false;
  Unknown object(deleted);
  void* found = &object;
  EXPECT_EQ(object.QueryInterface(kSome, &found), kalStore::kResultNoInterface);
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(object.ReferenceCount(), 0u);
}

TEST(Unknown, RefusesANullOutput) {
  bool deleted = false;
  Unknown object(deleted);
  EXPECT_EQ(object.QueryInterface(kSome, nullptr), kalStore::kResultNullOutput);
}

TEST(Unknown, IsDeletedWithItsLastReference) {
  bool deleted = false;
  kal::CKalUnknownImpl* object = new Unknown(deleted);
  object->AddReference();
  object->ReleaseReference();
  EXPECT_TRUE(deleted);
}

TEST(InterfaceId, ComparesAllItsParts) {
  kal::_tagUUID other = kSome;
  EXPECT_EQ(other, kSome);
  other.data4[7] = 9;
  EXPECT_NE(other, kSome);
  other = kSome;
  other.data1 = 0;
  EXPECT_NE(other, kSome);
  EXPECT_EQ(sizeof(kal::_tagUUID), 16u);
}
