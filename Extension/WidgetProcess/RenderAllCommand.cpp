// kestrona-widgets render-all --out DIR [--now SECONDS]: the widget gallery.
// Places every widget of the bundle in each of its families on one widget
// host, at the present moment (or the one --now fixes), draws what each
// instance shows to DIR/KIND-FAMILY.png at 2 pixels per point, and writes
// DIR/index.html, a page with one section per widget, in the bundle's order,
// showing its pictures at their size in points, each captioned with the kind
// and the family. When DIR already holds palette/index.html (the palette
// sheet), the page links to it. Creates DIR; prints the page's path.
//
// Every file is replaced as a whole, and the page is written last: a
// render-all that fails (a folder that can't be made or written, a full
// disk) leaves no new page, so no page shows a picture that was not
// written. A widget that shows stand-in data is warned about once.
#include <filesystem>
#include <optional>
#include <ostream>
#include <sstream>
#include <system_error>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/CommandOptions.h"
#include "Extension/WidgetProcess/DataFileWarnings.h"
#include "Extension/WidgetProcess/PictureOutput.h"
#include "Extension/WidgetProcess/WidgetViews.h"
#include "Platform/View/Renderer.h"
#include "Platform/WidgetHost/WidgetHost.h"
#include "WidgetData/Records/FileSystemError.h"

namespace kestrona {
namespace {

namespace fs = std::filesystem;

std::string escapedHTML(std::string_view text) {
  std::string escaped;
  for (char character : text) {
    switch (character) {
      case '&': escaped += "&amp;"; break;
      case '<': escaped += "&lt;"; break;
      case '>': escaped += "&gt;"; break;
      case '"': escaped += "&quot;"; break;
      default: escaped += character;
    }
  }
  return escaped;
}

constexpr std::string_view kPageHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>Kestrona widgets</title>
<style>
body { background: #1c1c1e; color: #f2f2f7; font-family: Inter, "DejaVu Sans", sans-serif; margin: 32px; }
section { margin-bottom: 40px; }
h2 { font-size: 20px; margin: 0 0 4px; }
p.description { color: #8e8e93; margin: 0 0 16px; }
div.families { display: flex; flex-wrap: wrap; gap: 24px; align-items: flex-start; }
figure { margin: 0; }
figure img { border-radius: 22px; display: block; }
figcaption { color: #8e8e93; font-size: 13px; margin-top: 8px; }
</style>
</head>
<body>
<h1>Kestrona widgets</h1>
)";

}  // namespace

int runRenderAllCommand(const CommandInvocation& invocation) {
  const CommandOptions options = readCommandOptions(invocation.arguments, {"--out", "--now"}, false);
  const std::string* out = options.value("--out");
  if (!out) throw CommandLineError(CommandLineErrorCode::missingValue, "render-all needs --out DIR");
  if (out->empty() || *out == "-") {
    throw CommandLineError(CommandLineErrorCode::badValue,
                           "render-all needs a folder name after --out, not '" + *out + "'");
  }
  ManualClock fixedClock;
  std::optional<ScopedClock> scopedClock;
  if (const std::string* now = options.value("--now")) {
    fixedClock.set(parseNowOption(*now));
    scopedClock.emplace(fixedClock);
  }

  const fs::path directory(*out);
  std::error_code madeNot;
  fs::create_directories(directory, madeNot);
  if (madeNot) throw fileWriteError(directory, madeNot.value());
  WidgetHost host(invocation.bundle.body(), Clock::current(), nullptr);
  host.start();
  DataFileWarnings warnings(invocation.bundle.appGroupName, invocation.errors);

  // The pictures first, each replacing its file whole; the page only when
  // every picture it shows is there.
  std::ostringstream page;
  page << kPageHead;
  if (fs::exists(directory / "palette" / "index.html")) {
    page << "<p><a href=\"palette/index.html\" style=\"color: #64d2ff\">The palette sheet</a></p>\n";
  }
  for (const WidgetConfiguration& widget : host.widgets()) {
    warnings.check(widget.kind());
    page << "<section id=\"" << escapedHTML(widget.kind()) << "\">\n<h2>" << escapedHTML(widget.displayName())
         << " <small>(" << escapedHTML(widget.kind()) << ")</small></h2>\n<p class=\"description\">"
         << escapedHTML(widget.description()) << "</p>\n<div class=\"families\">\n";
    for (WidgetFamily family : widget.supportedFamilies()) {
      const std::string name = widget.kind() + "-" + std::string(rawValue(family)) + ".png";
      const LayoutTree tree = layOutWidget(widget.kind(), *host.currentEntry(widget.kind(), family), family);
      writeFileReplacing(directory / name, pictureData(tree, PictureFormat::png, kDefaultPixelScale));
      const Size canvas = widgetCanvasSize(family);
      page << "<figure><img src=\"" << escapedHTML(name) << "\" width=\"" << numberText(canvas.width)
           << "\" height=\"" << numberText(canvas.height) << "\" alt=\"" << escapedHTML(widget.kind()) << " "
           << rawValue(family) << "\"><figcaption>" << escapedHTML(widget.kind()) << " · " << rawValue(family)
           << "</figcaption></figure>\n";
    }
    page << "</div>\n</section>\n";
  }
  page << "</body>\n</html>\n";
  writeFileReplacing(directory / "index.html", page.str());
  invocation.output << (directory / "index.html").string() << "\n";
  return 0;
}

}  // namespace kestrona
