// Dates to text and back, by a fixed pattern or by the locale's styles.
//
// A DateFormatter writes a Date as text in its time zone and locale, and
// reads such text back. Its format is either a pattern of the Unicode
// date-field symbols ("yyyy-MM-dd", "HH:mm:ss"), or, when no pattern is set,
// the locale's date and time styles. With neither, it writes the empty text
// and reads nothing.
//
// Reading is whole-text: date() gives none unless the text, after leading
// white space, is one date of the format to its last character. A formatter
// that is not lenient (the default) also rejects fields out of range: with
// "HH:mm" it reads "1:30" and "01:30" and rejects "24:00", "25:00", "1:75"
// and "1:5". A lenient one lets fields roll over. Fields the format lacks
// take their values from 1970-01-01 00:00:00 in the formatter's zone. A
// date that is not finite is written as the empty text.
//
// A new formatter uses TimeZone::current() and Locale::current() as they
// are when it is made. Dates are written in the locale's own calendar, which
// for most locales is the Gregorian one.
//
// Threading: string() and date() may be called from any thread at once;
// setters must not run while another thread uses the same formatter.
// Copies are independent formatters.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Time/Date.h"
#include "Platform/Time/Locale.h"
#include "Platform/Time/TimeZone.h"

namespace kestrona {

class DateFormatter {
 public:
  enum class Style { noStyle, shortStyle, mediumStyle, longStyle, fullStyle };

  DateFormatter();
  DateFormatter(const DateFormatter& other);
  DateFormatter& operator=(const DateFormatter& other);
  ~DateFormatter();

  const std::string& dateFormat() const noexcept { return dateFormat_; }
  void setDateFormat(std::string pattern);
  Style dateStyle() const noexcept { return dateStyle_; }
  void setDateStyle(Style style);
  Style timeStyle() const noexcept { return timeStyle_; }
  void setTimeStyle(Style style);
  const TimeZone& timeZone() const noexcept { return timeZone_; }
  void setTimeZone(const TimeZone& timeZone);
  const Locale& locale() const noexcept { return locale_; }
  void setLocale(const Locale& locale);
  bool isLenient() const noexcept { return lenient_; }
  void setLenient(bool lenient);

  std::string string(Date date) const;
  std::optional<Date> date(std::string_view text) const;

  // The locale's pattern for a template of fields, such as "j" (the hour in
  // the locale's clock) or "yMMMd"; none when the template is not valid.
  static std::optional<std::string> dateFormatFromTemplate(std::string_view dateTemplate, const Locale& locale);

 private:
  struct Engine;
  std::shared_ptr<Engine> engine() const;
  void invalidate();

  std::string dateFormat_;
  Style dateStyle_ = Style::noStyle;
  Style timeStyle_ = Style::noStyle;
  TimeZone timeZone_;
  Locale locale_;
  bool lenient_ = false;

  // The ICU formatter for the settings above, made on first use.
  mutable std::mutex engineMutex_;
  mutable std::shared_ptr<Engine> engine_;
};

}  // namespace kestrona
