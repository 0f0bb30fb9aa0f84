// One plate of the recent tasks widget: a task's name, its time, and a sign
// of what a press does.
//
// A column, leading-aligned, padded by 10, filling its cell from the top
// leading corner, on a rectangle with continuous corners of radius 12:
//   - the task name, 16 points bold, white, on one line, truncated at the
//     tail; 4 points below it
//   - the time and the icon in a row. While the task runs: a live timer
//     counting from runningEntryBegin (confirmedDuration is not added), 14
//     points bold rounded, white, and a pause sign of two white rounded bars
//     (4 x 12, radius 1.5, 2 apart). Otherwise: confirmedDuration as hours
//     and minutes ("2:18"), 14 points semibold rounded, white at opacity
//     0.6, and the image "RecentTaskPlayIcon" of bundle tinted with
//     taskColor. The icon is inset by 4 on its leading side and 2 at the top.
// The plate's background is taskBackgroundColorOptimizedForLightContent
// while the task runs, and white at opacity 0.1 otherwise.
//
// Threading: a plain value; body() may run on any thread.
#pragma once

#include "Platform/View/View.h"
#include "SharedWidgets/Views/Timer/WidgetAssetCatalog.h"
#include "WidgetData/Records/RecentTasksWidgetDataVO.h"

namespace kestrona {

struct RecentTaskPlateView {
  RecentTaskVO task;
  // Not owned; the catalogues live as long as the process.
  const WidgetAssetCatalog* bundle = &WidgetAssetCatalog::module();

  View body() const;
};

}  // namespace kestrona
