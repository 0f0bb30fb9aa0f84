// Drawing widget views to files for the rendering tests.
//
// renderWidgetFiles() lays a view out with this machine's fonts and Pango
// and draws it to "<name>.png" and "<name>.svg" in directory, and checks
// that both files were written and that the PNG has the family's size at
// two pixels per point. Set KESTRONA_WIDGET_PICTURES to a folder to keep a
// copy of each picture there for a person to look at.
#pragma once

#include <cairo.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "Platform/View/Renderer.h"
#include "tests/SharedWidgets/Views/Timer/WidgetViewTestSupport.h"

namespace kestrona::testing {

inline void renderWidgetFiles(const View& view, Size canvas, const std::filesystem::path& directory,
                              const std::string& name) {
  SCOPED_TRACE(name);
  const LayoutTree tree = layout(view, canvas);
  const auto png = directory / (name + ".png");
  const auto svg = directory / (name + ".svg");
  renderPNG(tree, png);
  renderSVG(tree, svg);

  ASSERT_TRUE(std::filesystem::exists(svg));
  EXPECT_GT(std::filesystem::file_size(svg), 1000u);
  cairo_surface_t* image = cairo_image_surface_create_from_png(png.c_str());
  EXPECT_EQ(cairo_surface_status(image), CAIRO_STATUS_SUCCESS);
  EXPECT_EQ(cairo_image_surface_get_width(image), static_cast<int>(canvas.width * 2));
  EXPECT_EQ(cairo_image_surface_get_height(image), static_cast<int>(canvas.height * 2));
  cairo_surface_destroy(image);

  if (const char* keep = std::getenv("KESTRONA_WIDGET_PICTURES")) {
    std::filesystem::create_directories(keep);
    std::filesystem::copy_file(png, std::filesystem::path(keep) / png.filename(),
                               std::filesystem::copy_options::overwrite_existing);
  }
}

}  // namespace kestrona::testing
