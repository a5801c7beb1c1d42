// SPDX-License-Identifier: Apache-2.0
#include "util/CCmMutexThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <future>
#include <thread>
#include <vector>

namespace {

template <class Mutex>
class Locks : public testing::Test {};
using AllLocks = testing::Types<CCmMutexThread, CCmMutexThreadRecursive>;
TYPED_TEST_SUITE(Locks, AllLocks);

}  // namespace

TYPED_TEST(Locks, LockAndUnlockWithZero) {
  TypeParam mutex;
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(mutex.Lock(), 0);
    EXPECT_EQ(mutex.UnLock(), 0);
  }
}

TYPED_TEST(Locks, AdmitOneThreadAtATime) {
  TypeParam mutex;
  int counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 5000; ++i) {
        mutex.Lock();
        ++counter;
        mutex.UnLock();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 20000);
}

TYPED_TEST(Locks, MakeOthersWait) {
  TypeParam mutex;
  mutex.Lock();
  auto other = std::async(std::launch::async, [&] {
    const int locked = mutex.Lock();
    mutex.UnLock();
    return locked;
  });
  EXPECT_EQ(other.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
  mutex.UnLock();
  EXPECT_EQ(other.get(), 0);
}

TEST(Mutex, RefusesItsOwnerASecondTimeAndStaysLocked) {
  CCmMutexThread mutex;
  ASSERT_EQ(mutex.Lock(), 0);
  EXPECT_EQ(mutex.Lock(), EDEADLK);
  std::atomic<bool> entered{false};
  std::thread other([&] {
    mutex.Lock();
    entered = true;
    mutex.UnLock();
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(entered);
  EXPECT_EQ(mutex.UnLock(), 0);
  other.join();
  EXPECT_TRUE(entered);
}

TEST(RecursiveMutex, IsFreeOnceUnlockedAsOftenAsLocked) {
  CCmMutexThreadRecursive mutex;
  std::atomic<bool> entered{false};
  for (int i = 0; i < 3; ++i) ASSERT_EQ(mutex.Lock(), 0);
  std::thread other([&] {
    mutex.Lock();
    entered = true;
    mutex.UnLock();
  });
  EXPECT_EQ(mutex.UnLock(), 0);
  EXPECT_EQ(mutex.UnLock(), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(entered);
  EXPECT_EQ(mutex.UnLock(), 0);
  other.join();
  EXPECT_TRUE(entered);
}
