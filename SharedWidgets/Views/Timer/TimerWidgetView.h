// The timer widget: the task the timer is on, how long its time entry has
// run (or ran), and a round button that starts or pauses the timer.
//
// The view fills the widget with WidgetColors::background(); on it lies the
// content, inset by the family's padding (TimerWidgetMetrics.h) and, while
// the timer runs, standing on the entry's taskColor at opacity 0.3. The
// upper row holds, aligned at the top, the texts on the left (folderName in
// the secondary label colour if there is one, then taskName in white if
// there is one; each on one line, truncated at the tail, shrinking to 0.8
// at most, filling the width) and the button on the right. The duration
// (DurationView) stands on its own row at the bottom in the small family,
// and under the button in the medium family, 2 points below it when there
// is a main action.
//
// The button: with a mainAction, a StartStopView of the family's edge with
// the images "PlayIcon-<edge>" and "PauseIcon-<edge>" of bundle, passed
// through mainAction; its background is taskColor at the entry's button
// opacity (0 when absent) and its play sign is tinted with
// taskBackgroundColorOptimizedForLightContent while running and taskColor
// otherwise. Without one, a picture only: "PauseIcon-<edge>" while running,
// "PlayIcon-<edge>" otherwise, tinted with taskColor, inset by 3 at the top
// and leading side.
//
// A press anywhere but on a press target follows the widget's link, the
// openApp deep link.
//
// timerWidgetAppIntent(entry) is the intent the widget's button runs:
// pause without a task while the entry's timer runs, else start with the
// entry's taskId (absent stays absent, and the intent then fails with
// taskIdNotPassed). timerWidgetMainAction(entry) wraps a view into a press
// target that runs it; makeTimerWidgetView() builds the view as the widget
// shows it, with that action and the module's images.
//
// Threading: a plain value; body() may run on any thread. body() reads the
// present moment (Date::now()) for a finished entry's missing dates.
#pragma once

#include <functional>
#include <optional>

#include "Platform/View/View.h"
#include "Platform/WidgetHost/WidgetFamily.h"
#include "SharedWidgets/Timelines/TimerWidgetEntry.h"
#include "SharedWidgets/Views/Timer/WidgetAssetCatalog.h"
#include "WidgetData/TimerIntent/TimerWidgetAppIntent.h"

namespace kestrona {

struct TimerWidgetView {
  // Wraps a view into something pressable.
  using MainAction = std::function<View(const View&)>;

  TimerWidgetEntry entry;
  std::optional<MainAction> mainAction;
  // Not owned; the catalogues live as long as the process.
  const WidgetAssetCatalog* bundle = &WidgetAssetCatalog::module();
  WidgetFamily family = WidgetFamily::systemSmall;

  View body() const;
};

TimerWidgetAppIntent timerWidgetAppIntent(const TimerWidgetEntry& entry);

TimerWidgetView::MainAction timerWidgetMainAction(const TimerWidgetEntry& entry);

TimerWidgetView makeTimerWidgetView(const TimerWidgetEntry& entry, WidgetFamily family);

}  // namespace kestrona
