#include "Platform/View/Renderer.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <tuple>

#include "Platform/View/WidgetCanvas.h"
#include "tests/Platform/View/SampleViews.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

struct Pixel {
  int red, green, blue, alpha;
};

// A drawing, read back from the PNG file it was drawn to.
class Picture {
 public:
  explicit Picture(const LayoutTree& tree, double scale = 1) {
    renderPNG(tree, directory_.path() / "picture.png", scale);
    surface_.reset(cairo_image_surface_create_from_png((directory_.path() / "picture.png").c_str()));
    EXPECT_EQ(cairo_surface_status(surface_.get()), CAIRO_STATUS_SUCCESS);
  }

  int width() const { return cairo_image_surface_get_width(surface_.get()); }
  int height() const { return cairo_image_surface_get_height(surface_.get()); }

  Pixel at(int x, int y) const {
    std::uint32_t argb = 0;
    std::memcpy(
        &argb,
        cairo_image_surface_get_data(surface_.get()) + y * cairo_image_surface_get_stride(surface_.get()) + 4 * x, 4);
    return Pixel{static_cast<int>(argb >> 16 & 0xFF), static_cast<int>(argb >> 8 & 0xFF), static_cast<int>(argb & 0xFF),
                 static_cast<int>(argb >> 24)};
  }

  // The first and one past the last column with any ink.
  std::pair<int, int> inkColumns() const {
    int first = width();
    int last = 0;
    for (int y = 0; y < height(); ++y) {
      for (int x = 0; x < width(); ++x) {
        if (at(x, y).alpha > 32) std::tie(first, last) = std::pair{std::min(first, x), std::max(last, x + 1)};
      }
    }
    return {first, last};
  }

 private:
  testing::TemporaryDirectory directory_;
  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface_{nullptr, cairo_surface_destroy};
};

LayoutTree laidOutTimer() { return layout(testing::sampleTimerWidget(), widgetcanvas::kSmall); }

TEST(RendererTest, DrawsAWidgetAtItsPixelScaleInItsColours) {
  const LayoutTree tree = laidOutTimer();
  const Picture picture(tree, kDefaultPixelScale);
  EXPECT_EQ(picture.width(), 340);
  EXPECT_EQ(picture.height(), 340);
  // The background is opaque black; the centre of the button shows the
  // play sign in the task colour (converted from Display P3).
  EXPECT_EQ(picture.at(2, 2).alpha, 255);
  EXPECT_EQ(picture.at(2, 2).red + picture.at(2, 2).green + picture.at(2, 2).blue, 0);
  const LaidOutNode& play = *tree.nodesOfKind(ViewKind::image)[0];
  const Pixel centre = picture.at(static_cast<int>(play.frame.midX() * 2), static_cast<int>(play.frame.midY() * 2));
  EXPECT_GT(centre.blue, 200);
  EXPECT_LT(centre.red, 80);
}

TEST(RendererTest, OpacityAppliesToAViewAsOneLayer) {
  // Left: one white fill at half opacity. Right: two white fills stacked
  // and then made half transparent together, which must not add up.
  const View single = ColorFill(Color::white()).opacity(0.5);
  const View layered = ZStack({ColorFill(Color::white()), ColorFill(Color::white())}).opacity(0.5);
  const Picture picture(layout(
      HStack(VerticalAlignment::center, 0, {single, layered}).background(ColorFill(Color::black())), Size{20, 10}));
  for (int x : {5, 15}) {
    EXPECT_NEAR(picture.at(x, 5).red, 128, 2) << "at x " << x;
    EXPECT_EQ(picture.at(x, 5).alpha, 255);
  }
}

