#include "Platform/View/Renderer.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "Platform/View/PangoText.h"

namespace kestrona {
namespace {

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Context = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

void check(cairo_status_t status, ViewRenderingError::Code code, const std::string& what) {
  if (status != CAIRO_STATUS_SUCCESS) {
    throw ViewRenderingError(code, what + ": " + cairo_status_to_string(status), cairo_status_to_string(status));
  }
}

double clamped(double component) { return std::isfinite(component) ? std::clamp(component, 0.0, 1.0) : 0.0; }

void setSource(cairo_t* cr, const RGBAComponents& color, double opacity) {
  cairo_set_source_rgba(cr, clamped(color.red), clamped(color.green), clamped(color.blue),
                        clamped(color.alpha) * opacity);
}

// The number of nodes below node (itself included) that paint something.
int paintingNodes(const LaidOutNode& node) {
  if (node.kind == ViewKind::shape || node.kind == ViewKind::image || node.kind == ViewKind::text) return 1;
  int count = 0;
  for (const LaidOutNode& child : node.children) count += paintingNodes(child);
  return count;
}

// The fraction of the radius by which a continuous corner starts earlier
// than a circular one, and where its control points lie: one cubic curve
// per corner that leaves the straight edge with no jump in curvature.
constexpr double kContinuousReach = 1.28;
constexpr double kContinuousControl = 0.36;
// Control point distance, as a fraction of the radius, for a cubic curve
// that follows a quarter circle.
constexpr double kCircularControl = 0.5523;

void cornerCurve(cairo_t* cr, Point corner, Point fromDirection, Point toDirection, double radius,
                 RoundedCornerStyle style) {
  // fromDirection points from the corner back along the incoming edge,
  // toDirection along the outgoing one.
  const double reach = style == RoundedCornerStyle::continuous ? kContinuousReach * radius : radius;
  const double control =
      style == RoundedCornerStyle::continuous ? kContinuousControl * radius : (1 - kCircularControl) * radius;
  cairo_line_to(cr, corner.x + fromDirection.x * reach, corner.y + fromDirection.y * reach);
  cairo_curve_to(cr, corner.x + fromDirection.x * control, corner.y + fromDirection.y * control,
                 corner.x + toDirection.x * control, corner.y + toDirection.y * control,
                 corner.x + toDirection.x * reach, corner.y + toDirection.y * reach);
}

void shapePath(cairo_t* cr, const Shape& shape, const Rect& rect) {
  cairo_new_path(cr);
  if (shape.kind() == Shape::Kind::circle) {
    cairo_arc(cr, rect.midX(), rect.midY(), shape.effectiveRadius(rect), 0, 2 * M_PI);
    cairo_close_path(cr);
    return;
  }
  double radius = shape.effectiveRadius(rect);
  const RectCorner rounded = shape.kind() == Shape::Kind::roundedRectangle ? shape.corners() : RectCorner::allCorners;
  RoundedCornerStyle style =
      shape.kind() == Shape::Kind::roundedRectangle ? shape.style() : RoundedCornerStyle::circular;
  if (style == RoundedCornerStyle::continuous &&
      radius * kContinuousReach * 2 > std::min(rect.width(), rect.height())) {
    // Too little room for the longer continuous corner: fall back on arcs.
    style = RoundedCornerStyle::circular;
  }
  auto radiusAt = [&](RectCorner corner) { return contains(rounded, corner) ? radius : 0.0; };
  cairo_move_to(
      cr,
      rect.minX() + radiusAt(RectCorner::topLeft) * (style == RoundedCornerStyle::continuous ? kContinuousReach : 1),
      rect.minY());
  cornerCurve(cr, {rect.maxX(), rect.minY()}, {-1, 0}, {0, 1}, radiusAt(RectCorner::topRight), style);
  cornerCurve(cr, {rect.maxX(), rect.maxY()}, {0, -1}, {-1, 0}, radiusAt(RectCorner::bottomRight), style);
  cornerCurve(cr, {rect.minX(), rect.maxY()}, {1, 0}, {0, -1}, radiusAt(RectCorner::bottomLeft), style);
  cornerCurve(cr, {rect.minX(), rect.minY()}, {0, 1}, {1, 0}, radiusAt(RectCorner::topLeft), style);
  cairo_close_path(cr);
}

void polygonPath(cairo_t* cr, const std::vector<Point>& corners, double radius, Point offset) {
  const std::size_t count = corners.size();
  for (std::size_t index = 0; index < count; ++index) {
    const Point previous = corners[(index + count - 1) % count];
    const Point corner = corners[index];
    const Point next = corners[(index + 1) % count];
    auto toward = [&](Point target) {
      const double dx = target.x - corner.x;
      const double dy = target.y - corner.y;
      const double length = std::hypot(dx, dy);
      const double reach = length > 0 ? std::min(radius, length / 2) / length : 0;
      return Point{corner.x + dx * reach + offset.x, corner.y + dy * reach + offset.y};
    };
    const Point in = toward(previous);
    const Point out = toward(next);
    if (index == 0) {
      cairo_move_to(cr, in.x, in.y);
    } else {
      cairo_line_to(cr, in.x, in.y);
    }
    cairo_curve_to(cr, corner.x + offset.x, corner.y + offset.y, corner.x + offset.x, corner.y + offset.y, out.x,
                   out.y);
  }
  cairo_close_path(cr);
}

class Painter {
 public:
  explicit Painter(cairo_t* cr) : cr_(cr), pango_(pango_cairo_create_context(cr)) {
    pangotext::configureContext(pango_);
  }
  ~Painter() { g_object_unref(pango_); }
  Painter(const Painter&) = delete;
  Painter& operator=(const Painter&) = delete;

