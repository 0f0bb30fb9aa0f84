// Laying out and drawing widget-sized view trees: a small timer widget and
// a large grid of eight task plates built from the view layer alone, and
// the real widget views of the small timer widget (running) and the medium
// weekly time-tracked chart, each laid out with Pango measurement and drawn
// to PNG bytes at the default pixel scale of 2.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "Platform/Time/Calendar.h"
#include "Platform/Time/Clock.h"
#include "Platform/View/PangoTextMeasurer.h"
#include "Platform/View/Renderer.h"
#include "Platform/View/WidgetCanvas.h"
#include "SharedWidgets/Views/Chart/ChartWidgetView.h"
#include "SharedWidgets/Views/Timer/TimerWidgetView.h"

namespace kestrona {
namespace {

const Color kTaskColor = Color::displayP3(0.2, 0.5, 0.9, 1);

View timerWidget() {
  const View texts = VStack(HorizontalAlignment::leading, 2,
                            {Text("Design").font(Font::system(10, Font::Weight::bold)).lineLimit(1),
                             Text("Concept sketches for the spring campaign")
                                 .font(Font::system(17, Font::Weight::bold))
                                 .lineLimit(1)
                                 .minimumScaleFactor(0.8)
                                 .frame(FlexibleFrame{.maxWidth = kInfinity, .alignment = Alignment::leading()})});
  const View button = ZStack({ColorFill(kTaskColor).opacity(0.3),
                              TemplateImage(TemplateSymbol::play, 36).tint(kTaskColor).padding(Edge::leading, 3),
                              TemplateImage(TemplateSymbol::pause, 36).scaleEffect(1e-9)})
                          .frame(36, 36)
                          .clipShape(Shape::circle());
  const View duration = Text::timer(Date(0))
                            .font(Font::system(26, Font::Weight::semibold, Font::Design::rounded))
                            .lineLimit(1)
                            .minimumScaleFactor(0.5)
                            .frame(FlexibleFrame{.maxWidth = kInfinity, .alignment = Alignment::leading()});
  return VStack({HStack(VerticalAlignment::top, 8, {texts, button}), Spacer(), duration})
      .padding(EdgeInsets{13, 13, 16, 16})
      .background(ColorFill(Color::black()));
}

View plate(int index) {
  const View name =
      Text("Task number " + std::to_string(index + 1)).font(Font::system(16, Font::Weight::bold)).lineLimit(1);
  const View time = Text(std::to_string(index) + ":18")
                        .font(Font::system(14, Font::Weight::semibold, Font::Design::rounded))
                        .opacity(0.6);
  const View icon = TemplateImage(TemplateSymbol::smallPlay).tint(kTaskColor).padding(EdgeInsets{2, 4, 0, 0});
  return VStack(HorizontalAlignment::leading, 4, {name, HStack({time, icon})})
      .padding(10)
      .frame(FlexibleFrame{.maxWidth = kInfinity, .maxHeight = kInfinity, .alignment = Alignment::topLeading()})
      .background(ShapeView(Shape::roundedRectangle(12, RoundedCornerStyle::continuous), Color::white()).opacity(0.1));
}

View recentTasksWidget() {
  std::vector<View> rows;
  for (int row = 0; row < 4; ++row) {
    rows.push_back(HStack(VerticalAlignment::center, 10, {plate(row * 2), plate(row * 2 + 1)}));
  }
  return VStack(std::move(rows)).padding(12).background(ColorFill(Color::black()));
}

const LayoutEnvironment kEnvironment{Appearance::dark(), Date(3725)};

void BM_LayoutSmallTimerWidget(benchmark::State& state) {
  const PangoTextMeasurer measurer;
  const View tree = timerWidget();
  for (auto _ : state) {
    benchmark::DoNotOptimize(layout(tree, widgetcanvas::kSmall, measurer, FontCatalog::system(), kEnvironment));
  }
}
BENCHMARK(BM_LayoutSmallTimerWidget)->Unit(benchmark::kMicrosecond);

void BM_DrawSmallTimerWidgetToPNG(benchmark::State& state) {
  const PangoTextMeasurer measurer;
  const View tree = timerWidget();
  std::size_t bytes = 0;
  for (auto _ : state) {
    const LayoutTree laidOut = layout(tree, widgetcanvas::kSmall, measurer, FontCatalog::system(), kEnvironment);
    bytes = renderPNGData(laidOut).size();
    benchmark::DoNotOptimize(bytes);
  }
  state.counters["png_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_DrawSmallTimerWidgetToPNG)->Unit(benchmark::kMillisecond);

void BM_LayoutLargeRecentTasksWidget(benchmark::State& state) {
  const PangoTextMeasurer measurer;
  const View tree = recentTasksWidget();
  for (auto _ : state) {
    benchmark::DoNotOptimize(layout(tree, widgetcanvas::kLarge, measurer, FontCatalog::system(), kEnvironment));
  }
}
BENCHMARK(BM_LayoutLargeRecentTasksWidget)->Unit(benchmark::kMicrosecond);

void BM_DrawLargeRecentTasksWidgetToPNG(benchmark::State& state) {
  const PangoTextMeasurer measurer;
  const View tree = recentTasksWidget();
  std::size_t bytes = 0;
  for (auto _ : state) {
    const LayoutTree laidOut = layout(tree, widgetcanvas::kLarge, measurer, FontCatalog::system(), kEnvironment);
    bytes = renderPNGData(laidOut).size();
    benchmark::DoNotOptimize(bytes);
  }
  state.counters["png_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_DrawLargeRecentTasksWidgetToPNG)->Unit(benchmark::kMillisecond);

// Lays out view on canvas and draws it to PNG bytes, once per iteration,
// at the moment of kEnvironment.
void drawToPNG(benchmark::State& state, const View& view, Size canvas) {
  const PangoTextMeasurer measurer;
  std::size_t bytes = 0;
  for (auto _ : state) {
    const LayoutTree laidOut = layout(view, canvas, measurer, FontCatalog::system(), kEnvironment);
    bytes = renderPNGData(laidOut).size();
    benchmark::DoNotOptimize(bytes);
  }
  state.counters["png_bytes"] = static_cast<double>(bytes);
}

void BM_DrawTimerWidgetViewSmallToPNG(benchmark::State& state) {
  ManualClock clock{kEnvironment.now};
  ScopedClock scopedClock{clock};
  TimerWidgetEntry entry{
      .date = kEnvironment.now,
      .taskId = "x-kestrona://4F0C7A38/Task/p7",
      .taskName = "Concept sketches for the spring campaign",
      .taskColor = kTaskColor,
      .startButtonBackgroundOpacity = 0.2F,
      .taskBackgroundColorOptimizedForLightContent = Color::displayP3(0.15, 0.4, 0.75, 1),
      .folderName = "Client Work",
      .timeEntryBegin = kEnvironment.now.addingTimeInterval(-3600),
      .timeEntryEnd = std::nullopt,
  };
  drawToPNG(state, makeTimerWidgetView(entry, WidgetFamily::systemSmall).body(), widgetcanvas::kSmall);
}
BENCHMARK(BM_DrawTimerWidgetViewSmallToPNG)->Unit(benchmark::kMillisecond);

void BM_DrawWeeklyChartWidgetViewMediumToPNG(benchmark::State& state) {
  ManualClock clock{kEnvironment.now};
  ScopedClock scopedClock{clock};
  Calendar calendar = Calendar::current();
  const Date firstDay = calendar.startOfDay(kEnvironment.now);
  TimeTrackedWidgetEntry entry{.date = kEnvironment.now, .chartBars = {}, .firstDayOfWeek = 2};
  const Color colors[] = {kTaskColor, Color::displayP3(0.9, 0.4, 0.3, 1), Color::displayP3(0.3, 0.8, 0.5, 1)};
  for (int day = 0; day < 7; ++day) {
    ChartBar bar{.date = firstDay.addingTimeInterval(day * 86400.0), .segments = {}, .totalValue = 0};
    for (int task = 0; task < 3; ++task) {
      const double seconds = 1800.0 * (1 + (day + task) % 4);
      bar.segments.push_back({"task-" + std::to_string(task), colors[task], seconds});
      bar.totalValue += seconds;
    }
    entry.chartBars.push_back(bar);
  }
  drawToPNG(state,
            ChartWidgetView::forTimeTracked(entry, ChartView::DateRangeType::weekly, WidgetFamily::systemMedium,
                                            calendar)
                .body(),
            widgetcanvas::kMedium);
}
BENCHMARK(BM_DrawWeeklyChartWidgetViewMediumToPNG)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrona
