#include "Platform/SystemTime/ManualRunLoopScheduler.h"

#include <algorithm>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {

struct ManualRunLoopScheduler::Entry {
  double due = 0;
  double interval = 0;
  bool repeats = false;
  bool valid = true;
  std::uint64_t order = 0;
  Action action;
};

namespace {

class ManualTimer final : public ScheduledTimer {
 public:
  explicit ManualTimer(std::shared_ptr<ManualRunLoopScheduler::Entry> entry) : entry_(std::move(entry)) {}
  ~ManualTimer() override { invalidate(); }
  void invalidate() noexcept override { entry_->valid = false; }
  bool isValid() const noexcept override { return entry_->valid; }

 private:
  std::shared_ptr<ManualRunLoopScheduler::Entry> entry_;
};

}  // namespace

std::unique_ptr<ScheduledTimer> ManualRunLoopScheduler::scheduledTimer(double interval, bool repeats,
                                                                       Action action) {
  precondition(!repeats || interval > 0, "a repeating timer needs a positive interval");
  auto entry = std::make_shared<Entry>();
  entry->due = uptime_ + std::max(interval, 0.0);
  entry->interval = interval;
  entry->repeats = repeats;
  entry->order = made_++;
  entry->action = std::move(action);
  std::erase_if(entries_, [](const auto& weak) { return weak.expired(); });
  entries_.push_back(entry);
  return std::make_unique<ManualTimer>(std::move(entry));
}

std::shared_ptr<ManualRunLoopScheduler::Entry> ManualRunLoopScheduler::earliestDue() const {
  std::shared_ptr<Entry> earliest;
  for (const auto& weak : entries_) {
    auto entry = weak.lock();
    if (!entry || !entry->valid) continue;
    if (!earliest || entry->due < earliest->due || (entry->due == earliest->due && entry->order < earliest->order)) {
      earliest = entry;
    }
  }
  return earliest;
}

void ManualRunLoopScheduler::advance(double seconds) {
  const double end = uptime_ + seconds;
  while (auto entry = earliestDue()) {
    if (entry->due > end) break;
    clock_.advance(entry->due - uptime_);
    uptime_ = entry->due;
    if (entry->repeats) {
      entry->due += entry->interval;
    } else {
      entry->valid = false;
    }
    // The entry is held here, so the action may destroy its own timer.
    entry->action();
  }
  clock_.advance(end - uptime_);
  uptime_ = end;
}

std::optional<double> ManualRunLoopScheduler::nextFireDelay() const {
  auto entry = earliestDue();
  if (!entry) return std::nullopt;
  return entry->due - uptime_;
}

std::size_t ManualRunLoopScheduler::validTimerCount() const {
  return std::count_if(entries_.begin(), entries_.end(), [](const auto& weak) {
    auto entry = weak.lock();
    return entry && entry->valid;
  });
}

}  // namespace kestrona
