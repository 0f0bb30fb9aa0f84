#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <string>
#include <thread>

#include "Platform/Foundation/Error.h"
#include "Platform/RunLoop/Async.h"

namespace kestrona {
namespace {

struct Places {
  std::thread::id work;
  std::thread::id resumed;
};

asio::awaitable<int> squareOnQueue(int value, const SerialQueue* queue, Places* places) {
  EXPECT_TRUE(queue->isCurrent());
  places->work = std::this_thread::get_id();
  co_return value * value;
}

asio::awaitable<int> failOnQueue(std::string message) {
  throw Error("Test", 9, message);
  co_return 0;
}

asio::awaitable<void> useQueue(MainLoop* loop, SerialQueue* queue, Places* places, int* result) {
  *result = co_await asio::co_spawn(executor(*queue), squareOnQueue(12, queue, places), asio::use_awaitable);
  places->resumed = std::this_thread::get_id();
  EXPECT_TRUE(loop->isMainThread());
  loop->stop();
}

TEST(Coroutines, WorkAwaitedOnASerialQueueResumesOnTheMainThread) {
  MainLoop loop;
  SerialQueue queue("write");
  Places places;
  int result = 0;
  spawn(loop, useQueue(&loop, &queue, &places, &result));
  loop.run();
  EXPECT_EQ(result, 144);
  EXPECT_NE(places.work, std::this_thread::get_id());
  EXPECT_EQ(places.resumed, std::this_thread::get_id());
}

asio::awaitable<void> catchFromQueue(MainLoop* loop, SerialQueue* queue, std::string* caught) {
  try {
    co_await on(*queue, failOnQueue("store is read-only"));
  } catch (const Error& error) {
    if (error.is("Test", 9) && loop->isMainThread()) *caught = error.localizedDescription();
  }
  loop->stop();
}

TEST(Coroutines, AnExceptionThrownOnTheQueueReachesTheAwaitingCoroutine) {
  MainLoop loop;
  SerialQueue queue("write");
  std::string caught;
  spawn(loop, catchFromQueue(&loop, &queue, &caught));
  loop.run();
  EXPECT_EQ(caught, "store is read-only");
}

asio::awaitable<std::string> greet(std::string name) { co_return "hello " + name; }

asio::awaitable<void> escape() {
  throw std::logic_error("escaped");
  co_return;
}

TEST(Coroutines, SpawnDeliversTheResultOrLetsTheExceptionLeaveRun) {
  MainLoop loop;
  std::string result;
  std::thread::id completedOn;
  spawn(loop, greet("loop"), [&](std::exception_ptr error, std::string value) {
    EXPECT_EQ(error, nullptr);
    result = value;
    completedOn = std::this_thread::get_id();
    loop.stop();
  });
  loop.run();
  EXPECT_EQ(result, "hello loop");
  EXPECT_EQ(completedOn, std::this_thread::get_id());

  loop.restart();
  spawn(loop, escape());
  EXPECT_THROW(loop.run(), std::logic_error);

  bool sawError = false;
  spawn(loop, escape(), [&](std::exception_ptr error) {
    sawError = error != nullptr;
    loop.stop();
  });
  loop.run();
  EXPECT_TRUE(sawError);
}

asio::awaitable<void> awaitContinuation(MainLoop* loop, SerialQueue* queue, int mode, std::string* outcome) {
  try {
    int value = co_await withContinuation<int>([queue, mode](Continuation<int> continuation) {
      queue->async([continuation, mode] {
        if (mode == 0) continuation.resume(5);
        if (mode == 1) continuation.resume(std::make_exception_ptr(Error("Test", 4, "no value")));
        // mode 2: dropped unresumed
      });
    });
    *outcome = "value " + std::to_string(value);
  } catch (const Error& error) {
    *outcome = "error " + std::to_string(error.code());
  } catch (const std::future_error&) {
    *outcome = "broken";
  }
  if (!loop->isMainThread()) *outcome += " off main";
  loop->stop();
}

TEST(Coroutines, ContinuationsResumeTheAwaiterOnItsOwnThread) {
  const std::pair<int, const char*> cases[] = {{0, "value 5"}, {1, "error 4"}, {2, "broken"}};
  for (auto [mode, expected] : cases) {
    MainLoop loop;
    SerialQueue queue("completion");
    std::string outcome;
    spawn(loop, awaitContinuation(&loop, &queue, mode, &outcome));
    loop.run();
    EXPECT_EQ(outcome, expected) << "mode " << mode;
  }
}

asio::awaitable<bool> checkMainThread(MainLoop* loop) { co_return loop->isMainThread(); }

asio::awaitable<int> hopBackToMain(MainLoop* loop, SerialQueue* queue, int value) {
  bool onQueue = queue->isCurrent();
  bool onMain = co_await on(*loop, checkMainThread(loop));
  // Resumed on the queue again after the hop.
  co_return onQueue && onMain && queue->isCurrent() ? value : -1;
}

asio::awaitable<void> nestedHops(MainLoop* loop, SerialQueue* queue, int* result) {
  *result = co_await on(*queue, hopBackToMain(loop, queue, 77));
  loop->stop();
}

TEST(Coroutines, WorkOnAQueueCanHopToTheMainLoopAndBack) {
  MainLoop loop;
  SerialQueue queue("write");
  int result = 0;
  spawn(loop, nestedHops(&loop, &queue, &result));
  loop.run();
  EXPECT_EQ(result, 77);
}

using ContinuationDeathTest = ::testing::Test;

TEST_F(ContinuationDeathTest, ResumingTwiceEndsTheProcess) {
  EXPECT_DEATH(
      {
        Continuation<int> continuation([](std::exception_ptr, std::optional<int>) {});
        continuation.resume(1);
        continuation.resume(2);
      },
      "Fatal error: a continuation was resumed twice");
}

}  // namespace
}  // namespace kestrona
