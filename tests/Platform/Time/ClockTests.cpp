#include "Platform/Time/Clock.h"

#include <gtest/gtest.h>

namespace kestrona {
namespace {

TEST(Clock, ScopedClockFixesDateNowAndRestoresTheSystemClock) {
  {
    ManualClock clock(Date(1000));
    ScopedClock scoped(clock);
    EXPECT_EQ(Date::now(), Date(1000));
    clock.advance(59.5);
    EXPECT_EQ(Date::now(), Date(1059.5));
  }
  // Back on the real clock: some time after this code was written.
  EXPECT_GT(Date::now().timeIntervalSince1970(), 1.7e9);
}

TEST(Date, ArithmeticAndOrder) {
  Date a(100);
  Date b = a.addingTimeInterval(-30.25);
  EXPECT_DOUBLE_EQ(a.timeIntervalSince(b), 30.25);
  EXPECT_LT(b, a);
  EXPECT_LT(Date::distantPast(), b);
  EXPECT_LT(a, Date::distantFuture());
}

}  // namespace
}  // namespace kestrona
