// Localised text lookup.
//
// Every text a person reads is looked up by key, with a default English text
// and a comment for translators. No translation tables ship, so the lookup
// gives the default text; callers must still pass all three, so that a table
// can be added without touching them. Thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace kestrona {

std::string localizedString(std::string_view key, std::string_view defaultValue, std::string_view comment);

}  // namespace kestrona
