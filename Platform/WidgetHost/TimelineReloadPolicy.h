// When a widget wants to be asked for its next timeline.
//
// atEnd: once the date of the timeline's last entry has come. after(date):
// once date has come, which may already be past when the timeline is made.
// never: not by time at all; only when the widget's data changes or the
// application asks for it.
//
// The host may reload later than asked (it spaces reloads of one widget by
// a minimum interval, see WidgetHost.h), never earlier. A plain value,
// compared by kind and date; safe from any thread.
#pragma once

#include <optional>
#include <string_view>

#include "Platform/Foundation/RawRepresentable.h"
#include "Platform/Time/Date.h"

namespace kestrona {

class TimelineReloadPolicy {
 public:
  enum class Kind { atEnd, after, never };

  static TimelineReloadPolicy atEnd() { return TimelineReloadPolicy(Kind::atEnd, std::nullopt); }
  static TimelineReloadPolicy after(Date date) { return TimelineReloadPolicy(Kind::after, date); }
  static TimelineReloadPolicy never() { return TimelineReloadPolicy(Kind::never, std::nullopt); }

  Kind kind() const noexcept { return kind_; }
  // The date of after(date); none for the other kinds.
  std::optional<Date> date() const noexcept { return date_; }

  friend bool operator==(const TimelineReloadPolicy&, const TimelineReloadPolicy&) = default;

 private:
  TimelineReloadPolicy(Kind kind, std::optional<Date> date) : kind_(kind), date_(date) {}

  Kind kind_;
  std::optional<Date> date_;
};

template <>
struct RawRepresentable<TimelineReloadPolicy::Kind> {
  using RawValue = std::string_view;

  static constexpr RawValue rawValue(TimelineReloadPolicy::Kind kind) {
    switch (kind) {
      case TimelineReloadPolicy::Kind::atEnd: return "atEnd";
      case TimelineReloadPolicy::Kind::after: return "after";
      case TimelineReloadPolicy::Kind::never: return "never";
    }
    return {};
  }

  static constexpr std::optional<TimelineReloadPolicy::Kind> fromRawValue(RawValue raw) {
    if (raw == "atEnd") return TimelineReloadPolicy::Kind::atEnd;
    if (raw == "after") return TimelineReloadPolicy::Kind::after;
    if (raw == "never") return TimelineReloadPolicy::Kind::never;
    return std::nullopt;
  }
};

}  // namespace kestrona
