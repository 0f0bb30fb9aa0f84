// Driving a main loop from a test until its work is done.
//
// runUntil(loop, done) runs the loop's handlers one at a time on the calling
// thread, blocking until the next is ready, and checks done() after each. So
// a condition that another thread makes true must reach the loop as posted
// work: a completion on a queue's thread calls LoopSignal::signal(), which
// posts. A generous guard of 30 seconds of the loop's own fails the test
// instead of hanging it; only a hang ever reaches it. A loop that was stopped
// is restarted first.
//
// Threading: runUntil on the thread that runs the loop; LoopSignal::signal()
// from any thread, count() on the loop's thread.
#pragma once

#include <functional>

#include "Platform/RunLoop/MainLoop.h"

namespace kestrona::testing {

void runUntil(MainLoop& loop, const std::function<bool()>& done);

class LoopSignal {
 public:
  explicit LoopSignal(MainLoop& loop = MainLoop::main()) : loop_(loop) {}

  void signal();
  int count() const { return count_; }
  // Runs the loop until signal() has been called count times in all.
  void wait(int count = 1);

 private:
  MainLoop& loop_;
  int count_ = 0;
};

}  // namespace kestrona::testing
