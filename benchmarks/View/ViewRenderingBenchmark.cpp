// Laying out and drawing widget-sized view trees: a small timer widget and
// a large grid of eight task plates, each laid out with Pango measurement
// and drawn to PNG bytes at the default pixel scale of 2.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "Platform/View/PangoTextMeasurer.h"
#include "Platform/View/Renderer.h"
#include "Platform/View/WidgetCanvas.h"

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

}  // namespace
}  // namespace kestrona
