// One widget the window shows: a kind of the bundle in one of its families.
//
// defaultWidgetChoices() is what a window shows before anybody chose: the
// timer, the recent tasks and the weekly time tracked chart, all medium, so
// that a window one widget wide shows them as a tidy column.
//
// Threading: values; any thread.
#pragma once

#include <string>
#include <vector>

#include "Platform/WidgetHost/WidgetFamily.h"

namespace kestrona {

struct WidgetChoice {
  std::string kind;
  WidgetFamily family = WidgetFamily::systemSmall;

  friend bool operator==(const WidgetChoice&, const WidgetChoice&) = default;
};

std::vector<WidgetChoice> defaultWidgetChoices();

}  // namespace kestrona
