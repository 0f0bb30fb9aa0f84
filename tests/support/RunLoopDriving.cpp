#include "tests/support/RunLoopDriving.h"

#include <gtest/gtest.h>

#include <asio/io_context.hpp>

#include "Platform/RunLoop/RunLoopTimer.h"

namespace kestrona::testing {

void runUntil(MainLoop& loop, const std::function<bool()>& done) {
  if (loop.stopped()) loop.restart();
  bool guardFired = false;
  auto guard = RunLoopTimer::once(loop, 30.0, [&] { guardFired = true; });
  while (!done() && !guardFired) {
    // Work that stops the loop (as a program's own completion may) must not
    // leave run_one() returning at once forever.
    if (loop.stopped()) loop.restart();
    loop.context().run_one();
  }
  EXPECT_FALSE(guardFired) << "the loop did not finish its work";
}

void LoopSignal::signal() {
  loop_.post([this] { ++count_; });
}

void LoopSignal::wait(int count) {
  runUntil(loop_, [&] { return count_ >= count; });
}

}  // namespace kestrona::testing
