#include "Platform/Time/NumberFormatter.h"

#include <unicode/numberformatter.h>
#include <unicode/ucurr.h>

#include <algorithm>

#include "Platform/Time/IcuBridge.h"

namespace kestrona {

// ICU's localized number formatter is immutable and may be used by many
// threads at once.
struct NumberFormatter::Engine {
  explicit Engine(icu::number::LocalizedNumberFormatter f) : formatter(std::move(f)) {}
  icu::number::LocalizedNumberFormatter formatter;
};

namespace {

constexpr std::string_view kNoCurrency = "XXX";
constexpr int kMaximumDigits = 100;

UNumberFormatRoundingMode icuRounding(NumberFormatter::RoundingMode mode) {
  using Mode = NumberFormatter::RoundingMode;
  switch (mode) {
    case Mode::ceiling: return UNUM_ROUND_CEILING;
    case Mode::floor: return UNUM_ROUND_FLOOR;
    case Mode::down: return UNUM_ROUND_DOWN;
    case Mode::up: return UNUM_ROUND_UP;
    case Mode::halfEven: return UNUM_ROUND_HALFEVEN;
    case Mode::halfDown: return UNUM_ROUND_HALFDOWN;
    case Mode::halfUp: return UNUM_ROUND_HALFUP;
  }
  return UNUM_ROUND_HALFEVEN;
}

icu::UnicodeString currencyUnicode(const std::string& code) {
  return icu::UnicodeString(code.c_str(), static_cast<int32_t>(code.size()), icu::UnicodeString::kInvariant);
}

int currencyDigits(const std::string& code) {
  icu::UnicodeString unicode = currencyUnicode(code);
  UErrorCode status = U_ZERO_ERROR;
  int digits = ucurr_getDefaultFractionDigits(unicode.getTerminatedBuffer(), &status);
  return U_SUCCESS(status) ? digits : 2;
}

}  // namespace

NumberFormatter::NumberFormatter() : locale_(Locale::current()) { resetDigitsForStyle(); }

NumberFormatter::NumberFormatter(const NumberFormatter& other)
    : style_(other.style_),
      locale_(other.locale_),
      currencyCode_(other.currencyCode_),
      minimumFractionDigits_(other.minimumFractionDigits_),
      maximumFractionDigits_(other.maximumFractionDigits_),
      roundingMode_(other.roundingMode_),
      usesGroupingSeparator_(other.usesGroupingSeparator_),
      notation_(other.notation_) {}

NumberFormatter& NumberFormatter::operator=(const NumberFormatter& other) {
  if (this == &other) return *this;
  style_ = other.style_;
  locale_ = other.locale_;
  currencyCode_ = other.currencyCode_;
  minimumFractionDigits_ = other.minimumFractionDigits_;
  maximumFractionDigits_ = other.maximumFractionDigits_;
  roundingMode_ = other.roundingMode_;
  usesGroupingSeparator_ = other.usesGroupingSeparator_;
  notation_ = other.notation_;
  invalidate();
  return *this;
}

NumberFormatter::~NumberFormatter() = default;

void NumberFormatter::resetDigitsForStyle() {
  switch (style_) {
    case Style::noStyle:
      minimumFractionDigits_ = maximumFractionDigits_ = 0;
      usesGroupingSeparator_ = false;
      break;
    case Style::decimal:
      minimumFractionDigits_ = 0;
      maximumFractionDigits_ = 3;
      usesGroupingSeparator_ = true;
      break;
    case Style::currency:
      minimumFractionDigits_ = maximumFractionDigits_ = currencyDigits(currencyCode());
      usesGroupingSeparator_ = true;
      break;
    case Style::percent:
      minimumFractionDigits_ = maximumFractionDigits_ = 0;
      usesGroupingSeparator_ = true;
      break;
  }
  invalidate();
}

void NumberFormatter::setNumberStyle(Style style) {
  style_ = style;
  resetDigitsForStyle();
}

void NumberFormatter::setLocale(const Locale& locale) {
  locale_ = locale;
  if (style_ == Style::currency && !currencyCode_) {
    minimumFractionDigits_ = maximumFractionDigits_ = currencyDigits(currencyCode());
  }
  invalidate();
}

std::string NumberFormatter::currencyCode() const {
  if (currencyCode_) return *currencyCode_;
  return locale_.currencyCode().value_or(std::string(kNoCurrency));
}

void NumberFormatter::setCurrencyCode(std::optional<std::string> code) {
  currencyCode_ = std::move(code);
  if (style_ == Style::currency) {
    minimumFractionDigits_ = maximumFractionDigits_ = currencyDigits(currencyCode());
  }
  invalidate();
}

std::string NumberFormatter::currencySymbol() const {
  icu::UnicodeString code = currencyUnicode(currencyCode());
  UErrorCode status = U_ZERO_ERROR;
  UBool isChoiceFormat = false;
  int32_t length = 0;
  const UChar* name = ucurr_getName(code.getTerminatedBuffer(), icubridge::locale(locale_).getName(),
                                    UCURR_SYMBOL_NAME, &isChoiceFormat, &length, &status);
  if (U_FAILURE(status) || name == nullptr) return currencyCode();
  return icubridge::utf8(icu::UnicodeString(name, length));
}

void NumberFormatter::setMinimumFractionDigits(int digits) {
  minimumFractionDigits_ = std::clamp(digits, 0, kMaximumDigits);
  maximumFractionDigits_ = std::max(maximumFractionDigits_, minimumFractionDigits_);
  invalidate();
}

void NumberFormatter::setMaximumFractionDigits(int digits) {
  maximumFractionDigits_ = std::clamp(digits, 0, kMaximumDigits);
  minimumFractionDigits_ = std::min(minimumFractionDigits_, maximumFractionDigits_);
  invalidate();
}

void NumberFormatter::setRoundingMode(RoundingMode mode) {
  roundingMode_ = mode;
  invalidate();
}

void NumberFormatter::setUsesGroupingSeparator(bool uses) {
  usesGroupingSeparator_ = uses;
  invalidate();
}

void NumberFormatter::setNotation(Notation notation) {
  notation_ = notation;
  invalidate();
}

void NumberFormatter::invalidate() {
  std::lock_guard lock(engineMutex_);
  engine_.reset();
}

std::shared_ptr<const NumberFormatter::Engine> NumberFormatter::engine() const {
  std::lock_guard lock(engineMutex_);
  if (engine_) return engine_;
  namespace number = icu::number;
  auto formatter = number::NumberFormatter::withLocale(icubridge::locale(locale_))
                       .precision(number::Precision::minMaxFraction(minimumFractionDigits_, maximumFractionDigits_))
                       .roundingMode(icuRounding(roundingMode_))
                       .grouping(usesGroupingSeparator_ ? UNUM_GROUPING_AUTO : UNUM_GROUPING_OFF)
                       .notation(notation_ == Notation::compactShort ? number::Notation::compactShort()
                                                                     : number::Notation::simple());
  if (style_ == Style::currency) {
    UErrorCode status = U_ZERO_ERROR;
    icu::CurrencyUnit currency(currencyUnicode(currencyCode()).getTerminatedBuffer(), status);
    if (U_SUCCESS(status)) formatter = formatter.unit(currency);
  } else if (style_ == Style::percent) {
    formatter = formatter.unit(icu::NoUnit::percent()).scale(number::Scale::powerOfTen(2));
  }
  engine_ = std::make_shared<const Engine>(std::move(formatter));
  return engine_;
}

std::optional<std::string> NumberFormatter::string(double value) const {
  auto current = engine();
  UErrorCode status = U_ZERO_ERROR;
  auto formatted = current->formatter.formatDouble(value, status);
  if (U_FAILURE(status)) return std::nullopt;
  icu::UnicodeString text = formatted.toString(status);
  if (U_FAILURE(status)) return std::nullopt;
  return icubridge::utf8(text);
}

}  // namespace kestrona
