// The widget window draws and runs GTK: keep the font libraries' caches and
// the toolkit's own process-wide state (type system, display connection,
// theme, input methods, renderer) out of the leak report of its sanitizer
// build.
#include <string>

#include "Platform/View/FontLibraryLeakSuppressions.h"

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
  static const std::string suppressions = std::string(kestrona::kFontLibraryLeakSuppressions) +
                                          "leak:libgtk-4.so\n"
                                          "leak:libgio-2.0.so\n"
                                          "leak:libgdk_pixbuf-2.0.so\n"
                                          "leak:libX11.so\n"
                                          "leak:libEGL\n"
                                          "leak:libGLX\n"
                                          "leak:libgallium\n"
                                          "leak:swrast_dri.so\n";
  return suppressions.c_str();
}
