// Numbers to text in the conventions of a locale: plain, decimal, currency
// and percent, in full or compact notation.
//
// A NumberFormatter writes a double with the locale's digits, decimal and
// grouping separators, currency symbol and pattern: 1234.5 is "1,234.5" in
// en_US, "1.234,5" in de_DE and "1 234,5" in fr_FR (with U+202F as the
// group separator), and as euros "1.234,50 €" and "1 234,50 €" (U+00A0
// before the symbol). The compact notation shortens large numbers for the
// locale: "1.2K", "$1.2K".
//
// Each style has defaults, set again whenever the style is set:
//   noStyle   0 fraction digits, no grouping ("1234")
//   decimal   0 to 3 fraction digits, grouping
//   currency  the currency's digits (2 for EUR and USD, 0 for JPY), grouping
//   percent   0 fraction digits, grouping; 0.25 is "25%"
// The fraction digits, rounding and grouping may then be set. Setting a
// maximum below the minimum lowers the minimum, and the other way round.
// Rounding is half-even unless set. The currency is the locale's unless a
// code is set.
//
// Threading: string() and currencySymbol() may be called from any thread at
// once; setters must not run while another thread uses the same formatter.
// Copies are independent formatters.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/Time/Locale.h"

namespace kestrona {

class NumberFormatter {
 public:
  enum class Style { noStyle, decimal, currency, percent };
  enum class RoundingMode { ceiling, floor, down, up, halfEven, halfDown, halfUp };
  enum class Notation { standard, compactShort };

  NumberFormatter();
  NumberFormatter(const NumberFormatter& other);
  NumberFormatter& operator=(const NumberFormatter& other);
  ~NumberFormatter();

  Style numberStyle() const noexcept { return style_; }
  // Sets the style and its default digits and grouping.
  void setNumberStyle(Style style);
  const Locale& locale() const noexcept { return locale_; }
  // Sets the locale; the currency digits follow the locale's currency when
  // no code is set.
  void setLocale(const Locale& locale);
  // The ISO 4217 code written as currency: the set one, else the locale's,
  // else "XXX" (no currency).
  std::string currencyCode() const;
  void setCurrencyCode(std::optional<std::string> code);
  // The currency's symbol in the locale: "$" for USD in en_US, "€" for EUR.
  std::string currencySymbol() const;

  int minimumFractionDigits() const noexcept { return minimumFractionDigits_; }
  void setMinimumFractionDigits(int digits);
  int maximumFractionDigits() const noexcept { return maximumFractionDigits_; }
  void setMaximumFractionDigits(int digits);
  RoundingMode roundingMode() const noexcept { return roundingMode_; }
  void setRoundingMode(RoundingMode mode);
  bool usesGroupingSeparator() const noexcept { return usesGroupingSeparator_; }
  void setUsesGroupingSeparator(bool uses);
  Notation notation() const noexcept { return notation_; }
  void setNotation(Notation notation);

  // The text of value; none if formatting fails. Not-a-number is "NaN" and
  // infinity "∞", with the locale's sign.
  std::optional<std::string> string(double value) const;

 private:
  struct Engine;
  std::shared_ptr<const Engine> engine() const;
  void resetDigitsForStyle();
  void invalidate();

  Style style_ = Style::noStyle;
  Locale locale_;
  std::optional<std::string> currencyCode_;
  int minimumFractionDigits_ = 0;
  int maximumFractionDigits_ = 0;
  RoundingMode roundingMode_ = RoundingMode::halfEven;
  bool usesGroupingSeparator_ = false;
  Notation notation_ = Notation::standard;

  // The ICU formatter for the settings above, made on first use.
  mutable std::mutex engineMutex_;
  mutable std::shared_ptr<const Engine> engine_;
};

}  // namespace kestrona
