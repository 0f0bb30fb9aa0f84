// kestrona-widgets render KIND [--family F] [--now SECONDS] [--scale N]
// [--format png|svg] --out FILE|-: draws the widget's current entry, as the
// widget host shows it at that moment: a PNG at N pixels per point (2 unless
// told) or an SVG in points, chosen by the extension of FILE (".png" or
// ".svg"), or by --format when FILE is "-", the standard output (PNG unless
// told). The file is replaced as a whole (PictureOutput.h). Prints nothing
// else; a drawing or a file that fails is reported with status 1.
#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/EntryRequest.h"
#include "Extension/WidgetProcess/PictureOutput.h"
#include "Extension/WidgetProcess/WidgetViews.h"
#include "Platform/View/Renderer.h"

namespace kestrona {
namespace {

using Code = CommandLineErrorCode;

PictureFormat formatOf(const EntryRequest& request, const std::string& out) {
  std::optional<PictureFormat> named;
  if (const std::string* format = request.option("--format")) {
    if (*format == "png") named = PictureFormat::png;
    if (*format == "svg") named = PictureFormat::svg;
    if (!named) throw CommandLineError(Code::badValue, "--format takes png or svg, not '" + *format + "'");
  }
  if (out == "-") return named.value_or(PictureFormat::png);
  std::optional<PictureFormat> extension = pictureFormatOfFile(out);
  if (!extension) {
    throw CommandLineError(Code::badValue, "--out must name a .png or .svg file, or -, not '" + out + "'");
  }
  if (named && named != extension) {
    throw CommandLineError(Code::conflictingOptions,
                           "--format " + *request.option("--format") + " and --out '" + out + "' do not agree");
  }
  return *extension;
}

}  // namespace

int runRenderCommand(const CommandInvocation& invocation) {
  std::unique_ptr<EntryRequest> request =
      EntryRequest::parse(invocation.bundle, invocation.arguments, {"--scale", "--out", "--format"});
  const std::string* out = request->option("--out");
  if (!out) throw CommandLineError(Code::missingValue, "render needs --out FILE, or --out - for the standard output");
  if (out->empty()) throw CommandLineError(Code::badValue, "--out needs a file name, or - for the standard output");
  double scale = kDefaultPixelScale;
  if (const std::string* given = request->option("--scale")) scale = parseScaleOption(*given);
  const PictureFormat format = formatOf(*request, *out);
  request->warnAboutDataFile(invocation.errors);
  const LayoutTree tree = layOutWidget(request->configuration().kind(), request->currentEntry(), request->family());
  writeOutput(*out, pictureData(tree, format, scale), invocation.output);
  return 0;
}

}  // namespace kestrona
