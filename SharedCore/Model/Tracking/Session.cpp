#include "SharedCore/Model/Tracking/Session.h"

#include <cmath>

#include "Platform/Foundation/FatalError.h"
#include "Platform/Time/Locale.h"
#include "SharedCore/Model/Tracking/Folder.h"
#include "SharedCore/Model/Tracking/Task.h"
#include "SharedCore/Support/TimeText/DateExtensions.h"
#include "SharedCore/Support/TimeText/TimeIntervalStringFormat.h"

namespace kestrona {

namespace {

// Money to two decimals, halves away from zero.
double roundedToCents(double amount) { return std::round(amount * 100) / 100; }

// The end of an entry, or the present for a running one; the clock is read
// only when it is needed.
Date endOrNow(const std::optional<Date>& end) { return end ? *end : Date::now(); }

}  // namespace

std::shared_ptr<Task> Session::task() { return std::dynamic_pointer_cast<Task>(objectForKey("task")); }

void Session::setTask(const std::shared_ptr<Task>& task) { setValue(valueOf(task), "task"); }

void Session::setIsRunning(bool isRunning) {
  willChangeValueForKey("isRunning");
  isRunning_ = isRunning;
  didChangeValueForKey("isRunning");
}

void Session::setIsStartedByLocalATMonitor(bool isStarted) {
  willChangeValueForKey("isStartedByLocalATMonitor");
  isStartedByLocalATMonitor_ = isStarted;
  didChangeValueForKey("isStartedByLocalATMonitor");
}

std::shared_ptr<Folder> Session::folder() {
  auto owner = task();
  auto parent = owner ? owner->parent() : nullptr;
  if (!parent) return nullptr;
  auto folder = std::dynamic_pointer_cast<Folder>(parent);
  if (!folder) fatalError("The parent of task " + owner->description() + " is not a folder");
  return folder;
}

BillingStatus Session::billingStatus() {
  const auto value = billingStatusValue();
  if (value == 1) return BillingStatus::billed;
  if (value == 2) return BillingStatus::paid;
  return BillingStatus::unbilled;
}

double Session::effectiveDuration() {
  if (faultingState() != FaultingState::loaded) return 0;
  const std::optional<Date> from = dateForKey("begin");
  if (!from) return 0;
  return kestrona::effectiveDuration(*from, endOrNow(end()));
}

double Session::effectiveDuration(std::optional<Date> from, std::optional<Date> to) {
  if (faultingState() != FaultingState::loaded) return 0;
  std::optional<Date> b = dateForKey("begin");
  if (!b) return 0;
  Date e = endOrNow(end());
  if (from) {
    if (e <= *from) return 0;
    if (*b < *from) b = from;
  }
  if (to) {
    if (*b >= *to) return 0;
    if (e > *to) e = *to;
  }
  return kestrona::effectiveDuration(*b, e);
}

double Session::effectiveRevenue() {
  if (!isBillable()) return 0;
  if (!end()) return roundedToCents(hourlyRate() / 3600 * effectiveDuration());
  return confirmedRevenue();
}

double Session::effectiveRevenue(std::optional<Date> from, std::optional<Date> to) {
  if (!isBillable()) return 0;
  return roundedToCents(effectiveDuration(from, to) * (hourlyRate() / 3600));
}

DateInterval Session::effectiveDateIterval() {
  if (faultingState() == FaultingState::unusable) return DateInterval();
  const Date start = begin();
  const Date finish = endOrNow(end());
  return DateInterval(start, finish > start ? finish : start);
}

std::optional<double> Session::effectiveHourlyRate() {
  if (!isBillable()) return std::nullopt;
  return hourlyRate();
}

bool Session::isEndPersisted() { return !changedValues().contains("end"); }

std::string Session::dayString() {
  if (faultingState() == FaultingState::unusable) return "";
  return toString(begin(), DateStringFormat::isoDate, DateStringTimeZone::local, Locale::current());
}

void Session::updateEffectiveDuration() {
  willChangeValueForKey("effectiveDuration");
  didChangeValueForKey("effectiveDuration");
  if (auto owner = task()) owner->updateEffectiveDuration();
}

std::vector<std::string> Session::keyPathsForValuesAffectingValueForKey(std::string_view key) const {
  if (key == "effectiveDuration") return {"confirmedDuration", "begin", "end"};
  if (key == "effectiveRevenue") return {"effectiveDuration"};
  if (key == "isBillable") return {"task"};
  if (key == "billingStatus") return {"billingStatusValue"};
  return NSManagedObjectWithIdentifier::keyPathsForValuesAffectingValueForKey(key);
}

Value Session::valueForUndefinedKey(std::string_view key) {
  if (key == "effectiveDuration") return Value(effectiveDuration());
  if (key == "effectiveRevenue") return Value(effectiveRevenue());
  if (key == "billingStatus") return Value(std::int64_t{rawValue(billingStatus())});
  if (key == "isRunning") return Value(isRunning_);
  if (key == "isStartedByLocalATMonitor") return Value(isStartedByLocalATMonitor_);
  return NSManagedObjectWithIdentifier::valueForUndefinedKey(key);
}

}  // namespace kestrona
