#include "Platform/SystemTime/SystemTimeWatcher.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "Platform/Foundation/Error.h"
#include "Platform/Logging/Logger.h"
#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/RunLoop/MainLoop.h"
#include "Platform/SystemTime/LinuxSystemTimeSignalSource.h"
#include "Platform/SystemTime/RunLoopScheduler.h"
#include "Platform/SystemTime/SystemTimeNotifications.h"
#include "Platform/Time/Calendar.h"
#include "Platform/Time/TimeZone.h"

namespace kestrona {
namespace {

using Component = Calendar::Component;

const Logger& log() {
  static const Logger logger("SystemTime");
  return logger;
}

}  // namespace

SystemTimeWatcher::SystemTimeWatcher(NotificationCenter& center, std::function<Date()> now,
                                     RunLoopScheduler& scheduler, std::unique_ptr<SystemTimeSignalSource> source)
    : center_(center), now_(std::move(now)), scheduler_(scheduler), source_(std::move(source)) {}

SystemTimeWatcher::~SystemTimeWatcher() { stop(); }

SystemTimeWatcher& SystemTimeWatcher::main() {
  static SystemTimeWatcher watcher(NotificationCenter::defaultCenter(), [] { return Date::now(); },
                                   MainLoopScheduler::main(),
                                   std::make_unique<LinuxSystemTimeSignalSource>(MainLoop::main()));
  return watcher;
}

void SystemTimeWatcher::start() {
  if (running_) return;
  running_ = true;
  remember();
  if (source_) {
    try {
      source_->start([this](SystemTimeSignal signal) { check(signal == SystemTimeSignal::clockSet); });
    } catch (const Error& error) {
      log().log(Logger::Level::warning, "System time signals unavailable; checking every minute only",
                {{"error", std::string(error.what())}});
    }
  }
  scheduleNextCheck();
}

void SystemTimeWatcher::stop() noexcept {
  if (!running_) return;
  running_ = false;
  if (source_) source_->stop();
  nextCheck_.reset();
}

void SystemTimeWatcher::check(bool clockWasSet) {
  if (!running_) return;
  const Date lastDate = lastDate_;
  const double lastUptime = lastUptime_;
  const std::string lastZone = zone_;
  const Day lastDay = day_;
  remember();
  const double drift = (lastDate_.timeIntervalSince(lastDate)) - (lastUptime_ - lastUptime);
  const bool clockChanged = clockWasSet || std::abs(drift) > clockTolerance;
  scheduleNextCheck();
  if (zone_ != lastZone) center_.post(std::string(NSSystemTimeZoneDidChange));
  if (clockChanged) center_.post(std::string(NSSystemClockDidChange));
  if (day_ != lastDay) center_.post(std::string(NSCalendarDayChanged));
}

void SystemTimeWatcher::remember() {
  lastDate_ = now_();
  lastUptime_ = scheduler_.uptime();
  zone_ = TimeZone::current().identifier();
  DateComponents parts = Calendar::current().dateComponents({Component::year, Component::month, Component::day},
                                                            lastDate_);
  day_ = {parts.year.value_or(0), parts.month.value_or(0), parts.day.value_or(0)};
}

void SystemTimeWatcher::scheduleNextCheck() {
  Calendar calendar = Calendar::current();
  double untilMidnight = checkInterval;
  if (auto tomorrow = calendar.dateByAdding(Component::day, 1, calendar.startOfDay(lastDate_))) {
    untilMidnight = calendar.startOfDay(*tomorrow).timeIntervalSince(lastDate_) + 0.1;
  }
  nextCheck_ = scheduler_.scheduledTimer(std::clamp(untilMidnight, 0.1, checkInterval), false, [this] { check(); });
}

}  // namespace kestrona
