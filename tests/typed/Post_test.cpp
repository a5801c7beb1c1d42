// SPDX-License-Identifier: Apache-2.0
#include "tessel/post.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include "support/TraceLog.h"

namespace kalStore {
namespace {

TEST(Post, RunsTheFunctionOnTheThread) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  unsigned long ranOn = 0;
  EXPECT_EQ(0, Post(thread, [&] { ranOn = GetThreadSelfId(); }));
  const unsigned long id = thread.GetThreadId();
  ASSERT_EQ(0, thread.Stop());
  EXPECT_EQ(id, ranOn);
}

TEST(Post, FollowsThePriority) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  std::vector<int> order;
  Send(thread, [&] {
    Post(thread, [&] { order.push_back(2); });
    Post(thread, [&] { order.push_back(1); }, 0);
  });
  thread.Stop();
  EXPECT_EQ((std::vector<int>{1, 2}), order);
}

TEST(Post, TakesAFunctionThatCannotBeCopied) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  int sum = 0;
  EXPECT_EQ(0, Post(thread, [&sum, term = std::make_unique<int>(2)]() mutable { sum += *term; }));
  EXPECT_EQ(0, Send(thread, [&sum, term = std::make_unique<int>(3)]() mutable { sum += *term; }));
  EXPECT_EQ(5, sum);
}

// Also where the compiler would warn of that.
TEST(Post, IgnoresWhatTheFunctionReturns) {
  enum class [[nodiscard]] Status { kFine };
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  int runs = 0;
  const auto run = [&] {
    ++runs;
    return Status::kFine;
  };
  EXPECT_EQ(0, Post(thread, run));
  EXPECT_EQ(0, Send(thread, run));
  EXPECT_EQ(2, runs);
}

TEST(Post, IsRefusedWithoutAQueueAndLetsTheFunctionGo) {
  ACmThread stopped;
  ACmThread withoutQueue("quiet", false);
  ASSERT_EQ(0, withoutQueue.Start());
  for (ACmThread* thread : {&stopped, &withoutQueue}) {
    const auto token = std::make_shared<int>();
    const auto fail = [token] { FAIL(); };
    EXPECT_EQ(ESHUTDOWN, Post(*thread, fail));
    EXPECT_EQ(ESHUTDOWN, Send(*thread, fail));
    EXPECT_EQ(2, token.use_count());  // This one and that of `fail`.
  }
}

TEST(Send, WaitsUntilTheFunctionHasReturnedAndIsGone) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  const auto token = std::make_shared<int>(0);
  EXPECT_EQ(0, Send(thread, [token] { *token = 1; }));
  EXPECT_EQ(1, *token);
  EXPECT_EQ(1, token.use_count());
}

TEST(Send, RunsAtOnceOnTheThreadItself) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  std::vector<int> order;
  Send(thread, [&] {
    Send(thread, [&] { order.push_back(1); });
    order.push_back(2);
  });
  EXPECT_EQ((std::vector<int>{1, 2}), order);
}

TEST(Send, ReturnsAnExceptionAsACode) {
  TraceLog log(-1);
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  EXPECT_EQ(ECANCELED, Send(thread, [] { throw std::runtime_error("lost"); }));
}

}  // namespace
}  // namespace kalStore
