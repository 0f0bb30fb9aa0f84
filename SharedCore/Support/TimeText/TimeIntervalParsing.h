// Duration text typed by a user, read as seconds.
//
// toTimeInterval() understands, after normalising the text (trimmed, lower
// case, spaces removed, "," read as ".", "min" as "m" and "sec" as "s"):
//   a plain number of minutes       "90" 5400, "1,5" 90, "1e1" 600
//   a clock time with seconds       "01:30:15" 5415
//   a clock time                    "1:30" 5400 (hours 0-23, minutes 0-59)
//   hours, minutes and seconds      "1h30m15s" 5415
//   hours and minutes               "1 H 30 Min" 5400
//   hours                           "1.5h" 5400
//   minutes                         "15 min" 900
// tried in this order, the first that gives a value winning. Anything else
// is none, including a few texts that look like durations: "90s", "45sec",
// "1h30" and "2m30s". Those gaps are part of the grammar and are kept.
// A number, the whole text or one found inside it, follows strtod in the C
// locale, must use up its text and may not begin with white space, so "inf"
// and "nan" are numbers too but "\t2" is none.
//
// Formatters and regular expressions are made on every call; nothing is
// cached. Thread-safe.
#pragma once

#include <optional>
#include <string_view>

namespace kestrona {

std::optional<double> toTimeInterval(std::string_view text);

}  // namespace kestrona
