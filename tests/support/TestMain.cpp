// The main of every test executable. Death tests run in the "threadsafe"
// style (re-executing the binary) because several parts of the system start
// threads of their own, and a forked child of a threaded process must not
// run arbitrary code.
#include <gtest/gtest.h>

// Fontconfig, Pango, Cairo and GLib keep process-wide caches (the font
// configuration, the default font map, pools of freed surfaces, the type
// system) that live until the process ends and are never freed. The leak
// checker of the sanitizer build would report them at exit; these patterns
// keep them out of the report. Our own code is never listed. The checker
// calls this hook by name; other builds never do.
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\n"
         "leak:libcairo.so\n"
         "leak:libpango-1.0.so\n"
         "leak:libpangoft2-1.0.so\n"
         "leak:libpangocairo-1.0.so\n"
         "leak:libglib-2.0.so\n"
         "leak:libgobject-2.0.so\n"
         "leak:libharfbuzz.so\n";
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  return RUN_ALL_TESTS();
}
