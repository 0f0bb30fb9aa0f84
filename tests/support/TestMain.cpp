// The main of every test executable. Death tests run in the "threadsafe"
// style (re-executing the binary) because several parts of the system start
// threads of their own, and a forked child of a threaded process must not
// run arbitrary code.
#include <gtest/gtest.h>

#include "Platform/View/FontLibraryLeakSuppressions.h"

// Tests draw widgets: keep the font libraries' caches out of the leak report
// of the sanitizer build (see FontLibraryLeakSuppressions.h).
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() { return kestrona::kFontLibraryLeakSuppressions; }

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  return RUN_ALL_TESTS();
}
