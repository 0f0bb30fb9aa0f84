#include "tests/Platform/View/SampleViews.h"

#include <array>
#include <string>
#include <vector>

namespace kestrona::testing {
namespace {

View plate(const std::string& name, int index) {
  const View title = Text(name).font(Font::system(16, Font::Weight::bold)).lineLimit(1);
  const View time = Text(std::to_string(index) + ":18")
                        .font(Font::system(14, Font::Weight::semibold, Font::Design::rounded))
                        .opacity(0.6);
  const View icon = TemplateImage(TemplateSymbol::smallPlay).tint(sampleTaskColor()).padding(EdgeInsets{2, 4, 0, 0});
  return VStack(HorizontalAlignment::leading, 4, {title, HStack({time, icon})})
      .padding(10)
      .frame(FlexibleFrame{.maxWidth = kInfinity, .maxHeight = kInfinity, .alignment = Alignment::topLeading()})
      .background(ShapeView(Shape::roundedRectangle(12, RoundedCornerStyle::continuous), Color::white()).opacity(0.1));
}

}  // namespace

const Color& sampleTaskColor() {
  static const Color color = Color::displayP3(0.2, 0.5, 0.9, 1);
  return color;
}

View sampleTimerWidget() {
  const View texts = VStack(HorizontalAlignment::leading, 2,
                            {Text("Design").font(Font::system(10, Font::Weight::bold)).lineLimit(1),
                             Text("Concept sketches for the spring campaign")
                                 .font(Font::system(17, Font::Weight::bold))
                                 .lineLimit(1)
                                 .minimumScaleFactor(0.8)
                                 .frame(FlexibleFrame{.maxWidth = kInfinity, .alignment = Alignment::leading()})});
  const View button = ZStack({ColorFill(sampleTaskColor()).opacity(0.3),
                              TemplateImage(TemplateSymbol::play, 36).tint(sampleTaskColor()).padding(Edge::leading, 3),
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

View sampleRecentTasksGrid() {
  static const std::array<const char*, 8> names = {
      "Concept sketches", "עבודה עם לקוחות", "رسومات المفهوم", "デザインの下書き",
      "Σχέδια καμπάνιας", "客户会议",        "회의록 정리",    "🎨 Palette review",
  };
  std::vector<View> rows;
  for (int row = 0; row < 4; ++row) {
    rows.push_back(HStack(VerticalAlignment::center, 10,
                          {plate(names[row * 2], row * 2), plate(names[row * 2 + 1], row * 2 + 1)}));
  }
  return VStack(std::move(rows)).padding(12).background(ColorFill(Color::black()));
}

}  // namespace kestrona::testing
