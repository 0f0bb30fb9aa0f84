// The palette sheet: every colour set of the palette drawn in both
// appearances, as a person checks them.
//
// A sheet has one panel per appearance (light, then dark), each on that
// appearance's window background. A panel has a row per colour set in the
// palette's order: the set's name and raw value, its base and background
// colours as swatches with their Display P3 hex strings, and the running
// start/pause button (the base colour at the set's button opacity over the
// background). Colours are converted from Display P3 to device RGB (sRGB)
// before drawing, since that is the space of the drawing surfaces.
//
// Threading: drawing uses only its own surfaces; calls may run on any
// thread, one sheet per call.
#pragma once

#include <filesystem>

#include <string>

#include "Platform/Foundation/Error.h"

namespace kestrona::palette {

// Geometry of a sheet in points; PNG output multiplies by the scale.
struct SheetLayout {
  static constexpr double kMargin = 24;
  static constexpr double kTitleHeight = 40;
  static constexpr double kRowHeight = 34;
  static constexpr double kLabelWidth = 150;
  static constexpr double kSwatchWidth = 84;
  static constexpr double kSwatchHeight = 26;
  static constexpr double kSwatchGap = 8;
  static constexpr int kSwatchCount = 3;  // base, background, running button

  static double panelWidth();
  static double panelHeight();
  static double sheetWidth() { return 2 * panelWidth(); }
  static double sheetHeight() { return panelHeight(); }
  // The centre of swatch column (0-based) of row (0-based) in the panel of
  // the given appearance, in points from the sheet's top-left corner.
  static double swatchCentreX(bool isDarkMode, int column);
  static double swatchCentreY(int row);
};

// A drawing or file failure; the code is Cairo's status, or 0 when the file
// system failed outside Cairo. The description names the file and the
// operating system's reason.
class PaletteSheetError final : public Error {
 public:
  PaletteSheetError(int cairoStatus, const std::string& description)
      : Error("PaletteSheetError", cairoStatus, description) {}
};

// Draws the sheet to a PNG file at scale pixels per point.
void writePaletteSheetPNG(const std::filesystem::path& file, double scale);
// Draws the sheet to an SVG file.
void writePaletteSheetSVG(const std::filesystem::path& file);

}  // namespace kestrona::palette
