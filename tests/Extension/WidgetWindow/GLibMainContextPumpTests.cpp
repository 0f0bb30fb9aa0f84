// GLib's context run by our main loop: its timeouts, descriptors and sources
// from other threads run on the loop's thread, alongside the loop's own
// work; an idle pump posts nothing, and a loop handler that attaches a
// source wakes it.
#include <glib-unix.h>
#include <glib.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

#include "Extension/WidgetWindow/GLibMainContextPump.h"
#include "Platform/RunLoop/RunLoopTimer.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/RunLoopDriving.h"

namespace kestrona {
namespace {

class GLibMainContextPumpTest : public ::testing::Test {
 protected:
  GLibMainContextPumpTest() : context(g_main_context_new()), pump(GLibMainContextPump::start(loop, context)) {}
  ~GLibMainContextPumpTest() override {
    pump.reset();
    g_main_context_unref(context);
  }

  // Attaches source to the pumped context, calling callback with data.
  void attach(GSource* source, GSourceFunc callback, gpointer data) {
    g_source_set_callback(source, callback, data, nullptr);
    g_source_attach(source, context);
    g_source_unref(source);
  }

  MainLoop loop;
  GMainContext* context;
  std::unique_ptr<GLibMainContextPump> pump;
};

gboolean countAndRemove(gpointer data) {
  ++*static_cast<int*>(data);
  return G_SOURCE_REMOVE;
}

gboolean readAndCount(gint fd, GIOCondition, gpointer data) {
  char byte = 0;
  EXPECT_EQ(::read(fd, &byte, 1), 1);
  ++*static_cast<int*>(data);
  return G_SOURCE_CONTINUE;
}

TEST_F(GLibMainContextPumpTest, TimeoutsDescriptorsAndOtherThreadsSourcesRunOnTheLoopsThread) {
  const std::thread::id loopThread = std::this_thread::get_id();
  int timeouts = 0;
  attach(g_timeout_source_new(5), countAndRemove, &timeouts);

  int pipeEnds[2];
  ASSERT_EQ(::pipe(pipeEnds), 0);
  int reads = 0;
  attach(g_unix_fd_source_new(pipeEnds[0], G_IO_IN), G_SOURCE_FUNC(readAndCount), &reads);
  auto write = RunLoopTimer::once(loop, 0.01, [&] { EXPECT_EQ(::write(pipeEnds[1], "x", 1), 1); });

  struct Invoked {
    std::thread::id thread;
    bool done = false;
  } invoked;
  std::thread other([&] {
    g_main_context_invoke(context, +[](gpointer data) {
      *static_cast<Invoked*>(data) = {std::this_thread::get_id(), true};
      return gboolean(G_SOURCE_REMOVE);
    }, &invoked);
  });
  testing::runUntil(loop, [&] { return timeouts == 1 && reads == 1 && invoked.done; });
  other.join();
  EXPECT_EQ(invoked.thread, loopThread);
  ::close(pipeEnds[0]);
  ::close(pipeEnds[1]);
}

TEST_F(GLibMainContextPumpTest, WaitsInTheReactorWhileNothingIsDueAndALoopHandlerWakesIt) {
  int fired = 0;
  attach(g_timeout_source_new_seconds(3600), countAndRemove, &fired);
  std::size_t steps = 0;
  while (loop.poll() > 0 && ++steps < 100) {
  }
  EXPECT_LT(steps, 100u) << "the pump keeps posting work while nothing is due";
  EXPECT_EQ(loop.poll(), 0u);

  auto attachFromTheLoop = RunLoopTimer::once(loop, 0, [&] {
    attach(g_idle_source_new(), countAndRemove, &fired);
    g_main_context_wakeup(context);
  });
  testing::runUntil(loop, [&] { return fired == 1; });
}

TEST(GLibMainContextPumpOwnershipTest, RefusesAContextAnotherThreadOwns) {
  MainLoop loop;
  GMainContext* context = g_main_context_new();
  std::thread owner([context] { ASSERT_TRUE(g_main_context_acquire(context)); });
  owner.join();
  auto error = testing::thrownBy<GLibMainContextPumpError>([&] { GLibMainContextPump::start(loop, context); });
  ASSERT_TRUE(error);
  EXPECT_EQ(error->kind(), GLibMainContextPumpErrorCode::cannotAcquire);
  g_main_context_unref(context);
}

}  // namespace
}  // namespace kestrona
