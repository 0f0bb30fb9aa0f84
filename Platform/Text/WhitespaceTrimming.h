// Trimming white space and newlines as Unicode defines them: the separators
// (Zs, Zl, Zp), the tab and line-break controls, and NEXT LINE; not only
// ASCII's, so U+00A0 and U+3000 go too. A byte sequence that is not
// well-formed UTF-8 is never white space, so it stops the trim. Pure,
// thread-safe.
#pragma once

#include <string_view>

namespace kestrona {

// text without the white space and newlines at both ends; a view into text.
std::string_view trimmingWhitespacesAndNewlines(std::string_view text);

}  // namespace kestrona
