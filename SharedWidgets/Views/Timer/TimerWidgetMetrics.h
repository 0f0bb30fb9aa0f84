// The sizes of the timer widget by family: the button's edge, the padding
// around the content, the fonts of the texts and the duration, and where the
// duration stands.
//
//                       small                    medium
//   button edge         36                       48
//   padding             top 13, leading 13,      top 15, leading 16,
//                       bottom 16, trailing 16   bottom 18, trailing 20
//   folder name         10 bold                  13 bold
//   task name           17 bold                  24 bold
//   duration            26 semibold rounded,     34 semibold rounded,
//                       leading, on its own      trailing, under the
//                       row below the texts      button
//
// The timer widget is offered in the small and medium families only; any
// larger family is drawn with the medium sizes, whose layout has room for
// them.
//
// Threading: plain values; any thread.
#pragma once

#include "Platform/View/Alignment.h"
#include "Platform/View/Font.h"
#include "Platform/View/Geometry.h"
#include "Platform/WidgetHost/WidgetFamily.h"

namespace kestrona {

struct TimerWidgetMetrics {
  double buttonSize = 0;
  EdgeInsets padding;
  Font folderNameFont = Font::system(10);
  Font taskNameFont = Font::system(17);
  Font durationFont = Font::system(26);
  HorizontalAlignment durationAlignment = HorizontalAlignment::leading;
  // Whether the duration stands in the button's column rather than on a row
  // of its own below the texts.
  bool durationUnderButton = false;

  static TimerWidgetMetrics forFamily(WidgetFamily family);
};

}  // namespace kestrona
