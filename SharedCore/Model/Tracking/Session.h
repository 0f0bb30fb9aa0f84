// A time entry (entity "Session"): from begin to end on a task; a nil end
// means it is running.
//
// Stored: begin, end, originalEnd (the actual pause time when rounding moved
// end), the rounding that produced end (roundingTo, roundingMethod), notes,
// autotracked, the confirmedDuration and confirmedRevenue recorded when the
// entry was finished or edited, hourlyRate, isBillable, billingStatusValue
// and task. task may be nil (an orphaned entry); deleting the task deletes
// its entries.
//
// Per process, on this instance only: isRunning (set by the timer on the
// entry it runs; false in a freshly loaded object even when end is nil) and
// isStartedByLocalATMonitor. Both are observable.
//
// Durations are whole seconds: both dates are floored to seconds before
// they are subtracted, and a negative result is 0; a nil end counts as the
// present moment, read at each call. The durations answer 0 on a fault or an
// unusable object without loading it, and effectiveDateIterval and
// dayString answer a zero interval at the present and "" on an unusable one,
// so lists and charts may read them over many objects. Revenue is money
// rounded to two decimals, halves away from zero: the running entry's is
// computed, a finished entry's is the stored confirmedRevenue, and the
// ranged form always computes.
//
// Observation: "effectiveDuration" follows "confirmedDuration", "begin" and
// "end"; "effectiveRevenue" follows "effectiveDuration"; "isBillable"
// follows "task"; "billingStatus" follows "billingStatusValue". Computed keys
// answer valueForKey: "effectiveDuration", "effectiveRevenue" (doubles),
// "billingStatus" (its raw value), "isRunning", "isStartedByLocalATMonitor".
// updateEffectiveDuration() announces "effectiveDuration" here and up the
// task's tree; nothing is stored.
//
// Threading: only on the context's queue.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/ObjectStore/FetchRequest.h"
#include "Platform/Time/DateInterval.h"
#include "SharedCore/Model/NSManagedObjectWithIdentifier.h"
#include "SharedCore/Model/Tracking/BillingStatus.h"

namespace kestrona {

class Folder;
class Task;

class Session : public NSManagedObjectWithIdentifier {
 public:
  explicit Session(Construction construction) : NSManagedObjectWithIdentifier(std::move(construction)) {}

  static std::string_view entityName() { return "Session"; }
  static FetchRequest fetchRequest() { return FetchRequest("Session"); }

  // ---- Stored ----
  // The reference date of 1970 until one is set; an entry cannot be saved
  // without one.
  Date begin() { return dateForKey("begin").value_or(Date()); }
  void setBegin(Date begin) { setValue(Value(begin), "begin"); }
  std::optional<Date> end() { return dateForKey("end"); }
  void setEnd(std::optional<Date> end) { setValue(valueOf(end), "end"); }
  std::optional<Date> originalEnd() { return dateForKey("originalEnd"); }
  void setOriginalEnd(std::optional<Date> end) { setValue(valueOf(end), "originalEnd"); }
  std::int16_t roundingTo() { return static_cast<std::int16_t>(integerForKey("roundingTo")); }
  void setRoundingTo(std::int16_t minutes) { setValue(Value(std::int64_t{minutes}), "roundingTo"); }
  std::int16_t roundingMethod() { return static_cast<std::int16_t>(integerForKey("roundingMethod")); }
  void setRoundingMethod(std::int16_t method) { setValue(Value(std::int64_t{method}), "roundingMethod"); }
  std::optional<std::string> notes() { return stringForKey("notes"); }
  void setNotes(const std::optional<std::string>& notes) { setValue(valueOf(notes), "notes"); }
  bool autotracked() { return boolForKey("autotracked"); }
  void setAutotracked(bool autotracked) { setValue(Value(autotracked), "autotracked"); }
  double confirmedDuration() { return doubleForKey("confirmedDuration"); }
  void setConfirmedDuration(double duration) { setValue(Value(duration), "confirmedDuration"); }
  double confirmedRevenue() { return doubleForKey("confirmedRevenue"); }
  void setConfirmedRevenue(double revenue) { setValue(Value(revenue), "confirmedRevenue"); }
  double hourlyRate() { return doubleForKey("hourlyRate"); }
  void setHourlyRate(double rate) { setValue(Value(rate), "hourlyRate"); }
  bool isBillable() { return boolForKey("isBillable"); }
  void setIsBillable(bool isBillable) { setValue(Value(isBillable), "isBillable"); }
  std::int16_t billingStatusValue() { return static_cast<std::int16_t>(integerForKey("billingStatusValue")); }
  void setBillingStatusValue(std::int16_t value) { setValue(Value(std::int64_t{value}), "billingStatusValue"); }
  std::shared_ptr<Task> task();
  void setTask(const std::shared_ptr<Task>& task);

  // ---- Per process ----
  bool isRunning() const noexcept { return isRunning_; }
  void setIsRunning(bool isRunning);
  bool isStartedByLocalATMonitor() const noexcept { return isStartedByLocalATMonitor_; }
  void setIsStartedByLocalATMonitor(bool isStarted);

  // ---- Derived ----
  // The task's parent; null without task or parent. A parent that is not a
  // Folder is a programming error.
  std::shared_ptr<Folder> folder();
  // billingStatusValue 1 is billed, 2 paid, anything else unbilled.
  BillingStatus billingStatus();
  void setBillingStatus(BillingStatus status) { setBillingStatusValue(static_cast<std::int16_t>(status)); }
  double effectiveDuration();
  // The part of the entry inside [from, to]; a missing bound does not cut.
  double effectiveDuration(std::optional<Date> from, std::optional<Date> to);
  double effectiveRevenue();
  // Always computed from the ranged duration, never confirmedRevenue.
  double effectiveRevenue(std::optional<Date> from, std::optional<Date> to);
  // From begin to end (or the present), never negative; a zero interval at
  // the present on an unusable object.
  DateInterval effectiveDateIterval();
  // hourlyRate when the entry is billable.
  std::optional<double> effectiveHourlyRate();
  // Whether end has no unsaved change.
  bool isEndPersisted();
  // begin as "yyyy-MM-dd" in the current zone and locale; "" when unusable.
  std::string dayString();
  // identifier, or "<Session (no identifier)>".
  std::string description() { return identifier().value_or("<Session (no identifier)>"); }
  void updateEffectiveDuration();

  std::vector<std::string> keyPathsForValuesAffectingValueForKey(std::string_view key) const override;

 protected:
  Value valueForUndefinedKey(std::string_view key) override;

 private:
  bool isRunning_ = false;
  bool isStartedByLocalATMonitor_ = false;
};

}  // namespace kestrona
