#include "SharedWidgets/Views/Timer/DurationView.h"

#include <algorithm>

#include "SharedCore/Support/TimeText/TimeIntervalStringFormat.h"
#include "SharedWidgets/Views/Timer/TimerWidgetMetrics.h"

namespace kestrona {
namespace {

Text durationText(bool isRunning, std::optional<Date> begin, std::optional<Date> end) {
  if (isRunning) return Text::timer(*begin);
  const Date now = Date::now();
  const Date start = begin.value_or(now);
  const Date finish = std::max(end.value_or(now), start);
  return Text(toString(finish.timeIntervalSince(start), TimeIntervalStringFormat::digitalHoursMinutesSeconds));
}

}  // namespace

View DurationView::body() const {
  if (isRunning && !begin) return EmptyView();
  const TimerWidgetMetrics metrics = TimerWidgetMetrics::forFamily(family);
  const Text text = durationText(isRunning, begin, end)
                        .font(metrics.durationFont)
                        .foregroundColor(Color::white())
                        .lineLimit(1)
                        .minimumScaleFactor(0.5);
  if (metrics.durationUnderButton) return text;
  return text.frame(FlexibleFrame{.maxWidth = kInfinity, .alignment = Alignment{metrics.durationAlignment}});
}

}  // namespace kestrona
