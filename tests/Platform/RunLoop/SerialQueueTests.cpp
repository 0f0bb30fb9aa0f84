#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "Platform/Foundation/Error.h"
#include <asio/io_context.hpp>

#include "Platform/RunLoop/SerialQueue.h"
#include "tests/support/ExpectThrow.h"

namespace kestrona {
namespace {

TEST(SerialQueue, WorkFromSeveralThreadsRunsOneAtATimeInEachPostersOrder) {
  std::map<int, std::vector<int>> seen;
  std::atomic<int> running = 0;
  std::atomic<int> overlaps = 0;
  {
    SerialQueue queue("order");
    std::vector<std::thread> posters;
    for (int t = 0; t < 4; ++t) {
      posters.emplace_back([&, t] {
        for (int i = 0; i < 250; ++i) {
          queue.async([&, t, i] {
            if (running.fetch_add(1) != 0) ++overlaps;
            seen[t].push_back(i);  // unguarded on purpose: the queue is the guard
            running.fetch_sub(1);
          });
        }
      });
    }
    for (auto& poster : posters) poster.join();
  }  // the destructor drains
  EXPECT_EQ(overlaps, 0);
  ASSERT_EQ(seen.size(), 4u);
  for (auto& [thread, values] : seen) {
    ASSERT_EQ(values.size(), 250u) << "thread " << thread;
    for (int i = 0; i < 250; ++i) ASSERT_EQ(values[i], i) << "thread " << thread;
  }
}

TEST(SerialQueue, SyncReturnsTheValueOrRethrowsOnTheCaller) {
  SerialQueue queue("sync");
  std::vector<int> order;
  queue.async([&] { order.push_back(1); });
  int value = queue.sync([&] {
    EXPECT_TRUE(queue.isCurrent());
    order.push_back(2);
    return 7;
  });
  EXPECT_EQ(value, 7);
  // sync waits for the work queued before it.
  EXPECT_EQ(order, (std::vector<int>{1, 2}));
  EXPECT_FALSE(queue.isCurrent());
  const auto error = testing::thrownBy<Error>([&] { queue.sync([] { throw Error("Test", 3, "failed on the queue"); }); });
  EXPECT_TRUE(error && error->is("Test", 3));
  EXPECT_EQ(queue.name(), "sync");
}

TEST(SerialQueue, DrainingShutdownRunsQueuedWorkAndWhatItQueues) {
  SerialQueue queue("drain");
  std::promise<void> gate;
  std::shared_future<void> opened = gate.get_future().share();
  std::vector<int> ran;
  queue.async([opened] { opened.wait(); });
  queue.async([&] {
    ran.push_back(1);
    queue.async([&] { ran.push_back(3); });
  });
  queue.async([&] { ran.push_back(2); });
  std::thread closer([&] { queue.shutdown(SerialQueue::Shutdown::drain); });
  gate.set_value();
  closer.join();
  EXPECT_EQ(ran, (std::vector<int>{1, 2, 3}));
}

TEST(SerialQueue, CancellingShutdownFinishesTheRunningItemAndDropsTheRest) {
  SerialQueue queue("cancel");
  std::promise<void> gate;
  std::shared_future<void> opened = gate.get_future().share();
  std::atomic<bool> started = false;
  bool finished = false;
  int dropped = 0;
  auto counted = std::make_shared<int>(0);
  queue.async([&, opened] {
    started = true;
    opened.wait();
    finished = true;
  });
  for (int i = 0; i < 3; ++i) queue.async([&dropped, counted] { ++dropped; });
  while (!started) std::this_thread::yield();
  std::thread closer([&] { queue.shutdown(SerialQueue::Shutdown::cancel); });
  // The closer has stopped the queue once its context reports stopped.
  while (!queue.context().stopped()) std::this_thread::yield();
  gate.set_value();
  closer.join();
  EXPECT_TRUE(finished);
  EXPECT_EQ(dropped, 0);
  // The dropped work was destroyed, not leaked.
  EXPECT_EQ(counted.use_count(), 1);
}

TEST(SerialQueue, AfterShutdownAsyncIsDroppedAndSyncThrows) {
  SerialQueue queue("closed");
  queue.shutdown();
  bool ran = false;
  queue.async([&] { ran = true; });
  const auto error = testing::thrownBy<SerialQueueError>([&] { queue.sync([] { return 1; }); });
  EXPECT_TRUE(error && error->kind() == SerialQueueErrorCode::shutDown);
  queue.shutdown();  // a second shutdown does nothing
  EXPECT_FALSE(ran);
}

using SerialQueueDeathTest = ::testing::Test;

TEST_F(SerialQueueDeathTest, SyncFromItsOwnQueueEndsTheProcess) {
  EXPECT_DEATH(
      {
        SerialQueue queue("self");
        queue.sync([&] { queue.sync([] {}); });
      },
      "Fatal error: SerialQueue::sync called on its own queue \"self\"");
}

TEST_F(SerialQueueDeathTest, AnExceptionEscapingAsyncWorkEndsTheProcessNamingTheQueue) {
  EXPECT_DEATH(
      {
        SerialQueue queue("writer");
        queue.async([] { throw std::runtime_error("lost"); });
        queue.shutdown();
      },
      "Fatal error: uncaught exception on serial queue \"writer\": lost");
}

}  // namespace
}  // namespace kestrona
