// Laying out and drawing widget-sized view trees: a small timer widget and
// a large grid of eight task plates named in eight scripts (the sample
// trees of the renderer tests, tests/Platform/View/SampleViews.h), and
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
#include "tests/Platform/View/SampleViews.h"

namespace kestrona {
namespace {

const LayoutEnvironment kEnvironment{Appearance::dark(), Date(3725)};

void BM_LayoutSmallTimerWidget(benchmark::State& state) {
  const PangoTextMeasurer measurer;
  const View tree = testing::sampleTimerWidget();
  for (auto _ : state) {
    benchmark::DoNotOptimize(layout(tree, widgetcanvas::kSmall, measurer, FontCatalog::system(), kEnvironment));
  }
}
BENCHMARK(BM_LayoutSmallTimerWidget)->Unit(benchmark::kMicrosecond);

void BM_DrawSmallTimerWidgetToPNG(benchmark::State& state) {
  const PangoTextMeasurer measurer;
  const View tree = testing::sampleTimerWidget();
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
  const View tree = testing::sampleRecentTasksGrid();
  for (auto _ : state) {
    benchmark::DoNotOptimize(layout(tree, widgetcanvas::kLarge, measurer, FontCatalog::system(), kEnvironment));
  }
}
BENCHMARK(BM_LayoutLargeRecentTasksWidget)->Unit(benchmark::kMicrosecond);

void BM_DrawLargeRecentTasksWidgetToPNG(benchmark::State& state) {
  const PangoTextMeasurer measurer;
  const View tree = testing::sampleRecentTasksGrid();
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
      .taskColor = testing::sampleTaskColor(),
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
  const Color colors[] = {testing::sampleTaskColor(), Color::displayP3(0.9, 0.4, 0.3, 1),
                          Color::displayP3(0.3, 0.8, 0.5, 1)};
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
