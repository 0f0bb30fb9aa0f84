#include "SharedCore/Support/TimeText/LocaleExtensions.h"

#include "Platform/Time/DateFormatter.h"

namespace kestrona {

bool is24HoursFormat(const Locale& locale) {
  auto pattern = DateFormatter::dateFormatFromTemplate("j", locale);
  return !pattern || pattern->find('a') == std::string::npos;
}

Locale preferredLocale() {
  auto languages = Locale::preferredLanguages();
  if (languages.empty()) return Locale::current();
  return Locale(languages.front());
}

}  // namespace kestrona
