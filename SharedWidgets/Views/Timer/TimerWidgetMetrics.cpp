#include "SharedWidgets/Views/Timer/TimerWidgetMetrics.h"

namespace kestrona {

TimerWidgetMetrics TimerWidgetMetrics::forFamily(WidgetFamily family) {
  using Weight = Font::Weight;
  if (family == WidgetFamily::systemSmall) {
    return TimerWidgetMetrics{
        .buttonSize = 36,
        .padding = EdgeInsets{.top = 13, .leading = 13, .bottom = 16, .trailing = 16},
        .folderNameFont = Font::system(10, Weight::bold),
        .taskNameFont = Font::system(17, Weight::bold),
        .durationFont = Font::system(26, Weight::semibold, Font::Design::rounded),
        .durationAlignment = HorizontalAlignment::leading,
        .durationUnderButton = false,
    };
  }
  return TimerWidgetMetrics{
      .buttonSize = 48,
      .padding = EdgeInsets{.top = 15, .leading = 16, .bottom = 18, .trailing = 20},
      .folderNameFont = Font::system(13, Weight::bold),
      .taskNameFont = Font::system(24, Weight::bold),
      .durationFont = Font::system(34, Weight::semibold, Font::Design::rounded),
      .durationAlignment = HorizontalAlignment::trailing,
      .durationUnderButton = true,
  };
}

}  // namespace kestrona
