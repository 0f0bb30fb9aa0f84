// Time zones: the rules that turn an instant into a local wall-clock time.
//
// A TimeZone is a geopolitical zone from the time-zone database
// ("Europe/Berlin"), or a fixed offset from GMT. Values are immutable, cheap
// to copy (they share their rules) and safe to use from any thread.
//
// current() is the process's zone as POSIX defines it: the zone named by the
// environment variable TZ ("Europe/Berlin", ":Europe/Berlin", or a path into
// a zoneinfo directory), UTC when TZ is set but empty, and otherwise the
// system's local zone (/etc/localtime, then /etc/timezone). When neither
// names a zone in the database, the zone is GMT. It is read anew on every
// call, so tests change it through the environment. The "local" zone of
// date texts is this same zone.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Time/Date.h"

namespace kestrona {

namespace icubridge {
struct Access;
}

class TimeZone {
 public:
  // The zone of a database identifier such as "America/New_York", "UTC" or
  // "GMT"; none for an identifier the database does not know.
  static std::optional<TimeZone> fromIdentifier(std::string_view identifier);
  // A zone fixed at the given offset east of GMT, identified as "GMT+0130";
  // none beyond eighteen hours either way.
  static std::optional<TimeZone> fromSecondsFromGMT(int seconds);
  static TimeZone gmt();
  // The process's zone, see above.
  static TimeZone current();

  const std::string& identifier() const noexcept;
  // Offset of local time from GMT at date, daylight saving included.
  int secondsFromGMT(Date date) const;
  bool isDaylightSavingTime(Date date) const;
  // The first change of offset strictly after date, or none for a zone
  // without further changes.
  std::optional<Date> nextDaylightSavingTimeTransition(Date after) const;

  friend bool operator==(const TimeZone& a, const TimeZone& b) noexcept {
    return a.identifier() == b.identifier();
  }

 private:
  friend struct icubridge::Access;
  struct Impl;
  explicit TimeZone(std::shared_ptr<const Impl> impl) : impl_(std::move(impl)) {}
  std::shared_ptr<const Impl> impl_;
};

}  // namespace kestrona
