#include "apps/kestrona-palette/PaletteSheet.h"

#include <cairo-svg.h>
#include <cairo.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "Platform/Color/Appearance.h"
#include "Platform/Foundation/RawRepresentable.h"
#include "SharedCore/Support/Colors/ColorConversion.h"
#include "SharedCore/Support/Colors/ColorSet.h"
#include "SharedCore/Support/Colors/NamedColors.h"

namespace kestrona::palette {
namespace {

constexpr std::size_t kRows = allCases<ColorSet::ID>.size();

std::string idName(ColorSet::ID id) {
  switch (id) {
    case ColorSet::ID::white: return "white";
    case ColorSet::ID::gray: return "gray";
    case ColorSet::ID::red: return "red";
    case ColorSet::ID::brown: return "brown";
    case ColorSet::ID::orange: return "orange";
    case ColorSet::ID::green2: return "green2";
    case ColorSet::ID::green: return "green";
    case ColorSet::ID::teal: return "teal";
    case ColorSet::ID::blue: return "blue";
    case ColorSet::ID::violett: return "violett";
    case ColorSet::ID::lightPink: return "lightPink";
    case ColorSet::ID::indigo: return "indigo";
    case ColorSet::ID::lightRed: return "lightRed";
    case ColorSet::ID::pink: return "pink";
    case ColorSet::ID::yellow: return "yellow";
    case ColorSet::ID::lightGreen: return "lightGreen";
    case ColorSet::ID::cyan: return "cyan";
    case ColorSet::ID::lightBlue: return "lightBlue";
    case ColorSet::ID::lightViolett: return "lightViolett";
    case ColorSet::ID::lightIndigo: return "lightIndigo";
  }
  return "?";
}

// The text colour that reads on a swatch of fill: black on light colours,
// white on dark ones. The crossover is where both contrast alike with the
// fill (a relative luminance of 0.179, by the sRGB transfer curve).
Color labelColorOn(const Color& fill) {
  const RGBAComponents c = toRGBAComponents(fill);
  const auto linear = [](double component) {
    const double clamped = std::clamp(component, 0.0, 1.0);
    return clamped <= 0.04045 ? clamped / 12.92 : std::pow((clamped + 0.055) / 1.055, 2.4);
  };
  const double luminance = 0.2126 * linear(c.red) + 0.7152 * linear(c.green) + 0.0722 * linear(c.blue);
  return luminance > 0.179 ? Color::deviceRGB(0, 0, 0, 1) : Color::white();
}

void setSource(cairo_t* cr, const Color& color, double extraAlpha = 1.0) {
  RGBAComponents c = toRGBAComponents(color);
  cairo_set_source_rgba(cr, c.red, c.green, c.blue, c.alpha * extraAlpha);
}

void drawText(cairo_t* cr, const std::string& text, double x, double y, double size, bool bold,
              const Color& color) {
  std::unique_ptr<PangoLayout, decltype(&g_object_unref)> layout(pango_cairo_create_layout(cr), g_object_unref);
  std::unique_ptr<PangoFontDescription, decltype(&pango_font_description_free)> font(
      pango_font_description_from_string("DejaVu Sans"), pango_font_description_free);
  pango_font_description_set_absolute_size(font.get(), size * PANGO_SCALE);
  pango_font_description_set_weight(font.get(), bold ? PANGO_WEIGHT_SEMIBOLD : PANGO_WEIGHT_NORMAL);
  pango_layout_set_font_description(layout.get(), font.get());
  pango_layout_set_text(layout.get(), text.c_str(), -1);
  int width = 0;
  int height = 0;
  pango_layout_get_pixel_size(layout.get(), &width, &height);
  setSource(cr, color);
  cairo_move_to(cr, x, y - height / 2.0);
  pango_cairo_show_layout(cr, layout.get());
}

void roundedRectangle(cairo_t* cr, double x, double y, double width, double height, double radius) {
  cairo_new_sub_path(cr);
  cairo_arc(cr, x + width - radius, y + radius, radius, -G_PI / 2, 0);
  cairo_arc(cr, x + width - radius, y + height - radius, radius, 0, G_PI / 2);
  cairo_arc(cr, x + radius, y + height - radius, radius, G_PI / 2, G_PI);
  cairo_arc(cr, x + radius, y + radius, radius, G_PI, 3 * G_PI / 2);
  cairo_close_path(cr);
}

void drawPanel(cairo_t* cr, bool isDarkMode) {
  ScopedAppearance appearance(isDarkMode ? Appearance::dark() : Appearance::light());
  const double left = isDarkMode ? SheetLayout::panelWidth() : 0;
  setSource(cr, NamedColors::systemBackground());
  cairo_rectangle(cr, left, 0, SheetLayout::panelWidth(), SheetLayout::panelHeight());
  cairo_fill(cr);

  const Color& label = NamedColors::label();
  const Color& secondary = NamedColors::secondaryLabel();
  drawText(cr, isDarkMode ? "Dark appearance" : "Light appearance", left + SheetLayout::kMargin,
           SheetLayout::kMargin + 8, 15, true, label);
  const char* headings[SheetLayout::kSwatchCount] = {"Base", "Background", "Running button"};
  for (int column = 0; column < SheetLayout::kSwatchCount; ++column) {
    drawText(cr, headings[column], SheetLayout::swatchCentreX(isDarkMode, column) - SheetLayout::kSwatchWidth / 2,
             SheetLayout::kMargin + SheetLayout::kTitleHeight - 10, 10, false, secondary);
  }

  for (std::size_t row = 0; row < kRows; ++row) {
    const ColorSet set(allCases<ColorSet::ID>[row]);
    const double centreY = SheetLayout::swatchCentreY(static_cast<int>(row));
    drawText(cr, idName(set.id()) + "  " + std::to_string(rawValue(set.id())), left + SheetLayout::kMargin,
             centreY, 12, false, label);

    const Color* fills[2] = {&set.baseColor(), &set.backgroundColorOptimizedForLightContent()};
    const std::string_view hexes[2] = {set.displayP3HexString(isDarkMode),
                                       set.displayP3HexBackgroundColorOptimizedForLightContent(isDarkMode)};
    for (int column = 0; column < 2; ++column) {
      const double x = SheetLayout::swatchCentreX(isDarkMode, column) - SheetLayout::kSwatchWidth / 2;
      const double y = centreY - SheetLayout::kSwatchHeight / 2;
      roundedRectangle(cr, x, y, SheetLayout::kSwatchWidth, SheetLayout::kSwatchHeight, 6);
      setSource(cr, *fills[column]);
      cairo_fill(cr);
      drawText(cr, std::string(hexes[column]), x + 8, centreY, 10, false, labelColorOn(*fills[column]));
    }

    // The running button: the base colour at the set's button opacity over
    // the window background, with the set's base colour as a small ring.
    const double buttonX = SheetLayout::swatchCentreX(isDarkMode, 2);
    cairo_arc(cr, buttonX, centreY, SheetLayout::kSwatchHeight / 2, 0, 2 * G_PI);
    setSource(cr, set.baseColor(), set.runningStartPauseButtonBackgroundOpacity(isDarkMode));
    cairo_fill(cr);
    cairo_arc(cr, buttonX, centreY, 4, 0, 2 * G_PI);
    setSource(cr, set.baseColor());
    cairo_fill(cr);
  }
}

void drawSheet(cairo_t* cr) {
  drawPanel(cr, false);
  drawPanel(cr, true);
}

void check(cairo_status_t status, const std::string& what) {
  if (status != CAIRO_STATUS_SUCCESS) {
    throw PaletteSheetError(static_cast<int>(status), what + ": " + cairo_status_to_string(status));
  }
}

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Context = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

// A file that Cairo writes through, so that a failure can name the
// operating system's reason instead of Cairo's "error while writing".
class OutputFile {
 public:
  explicit OutputFile(const std::filesystem::path& path) : path_(path), stream_(std::fopen(path.c_str(), "wb")) {
    if (!stream_) fail(errno);
  }
  ~OutputFile() {
    if (stream_) std::fclose(stream_);
  }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  static cairo_status_t write(void* closure, const unsigned char* data, unsigned int length) {
    auto* file = static_cast<OutputFile*>(closure);
    if (std::fwrite(data, 1, length, file->stream_) == length) return CAIRO_STATUS_SUCCESS;
    file->errorNumber_ = errno;
    return CAIRO_STATUS_WRITE_ERROR;
  }

