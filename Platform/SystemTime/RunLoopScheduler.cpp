#include "Platform/SystemTime/RunLoopScheduler.h"

#include <chrono>

#include "Platform/RunLoop/MainLoop.h"
#include "Platform/RunLoop/RunLoopTimer.h"

namespace kestrona {
namespace {

class MainLoopTimer final : public ScheduledTimer {
 public:
  explicit MainLoopTimer(std::unique_ptr<RunLoopTimer> timer) : timer_(std::move(timer)) {}
  void invalidate() noexcept override { timer_->cancel(); }
  bool isValid() const noexcept override { return timer_->isValid(); }

 private:
  std::unique_ptr<RunLoopTimer> timer_;
};

}  // namespace

MainLoopScheduler& MainLoopScheduler::main() {
  static MainLoopScheduler scheduler(MainLoop::main());
  return scheduler;
}

std::unique_ptr<ScheduledTimer> MainLoopScheduler::scheduledTimer(double interval, bool repeats, Action action) {
  auto timer = repeats ? RunLoopTimer::repeating(loop_, interval, std::move(action))
                       : RunLoopTimer::once(loop_, interval, std::move(action));
  return std::make_unique<MainLoopTimer>(std::move(timer));
}

void MainLoopScheduler::dispatchToMain(Action work) { loop_.dispatch(std::move(work)); }

double MainLoopScheduler::uptime() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace kestrona
