#include "Platform/RunLoop/SerialQueue.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <atomic>
#include <mutex>
#include <optional>
#include <thread>

namespace kestrona {

SerialQueueError::SerialQueueError(SerialQueueErrorCode code, const std::string& queueName)
    : CodedError("SerialQueueError", code, "The serial queue \"" + queueName + "\" has been shut down.",
                 ErrorUserInfo{{"queue", queueName}}) {}

struct SerialQueue::State {
  // Serialises shutdowns, so that the thread is joined once.
  std::mutex shutdownMutex;
  std::mutex mutex;
  bool closed = false;
  std::unique_ptr<asio::io_context> context = std::make_unique<asio::io_context>();
  std::optional<asio::executor_work_guard<asio::io_context::executor_type>> guard{context->get_executor()};
  std::thread thread;
  std::atomic<std::thread::id> threadID;
};

namespace {

[[noreturn]] void uncaught(const std::string& name) {
  std::string what = "unknown exception";
  try {
    throw;
  } catch (const std::exception& error) {
    what = error.what();
  } catch (...) {
  }
  fatalError("uncaught exception on serial queue \"" + name + "\": " + what);
}

}  // namespace

SerialQueue::SerialQueue(std::string name) : name_(std::move(name)), state_(std::make_unique<State>()) {
  // The thread is started last, once everything it reads is in place.
  state_->thread = std::thread([state = state_.get(), queueName = name_] {
    state->threadID.store(std::this_thread::get_id());
    try {
      state->context->run();
    } catch (...) {
      uncaught(queueName);
    }
  });
}

SerialQueue::~SerialQueue() { shutdown(Shutdown::drain); }

bool SerialQueue::isCurrent() const noexcept { return state_->threadID.load() == std::this_thread::get_id(); }

bool SerialQueue::enqueue(std::function<void()> work) {
  std::lock_guard lock(state_->mutex);
  // While draining, the queue's own work may still queue more.
  if (!state_->context || (state_->closed && !isCurrent())) return false;
  asio::post(*state_->context, [work = std::move(work), name = &name_] {
    try {
      work();
    } catch (...) {
      uncaught(*name);
    }
  });
  return true;
}

void SerialQueue::async(std::function<void()> work) { enqueue(std::move(work)); }

void SerialQueue::shutdown(Shutdown mode) {
  if (isCurrent()) fatalError("serial queue \"" + name_ + "\" cannot shut itself down");
  std::lock_guard serialised(state_->shutdownMutex);
  std::unique_lock lock(state_->mutex);
  if (!state_->context) return;
  state_->closed = true;
  state_->guard.reset();
  if (mode == Shutdown::cancel) state_->context->stop();
  lock.unlock();
  // Joined outside the lock: the draining work may still queue more.
  if (state_->thread.joinable()) state_->thread.join();
  lock.lock();
  // Destroys what is left unrun: a cancel's pending work, and work that
  // reached the context directly (coroutines) after the thread ended.
  state_->context.reset();
}

asio::io_context& SerialQueue::context() noexcept {
  std::lock_guard lock(state_->mutex);
  if (!state_->context) fatalError("serial queue \"" + name_ + "\" has been shut down");
  return *state_->context;
}

}  // namespace kestrona
