#include "Platform/Time/TimeZone.h"

#include <unicode/basictz.h>
#include <unicode/simpletz.h>
#include <unicode/tztrans.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "Platform/Time/IcuBridge.h"

namespace kestrona {
namespace icubridge {

TimeZone Access::make(std::string identifier, std::unique_ptr<icu::TimeZone> zone) {
  auto impl = std::make_shared<TimeZone::Impl>();
  impl->identifier = std::move(identifier);
  impl->zone = std::move(zone);
  return TimeZone(std::move(impl));
}

}  // namespace icubridge

namespace {

constexpr int kMaximumOffsetSeconds = 18 * 3600;

// The database identifier inside a path such as
// "/usr/share/zoneinfo/Europe/Berlin", or the text itself when it is no path.
std::string identifierFromZonePath(std::string_view path) {
  constexpr std::string_view kMarker = "zoneinfo/";
  auto found = path.rfind(kMarker);
  if (found != std::string_view::npos) return std::string(path.substr(found + kMarker.size()));
  return std::string(path);
}

std::optional<TimeZone> systemLocalZone() {
  std::error_code error;
  auto target = std::filesystem::read_symlink("/etc/localtime", error);
  if (!error) {
    if (auto zone = TimeZone::fromIdentifier(identifierFromZonePath(target.string()))) return zone;
  }
  std::ifstream file("/etc/timezone");
  std::string line;
  if (std::getline(file, line)) {
    if (auto zone = TimeZone::fromIdentifier(line)) return zone;
  }
  return std::nullopt;
}

}  // namespace

std::optional<TimeZone> TimeZone::fromIdentifier(std::string_view identifier) {
  if (identifier.empty()) return std::nullopt;
  auto id = icubridge::unicode(identifier);
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(id));
  // ICU answers an unknown identifier with its "Etc/Unknown" zone.
  if (!zone || *zone == icu::TimeZone::getUnknown()) return std::nullopt;
  return icubridge::Access::make(std::string(identifier), std::move(zone));
}

std::optional<TimeZone> TimeZone::fromSecondsFromGMT(int seconds) {
  if (seconds < -kMaximumOffsetSeconds || seconds > kMaximumOffsetSeconds) return std::nullopt;
  int magnitude = seconds < 0 ? -seconds : seconds;
  char text[16];
  std::snprintf(text, sizeof text, "GMT%c%02d%02d", seconds < 0 ? '-' : '+', magnitude / 3600,
                magnitude / 60 % 60);
  std::string identifier = seconds == 0 ? std::string("GMT") : std::string(text);
  auto zone = std::make_unique<icu::SimpleTimeZone>(seconds * 1000, icubridge::unicode(identifier));
  return icubridge::Access::make(std::move(identifier), std::move(zone));
}

TimeZone TimeZone::gmt() { return *fromSecondsFromGMT(0); }

TimeZone TimeZone::current() {
  if (const char* tz = std::getenv("TZ")) {
    std::string_view value(tz);
    if (value.empty()) return *fromIdentifier("UTC");
    if (value.front() == ':') value.remove_prefix(1);
    if (auto zone = fromIdentifier(identifierFromZonePath(value))) return *zone;
  }
  if (auto zone = systemLocalZone()) return *zone;
  return gmt();
}

const std::string& TimeZone::identifier() const noexcept { return impl_->identifier; }

int TimeZone::secondsFromGMT(Date date) const {
  int32_t raw = 0;
  int32_t dst = 0;
  UErrorCode status = U_ZERO_ERROR;
  impl_->zone->getOffset(icubridge::millis(date), false, raw, dst, status);
  if (U_FAILURE(status)) return 0;
  return (raw + dst) / 1000;
}

bool TimeZone::isDaylightSavingTime(Date date) const {
  int32_t raw = 0;
  int32_t dst = 0;
  UErrorCode status = U_ZERO_ERROR;
  impl_->zone->getOffset(icubridge::millis(date), false, raw, dst, status);
  return U_SUCCESS(status) && dst != 0;
}

std::optional<Date> TimeZone::nextDaylightSavingTimeTransition(Date after) const {
  auto* basic = dynamic_cast<const icu::BasicTimeZone*>(impl_->zone.get());
  if (!basic) return std::nullopt;
  icu::TimeZoneTransition transition;
  if (!basic->getNextTransition(icubridge::millis(after), false, transition)) return std::nullopt;
  return icubridge::dateFromMillis(transition.getTime());
}

}  // namespace kestrona
