#include <cairo.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "Platform/View/Renderer.h"
#include "Platform/View/WidgetCanvas.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

const Color kTaskColor = Color::displayP3(0.2, 0.5, 0.9, 1);

// A small timer widget as the widget views build it: texts, a round
// button with a vector icon, a live duration, all on a black background.
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

LayoutTree laidOutWidget() { return layout(timerWidget(), widgetcanvas::kSmall); }

struct Pixel {
  int red, green, blue, alpha;
  friend bool operator==(const Pixel&, const Pixel&) = default;
};

Pixel pixelAt(const std::filesystem::path& png, int x, int y) {
  cairo_surface_t* image = cairo_image_surface_create_from_png(png.c_str());
  EXPECT_EQ(cairo_surface_status(image), CAIRO_STATUS_SUCCESS);
  const unsigned char* row = cairo_image_surface_get_data(image) + y * cairo_image_surface_get_stride(image);
  std::uint32_t argb = 0;
  std::memcpy(&argb, row + 4 * x, 4);
  cairo_surface_destroy(image);
  return Pixel{static_cast<int>(argb >> 16 & 0xFF), static_cast<int>(argb >> 8 & 0xFF), static_cast<int>(argb & 0xFF),
               static_cast<int>(argb >> 24)};
}

TEST(RendererTest, DrawsAWidgetToPNGAtTwicePixelScale) {
  testing::TemporaryDirectory directory;
  const auto file = directory.path() / "timer.png";
  renderPNG(laidOutWidget(), file);

  cairo_surface_t* image = cairo_image_surface_create_from_png(file.c_str());
  ASSERT_EQ(cairo_surface_status(image), CAIRO_STATUS_SUCCESS);
  EXPECT_EQ(cairo_image_surface_get_width(image), 340);
  EXPECT_EQ(cairo_image_surface_get_height(image), 340);
  cairo_surface_destroy(image);

  // The background is opaque black; the centre of the button shows the
  // play sign in the task colour (converted from Display P3).
  EXPECT_EQ(pixelAt(file, 2, 2), (Pixel{0, 0, 0, 255}));
  const LayoutTree tree = laidOutWidget();
  const LaidOutNode& play = *tree.nodesOfKind(ViewKind::image)[0];
  const Pixel centre = pixelAt(file, static_cast<int>(play.frame.midX() * 2), static_cast<int>(play.frame.midY() * 2));
  EXPECT_GT(centre.blue, 200);
  EXPECT_LT(centre.red, 80);
}

TEST(RendererTest, OpacityAppliesToAViewAsOneLayer) {
  testing::TemporaryDirectory directory;
  const auto file = directory.path() / "opacity.png";
  // Left: one white fill at half opacity. Right: two white fills stacked
  // and then made half transparent together, which must not add up.
  const View single = ColorFill(Color::white()).opacity(0.5);
  const View layered = ZStack({ColorFill(Color::white()), ColorFill(Color::white())}).opacity(0.5);
  const View tree = HStack(VerticalAlignment::center, 0, {single, layered}).background(ColorFill(Color::black()));
  renderPNG(layout(tree, Size{20, 10}), file, 1);
  for (int x : {5, 15}) {
    const Pixel pixel = pixelAt(file, x, 5);
    EXPECT_NEAR(pixel.red, 128, 2) << "at x " << x;
    EXPECT_EQ(pixel.alpha, 255);
  }
}

TEST(RendererTest, DrawsTheSameTreeToSVGAndToPNGBytes) {
  testing::TemporaryDirectory directory;
  const auto file = directory.path() / "timer.svg";
  renderSVG(laidOutWidget(), file);
  const std::string svg = testing::readFile(file);
  EXPECT_NE(svg.find("<svg"), std::string::npos);
  EXPECT_NE(svg.find("width=\"170\""), std::string::npos);
  // Glyphs become outlines: the texts leave paths behind.
  EXPECT_NE(svg.find("<path"), std::string::npos);

  const std::vector<unsigned char> bytes = renderPNGData(laidOutWidget(), 1);
  ASSERT_GT(bytes.size(), 8u);
  EXPECT_EQ(std::string(bytes.begin() + 1, bytes.begin() + 4), "PNG");
}

TEST(RendererTest, FailsWithATypedErrorWhenTheFileCannotBeWritten) {
  testing::TemporaryDirectory directory;
  const auto missing = directory.path() / "no such folder" / "timer.png";
  try {
    renderPNG(laidOutWidget(), missing);
    FAIL() << "drawing into a missing folder succeeded";
  } catch (const ViewRenderingError& error) {
    EXPECT_EQ(error.kind(), ViewRenderingError::Code::cannotWrite);
  }
  EXPECT_THROW(renderSVG(laidOutWidget(), directory.path() / "no such folder" / "timer.svg"), ViewRenderingError);
}

TEST(RendererTest, RefusesACanvasWithNoPixels) {
  const LayoutTree empty = layout(ColorFill(Color::black()), Size{0, 0});
  try {
    (void)renderPNGData(empty);
    FAIL() << "an empty canvas was drawn";
  } catch (const ViewRenderingError& error) {
    EXPECT_EQ(error.kind(), ViewRenderingError::Code::cannotCreateSurface);
  }
}

}  // namespace
}  // namespace kestrona
