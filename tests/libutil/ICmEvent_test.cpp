// SPDX-License-Identifier: Apache-2.0
#include "util/ICmEvent.h"

#include <gtest/gtest.h>

#include "libutil/TestEvents.h"

TEST(Event, KeepsItsId) {
  struct Plain : ICmEvent {
    int OnEventFire() override { return 0; }
  };
  EventCounts counts;
  ICmEvent* const plain = new Plain;
  auto* numbered = new CountedEvent(counts, nullptr, 4711);
  EXPECT_EQ(plain->GetEventId(), 0u);
  EXPECT_EQ(numbered->GetEventId(), 4711u);
  plain->OnDestorySelf();
  numbered->OnDestorySelf();
}

TEST(Event, DeletesItselfWhenEnded) {
  EventCounts counts;
  ICmEvent* event = new CountedEvent(counts);
  event->OnDestorySelf();
  EXPECT_EQ(counts.ended, 1);
  EXPECT_EQ(counts.fired, 0);
}
