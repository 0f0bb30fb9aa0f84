// What the sanitizer build's leak checker must not report in a process that
// draws text.
//
// Fontconfig, Pango, Cairo and GLib keep process-wide caches (the font
// configuration, the default font map, pools of freed surfaces, the type
// system) that live until the process ends and are never freed. The leak
// checker would report them at the exit of every program that drew, and fail
// it. A program that draws returns these patterns from its
// __lsan_default_suppressions hook, which only the leak checker calls, by
// name. Our own code is never listed.
#pragma once

namespace kestrona {

inline constexpr const char* kFontLibraryLeakSuppressions =
    "leak:libfontconfig.so\n"
    "leak:libcairo.so\n"
    "leak:libpango-1.0.so\n"
    "leak:libpangoft2-1.0.so\n"
    "leak:libpangocairo-1.0.so\n"
    "leak:libglib-2.0.so\n"
    "leak:libgobject-2.0.so\n"
    "leak:libharfbuzz.so\n";

}  // namespace kestrona
