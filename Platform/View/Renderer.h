// Drawing a laid-out view tree with Cairo and Pango, to PNG and SVG.
//
// The renderer draws exactly what the layout decided: every node in its
// frame, texts in the font, scale, width and line limit the layout chose
// (Pango, with the same rules as PangoTextMeasurer), shapes and template
// images as vector paths, opacity as one layer per node, clipping to the
// node's shape, scale effects about the node's centre. The canvas starts
// transparent: a widget draws its own background. Colour components
// outside 0...1 (wide-gamut colours converted to device RGB) are clamped
// when drawn.
//
// draw() draws onto a Cairo context that the caller owns, such as a
// window's: one user-space unit per point, in the context's current
// transformation, at whatever device scale its surface has, so a window on a
// screen of 2 pixels per point gets sharp text and edges without an image
// scaled up. It leaves the context's state (source, clip, matrix) as it found
// it.
//
// PNG output is at a pixel scale (2 pixels per point unless told), so a
// small widget of 170 x 170 points becomes 340 x 340 pixels; SVG output is
// in points, with text as glyph outlines.
//
// Failure: a surface that cannot be made, a drawing that fails, or a file
// that cannot be written throws ViewRenderingError.
//
// Threading: each call uses surfaces of its own and may run on any thread;
// the tree is only read.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Foundation/Error.h"
#include "Platform/View/Layout.h"

// Cairo's context, declared as Cairo declares it, so that this header needs
// no Cairo include.
typedef struct _cairo cairo_t;

namespace kestrona {

enum class ViewRenderingErrorCode { cannotCreateSurface, cannotDraw, cannotWrite };

// A drawing failure; the user info "cairoStatus" holds Cairo's status text.
class ViewRenderingError final : public CodedError<ViewRenderingErrorCode> {
 public:
  using Code = ViewRenderingErrorCode;

  ViewRenderingError(Code code, std::string description, std::string cairoStatus)
      : CodedError<Code>("ViewRenderingError", code, std::move(description),
                         ErrorUserInfo{{"cairoStatus", std::move(cairoStatus)}}) {}
};

inline constexpr double kDefaultPixelScale = 2;

// Draws tree onto context (see above).
void draw(const LayoutTree& tree, cairo_t* context);
// Draws tree to a PNG file at scale pixels per point.
void renderPNG(const LayoutTree& tree, const std::filesystem::path& file, double scale = kDefaultPixelScale);
// Draws tree to PNG bytes at scale pixels per point.
std::vector<unsigned char> renderPNGData(const LayoutTree& tree, double scale = kDefaultPixelScale);
// Draws tree to an SVG file, in points.
void renderSVG(const LayoutTree& tree, const std::filesystem::path& file);

}  // namespace kestrona
