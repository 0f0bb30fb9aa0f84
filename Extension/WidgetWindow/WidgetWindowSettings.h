// What the widget window keeps in user defaults between runs.
//
//   "WidgetWindow.widgets"  the widgets chosen, in order: an array of
//                           dictionaries {"kind": text, "family": text},
//                           the family by its raw value ("systemMedium")
//   "WidgetWindow.width",   the window's size when it last closed, in
//   "WidgetWindow.height"   points, as integers
//
// read() takes what it can use: a widget whose kind the bundle lacks or
// whose family the widget doesn't offer is left out (and logged), and a size
// that is not between 1 and 16384 points on both sides reads as none. So a
// file edited by hand never stops the window; at worst it shows the
// defaults. write() sets all three keys (a size of none removes the two);
// the caller synchronises.
//
// Threading: values; read and write from any thread (UserDefaults locks).
#pragma once

#include <optional>
#include <vector>

#include "Extension/WidgetWindow/WidgetChoice.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "Platform/View/Geometry.h"
#include "Platform/WidgetHost/WidgetConfiguration.h"

namespace kestrona {

struct WidgetWindowSettings {
  // Empty when none were chosen.
  std::vector<WidgetChoice> widgets;
  std::optional<Size> windowSize;

  static WidgetWindowSettings read(const UserDefaults& defaults, const std::vector<WidgetConfiguration>& bundle);
  void write(UserDefaults& defaults) const;

  friend bool operator==(const WidgetWindowSettings&, const WidgetWindowSettings&) = default;
};

}  // namespace kestrona
