#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Foundation/Error.h"
#include "Platform/RunLoop/MainLoop.h"

namespace kestrona {
namespace {

TEST(MainLoop, PostedWorkRunsOnTheLoopThreadInPostingOrder) {
  MainLoop loop;
  std::vector<int> order;
  std::thread::id ranOn;
  std::thread poster([&] {
    EXPECT_FALSE(loop.isMainThread());
    for (int i = 0; i < 100; ++i) loop.post([&order, i] { order.push_back(i); });
    loop.post([&] {
      ranOn = std::this_thread::get_id();
      loop.stop();
    });
  });
  loop.run();
  poster.join();
  EXPECT_EQ(ranOn, std::this_thread::get_id());
  ASSERT_EQ(order.size(), 100u);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(order[i], i);
}

TEST(MainLoop, RunWaitsForWorkUntilStopped) {
  MainLoop loop;
  std::atomic<bool> ran = false;
  // Nothing is queued when run() starts: it must wait, not return.
  std::thread poster([&] {
    loop.post([&] {
      ran = true;
      loop.stop();
    });
  });
  loop.run();
  poster.join();
  EXPECT_TRUE(ran);
  EXPECT_TRUE(loop.stopped());
}

TEST(MainLoop, PerformAndWaitFromAnotherThreadReturnsTheValueOrRethrows) {
  MainLoop loop;
  int value = 0;
  bool rethrown = false;
  std::thread caller([&] {
    value = loop.performAndWait([&] {
      EXPECT_TRUE(loop.isMainThread());
      return 42;
    });
    try {
      loop.performAndWait([]() -> int { throw Error("Test", 7, "failed on main"); });
    } catch (const Error& error) {
      rethrown = error.is("Test", 7);
    }
    loop.performAndWait([&] { loop.stop(); });
  });
  loop.run();
  caller.join();
  EXPECT_EQ(value, 42);
  EXPECT_TRUE(rethrown);
}

TEST(MainLoop, PerformAndWaitOnTheMainThreadRunsInline) {
  MainLoop loop;
  std::vector<std::string> events;
  loop.post([&] { events.push_back("posted"); });
  // The loop is not running: only an inline call can return.
  std::string result = loop.performAndWait([&] {
    events.push_back("inline");
    return std::string("done");
  });
  EXPECT_EQ(result, "done");
  EXPECT_EQ(events, std::vector<std::string>{"inline"});
  EXPECT_EQ(loop.poll(), 1u);
  EXPECT_EQ(events, (std::vector<std::string>{"inline", "posted"}));
}

TEST(MainLoop, DispatchRunsInlineOnTheMainThreadAndPostsFromOthers) {
  MainLoop loop;
  std::vector<std::string> events;
  loop.dispatch([&] { events.push_back("inline"); });
  EXPECT_EQ(events, std::vector<std::string>{"inline"});
  std::thread other([&] {
    loop.dispatch([&] {
      EXPECT_TRUE(loop.isMainThread());
      events.push_back("posted");
      loop.stop();
    });
  });
  other.join();
  EXPECT_EQ(events.size(), 1u);
  loop.run();
  EXPECT_EQ(events, (std::vector<std::string>{"inline", "posted"}));
}

TEST(MainLoop, AnExceptionFromPostedWorkLeavesRunAndTheLoopGoesOn) {
  MainLoop loop;
  bool after = false;
  loop.post([] { throw std::runtime_error("boom"); });
  loop.post([&] {
    after = true;
    loop.stop();
  });
  EXPECT_THROW(loop.run(), std::runtime_error);
  EXPECT_FALSE(after);
  loop.run();
  EXPECT_TRUE(after);
}

TEST(MainLoop, StopLeavesQueuedWorkForTheNextRun) {
  MainLoop loop;
  int count = 0;
  loop.post([&] {
    ++count;
    loop.stop();
  });
  loop.post([&] {
    ++count;
    loop.stop();
  });
  loop.run();
  EXPECT_EQ(count, 1);
  loop.run();  // still stopped
  EXPECT_EQ(count, 1);
  loop.restart();
  loop.run();
  EXPECT_EQ(count, 2);
}

}  // namespace
}  // namespace kestrona