// Pango sets a right-to-left line against the right end of the width it
// is given; a text's frame is only as wide as the text, so what is drawn
// must be moved into the frame, or it is clipped away.
TEST(RendererTest, TextInEitherDirectionIsDrawnWholeInsideItsFrame) {
  for (const char* name : {"Concept sketches", "עבודה עם לקוחות", "رسومات المفهوم", "デザインの下書き 🎨"}) {
    for (double width : {300.0, 90.0}) {
      SCOPED_TRACE(std::string(name) + " in " + std::to_string(width));
      const View text = Text(name).font(Font::system(17, Font::Weight::bold)).lineLimit(1);
      const LayoutTree tree =
          layout(text.frame(FlexibleFrame{.maxWidth = kInfinity, .alignment = Alignment::leading()}), {width, 30});
      const Rect frame = tree.nodesOfKind(ViewKind::text)[0]->frame;
      const auto [first, last] = Picture(tree).inkColumns();
      ASSERT_LT(first, last) << "nothing drawn";
      EXPECT_GE(first, frame.minX() - 1);
      EXPECT_LE(last, frame.maxX() + 1);
      EXPECT_GE(last - first, frame.width() * 0.8);
    }
  }
}

TEST(RendererTest, DrawsTheSameTreeToSVGWithGlyphOutlines) {
  testing::TemporaryDirectory directory;
  const auto file = directory.path() / "timer.svg";
  renderSVG(laidOutTimer(), file);
  const std::string svg = testing::readFile(file);
  EXPECT_NE(svg.find("width=\"170\""), std::string::npos);
  EXPECT_NE(svg.find("<path"), std::string::npos);
}

// A window's surface: device scale 2, the widget placed at an offset. The
// pixels are those of the PNG at scale 2, and the context's state is as the
// caller left it.
TEST(RendererTest, DrawsOntoACallersContextAtItsDeviceScale) {
  const LayoutTree tree = laidOutTimer();
  const Picture png(tree, 2);
  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 400, 400), cairo_surface_destroy);
  cairo_surface_set_device_scale(surface.get(), 2, 2);
  cairo_t* context = cairo_create(surface.get());
  cairo_translate(context, 10, 20);
  cairo_set_source_rgb(context, 1, 0, 0);
  draw(tree, context);
  double x = 0, y = 0, red = 0, green = 0, blue = 0, alpha = 0;
  cairo_user_to_device(context, &x, &y);
  EXPECT_EQ(std::pair(x, y), std::pair(10.0, 20.0)) << "the caller's matrix";
  cairo_pattern_get_rgba(cairo_get_source(context), &red, &green, &blue, &alpha);
  EXPECT_EQ(red, 1) << "the caller's source";
  cairo_destroy(context);
  cairo_surface_flush(surface.get());

  const unsigned char* data = cairo_image_surface_get_data(surface.get());
  for (const auto& [px, py] : {std::pair{2, 2}, std::pair{300, 60}, std::pair{170, 300}, std::pair{60, 250}}) {
    std::uint32_t drawn = 0;
    std::memcpy(&drawn, data + (py + 40) * cairo_image_surface_get_stride(surface.get()) + 4 * (px + 20), 4);
    const Pixel expected = png.at(px, py);
    EXPECT_EQ(drawn, static_cast<std::uint32_t>(expected.alpha) << 24 | expected.red << 16 | expected.green << 8 |
                         expected.blue)
        << "at " << px << ", " << py;
  }
}

TEST(RendererTest, FailsWithATypedErrorWhenItCannotDraw) {
  testing::TemporaryDirectory directory;
  const auto missing = directory.path() / "no such folder";
  auto codeOf = [](const std::function<void()>& draw) {
    try {
      draw();
    } catch (const ViewRenderingError& error) {
      return std::optional(error.kind());
    }
    return std::optional<ViewRenderingError::Code>();
  };
  using Code = ViewRenderingError::Code;
  EXPECT_EQ(codeOf([&] { renderPNG(laidOutTimer(), missing / "timer.png"); }), Code::cannotWrite);
  EXPECT_EQ(codeOf([&] { renderSVG(laidOutTimer(), missing / "timer.svg"); }), Code::cannotWrite);
  EXPECT_EQ(codeOf([] {
              (void)renderPNGData(layout(ColorFill(Color::black()), Size{0, 0}));
            }),
            Code::cannotCreateSurface);
}

}  // namespace
}  // namespace kestrona
