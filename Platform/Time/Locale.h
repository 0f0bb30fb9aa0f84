// Locales: the language and region conventions for text, dates and numbers.
//
// A Locale is an identifier ("en_US", "de-DE", "fr_FR@currency=EUR") that
// the formatters and the calendar look their data up by. Any identifier is
// accepted, as the platform accepts it; one the locale data does not know
// falls back to the root conventions when it is used. Values are immutable
// and thread-safe.
//
// current() follows POSIX: LC_ALL, then LC_TIME, then LANG, each taken when
// set and not empty. The POSIX names are turned into locale identifiers:
// the codeset is dropped ("de_DE.UTF-8" is "de_DE"), the script modifiers
// "@latin" and "@cyrillic" become scripts, other modifiers are dropped, and
// "C" or "POSIX" is "en_US_POSIX". With nothing set it is "en_US_POSIX".
//
// preferredLanguages() is the user's list of languages in order, as
// language tags ("de-DE", "en"): the colon-separated LANGUAGE list, then
// LC_ALL, LC_MESSAGES and LANG as gettext reads them. LANGUAGE counts only
// when the locale is not "C"/"POSIX", and a "C" or "POSIX" locale gives no
// language, so the list may be empty. Both read the environment on every
// call.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrona {

class Locale {
 public:
  explicit Locale(std::string identifier) : identifier_(std::move(identifier)) {}

  static Locale current();
  static std::vector<std::string> preferredLanguages();

  const std::string& identifier() const noexcept { return identifier_; }
  // ISO 639 language code ("de"), or none when the identifier has none.
  std::optional<std::string> languageCode() const;
  // ISO 3166 region code ("DE"), or none.
  std::optional<std::string> regionCode() const;
  // ISO 4217 code of the region's currency ("EUR"), or none.
  std::optional<std::string> currencyCode() const;

  // The locale identifier for a POSIX locale name such as "de_DE.UTF-8";
  // none for an empty name.
  static std::optional<std::string> identifierFromPOSIXName(std::string_view name);

  friend bool operator==(const Locale&, const Locale&) = default;

 private:
  std::string identifier_;
};

}  // namespace kestrona
