// The recent tasks widget: a grid of plates, one per recent task, each
// starting or pausing the timer of its task when pressed.
//
// The grid by family (any other family counts as small):
//   small   1 column,  2 rows, 2 plates at most
//   medium  2 columns, 2 rows, 4 plates at most
//   large   2 columns, 4 rows, 8 plates at most
// The first tasks of the entry fill it row by row, in the entry's order;
// tasks beyond the grid are not shown. Every row of the family is laid out,
// so plates keep one size whatever the number of tasks; a cell without a
// task is empty space of flexible width and height, so that a single task
// in the medium family takes half of the row. Cells of a row are 10 apart
// in the medium and large families, rows 8 apart; the grid is inset by 12.
//
// With no tasks the widget shows "No Recent Tasks" (the localised
// "widget.recentTasks.empty"), 17 points bold, white at opacity 0.6,
// centred, and no grid.
//
// The widget is drawn on WidgetColors::background(); a press outside the
// plates' press targets opens the application (the openApp deep link).
// Each plate goes through plateAction when there is one.
//
// recentTaskAppIntent(task) is the intent a plate runs: pause without a
// task while the task runs, else start with its taskId. A press on a plate
// of another task than the running one thus starts that task, and the
// application decides what becomes of the running one.
// recentTaskPlateAction() wraps a plate into a press target that runs it;
// makeRecentTasksWidgetView() builds the view as the widget shows it.
//
// Threading: a plain value; body() may run on any thread.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>

#include "Platform/View/View.h"
#include "Platform/WidgetHost/WidgetFamily.h"
#include "SharedWidgets/Timelines/RecentTasksEntry.h"
#include "WidgetData/TimerIntent/TimerWidgetAppIntent.h"

namespace kestrona {

struct RecentTasksGrid {
  int columns = 1;
  int rows = 2;

  std::size_t capacity() const { return static_cast<std::size_t>(columns * rows); }

  static RecentTasksGrid forFamily(WidgetFamily family);
};

struct RecentTasksWidgetView {
  // Wraps the plate of a task into something pressable.
  using PlateAction = std::function<View(const View&, const RecentTaskVO&)>;

  RecentTasksEntry entry;
  std::optional<PlateAction> plateAction;
  WidgetFamily family = WidgetFamily::systemSmall;

  View body() const;
};

TimerWidgetAppIntent recentTaskAppIntent(const RecentTaskVO& task);

RecentTasksWidgetView::PlateAction recentTaskPlateAction();

RecentTasksWidgetView makeRecentTasksWidgetView(const RecentTasksEntry& entry, WidgetFamily family);

}  // namespace kestrona
