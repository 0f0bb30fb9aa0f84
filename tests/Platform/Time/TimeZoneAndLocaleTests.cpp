#include <gtest/gtest.h>

#include "Platform/Time/Locale.h"
#include "Platform/Time/TimeZone.h"
#include "tests/Platform/Time/TestDates.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::utc;

TEST(TimeZone, DatabaseZonesKnowTheirOffsetsAndChanges) {
  auto berlin = TimeZone::fromIdentifier("Europe/Berlin").value();
  EXPECT_EQ(berlin.identifier(), "Europe/Berlin");
  EXPECT_EQ(berlin.secondsFromGMT(utc(2026, 1, 15)), 3600);
  EXPECT_EQ(berlin.secondsFromGMT(utc(2026, 7, 15)), 7200);
  EXPECT_FALSE(berlin.isDaylightSavingTime(utc(2026, 3, 29, 0, 59, 59)));
  EXPECT_TRUE(berlin.isDaylightSavingTime(utc(2026, 3, 29, 1)));
  EXPECT_EQ(berlin.nextDaylightSavingTimeTransition(utc(2026, 1, 1)), utc(2026, 3, 29, 1));
  EXPECT_EQ(berlin.nextDaylightSavingTimeTransition(utc(2026, 3, 29, 1)), utc(2026, 10, 25, 1));
  EXPECT_FALSE(TimeZone::fromIdentifier("Mars/Olympus_Mons").has_value());
  EXPECT_FALSE(TimeZone::fromIdentifier("").has_value());
}

TEST(TimeZone, FixedOffsetsAreNamedAfterTheirOffsetAndLimitedToEighteenHours) {
  auto india = TimeZone::fromSecondsFromGMT(5 * 3600 + 30 * 60).value();
  EXPECT_EQ(india.identifier(), "GMT+0530");
  EXPECT_EQ(india.secondsFromGMT(utc(2026, 7, 1)), 19800);
  EXPECT_FALSE(india.nextDaylightSavingTimeTransition(utc(2026, 1, 1)).has_value());
  EXPECT_EQ(TimeZone::fromSecondsFromGMT(-3600)->identifier(), "GMT-0100");
  EXPECT_EQ(TimeZone::fromSecondsFromGMT(0)->identifier(), "GMT");
  EXPECT_TRUE(TimeZone::fromSecondsFromGMT(18 * 3600).has_value());
  EXPECT_FALSE(TimeZone::fromSecondsFromGMT(18 * 3600 + 1).has_value());
  EXPECT_FALSE(TimeZone::fromSecondsFromGMT(-18 * 3600 - 1).has_value());
  EXPECT_EQ(TimeZone::gmt().secondsFromGMT(utc(2026, 7, 1)), 0);
}

TEST(TimeZone, CurrentIsReadFromTZInItsPOSIXForms) {
  testing::ScopedEnvironment environment;
  environment.set("TZ", "America/New_York");
  EXPECT_EQ(TimeZone::current().identifier(), "America/New_York");
  environment.set("TZ", ":Europe/Berlin");
  EXPECT_EQ(TimeZone::current().identifier(), "Europe/Berlin");
  environment.set("TZ", "/usr/share/zoneinfo/Asia/Tokyo");
  EXPECT_EQ(TimeZone::current().identifier(), "Asia/Tokyo");
  environment.set("TZ", "");
  EXPECT_EQ(TimeZone::current().secondsFromGMT(utc(2026, 7, 1)), 0);
  // A TZ that names no zone falls back on the system's zone, as no TZ does.
  environment.set("TZ", "Nowhere/Special");
  std::string fallback = TimeZone::current().identifier();
  environment.set("TZ", std::nullopt);
  EXPECT_EQ(TimeZone::current().identifier(), fallback);
}

