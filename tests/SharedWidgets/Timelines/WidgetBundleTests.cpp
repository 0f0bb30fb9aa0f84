#include <gtest/gtest.h>

#include "SharedWidgets/Timelines/RecentTasksEntry.h"
#include "SharedWidgets/Timelines/TimerWidgetEntry.h"
#include "SharedWidgets/Widgets/ChartWidgets.h"
#include "SharedWidgets/Widgets/RecentTasksWidget.h"
#include "SharedWidgets/Widgets/TimerWidget.h"
#include "WidgetData/Records/WidgetType.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

TEST(WidgetBundleTest, ParameterlessWidgetIsAFatalError) {
  EXPECT_DEATH(TimerWidget(), "Fatal error: Widget should be initialized with appGroupName");
  EXPECT_DEATH(RevenueMonthlyChartWidget(), "Fatal error: Widget should be initialized with appGroupName");
}

TEST(WidgetBundleTest, ConfigurationsReadTheFilesOfTheirGroupAndKind) {
  testing::TemporaryDirectory data;
  testing::ScopedEnvironment environment;
  environment.set("XDG_DATA_HOME", data.path().string());
  testing::writeFile(data.path() / "group.test" / "widgetData" / "timer", R"({"taskName":"From file"})");

  WidgetConfiguration timer = TimerWidget("group.test").configuration();
  EXPECT_TRUE(timer.contentMarginsDisabled());
  EXPECT_EQ(timer.displayName(), displayName(WidgetType::timer));
  std::optional<AnyTimeline> timeline;
  timer.getTimeline(TimelineProviderContext{}, [&](AnyTimeline result) { timeline = std::move(result); });
  ASSERT_TRUE(timeline.has_value());
  ASSERT_NE(timeline->entries.at(0).as<TimerWidgetEntry>(), nullptr);
  EXPECT_EQ(timeline->entries[0].as<TimerWidgetEntry>()->taskName, "From file");
  EXPECT_EQ(timeline->entries[0].as<RecentTasksEntry>(), nullptr);

  // Another group has no file: the recent tasks fall back on the sample.
  WidgetConfiguration recent = RecentTasksWidget("other.group").configuration();
  EXPECT_EQ(recent.placeholder(TimelineProviderContext{}).as<RecentTasksEntry>()->tasks.size(), 8u);
}

}  // namespace
}  // namespace kestrona
