#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "SharedWidgets/Views/Chart/ChartValueFormatting.h"

namespace kestrona {
namespace {

struct LocaleCase {
  const char* identifier;
  const char* belowThousand;  // 999.95
  const char* thousand;       // 1000
  const char* millions;       // 2,500,000
  const char* billions;       // 3,000,000,000
};

TEST(CompactCurrencyTest, AddsASuffixFromOneThousandOnAndKeepsTheSymbolWhereTheLocalePutsIt) {
  // Below 1000 the value is written in full (with one fraction digit at
  // most, so 999.95 rounds up without gaining a suffix); from 1000 on the
  // number is shortened and the blank before a trailing symbol is ordinary.
  const LocaleCase cases[] = {
      {"en_US", "$1,000.0", "$1.0K", "$2.5M", "$3.0B"},
      {"de_DE", "1.000,0\u00A0€", "1,0K €", "2,5M €", "3,0B €"},
      {"fr_FR", "1\u202F000,0\u00A0€", "1,0K €", "2,5M €", "3,0B €"},
  };
  for (const LocaleCase& c : cases) {
    SCOPED_TRACE(c.identifier);
    const Locale locale(c.identifier);
    EXPECT_EQ(compactCurrencyString(999.95, locale), c.belowThousand);
    EXPECT_EQ(compactCurrencyString(1000, locale), c.thousand);
    EXPECT_EQ(compactCurrencyString(2'500'000, locale), c.millions);
    EXPECT_EQ(compactCurrencyString(3e9, locale), c.billions);
  }
}

TEST(CompactCurrencyTest, AGivenCurrencyCodeReplacesTheLocalesCurrency) {
  EXPECT_EQ(compactCurrencyString(1500, Locale("de_DE"), "USD"), "1,5K $");
  EXPECT_EQ(compactCurrencyString(1500, Locale("en_US"), "EUR"), "€1.5K");
}

TEST(CompactCurrencyTest, NegativeAndSmallValuesAreWrittenInFull) {
  EXPECT_EQ(compactCurrencyString(0, Locale("en_US")), "$0.0");
  EXPECT_EQ(compactCurrencyString(-5000, Locale("en_US")), "-$5,000.0");
}

TEST(CompactNumberTest, CutsToTenthsThenShortensFromOneThousandOn) {
  const Locale us("en_US");
  // 999.95 is cut to 999.9, below 1000: no suffix.
  EXPECT_EQ(compactNumberString(999.95, us), "999.9");
  EXPECT_EQ(compactNumberString(1000, us), "1K");
  EXPECT_EQ(compactNumberString(1250, us), "1.2K");
  EXPECT_EQ(compactNumberString(4'200'000, us), "4.2M");
  EXPECT_EQ(compactNumberString(7e9, us), "7B");
  EXPECT_EQ(compactNumberString(1250, Locale("de_DE")), "1,2K");
  EXPECT_EQ(compactNumberString(1250, Locale("fr_FR")), "1,2K");
  EXPECT_EQ(compactNumberString(999.95, Locale("de_DE")), "999,9");
}

TEST(CompactNumberDeathTest, RefusesValuesWithoutTenths) {
  EXPECT_DEATH((void)compactNumberString(std::nan(""), Locale("en_US")), "Fatal error: A chart value");
  EXPECT_DEATH((void)compactNumberString(std::numeric_limits<double>::infinity(), Locale("en_US")),
               "Fatal error: A chart value");
  EXPECT_DEATH((void)compactNumberString(1e18, Locale("en_US")), "Fatal error: A chart value");
}

TEST(PlainNumberTest, WritesWholeNumbersWithoutGrouping) {
  EXPECT_EQ(plainNumberString(1234.6, Locale("en_US")), "1235");
  EXPECT_EQ(plainNumberString(1234.4, Locale("de_DE")), "1234");
  EXPECT_EQ(plainNumberString(0, Locale("fr_FR")), "0");
}

}  // namespace
}  // namespace kestrona
