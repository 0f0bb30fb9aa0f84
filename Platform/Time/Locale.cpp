#include "Platform/Time/Locale.h"

#include <unicode/ucurr.h>

#include <cstdlib>

#include "Platform/Time/IcuBridge.h"

namespace kestrona {
namespace icubridge {

icu::Locale locale(const Locale& locale) { return icu::Locale::createCanonical(locale.identifier().c_str()); }

}  // namespace icubridge

namespace {

constexpr std::string_view kPOSIXIdentifier = "en_US_POSIX";

const char* nonEmptyEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value && *value ? value : nullptr;
}

bool isPOSIXDefault(std::string_view name) {
  return name == "C" || name == "POSIX" || name.starts_with("C.") || name.starts_with("POSIX.");
}

std::optional<std::string> nonEmpty(const char* text) {
  if (!text || !*text) return std::nullopt;
  return std::string(text);
}

}  // namespace

std::optional<std::string> Locale::identifierFromPOSIXName(std::string_view name) {
  if (name.empty()) return std::nullopt;
  if (isPOSIXDefault(name)) return std::string(kPOSIXIdentifier);
  std::string_view modifier;
  if (auto at = name.find('@'); at != std::string_view::npos) {
    modifier = name.substr(at + 1);
    name = name.substr(0, at);
  }
  if (auto dot = name.find('.'); dot != std::string_view::npos) name = name.substr(0, dot);
  if (name.empty()) return std::nullopt;
  std::string identifier(name);
  std::string_view script = modifier == "latin" ? "Latn" : modifier == "cyrillic" ? "Cyrl" : "";
  if (!script.empty()) {
    // "sr_RS@latin" is Serbian in Latin script: "sr_Latn_RS".
    auto underscore = identifier.find('_');
    std::string language = identifier.substr(0, underscore);
    std::string rest = underscore == std::string::npos ? "" : identifier.substr(underscore);
    identifier = language + "_" + std::string(script) + rest;
  }
  return identifier;
}

Locale Locale::current() {
  for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
    if (const char* value = nonEmptyEnvironment(name)) {
      if (auto identifier = identifierFromPOSIXName(value)) return Locale(*identifier);
    }
  }
  return Locale(std::string(kPOSIXIdentifier));
}

std::vector<std::string> Locale::preferredLanguages() {
  std::optional<std::string> messagesLocale;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    if ((messagesLocale = nonEmpty(std::getenv(name)))) break;
  }
  // Without a locale the process runs in "C", which has no language.
  if (!messagesLocale || isPOSIXDefault(*messagesLocale)) return {};

  std::vector<std::string> names;
  if (auto list = nonEmpty(std::getenv("LANGUAGE"))) {
    std::string_view rest(*list);
    while (!rest.empty()) {
      auto colon = rest.find(':');
      std::string_view item = rest.substr(0, colon);
      if (!item.empty()) names.emplace_back(item);
      rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
    }
  }
  if (names.empty()) names.push_back(*messagesLocale);

  std::vector<std::string> languages;
  for (const auto& name : names) {
    auto identifier = identifierFromPOSIXName(name);
    if (!identifier || *identifier == kPOSIXIdentifier) continue;
    UErrorCode status = U_ZERO_ERROR;
    std::string tag = icubridge::locale(Locale(*identifier)).toLanguageTag<std::string>(status);
    if (U_SUCCESS(status) && !tag.empty() && tag != "und") languages.push_back(tag);
  }
  return languages;
}

std::optional<std::string> Locale::languageCode() const {
  auto locale = icubridge::locale(*this);
  return nonEmpty(locale.getLanguage());
}

std::optional<std::string> Locale::regionCode() const {
  auto locale = icubridge::locale(*this);
  return nonEmpty(locale.getCountry());
}

std::optional<std::string> Locale::currencyCode() const {
  UChar code[4] = {};
  UErrorCode status = U_ZERO_ERROR;
  ucurr_forLocale(icubridge::locale(*this).getName(), code, 4, &status);
  if (U_FAILURE(status) || code[0] == 0) return std::nullopt;
  return icubridge::utf8(icu::UnicodeString(code, 3));
}

}  // namespace kestrona
