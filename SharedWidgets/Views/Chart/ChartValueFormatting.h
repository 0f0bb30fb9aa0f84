// The number texts of the chart widgets: compact currency for revenue
// totals, compact and plain numbers for the values above revenue bars.
//
// All three format in the locale they are given, through ICU.
//   compactCurrencyString shortens values of 1000 and more to a number with
//   at most one fraction digit and the suffix "K", "M" or "B", keeping the
//   currency symbol where the locale puts it: "$1.2K" in en_US, "1,2K €" in
//   de_DE. The blank between number and symbol is an ordinary space, even
//   where the locale writes a no-break one. Below 1000 the value is written
//   in full, as currency with at most one fraction digit.
//   compactNumberString does the same without a currency. It first cuts the
//   value down to whole tenths (towards zero), so 999.95 stays below 1000;
//   a value that is not finite, or whose tenths do not fit a signed 64-bit
//   integer, is a fatal error.
//   plainNumberString writes the value with no fraction digits and no
//   grouping, or the empty string if formatting fails.
//
// Threading: pure functions of their arguments; any thread.
#pragma once

#include <optional>
#include <string>

#include "Platform/Time/Locale.h"

namespace kestrona {

std::string compactCurrencyString(double value, const Locale& locale,
                                  const std::optional<std::string>& currencyCode = std::nullopt);
std::string compactNumberString(double value, const Locale& locale);
std::string plainNumberString(double value, const Locale& locale);

}  // namespace kestrona