  // Flushes and closes; throws the reason of any failure on the way.
  void finish() {
    std::FILE* stream = std::exchange(stream_, nullptr);
    if (std::fclose(stream) != 0 && errorNumber_ == 0) errorNumber_ = errno;
    if (errorNumber_ != 0) fail(errorNumber_);
  }

 private:
  [[noreturn]] void fail(int errorNumber) const {
    throw PaletteSheetError(CAIRO_STATUS_WRITE_ERROR,
                            "cannot write " + path_.string() + ": " + std::strerror(errorNumber));
  }

  std::filesystem::path path_;
  std::FILE* stream_;
  int errorNumber_ = 0;
};

}  // namespace

double SheetLayout::panelWidth() {
  return 2 * kMargin + kLabelWidth + kSwatchCount * kSwatchWidth + (kSwatchCount - 1) * kSwatchGap;
}

double SheetLayout::panelHeight() { return 2 * kMargin + kTitleHeight + static_cast<double>(kRows) * kRowHeight; }

double SheetLayout::swatchCentreX(bool isDarkMode, int column) {
  const double left = isDarkMode ? panelWidth() : 0;
  return left + kMargin + kLabelWidth + column * (kSwatchWidth + kSwatchGap) + kSwatchWidth / 2;
}

double SheetLayout::swatchCentreY(int row) { return kMargin + kTitleHeight + row * kRowHeight + kRowHeight / 2; }

void writePaletteSheetPNG(const std::filesystem::path& file, double scale) {
  Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32,
                                             static_cast<int>(SheetLayout::sheetWidth() * scale + 0.5),
                                             static_cast<int>(SheetLayout::sheetHeight() * scale + 0.5)),
                  cairo_surface_destroy);
  check(cairo_surface_status(surface.get()), "cannot create the image surface");
  {
    Context cr(cairo_create(surface.get()), cairo_destroy);
    cairo_scale(cr.get(), scale, scale);
    drawSheet(cr.get());
    check(cairo_status(cr.get()), "cannot draw the palette sheet");
  }
  OutputFile output(file);
  cairo_status_t status = cairo_surface_write_to_png_stream(surface.get(), &OutputFile::write, &output);
  output.finish();
  check(status, "cannot write " + file.string());
}

void writePaletteSheetSVG(const std::filesystem::path& file) {
  OutputFile output(file);
  Surface surface(cairo_svg_surface_create_for_stream(&OutputFile::write, &output, SheetLayout::sheetWidth(),
                                                      SheetLayout::sheetHeight()),
                  cairo_surface_destroy);
  check(cairo_surface_status(surface.get()), "cannot create " + file.string());
  {
    Context cr(cairo_create(surface.get()), cairo_destroy);
    drawSheet(cr.get());
    check(cairo_status(cr.get()), "cannot draw the palette sheet");
  }
  cairo_surface_finish(surface.get());
  output.finish();
  check(cairo_surface_status(surface.get()), "cannot write " + file.string());
}

}  // namespace kestrona::palette
