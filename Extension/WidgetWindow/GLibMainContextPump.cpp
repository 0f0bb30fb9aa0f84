#include "Extension/WidgetWindow/GLibMainContextPump.h"

#include <glib.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <vector>

// After standard headers on purpose; see Platform/Workspace/Workspace.h.
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

namespace kestrona {

GLibMainContextPumpError::GLibMainContextPumpError(GLibMainContextPumpErrorCode code)
    : CodedError(std::string(kDomain), code, "another thread owns GLib's main context") {}

struct GLibMainContextPump::State : std::enable_shared_from_this<State> {
  State(MainLoop& mainLoop, GMainContext* mainContext)
      : loop(mainLoop), context(g_main_context_ref(mainContext)), timer(mainLoop.context()) {}
  ~State() { g_main_context_unref(context); }

  // Step 1 and 2: ask the context what to wait for, and wait for it.
  void prepareAndWait() {
    if (stopped) return;
    g_main_context_prepare(context, &maxPriority);
    int timeout = -1;
    int count = g_main_context_query(context, maxPriority, &timeout, descriptors.data(),
                                     static_cast<int>(descriptors.size()));
    if (count > static_cast<int>(descriptors.size())) {
      descriptors.resize(static_cast<std::size_t>(count));
      count = g_main_context_query(context, maxPriority, &timeout, descriptors.data(), count);
    }
    descriptors.resize(static_cast<std::size_t>(count));

    const std::uint64_t step = ++steps;
    std::weak_ptr<State> weak = weak_from_this();
    auto wake = [weak, step](const std::error_code& error) {
      std::shared_ptr<State> self = weak.lock();
      if (!self || error == asio::error::operation_aborted || step != self->steps || !self->waiting) return;
      self->checkAndDispatch();
    };
    waiting = true;
    if (timeout == 0) {
      asio::post(loop.context(), [wake] { wake({}); });
      return;
    }
    // One registration per descriptor, with the union of what GLib asks.
    std::map<int, gushort> events;
    for (const GPollFD& descriptor : descriptors) events[descriptor.fd] |= descriptor.events;
    for (const auto& [fd, wanted] : events) {
      auto& watch = watches.emplace_back(std::make_unique<asio::posix::stream_descriptor>(loop.context(), fd));
      if (wanted & (G_IO_IN | G_IO_HUP | G_IO_ERR)) watch->async_wait(asio::posix::descriptor_base::wait_read, wake);
      if (wanted & G_IO_OUT) watch->async_wait(asio::posix::descriptor_base::wait_write, wake);
      if (wanted & G_IO_PRI) watch->async_wait(asio::posix::descriptor_base::wait_error, wake);
    }
    if (timeout > 0) {
      timer.expires_after(std::chrono::milliseconds(timeout));
      timer.async_wait(wake);
    }
  }

  // Step 3 and 4.
  void checkAndDispatch() {
    waiting = false;
    stopWaiting();
    for (GPollFD& descriptor : descriptors) descriptor.revents = 0;
    if (!descriptors.empty()) g_poll(descriptors.data(), static_cast<guint>(descriptors.size()), 0);
    std::shared_ptr<State> self = shared_from_this();
    if (g_main_context_check(context, maxPriority, descriptors.data(), static_cast<int>(descriptors.size()))) {
      g_main_context_dispatch(context);
    }
    std::weak_ptr<State> weak = self;
    asio::post(loop.context(), [weak] {
      if (std::shared_ptr<State> next = weak.lock()) next->prepareAndWait();
    });
  }

  // Hands every descriptor back to GLib, unregistered from the reactor and
  // still open, and cancels the timer.
  void stopWaiting() {
    for (auto& watch : watches) watch->release();
    watches.clear();
    timer.cancel();
  }

  MainLoop& loop;
  GMainContext* context;
  asio::steady_timer timer;
  std::vector<std::unique_ptr<asio::posix::stream_descriptor>> watches;
  std::vector<GPollFD> descriptors = std::vector<GPollFD>(8);
  gint maxPriority = 0;
  std::uint64_t steps = 0;
  bool waiting = false;
  bool stopped = false;
};

std::unique_ptr<GLibMainContextPump> GLibMainContextPump::start(MainLoop& loop, GMainContext* context) {
  if (!g_main_context_acquire(context)) throw GLibMainContextPumpError(GLibMainContextPumpErrorCode::cannotAcquire);
  auto state = std::make_shared<State>(loop, context);
  std::weak_ptr<State> weak = state;
  asio::post(loop.context(), [weak] {
    if (std::shared_ptr<State> self = weak.lock()) self->prepareAndWait();
  });
  return std::unique_ptr<GLibMainContextPump>(new GLibMainContextPump(std::move(state)));
}

GLibMainContextPump::~GLibMainContextPump() {
  state_->stopped = true;
  state_->waiting = false;
  state_->stopWaiting();
  g_main_context_release(state_->context);
}

}  // namespace kestrona
