#include "Platform/Time/DateInterval.h"

#include <gtest/gtest.h>

namespace kestrona {
namespace {

TEST(DateInterval, ContainsAndIntersectsAreClosed) {
  DateInterval morning(Date(100), Date(200));
  EXPECT_EQ(morning.duration(), 100);
  EXPECT_TRUE(morning.contains(Date(100)));
  EXPECT_TRUE(morning.contains(Date(200)));
  EXPECT_FALSE(morning.contains(Date(200.001)));
  EXPECT_TRUE(morning.intersects(DateInterval(Date(200), Date(300))));
  EXPECT_TRUE(DateInterval(Date(0), Date(100)).intersects(morning));
  EXPECT_FALSE(morning.intersects(DateInterval(Date(201), Date(300))));
  DateInterval instant(Date(150), 0.0);
  EXPECT_TRUE(morning.intersects(instant));
  EXPECT_TRUE(instant.intersects(instant));
}

TEST(DateInterval, IntersectionIsTheCommonPart) {
  DateInterval a(Date(100), Date(200));
  EXPECT_EQ(a.intersection(DateInterval(Date(150), Date(300))), DateInterval(Date(150), Date(200)));
  EXPECT_EQ(a.intersection(DateInterval(Date(120), Date(130))), DateInterval(Date(120), Date(130)));
  EXPECT_EQ(a.intersection(DateInterval(Date(200), Date(300))), DateInterval(Date(200), 0.0));
  EXPECT_EQ(a.intersection(DateInterval(Date(250), Date(300))), std::nullopt);
}

TEST(DateInterval, OrderIsByStartThenDuration) {
  EXPECT_LT(DateInterval(Date(1), 5.0), DateInterval(Date(2), 1.0));
  EXPECT_LT(DateInterval(Date(1), 1.0), DateInterval(Date(1), 5.0));
  EXPECT_EQ(DateInterval(Date(1), Date(6)), DateInterval(Date(1), 5.0));
}

TEST(DateIntervalDeathTest, AnEndBeforeTheStartStopsTheProcess) {
  EXPECT_DEATH(DateInterval(Date(200), Date(100)), "Fatal error: DateInterval: the end lies before the start");
  EXPECT_DEATH(DateInterval(Date(200), -1.0), "Fatal error: DateInterval: the duration is negative");
}

}  // namespace
}  // namespace kestrona
