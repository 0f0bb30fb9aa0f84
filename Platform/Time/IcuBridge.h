// Internal to the Platform time area: the conversions between our value
// types and ICU's. Only source files include this header, so that no
// ICU header reaches the public headers, which many files include.
#pragma once

#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <memory>
#include <string>
#include <string_view>

#include "Platform/Time/Date.h"
#include "Platform/Time/Locale.h"
#include "Platform/Time/TimeZone.h"

namespace kestrona {

struct TimeZone::Impl {
  std::string identifier;
  std::unique_ptr<icu::TimeZone> zone;
};

namespace icubridge {

struct Access {
  static const icu::TimeZone& zone(const TimeZone& timeZone) { return *timeZone.impl_->zone; }
  static TimeZone make(std::string identifier, std::unique_ptr<icu::TimeZone> zone);
};

inline const icu::TimeZone& zone(const TimeZone& timeZone) { return Access::zone(timeZone); }
// ICU counts time in milliseconds since 1970, a Date in seconds.
inline double millis(Date date) { return date.timeIntervalSince1970() * 1000.0; }
inline Date dateFromMillis(double millis) { return Date(millis / 1000.0); }

icu::Locale locale(const Locale& locale);

inline icu::UnicodeString unicode(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

inline std::string utf8(const icu::UnicodeString& text) {
  std::string result;
  text.toUTF8String(result);
  return result;
}

}  // namespace icubridge
}  // namespace kestrona