  void draw(const LaidOutNode& node) {
    switch (node.kind) {
      case ViewKind::shape: {
        shapePath(cr_, node.as<ShapeNode>()->shape, node.frame);
        setSource(cr_, *node.color, opacity_);
        cairo_fill(cr_);
        return;
      }
      case ViewKind::image: drawImage(node); return;
      case ViewKind::text: drawText(node); return;
      case ViewKind::opacity: {
        const double opacity = node.as<OpacityNode>()->opacity;
        if (opacity <= 0) return;
        if (paintingNodes(node) <= 1) {
          // One painted node overlaps nothing of its own: its colour's
          // alpha gives the same picture as a layer, without the layer.
          const double outer = opacity_;
          opacity_ *= opacity;
          drawChildren(node);
          opacity_ = outer;
          return;
        }
        cairo_push_group(cr_);
        drawChildren(node);
        cairo_pop_group_to_source(cr_);
        cairo_paint_with_alpha(cr_, opacity);
        return;
      }
      case ViewKind::clip: {
        cairo_save(cr_);
        shapePath(cr_, node.as<ClipNode>()->shape, node.frame);
        cairo_clip(cr_);
        drawChildren(node);
        cairo_restore(cr_);
        return;
      }
      case ViewKind::scale: {
        const double factor = node.as<ScaleNode>()->factor;
        // A view scaled to almost nothing is kept in the layout but not
        // drawn: Cairo refuses matrices that are nearly singular.
        if (std::abs(factor) * std::max(node.frame.width(), node.frame.height()) < 1e-3) return;
        cairo_save(cr_);
        cairo_translate(cr_, node.frame.midX(), node.frame.midY());
        cairo_scale(cr_, factor, factor);
        cairo_translate(cr_, -node.frame.midX(), -node.frame.midY());
        drawChildren(node);
        cairo_restore(cr_);
        return;
      }
      default: drawChildren(node); return;
    }
  }

 private:
  void drawChildren(const LaidOutNode& node) {
    for (const LaidOutNode& child : node.children) draw(child);
  }

  void drawImage(const LaidOutNode& node) {
    const ImageNode& image = *node.as<ImageNode>();
    const TemplateSymbolOutline outline = templateSymbolOutline(image.symbol, image.edge);
    cairo_new_path(cr_);
    for (const std::vector<Point>& polygon : outline.polygons) {
      polygonPath(cr_, polygon, outline.cornerRadius, node.frame.origin);
    }
    setSource(cr_, *node.color, opacity_);
    cairo_fill(cr_);
  }

