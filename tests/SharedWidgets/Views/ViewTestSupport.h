// Helpers for the widget view tests: layout with hand-computable text sizes
// at a fixed moment, the canvas of each family, days in UTC, chart bars,
// and pressing a laid-out widget with a timer-intent host that notes the
// commands it gets.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Platform/Time/Calendar.h"
#include "Platform/View/Layout.h"
#include "Platform/WidgetHost/WidgetFamily.h"
#include "SharedWidgets/Timelines/ChartBar.h"
#include "WidgetData/TimerIntent/TimerWidgetIntentHost.h"

namespace kestrona::testing {

// The moment the tests' layouts read as "now".
inline constexpr Date kNow{1700000000};

Size canvasOf(WidgetFamily family);

// Lays root out on family's canvas with FixedWidthMeasurer (every character
// half the font size wide, lines 1.2 times it high), Inter and Quicksand,
// the dark appearance, at kNow.
LayoutTree layOutWidget(const View& root, WidgetFamily family);
LayoutTree layOutWidget(const View& root, Size canvas);

// An en_US calendar in UTC, and midnight UTC of a day in it.
Calendar utcCalendar();
Date utcDay(int year, int month, int day);

// A chart bar on date with one segment per value (task ids "t0", "t1", ...
// in shades of blue) and their sum as its total.
ChartBar barOf(Date date, const std::vector<double>& values);

// Notes each command as "start <taskId>" or "pause".
class RecordingTimerHost final : public TimerWidgetIntentHosting {
 public:
  asio::awaitable<bool> startTimer(std::string taskId) override;
  asio::awaitable<void> pauseTimer() override;

  std::vector<std::string> commands;
};

// Installs a recording host for the life of a test and presses widgets.
class PressingTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // What a press at point does: "link <url>" for a link, the command the
  // host got for an intent, "error <code>" for an intent that failed with a
  // typed error, "" when nothing takes the press.
  std::string press(const LayoutTree& tree, Point point);
  // A press at the middle of the press target or node.
  std::string pressAt(const LayoutTree& tree, const LaidOutNode& node);

  std::shared_ptr<RecordingTimerHost> host = std::make_shared<RecordingTimerHost>();
};

}  // namespace kestrona::testing
