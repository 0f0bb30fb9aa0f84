#include "apps/kestrona-palette/PaletteSheet.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <sstream>

#include "Platform/Color/Appearance.h"
#include "SharedCore/Support/Colors/ColorConversion.h"
#include "SharedCore/Support/Colors/ColorSet.h"
#include "apps/kestrona-palette/PaletteCommandLine.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona::palette {
namespace {

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

struct Pixel {
  double red, green, blue;
};

Pixel pixelAt(cairo_surface_t* surface, double x, double y) {
  const unsigned char* data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  const auto* row = reinterpret_cast<const std::uint32_t*>(data + static_cast<int>(y) * stride);
  std::uint32_t argb = row[static_cast<int>(x)];
  return {((argb >> 16) & 0xFF) / 255.0, ((argb >> 8) & 0xFF) / 255.0, (argb & 0xFF) / 255.0};
}

double luminance(const Pixel& pixel) {
  const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
  return 0.2126 * linear(pixel.red) + 0.7152 * linear(pixel.green) + 0.0722 * linear(pixel.blue);
}

double contrast(const Pixel& a, const Pixel& b) {
  const double lighter = std::max(luminance(a), luminance(b));
  const double darker = std::min(luminance(a), luminance(b));
  return (lighter + 0.05) / (darker + 0.05);
}

class PaletteSheetTest : public ::testing::Test {
 protected:
  PaletteSheetTest() : surface_(nullptr, cairo_surface_destroy) {
    writePaletteSheetPNG(directory_.path() / "palette.png", 1);
    surface_.reset(cairo_image_surface_create_from_png((directory_.path() / "palette.png").c_str()));
  }

  testing::TemporaryDirectory directory_;
  Surface surface_;
};

// Each swatch shows its palette colour converted from Display P3 to the
// surface's sRGB, in the right appearance and row, and its hex label stands
// out from it: white on dark colours, black on light ones such as white.
TEST_F(PaletteSheetTest, SwatchesShowThePaletteColoursWithReadableLabels) {
  ASSERT_EQ(cairo_surface_status(surface_.get()), CAIRO_STATUS_SUCCESS);
  for (bool isDarkMode : {false, true}) {
    ScopedAppearance appearance(isDarkMode ? Appearance::dark() : Appearance::light());
    for (std::size_t row = 0; row < allCases<ColorSet::ID>.size(); ++row) {
      const ColorSet set(allCases<ColorSet::ID>[row]);
      const Color* fills[2] = {&set.baseColor(), &set.backgroundColorOptimizedForLightContent()};
      for (int column = 0; column < 2; ++column) {
        SCOPED_TRACE(::testing::Message() << "dark " << isDarkMode << " row " << row << " column " << column);
        const double right = SheetLayout::swatchCentreX(isDarkMode, column) + SheetLayout::kSwatchWidth / 2;
        const double y = SheetLayout::swatchCentreY(static_cast<int>(row));
        const Pixel fill = pixelAt(surface_.get(), right - 8, y);
        const RGBAComponents expected = toRGBAComponents(*fills[column]);
        EXPECT_NEAR(fill.red, std::clamp(expected.red, 0.0, 1.0), 1.0 / 255);
        EXPECT_NEAR(fill.green, std::clamp(expected.green, 0.0, 1.0), 1.0 / 255);
        EXPECT_NEAR(fill.blue, std::clamp(expected.blue, 0.0, 1.0), 1.0 / 255);
        // The strongest contrast along the label's middle line is its text.
        double strongest = 1;
        for (double x = right - SheetLayout::kSwatchWidth + 8; x < right - 16; x += 0.5) {
          strongest = std::max(strongest, contrast(fill, pixelAt(surface_.get(), x, y)));
        }
        EXPECT_GT(strongest, 3.5);
      }
    }
  }
}

TEST(PaletteCommandLine, WritesTheSheetOrSaysWhyNot) {
  testing::TemporaryDirectory directory;
  const auto run = [](const std::vector<std::string>& arguments, int expectedStatus) {
    std::ostringstream output;
    std::ostringstream errors;
    EXPECT_EQ(runPaletteCommandLine(arguments, output, errors), expectedStatus) << errors.str();
    return std::pair{output.str(), errors.str()};
  };
  const auto [written, quiet] = run({"--out", (directory.path() / "sheet").string(), "--scale=1"}, 0);
  EXPECT_EQ(written, (directory.path() / "sheet" / "index.html").string() + "\n");
  EXPECT_NE(testing::readFile(directory.path() / "sheet" / "palette.svg").find("</svg>"), std::string::npos);
  EXPECT_EQ(run({"--help"}, 0).first.rfind("Usage: kestrona-palette --out DIR", 0), 0u);

  const std::pair<std::vector<std::string>, std::string> wrong[] = {
      {{}, "--out DIR is needed"},
      {{"--out"}, "--out needs a value"},
      {{"--out", ""}, "--out needs a folder name"},
      {{"--out", "a", "--out=b"}, "--out is given twice"},
      {{"--out", "a", "--scale", "9"}, "--scale takes a number above 0 and at most 8, not '9'"},
      {{"--out", "a", "--scale", "x"}, "--scale takes a number above 0 and at most 8, not 'x'"},
      {{"--colour", "red"}, "unknown option --colour"},
      {{"folder"}, "unexpected argument 'folder'"},
  };
  for (const auto& [arguments, reason] : wrong) {
    const auto [output, errors] = run(arguments, 2);
    EXPECT_EQ(output, "");
    EXPECT_EQ(errors, "kestrona-palette: " + reason + "\nRun 'kestrona-palette --help' for the usage.\n");
  }
  testing::writeFile(directory.path() / "file", "");
  EXPECT_EQ(run({"--out", (directory.path() / "file" / "sheet").string()}, 1).second,
            "kestrona-palette: cannot make " + (directory.path() / "file" / "sheet").string() + ": Not a directory\n");
}

TEST(PaletteSheet, AnUnwritableFileNamesItsReason) {
  testing::TemporaryDirectory directory;
  for (const auto& write : {+[](const std::filesystem::path& file) { writePaletteSheetPNG(file, 1); },
                            +[](const std::filesystem::path& file) { writePaletteSheetSVG(file); }}) {
    try {
      write(directory.path() / "missing" / "palette");
      ADD_FAILURE() << "writing into a missing directory succeeded";
    } catch (const PaletteSheetError& error) {
      EXPECT_NE(error.localizedDescription().find("missing/palette: No such file or directory"), std::string::npos)
          << error.localizedDescription();
    }
  }
}

}  // namespace
}  // namespace kestrona::palette
