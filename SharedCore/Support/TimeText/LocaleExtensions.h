// What the core asks of a locale beyond the platform's answers.
//
// is24HoursFormat() resolves the template "j" (the hour in the locale's
// preferred clock) to a pattern; the locale uses a 24-hour clock when that
// pattern has no "a" (the AM/PM marker). A locale whose pattern cannot be
// resolved counts as 24-hour.
//
// preferredLocale() is the locale of the user's first preferred language
// (Locale::preferredLanguages()), or Locale::current() when there is none.
// It reads the environment on every call.
//
// Thread-safe.
#pragma once

#include "Platform/Time/Locale.h"

namespace kestrona {

bool is24HoursFormat(const Locale& locale);
Locale preferredLocale();

}  // namespace kestrona
