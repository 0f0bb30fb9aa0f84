// kestrona-widgets render KIND [--family F] [--now SECONDS] [--scale N]
// --out FILE: draws the widget's current entry, as the widget host shows it
// at that moment, to FILE: a PNG at N pixels per point (2 unless told) when
// FILE ends in ".png", an SVG in points when it ends in ".svg". Prints
// nothing; a drawing that fails is reported on the error stream with
// status 1.
#include <filesystem>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/EntryRequest.h"
#include "Extension/WidgetProcess/WidgetViews.h"
#include "Platform/View/Renderer.h"

namespace kestrona {

int runRenderCommand(const CommandInvocation& invocation) {
  std::unique_ptr<EntryRequest> request =
      EntryRequest::parse(invocation.bundle, invocation.arguments, {"--scale", "--out"});
  const std::string* out = request->option("--out");
  if (!out) throw CommandLineError(CommandLineErrorCode::missingValue, "render needs --out FILE");
  double scale = kDefaultPixelScale;
  if (const std::string* given = request->option("--scale")) scale = parsePositiveOption("--scale", *given);
  const std::filesystem::path file(*out);
  const std::string extension = file.extension().string();
  if (extension != ".png" && extension != ".svg") {
    throw CommandLineError(CommandLineErrorCode::badValue, "--out must name a .png or .svg file, not '" + *out + "'");
  }
  const LayoutTree tree = layOutWidget(request->configuration().kind(), request->currentEntry(), request->family());
  if (extension == ".png") {
    renderPNG(tree, file, scale);
  } else {
    renderSVG(tree, file);
  }
  return 0;
}

}  // namespace kestrona
