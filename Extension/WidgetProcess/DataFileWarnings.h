// Warnings for widgets that show stand-in data.
//
// A widget whose file is missing or can't be used still draws as designed:
// the timer its placeholder, the recent tasks their sample tasks, a chart
// an empty chart. The process says so, so that a person sees why:
// check(kind) reads the widget's file as its provider does and, when it
// can't be used, writes one line to the error stream naming the file, the
// reason (the operating system's, or the decoder's with the coding path),
// and what the widget shows instead:
//
//   kestrona-widgets: warning: The file "/…/widgetData/timer" could not be
//   read: No such file or directory; the timer widget shows its placeholder
//
// A kind is warned about once for as long as its reason stays the same: a
// live host that reloads every quarter of an hour says it once, and again
// only when the reason changes or after the file was good in between.
//
// Holds the stream it writes to, which must outlive it. One thread.
#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <string_view>

namespace kestrona {

class DataFileWarnings {
 public:
  DataFileWarnings(std::string appGroupName, std::ostream& errors);

  // kind is a widget kind of the bundle; any other is ignored.
  void check(std::string_view kind);

 private:
  std::string appGroupName_;
  std::ostream& errors_;
  std::map<std::string, std::string, std::less<>> told_;
};

}  // namespace kestrona
