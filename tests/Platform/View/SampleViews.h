// Widget-sized view trees built from the view layer alone, shared by the
// renderer tests and the view benchmarks: a small timer widget (texts, a
// round button with vector icons, a live duration) and a large grid of eight
// task plates whose names are written in several scripts.
#pragma once

#include "Platform/View/View.h"

namespace kestrona::testing {

// The task colour of both samples, in Display P3.
const Color& sampleTaskColor();

// A small timer widget on black: folder and task name, a round play button
// in the task colour, and a live timer that began at the epoch.
View sampleTimerWidget();

// A large recent-tasks grid on black: four rows of two plates, named in
// Latin, Hebrew, Arabic, Japanese, Greek, Chinese, Korean and with emoji.
View sampleRecentTasksGrid();

}  // namespace kestrona::testing
