// A second copy of the test program running one test, for tests that need a
// real second process (a restart, or two processes on one file).
//
// The child runs with only the named test (--gtest_filter) and with the
// marker variable set to "1" in its environment, beside any extra variables
// given; its test skips itself unless the marker is set. The child's
// standard input and output are pipes to the parent: the parent reads what
// the child writes (a line at a time) and ends the child's input to let it
// go on. Use it from the test's own thread.
#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>

namespace kestrona::testing {

class ChildTestProcess {
 public:
  ChildTestProcess(const std::string& testName, const std::string& markerVariable,
                   const std::map<std::string, std::string>& environment = {});
  ~ChildTestProcess();
  ChildTestProcess(const ChildTestProcess&) = delete;
  ChildTestProcess& operator=(const ChildTestProcess&) = delete;

  // The next line the child wrote, without its end; none once it closed its output.
  std::optional<std::string> readLine();
  // Closes the child's standard input: the child reads the end of it.
  void closeInput();
  // Waits for the child; its exit status, or -1 when it did not start or did not exit normally.
  int wait();

 private:
  pid_t child_ = -1;
  int input_ = -1;
  int output_ = -1;
  std::string buffered_;
};

// For the child's side: tells the parent one line.
void tellParent(const std::string& line);
// For the child's side: waits until the parent closes this process's
// standard input.
void waitForEndOfInput();

}  // namespace kestrona::testing