TEST(Locale, POSIXNamesBecomeLocaleIdentifiers) {
  EXPECT_EQ(Locale::identifierFromPOSIXName("de_DE.UTF-8"), "de_DE");
  EXPECT_EQ(Locale::identifierFromPOSIXName("fr_FR.UTF-8@euro"), "fr_FR");
  EXPECT_EQ(Locale::identifierFromPOSIXName("sr_RS@latin"), "sr_Latn_RS");
  EXPECT_EQ(Locale::identifierFromPOSIXName("uz@cyrillic"), "uz_Cyrl");
  EXPECT_EQ(Locale::identifierFromPOSIXName("C"), "en_US_POSIX");
  EXPECT_EQ(Locale::identifierFromPOSIXName("C.UTF-8"), "en_US_POSIX");
  EXPECT_EQ(Locale::identifierFromPOSIXName("POSIX"), "en_US_POSIX");
  EXPECT_EQ(Locale::identifierFromPOSIXName(""), std::nullopt);
  EXPECT_EQ(Locale::identifierFromPOSIXName(".UTF-8"), std::nullopt);
}

TEST(Locale, CurrentTakesLCALLThenLCTIMEThenLANG) {
  testing::ScopedEnvironment environment;
  environment.set("LC_ALL", std::nullopt);
  environment.set("LC_TIME", std::nullopt);
  environment.set("LANG", std::nullopt);
  EXPECT_EQ(Locale::current().identifier(), "en_US_POSIX");
  environment.set("LANG", "fr_FR.UTF-8");
  EXPECT_EQ(Locale::current().identifier(), "fr_FR");
  environment.set("LC_TIME", "de_DE.UTF-8");
  EXPECT_EQ(Locale::current().identifier(), "de_DE");
  environment.set("LC_ALL", "en_GB.UTF-8");
  EXPECT_EQ(Locale::current().identifier(), "en_GB");
  // Empty values count as unset.
  environment.set("LC_ALL", "");
  EXPECT_EQ(Locale::current().identifier(), "de_DE");
}

TEST(Locale, PreferredLanguagesFollowGettext) {
  testing::ScopedEnvironment environment;
  environment.set("LC_ALL", std::nullopt);
  environment.set("LC_MESSAGES", std::nullopt);
  environment.set("LANG", "fr_FR.UTF-8");
  environment.set("LANGUAGE", "de_DE:en::pt_BR");
  EXPECT_EQ(Locale::preferredLanguages(), (std::vector<std::string>{"de-DE", "en", "pt-BR"}));
  environment.set("LANGUAGE", std::nullopt);
  EXPECT_EQ(Locale::preferredLanguages(), (std::vector<std::string>{"fr-FR"}));
  environment.set("LC_MESSAGES", "sr_RS@latin");
  EXPECT_EQ(Locale::preferredLanguages(), (std::vector<std::string>{"sr-Latn-RS"}));
  // In the "C" locale, or with no locale at all, LANGUAGE is not consulted.
  environment.set("LANGUAGE", "de_DE");
  environment.set("LC_ALL", "C");
  EXPECT_TRUE(Locale::preferredLanguages().empty());
  environment.set("LC_ALL", std::nullopt);
  environment.set("LC_MESSAGES", std::nullopt);
  environment.set("LANG", std::nullopt);
  EXPECT_TRUE(Locale::preferredLanguages().empty());
}

TEST(Locale, PartsAndCurrencyOfAnIdentifier) {
  Locale german("de-DE");
  EXPECT_EQ(german.languageCode(), "de");
  EXPECT_EQ(german.regionCode(), "DE");
  EXPECT_EQ(german.currencyCode(), "EUR");
  EXPECT_EQ(Locale("en_US").currencyCode(), "USD");
  EXPECT_EQ(Locale("ja_JP").currencyCode(), "JPY");
  EXPECT_EQ(Locale("fr").regionCode(), std::nullopt);
  EXPECT_EQ(Locale("fr").currencyCode(), std::nullopt);
}

}  // namespace
}  // namespace kestrona
