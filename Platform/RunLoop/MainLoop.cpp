#include "Platform/RunLoop/MainLoop.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <atomic>

namespace kestrona {

struct MainLoop::State {
  asio::io_context context;
  asio::executor_work_guard<asio::io_context::executor_type> guard{context.get_executor()};
  std::atomic<std::thread::id> thread{std::this_thread::get_id()};
};

MainLoop::MainLoop() : state_(std::make_unique<State>()) {}

MainLoop::~MainLoop() = default;

MainLoop& MainLoop::main() {
  static MainLoop loop;
  return loop;
}

void MainLoop::becomeMainThread() noexcept { state_->thread.store(std::this_thread::get_id()); }

void MainLoop::run() {
  becomeMainThread();
  state_->context.run();
}

std::size_t MainLoop::poll() {
  becomeMainThread();
  return state_->context.poll();
}

void MainLoop::stop() { state_->context.stop(); }

bool MainLoop::stopped() const { return state_->context.stopped(); }

void MainLoop::restart() { state_->context.restart(); }

void MainLoop::post(std::function<void()> work) { asio::post(state_->context, std::move(work)); }

void MainLoop::dispatch(std::function<void()> work) {
  if (isMainThread()) {
    work();
  } else {
    post(std::move(work));
  }
}

bool MainLoop::isMainThread() const noexcept { return state_->thread.load() == std::this_thread::get_id(); }

asio::io_context& MainLoop::context() noexcept { return state_->context; }

}  // namespace kestrona