  void drawText(const LaidOutNode& node) {
    const LaidOutText& text = *node.text;
    pango_cairo_update_context(cr_, pango_);
    pangotext::LayoutPointer layout(pango_layout_new(pango_));
    pangotext::configureLayout(
        layout.get(), TextMeasureRequest{text.string, text.font, text.widthLimit, text.lineLimit, text.truncationMode});
    // Pango lines up each line at its paragraph's start within the width
    // limit: the right edge for right-to-left text. The frame holds only the
    // text's own box, so the layout is shifted to put that box on it.
    PangoRectangle logical;
    pango_layout_get_extents(layout.get(), nullptr, &logical);
    cairo_save(cr_);
    cairo_rectangle(cr_, node.frame.minX(), node.frame.minY(), node.frame.width(), node.frame.height());
    cairo_clip(cr_);
    setSource(cr_, text.color, opacity_);
    cairo_move_to(cr_, node.frame.minX() - static_cast<double>(logical.x) / PANGO_SCALE,
                  node.frame.minY() - static_cast<double>(logical.y) / PANGO_SCALE);
    pango_cairo_show_layout(cr_, layout.get());
    cairo_restore(cr_);
  }

  cairo_t* cr_;
  PangoContext* pango_;
  // The opacity of single painted nodes drawn without a layer of their own.
  double opacity_ = 1;
};

void drawTree(cairo_t* cr, const LayoutTree& tree) {
  Painter painter(cr);
  painter.draw(tree.root());
  check(cairo_status(cr), ViewRenderingError::Code::cannotDraw, "cannot draw the view");
}

Surface imageSurface(const LayoutTree& tree, double scale) {
  const Size canvas = tree.canvasSize();
  const double width = std::ceil(canvas.width * scale);
  const double height = std::ceil(canvas.height * scale);
  if (!(scale > 0) || !(width >= 1 && width <= 32767) || !(height >= 1 && height <= 32767)) {
    throw ViewRenderingError(ViewRenderingError::Code::cannotCreateSurface,
                             "cannot draw a canvas of this size at this scale", "invalid size");
  }
  Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width), static_cast<int>(height)),
                  cairo_surface_destroy);
  check(cairo_surface_status(surface.get()), ViewRenderingError::Code::cannotCreateSurface,
        "cannot create the image surface");
  Context cr(cairo_create(surface.get()), cairo_destroy);
  cairo_scale(cr.get(), scale, scale);
  drawTree(cr.get(), tree);
  cairo_surface_flush(surface.get());
  return surface;
}

cairo_status_t appendBytes(void* closure, const unsigned char* data, unsigned int length) {
  auto* bytes = static_cast<std::vector<unsigned char>*>(closure);
  bytes->insert(bytes->end(), data, data + length);
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

void draw(const LayoutTree& tree, cairo_t* context) {
  cairo_save(context);
  drawTree(context, tree);
  cairo_restore(context);
}

void renderPNG(const LayoutTree& tree, const std::filesystem::path& file, double scale) {
  Surface surface = imageSurface(tree, scale);
  check(cairo_surface_write_to_png(surface.get(), file.c_str()), ViewRenderingError::Code::cannotWrite,
        "cannot write " + file.string());
}

std::vector<unsigned char> renderPNGData(const LayoutTree& tree, double scale) {
  Surface surface = imageSurface(tree, scale);
  std::vector<unsigned char> bytes;
  check(cairo_surface_write_to_png_stream(surface.get(), appendBytes, &bytes), ViewRenderingError::Code::cannotWrite,
        "cannot encode the PNG image");
  return bytes;
}

void renderSVG(const LayoutTree& tree, const std::filesystem::path& file) {
  const Size canvas = tree.canvasSize();
  Surface surface(cairo_svg_surface_create(file.c_str(), canvas.width, canvas.height), cairo_surface_destroy);
  check(cairo_surface_status(surface.get()), ViewRenderingError::Code::cannotWrite, "cannot create " + file.string());
  {
    Context cr(cairo_create(surface.get()), cairo_destroy);
    drawTree(cr.get(), tree);
  }
  cairo_surface_finish(surface.get());
  check(cairo_surface_status(surface.get()), ViewRenderingError::Code::cannotWrite, "cannot write " + file.string());
}

}  // namespace kestrona
