#include "apps/kestrona-palette/PaletteSheet.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "Platform/Color/Appearance.h"
#include "SharedCore/Support/Colors/ColorConversion.h"
#include "SharedCore/Support/Colors/ColorSet.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona::palette {
namespace {

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

struct Pixel {
  int red, green, blue;
};

Pixel pixelAt(cairo_surface_t* surface, double x, double y) {
  const unsigned char* data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  const auto* row = reinterpret_cast<const std::uint32_t*>(data + static_cast<int>(y) * stride);
  std::uint32_t argb = row[static_cast<int>(x)];
  return {static_cast<int>((argb >> 16) & 0xFF), static_cast<int>((argb >> 8) & 0xFF),
          static_cast<int>(argb & 0xFF)};
}

int expectedByte(double component) { return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * 255)); }

// The swatches must show the palette's Display P3 colours converted to the
// surface's sRGB, in the right appearance and row: a mix-up of appearances,
// rows or colour spaces changes these pixels.
TEST(PaletteSheet, SwatchesShowThePaletteColoursConvertedToSRGB) {
  testing::TemporaryDirectory directory;
  const auto file = directory.path() / "palette.png";
  writePaletteSheetPNG(file, 1);
  Surface surface(cairo_image_surface_create_from_png(file.c_str()), cairo_surface_destroy);
  ASSERT_EQ(cairo_surface_status(surface.get()), CAIRO_STATUS_SUCCESS);
  EXPECT_EQ(cairo_image_surface_get_width(surface.get()), static_cast<int>(SheetLayout::sheetWidth() + 0.5));

  for (bool isDarkMode : {false, true}) {
    ScopedAppearance appearance(isDarkMode ? Appearance::dark() : Appearance::light());
    for (std::size_t row = 0; row < allCases<ColorSet::ID>.size(); ++row) {
      const ColorSet set(allCases<ColorSet::ID>[row]);
      const Color* fills[2] = {&set.baseColor(), &set.backgroundColorOptimizedForLightContent()};
      for (int column = 0; column < 2; ++column) {
        // Right of the hex text, inside the swatch.
        const double x = SheetLayout::swatchCentreX(isDarkMode, column) + SheetLayout::kSwatchWidth / 2 - 8;
        const Pixel pixel = pixelAt(surface.get(), x, SheetLayout::swatchCentreY(static_cast<int>(row)));
        const RGBAComponents expected = toRGBAComponents(*fills[column]);
        SCOPED_TRACE(::testing::Message() << "dark " << isDarkMode << " row " << row << " column " << column);
        EXPECT_NEAR(pixel.red, expectedByte(expected.red), 1);
        EXPECT_NEAR(pixel.green, expectedByte(expected.green), 1);
        EXPECT_NEAR(pixel.blue, expectedByte(expected.blue), 1);
      }
    }
  }
}

TEST(PaletteSheet, WritesAnSVGDocument) {
  testing::TemporaryDirectory directory;
  const auto file = directory.path() / "palette.svg";
  writePaletteSheetSVG(file);
  const std::string svg = testing::readFile(file);
  EXPECT_NE(svg.find("<svg"), std::string::npos);
  EXPECT_NE(svg.find("</svg>"), std::string::npos);
}

TEST(PaletteSheet, AnUnwritableDestinationIsATypedError) {
  testing::TemporaryDirectory directory;
  try {
    writePaletteSheetPNG(directory.path() / "missing" / "palette.png", 1);
    FAIL() << "writing into a missing directory succeeded";
  } catch (const PaletteSheetError& error) {
    EXPECT_EQ(error.domain(), "PaletteSheetError");
    EXPECT_NE(error.code(), 0);
  }
}

}  // namespace
}  // namespace kestrona::palette
