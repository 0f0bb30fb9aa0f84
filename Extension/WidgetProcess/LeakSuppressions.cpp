// The widget process draws: keep the font libraries' caches out of the leak
// report of its sanitizer build (see FontLibraryLeakSuppressions.h).
#include "Platform/View/FontLibraryLeakSuppressions.h"

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() { return kestrona::kFontLibraryLeakSuppressions; }
