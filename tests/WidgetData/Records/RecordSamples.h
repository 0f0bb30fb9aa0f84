// Records with every field set, for the tests of this folder.
#pragma once

#include "WidgetData/Records/RecentTasksWidgetDataVO.h"
#include "WidgetData/Records/RevenueWidgetDataVO.h"
#include "WidgetData/Records/TimeTrackedWidgetDataVO.h"
#include "WidgetData/Records/TimerStateVO.h"

namespace kestrona::testing {

inline ColorTransferable sampleColor(double shade) { return ColorTransferable{shade, 0.25, 1.0 - shade, 0.875}; }

inline TimerStateVO sampleTimerState() {
  return TimerStateVO{.taskId = "x-kestrona://3F1C/Task/p12",
                      .taskName = "Design \"review\" \xE2\x80\x94 caf\xC3\xA9",
                      .taskColor = sampleColor(0.1),
                      .taskBackgroundColorOptimizedForLightContent = sampleColor(0.7),
                      .startButtonBackgroundOpacity = 0.1f,
                      .folderName = "Clients/Acme",
                      .timeEntryBeginTimestamp = 1700000000.5,
                      .timeEntryEndTimestamp = 1700003600.25};
}

inline RecentTasksWidgetDataVO sampleRecentTasks() {
  return RecentTasksWidgetDataVO{.tasks = {
                                     RecentTaskVO{.taskId = "x-kestrona://3F1C/Task/p3",
                                                  .taskName = "Concept",
                                                  .taskColor = sampleColor(0.2),
                                                  .taskBackgroundColorOptimizedForLightContent = sampleColor(0.3),
                                                  .confirmedDuration = 8280,
                                                  .runningEntryBeginTimestamp = std::nullopt},
                                     RecentTaskVO{.taskId = "x-kestrona://3F1C/Task/p4",
                                                  .taskName = "Sketching",
                                                  .taskColor = sampleColor(0.4),
                                                  .taskBackgroundColorOptimizedForLightContent = sampleColor(0.5),
                                                  .confirmedDuration = 0,
                                                  .runningEntryBeginTimestamp = 1700000123.0},
                                 }};
}

inline std::vector<ChartBarVO> sampleBars(double unit) {
  return {
      ChartBarVO{.date = 1699833600,
                 .timeEntryCount = 3,
                 .segments = {ChartBarSegmentVO{.taskId = "x-kestrona://3F1C/Task/p3", .taskColor = sampleColor(0.2),
                                                .value = 2 * unit},
                              ChartBarSegmentVO{.taskId = "", .taskColor = sampleColor(0.9), .value = 0.5 * unit}},
                 .totalValue = 2.5 * unit},
      ChartBarVO{.date = 1699920000, .timeEntryCount = 0, .segments = {}, .totalValue = 0},
  };
}

inline TimeTrackedWidgetDataVO sampleTimeTracked() {
  return TimeTrackedWidgetDataVO{
      .bars = sampleBars(3600),
      .currentTimeEntry = CurrentTimeEntryVO{.taskId = "x-kestrona://3F1C/Task/p3", .begin = 1699999000,
                                             .taskColor = sampleColor(0.2)},
      .firstDayOfWeek = 2};
}

inline RevenueWidgetDataVO sampleRevenue() {
  return RevenueWidgetDataVO{
      .bars = sampleBars(12.34),
      .currentTimeEntry = CurrentTimeEntryVO{.taskId = "", .begin = 1699999000, .taskColor = sampleColor(0.6)},
      .currentTimeEntryHourRate = 85.5,
      .currencyLocalIdentifier = "de_DE",
      .firstDayOfWeek = 1};
}

}  // namespace kestrona::testing
