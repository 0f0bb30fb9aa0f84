// The queue a context's work runs on: the seam between contexts and threads.
//
// runAndWait(block) runs block on the queue and returns when it is done,
// passing on what it throws; a block run while the queue is already current
// on this thread runs at once (re-entrance never deadlocks). isCurrent()
// says whether the calling thread is inside the queue now.
//
// post(block) hands block to a queue that has a thread of its own, to run
// later and without the caller waiting, and returns true; a queue without a
// thread of its own (the private queue) returns false and drops it, and the
// caller must run the work the next time it enters the queue.
//
// PrivateContextQueue serialises blocks with a lock and runs each on the
// calling thread, as a private-queue context's performAndWait does.
// MainContextQueue runs them on a main loop, for main-queue contexts. Both
// are thread-safe.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

namespace kestrona {

class ContextQueue {
 public:
  virtual ~ContextQueue() = default;
  virtual bool isCurrent() const = 0;
  virtual void runAndWait(const std::function<void()>& block) = 0;
  virtual bool post(std::function<void()> block) = 0;
};

class PrivateContextQueue final : public ContextQueue {
 public:
  bool isCurrent() const override { return owner_.load() == std::this_thread::get_id(); }
  void runAndWait(const std::function<void()>& block) override;
  bool post(std::function<void()>) override { return false; }

 private:
  std::mutex mutex_;
  std::atomic<std::thread::id> owner_{};
};

class MainLoop;

// The queue of a main-queue context: blocks run on the loop's thread; from
// another thread runAndWait waits for the loop to reach the block (see
// MainLoop::performAndWait for when that deadlocks). The loop must outlive
// the queue.
class MainContextQueue final : public ContextQueue {
 public:
  explicit MainContextQueue(MainLoop& loop) : loop_(loop) {}
  bool isCurrent() const override;
  void runAndWait(const std::function<void()>& block) override;
  bool post(std::function<void()> block) override;

 private:
  MainLoop& loop_;
};

}  // namespace kestrona
