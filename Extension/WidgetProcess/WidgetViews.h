// What each widget of the bundle draws: the one place where a widget's kind
// meets its view.
//
// widgetView() builds the view the widget of kind shows for entry in family,
// the way the desktop would show it: the timer with its start and pause
// button, the recent tasks with their plates, the four charts through
// ChartWidgetView::forTimeTracked or forRevenue with their date range. Press
// targets carry the timer intent, so a laid-out widget can be pressed.
// layOutWidget() lays that view out on the family's canvas (WidgetCanvas.h)
// with this machine's fonts, at the present moment (Date::now()).
//
// A kind the bundle does not have, or an entry of another type than the
// kind's provider gives, is a programming error: fatalError().
//
// Threading: plain functions; any thread. Chart views read the current
// calendar and locale of the process.
#pragma once

#include <string_view>

#include "Platform/View/Geometry.h"
#include "Platform/View/Layout.h"
#include "Platform/View/View.h"
#include "Platform/WidgetHost/WidgetConfiguration.h"
#include "Platform/WidgetHost/WidgetFamily.h"

namespace kestrona {

View widgetView(std::string_view kind, const AnyTimelineEntry& entry, WidgetFamily family);

// The canvas of family, in points.
Size widgetCanvasSize(WidgetFamily family);

LayoutTree layOutWidget(std::string_view kind, const AnyTimelineEntry& entry, WidgetFamily family);

}  // namespace kestrona
