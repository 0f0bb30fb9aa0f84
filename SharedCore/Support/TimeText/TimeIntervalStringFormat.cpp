#include "SharedCore/Support/TimeText/TimeIntervalStringFormat.h"

#include <cmath>
#include <cstdio>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {
namespace {

// 2^63: the first double past the range of a signed 64-bit integer.
constexpr double kInt64Limit = 9223372036854775808.0;

std::int64_t toInt64(double value, const char* what) {
  if (!std::isfinite(value)) {
    fatalError(std::string("Duration is not finite: cannot take its ") + what);
  }
  if (value >= kInt64Limit || value < -kInt64Limit) {
    fatalError(std::string("Duration is too large: its ") + what + " do not fit a 64-bit integer");
  }
  return static_cast<std::int64_t>(value);
}

std::string format(const char* pattern, long long value) {
  char text[32];
  std::snprintf(text, sizeof text, pattern, value);
  return text;
}

}  // namespace

std::int64_t hours(double duration) { return toInt64(std::floor(std::fabs(duration) / 3600), "hours"); }

std::int64_t minutes(double duration) {
  return toInt64(std::fmod(std::floor(std::fabs(duration) / 60), 60), "minutes");
}

std::int64_t seconds(double duration) {
  return toInt64(std::fmod(std::floor(std::fabs(duration)), 60), "seconds");
}

std::string toString(double duration, TimeIntervalStringFormat stringFormat) {
  // Every form checks the hours first, so that an unusable duration stops
  // the process whichever form is asked for.
  hours(duration);
  const std::string sign = duration < 0 ? "-" : "";
  using Format = TimeIntervalStringFormat;
  switch (stringFormat) {
    case Format::digitalHours:
      return std::to_string(hours(duration));
    case Format::digitalHoursMinutes:
      return sign + format("%lld", hours(duration)) + ":" + format("%02lld", minutes(duration));
    case Format::digitalHoursMinutesWithLeadingZero:
      return sign + format("%02lld", hours(duration)) + ":" + format("%02lld", minutes(duration));
    case Format::digitalHoursMinutesSeconds:
      return toString(duration, Format::digitalHoursMinutes) + ":" + toString(duration, Format::seconds);
    case Format::digitalHoursMinutesSecondsWithLeadingZero:
      return toString(duration, Format::digitalHoursMinutesWithLeadingZero) + ":" +
             toString(duration, Format::seconds);
    case Format::seconds:
      return format("%02lld", seconds(duration));
    case Format::decimalHours: {
      char text[400];
      std::snprintf(text, sizeof text, "%.2f", duration / 60 / 60);
      return sign + text;
    }
  }
  fatalError("Unknown TimeIntervalStringFormat");
}

double effectiveDuration(Date from, Date to) {
  const double f = std::floor(from.timeIntervalSince1970());
  const double t = std::floor(to.timeIntervalSince1970());
  const double d = std::round(t - f);
  return d <= 0 ? 0 : d;
}

}  // namespace kestrona
