#include "Platform/Time/DateFormatter.h"

#include <unicode/datefmt.h>
#include <unicode/dtptngen.h>
#include <unicode/smpdtfmt.h>

#include <cmath>

#include "Platform/Time/IcuBridge.h"

namespace kestrona {

// ICU formatters keep a calendar they work in, so each use holds the mutex.
struct DateFormatter::Engine {
  std::mutex mutex;
  std::unique_ptr<icu::DateFormat> format;
};

namespace {

icu::DateFormat::EStyle icuStyle(DateFormatter::Style style) {
  switch (style) {
    case DateFormatter::Style::noStyle: return icu::DateFormat::kNone;
    case DateFormatter::Style::shortStyle: return icu::DateFormat::kShort;
    case DateFormatter::Style::mediumStyle: return icu::DateFormat::kMedium;
    case DateFormatter::Style::longStyle: return icu::DateFormat::kLong;
    case DateFormatter::Style::fullStyle: return icu::DateFormat::kFull;
  }
  return icu::DateFormat::kNone;
}

}  // namespace

DateFormatter::DateFormatter() : timeZone_(TimeZone::current()), locale_(Locale::current()) {}

DateFormatter::DateFormatter(const DateFormatter& other)
    : dateFormat_(other.dateFormat_),
      dateStyle_(other.dateStyle_),
      timeStyle_(other.timeStyle_),
      timeZone_(other.timeZone_),
      locale_(other.locale_),
      lenient_(other.lenient_) {}

DateFormatter& DateFormatter::operator=(const DateFormatter& other) {
  if (this == &other) return *this;
  dateFormat_ = other.dateFormat_;
  dateStyle_ = other.dateStyle_;
  timeStyle_ = other.timeStyle_;
  timeZone_ = other.timeZone_;
  locale_ = other.locale_;
  lenient_ = other.lenient_;
  invalidate();
  return *this;
}

DateFormatter::~DateFormatter() = default;

void DateFormatter::setDateFormat(std::string pattern) {
  dateFormat_ = std::move(pattern);
  invalidate();
}

void DateFormatter::setDateStyle(Style style) {
  dateStyle_ = style;
  invalidate();
}

void DateFormatter::setTimeStyle(Style style) {
  timeStyle_ = style;
  invalidate();
}

void DateFormatter::setTimeZone(const TimeZone& timeZone) {
  timeZone_ = timeZone;
  invalidate();
}

void DateFormatter::setLocale(const Locale& locale) {
  locale_ = locale;
  invalidate();
}

void DateFormatter::setLenient(bool lenient) {
  lenient_ = lenient;
  invalidate();
}

void DateFormatter::invalidate() {
  std::lock_guard lock(engineMutex_);
  engine_.reset();
}

std::shared_ptr<DateFormatter::Engine> DateFormatter::engine() const {
  std::lock_guard lock(engineMutex_);
  if (engine_) return engine_;
  auto engine = std::make_shared<Engine>();
  const icu::Locale locale = icubridge::locale(locale_);
  if (!dateFormat_.empty()) {
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(icubridge::unicode(dateFormat_), locale, status);
    if (U_SUCCESS(status)) engine->format = std::move(format);
  } else if (dateStyle_ != Style::noStyle || timeStyle_ != Style::noStyle) {
    engine->format.reset(icu::DateFormat::createDateTimeInstance(icuStyle(dateStyle_), icuStyle(timeStyle_), locale));
  }
  if (engine->format) {
    engine->format->setTimeZone(icubridge::zone(timeZone_));
    engine->format->setLenient(lenient_);
  }
  engine_ = engine;
  return engine;
}

std::string DateFormatter::string(Date date) const {
  if (!std::isfinite(date.timeIntervalSince1970())) return {};
  auto current = engine();
  if (!current->format) return {};
  std::lock_guard lock(current->mutex);
  icu::UnicodeString text;
  current->format->format(icubridge::millis(date), text);
  return icubridge::utf8(text);
}

std::optional<Date> DateFormatter::date(std::string_view text) const {
  auto current = engine();
  if (!current->format) return std::nullopt;
  const icu::UnicodeString unicodeText = icubridge::unicode(text);
  std::lock_guard lock(current->mutex);
  icu::ParsePosition position(0);
  UDate millis = current->format->parse(unicodeText, position);
  if (position.getErrorIndex() >= 0 || position.getIndex() != unicodeText.length()) return std::nullopt;
  return icubridge::dateFromMillis(millis);
}

std::optional<std::string> DateFormatter::dateFormatFromTemplate(std::string_view dateTemplate,
                                                                 const Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::DateTimePatternGenerator> generator(
      icu::DateTimePatternGenerator::createInstance(icubridge::locale(locale), status));
  if (U_FAILURE(status)) return std::nullopt;
  icu::UnicodeString pattern = generator->getBestPattern(icubridge::unicode(dateTemplate), status);
  if (U_FAILURE(status) || pattern.isEmpty()) return std::nullopt;
  return icubridge::utf8(pattern);
}

}  // namespace kestrona
