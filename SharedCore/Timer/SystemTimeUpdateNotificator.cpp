#include "SharedCore/Timer/SystemTimeUpdateNotificator.h"

#include <charconv>
#include <cmath>
#include <string>

#include "Platform/SystemTime/RunLoopScheduler.h"
#include "Platform/SystemTime/SystemTimeNotifications.h"
#include "Platform/SystemTime/SystemTimeWatcher.h"
#include "Platform/Time/Calendar.h"
#include "SharedCore/Support/Logging/LoggerExtension.h"

namespace kestrona {
namespace {

const Logger& log() {
  static const Logger logger("TimeUpdate");
  return logger;
}

struct HourAndMinute {
  int hour;
  int minute;
};

HourAndMinute hourAndMinute(Date date) {
  DateComponents components = Calendar::current().dateComponents({Calendar::Component::hour,
                                                                   Calendar::Component::minute}, date);
  return {components.hour.value_or(0), components.minute.value_or(0)};
}

// The shortest text that reads back as the same double: "60.1", "0.15".
std::string shortest(double value) {
  char text[32];
  auto end = std::to_chars(text, text + sizeof text, value).ptr;
  return std::string(text, end);
}

}  // namespace

SystemTimeUpdateNotificator::SystemTimeUpdateNotificator()
    : SystemTimeUpdateNotificator(NotificationCenter::defaultCenter(), [] { return Date::now(); },
                                  MainLoopScheduler::main(), &SystemTimeWatcher::main()) {}

SystemTimeUpdateNotificator::SystemTimeUpdateNotificator(NotificationCenter& notificationCenter,
                                                         std::function<Date()> now, RunLoopScheduler& scheduler,
                                                         SystemTimeWatcher* watcher)
    : notificationCenter_(notificationCenter),
      now_(std::move(now)),
      scheduler_(scheduler),
      watcher_(watcher),
      self_(std::make_shared<SystemTimeUpdateNotificator*>(this)) {}

SystemTimeUpdateNotificator::~SystemTimeUpdateNotificator() {
  subscriptions_.clear();
  invalidateTimers();
}

void SystemTimeUpdateNotificator::start() {
  logging::debug(log(), "Start updating time");
  subscriptions_.clear();
  for (std::string_view name : {NSCalendarDayChanged, NSSystemTimeZoneDidChange, NSSystemClockDidChange}) {
    subscriptions_.push_back(notificationCenter_.addObserver(
        std::string(name), nullptr, [this](const Notification&) { systemTimeDidChange(); }));
  }
  if (watcher_) watcher_->start();
  syncTimer();
}

void SystemTimeUpdateNotificator::stop() {
  logging::debug(log(), "Stop updating time");
  subscriptions_.clear();
  invalidateTimers();
  // Work dispatched before the stop finds its reference expired.
  self_ = std::make_shared<SystemTimeUpdateNotificator*>(this);
}

void SystemTimeUpdateNotificator::syncTimer() {
  invalidateTimers();
  const Date now = now_();
  const HourAndMinute current = hourAndMinute(now);
  lastHour_ = current.hour;
  lastMinute_ = current.minute;
  double intoMinute = std::fmod(now.timeIntervalSince1970(), 60.0);
  // Before 1970 fmod is negative; the position within the minute is not.
  if (intoMinute < 0) intoMinute += 60.0;
  const double delay = 60.0 - intoMinute + 0.1;
  logging::debug(log(), [&] { return "Next update in " + shortest(delay) + " sec"; });
  syncingTimer_ = scheduler_.scheduledTimer(delay, false, [this] { syncingTimerDidFire(); });
}

void SystemTimeUpdateNotificator::syncingTimerDidFire() {
  syncingTimer_.reset();
  onMain(&SystemTimeUpdateNotificator::update);
  timer_ = scheduler_.scheduledTimer(60.0, true, [this] { onMain(&SystemTimeUpdateNotificator::update); });
}

void SystemTimeUpdateNotificator::update() {
  const HourAndMinute current = hourAndMinute(now_());
  if (current.hour != lastHour_) {
    logging::debug(log(), "hour changed");
    notificationCenter_.post(std::string(KSHourChanged));
  }
  if (current.minute != lastMinute_) {
    logging::debug(log(), "minute changed");
    notificationCenter_.post(std::string(KSMinuteChanged));
  }
  lastHour_ = current.hour;
  lastMinute_ = current.minute;
}

void SystemTimeUpdateNotificator::systemTimeDidChange() {
  std::weak_ptr<SystemTimeUpdateNotificator*> weak = self_;
  scheduler_.dispatchToMain([weak] {
    if (auto self = weak.lock()) {
      // The check first: syncTimer() overwrites the hour and minute it compares with.
      (*self)->update();
      (*self)->syncTimer();
    }
  });
}

void SystemTimeUpdateNotificator::invalidateTimers() {
  syncingTimer_.reset();
  timer_.reset();
}

void SystemTimeUpdateNotificator::onMain(void (SystemTimeUpdateNotificator::*work)()) {
  std::weak_ptr<SystemTimeUpdateNotificator*> weak = self_;
  scheduler_.dispatchToMain([weak, work] {
    if (auto self = weak.lock()) ((*self)->*work)();
  });
}

}  // namespace kestrona
