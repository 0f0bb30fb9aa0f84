// The main of every test executable. Death tests run in the "threadsafe"
// style (re-executing the binary) because several parts of the system start
// threads of their own, and a forked child of a threaded process must not
// run arbitrary code.
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  return RUN_ALL_TESTS();
}
