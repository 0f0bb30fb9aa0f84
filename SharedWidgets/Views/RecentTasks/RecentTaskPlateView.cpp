#include "SharedWidgets/Views/RecentTasks/RecentTaskPlateView.h"

#include "SharedCore/Support/TimeText/TimeIntervalStringFormat.h"
#include "SharedWidgets/Views/Timer/WidgetColors.h"

namespace kestrona {
namespace {

constexpr double kPadding = 10;
constexpr double kNameSpacing = 4;
constexpr double kCornerRadius = 12;
constexpr double kIdleTimeOpacity = 0.6;
constexpr double kIdleBackgroundOpacity = 0.1;

View pauseSign() {
  const View bar = ShapeView(Shape::roundedRectangle(1.5), Color::white()).frame(4, 12);
  return HStack(VerticalAlignment::center, 2, {bar, bar});
}

}  // namespace

View RecentTaskPlateView::body() const {
  const std::optional<Date> begin = task.runningEntryBegin();
  const Font::Design rounded = Font::Design::rounded;

  const View name = Text(task.taskName)
                        .font(Font::system(16, Font::Weight::bold))
                        .foregroundColor(Color::white())
                        .lineLimit(1)
                        .truncationMode(TruncationMode::tail);
  View time;
  View icon;
  if (begin) {
    time = Text::timer(*begin).font(Font::system(14, Font::Weight::bold, rounded)).foregroundColor(Color::white());
    icon = pauseSign();
  } else {
    time = Text(toString(task.confirmedDuration, TimeIntervalStringFormat::digitalHoursMinutes))
               .font(Font::system(14, Font::Weight::semibold, rounded))
               .foregroundColor(withOpacity(Color::white(), kIdleTimeOpacity));
    icon = bundle->image("RecentTaskPlayIcon").tint(task.taskColor.color());
  }
  const View lowerRow = HStack(VerticalAlignment::center, 0, {time, icon.padding(EdgeInsets{.top = 2, .leading = 4})});

  const Color background = begin ? task.taskBackgroundColorOptimizedForLightContent.color()
                                 : withOpacity(Color::white(), kIdleBackgroundOpacity);
  return VStack(HorizontalAlignment::leading, kNameSpacing, {name, lowerRow})
      .padding(kPadding)
      .frame(FlexibleFrame{.maxWidth = kInfinity, .maxHeight = kInfinity, .alignment = Alignment::topLeading()})
      .background(ShapeView(Shape::roundedRectangle(kCornerRadius, RoundedCornerStyle::continuous), background));
}

}  // namespace kestrona
