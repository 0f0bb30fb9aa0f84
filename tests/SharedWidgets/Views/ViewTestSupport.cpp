#include "tests/SharedWidgets/Views/ViewTestSupport.h"

#include <exception>

#include "Platform/Intents/AppIntent.h"
#include "Platform/RunLoop/Async.h"
#include "Platform/Time/TimeZone.h"
#include "Platform/View/HitTesting.h"
#include "Platform/View/WidgetCanvas.h"
#include "tests/Platform/View/FixedWidthMeasurer.h"

namespace kestrona::testing {

Size canvasOf(WidgetFamily family) {
  switch (family) {
    case WidgetFamily::systemSmall: return widgetcanvas::kSmall;
    case WidgetFamily::systemMedium: return widgetcanvas::kMedium;
    case WidgetFamily::systemLarge: return widgetcanvas::kLarge;
  }
  return widgetcanvas::kSmall;
}

LayoutTree layOutWidget(const View& root, Size canvas) {
  static const FixedWidthMeasurer measurer;
  static const FontCatalog catalog({"Inter", "Quicksand"});
  return layout(root, canvas, measurer, catalog, LayoutEnvironment{.appearance = Appearance::dark(), .now = kNow});
}

LayoutTree layOutWidget(const View& root, WidgetFamily family) { return layOutWidget(root, canvasOf(family)); }

Calendar utcCalendar() { return Calendar(TimeZone::gmt(), Locale("en_US")); }

Date utcDay(int year, int month, int day) {
  DateComponents components;
  components.year = year;
  components.month = month;
  components.day = day;
  return *utcCalendar().dateFromComponents(components);
}

ChartBar barOf(Date date, const std::vector<double>& values) {
  ChartBar bar{date, {}, 0};
  for (std::size_t index = 0; index < values.size(); ++index) {
    const double shade = 0.3 + 0.1 * static_cast<double>(index % 7);
    bar.segments.push_back({"t" + std::to_string(index), Color::deviceRGB(shade, 0.4, 0.8, 1), values[index]});
    bar.totalValue += values[index];
  }
  return bar;
}

asio::awaitable<bool> RecordingTimerHost::startTimer(std::string taskId) {
  commands.push_back("start " + taskId);
  co_return true;
}

asio::awaitable<void> RecordingTimerHost::pauseTimer() {
  commands.push_back("pause");
  co_return;
}

void PressingTest::SetUp() { TimerWidgetIntentHost::setCurrent(host); }

void PressingTest::TearDown() { TimerWidgetIntentHost::setCurrent(nullptr); }

std::string PressingTest::press(const LayoutTree& tree, Point point) {
  const auto action = hitTest(tree, point);
  if (!action) return "";
  if (const auto* link = std::get_if<PressLink>(&*action)) return "link " + link->url.absoluteString();
  MainLoop loop;
  bool done = false;
  std::exception_ptr failure;
  const std::size_t before = host->commands.size();
  std::get<PressIntent>(*action).intent->run(loop, [&](std::exception_ptr error) {
    failure = error;
    done = true;
  });
  for (int round = 0; round < 100 && !done; ++round) loop.poll();
  EXPECT_TRUE(done) << "the intent never finished";
  if (failure) {
    try {
      std::rethrow_exception(failure);
    } catch (const Error& error) {
      return "error " + std::to_string(error.code());
    }
  }
  return host->commands.size() > before ? host->commands.back() : "ran without a command";
}

std::string PressingTest::pressAt(const LayoutTree& tree, const LaidOutNode& node) {
  return press(tree, Point{node.frame.midX(), node.frame.midY()});
}

}  // namespace kestrona::testing
