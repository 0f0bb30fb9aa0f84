#include "SharedWidgets/Views/Timer/TimerWidgetView.h"

#include <string>
#include <vector>

#include "Platform/Intents/AppIntent.h"
#include "SharedWidgets/Views/Timer/DurationView.h"
#include "SharedWidgets/Views/Timer/StartStopView.h"
#include "SharedWidgets/Views/Timer/TimerWidgetMetrics.h"
#include "SharedWidgets/Views/Timer/WidgetColors.h"
#include "WidgetData/TimerIntent/KestronaWidgetDeepLinkScheme.h"

namespace kestrona {
namespace {

constexpr double kRunningLayerOpacity = 0.3;
constexpr double kPlayImageLeadingInset = 3;
// The picture that stands in for the button when there is no main action.
constexpr double kPictureInset = 3;
// The gap between the button and the duration under it.
constexpr double kDurationGapUnderButton = 2;
constexpr double kTextsSpacing = 2;
constexpr double kTextsMinimumScaleFactor = 0.8;

std::string imageName(std::string_view prefix, double size) {
  return std::string(prefix) + std::to_string(static_cast<long long>(size));
}

View lineOfText(const std::string& string, const Font& font, const Color& color) {
  return Text(string)
      .font(font)
      .foregroundColor(color)
      .lineLimit(1)
      .truncationMode(TruncationMode::tail)
      .minimumScaleFactor(kTextsMinimumScaleFactor)
      .frame(FlexibleFrame{.maxWidth = kInfinity, .alignment = Alignment::leading()});
}

}  // namespace

View TimerWidgetView::body() const {
  const TimerWidgetMetrics metrics = TimerWidgetMetrics::forFamily(family);
  const bool isRunning = entry.isTimerRunning();

  std::vector<View> lines;
  if (entry.folderName)
    lines.push_back(lineOfText(*entry.folderName, metrics.folderNameFont, WidgetColors::secondaryLabel()));
  if (entry.taskName) lines.push_back(lineOfText(*entry.taskName, metrics.taskNameFont, Color::white()));
  const View texts = VStack(HorizontalAlignment::leading, kTextsSpacing, std::move(lines));

  const std::string playName = imageName("PlayIcon-", metrics.buttonSize);
  const std::string pauseName = imageName("PauseIcon-", metrics.buttonSize);
  View button;
  if (mainAction) {
    const StartStopView startStop{
        .isRunning = isRunning,
        .size = Size{metrics.buttonSize, metrics.buttonSize},
        .playImageInitialScaleFactor = 1.0,
        .pauseImageInitialScaleFactor = 1.0,
        .startButtonBackgroundOpacity = entry.startButtonBackgroundOpacity.value_or(0.0F),
        .backgroundColor = entry.taskColor,
        .playImage = bundle->image(playName),
        .playImageTintColor = isRunning ? entry.taskBackgroundColorOptimizedForLightContent : entry.taskColor,
        .playImageLeadingInset = kPlayImageLeadingInset,
        .pauseButtonImage = bundle->image(pauseName),
    };
    button = (*mainAction)(startStop.body());
  } else {
    button = bundle->image(isRunning ? pauseName : playName)
                 .tint(entry.taskColor)
                 .padding(EdgeInsets{.top = kPictureInset, .leading = kPictureInset});
  }

  const View duration =
      DurationView{.family = family, .isRunning = isRunning, .begin = entry.timeEntryBegin, .end = entry.timeEntryEnd}
          .body();

  View content;
  if (metrics.durationUnderButton) {
    const View column = VStack(metrics.durationAlignment, 0,
                               {button, duration.padding(Edge::top, mainAction ? kDurationGapUnderButton : 0)});
    content = VStack(HorizontalAlignment::center, 0,
                     {HStack(VerticalAlignment::top, std::nullopt, {texts, column}), Spacer(0)});
  } else {
    content = VStack(HorizontalAlignment::center, 0,
                     {HStack(VerticalAlignment::top, std::nullopt, {texts, button}), Spacer(0), duration});
  }
  content = content.frame(FlexibleFrame{.maxWidth = kInfinity, .maxHeight = kInfinity, .alignment = Alignment::top()})
                .padding(metrics.padding);
  if (isRunning) content = content.background(ColorFill(withOpacity(entry.taskColor, kRunningLayerOpacity)));
  return content.background(ColorFill(WidgetColors::background()))
      .widgetURL(*url(KestronaWidgetDeepLinkScheme::openApp));
}

TimerWidgetAppIntent timerWidgetAppIntent(const TimerWidgetEntry& entry) {
  if (entry.isTimerRunning()) return TimerWidgetAppIntent(TimerActionType::pause, std::nullopt);
  return TimerWidgetAppIntent(TimerActionType::start, entry.taskId);
}

TimerWidgetView::MainAction timerWidgetMainAction(const TimerWidgetEntry& entry) {
  const AnyAppIntent intent(timerWidgetAppIntent(entry));
  return [intent](const View& view) { return view.pressTarget(intent); };
}

TimerWidgetView makeTimerWidgetView(const TimerWidgetEntry& entry, WidgetFamily family) {
  return TimerWidgetView{.entry = entry,
                         .mainAction = timerWidgetMainAction(entry),
                         .bundle = &WidgetAssetCatalog::module(),
                         .family = family};
}

}  // namespace kestrona
