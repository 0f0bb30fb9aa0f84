// Shared helpers of the chart view tests: layout with predictable text
// sizes, a calendar in UTC, and bars on given days.
#pragma once

#include <string>
#include <vector>

#include "Platform/Time/Calendar.h"
#include "Platform/View/Layout.h"
#include "SharedWidgets/Timelines/ChartBar.h"

namespace kestrona::testing {

// Lays out root with the fixed-width measurer and the dark appearance.
LayoutTree layOutForTest(const View& root, Size canvas);

// An en_US calendar in UTC.
Calendar utcCalendar();

// Midnight UTC of the given day.
Date utcDay(int year, int month, int day);

// A bar on date with one segment per value (task ids "t0", "t1", ...).
ChartBar barWithSegments(Date date, const std::vector<double>& values);

// The clipped columns of a laid-out chart, left to right.
std::vector<const LaidOutNode*> columnsOf(const LayoutTree& tree);

}  // namespace kestrona::testing
