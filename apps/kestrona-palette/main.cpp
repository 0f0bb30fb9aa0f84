// kestrona-palette: draws the palette sheet.
//
//   kestrona-palette --out DIR [--scale N]
//
// Writes DIR/palette.png (at N pixels per point, default 2), DIR/palette.svg
// and DIR/index.html, which shows both. Exit status 0 on success, 1 when
// drawing or writing fails, 2 for bad arguments.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "apps/kestrona-palette/PaletteSheet.h"

namespace {

constexpr const char* kUsage = "usage: kestrona-palette --out DIR [--scale N]\n";

struct Arguments {
  std::filesystem::path out;
  double scale = 2;
};

std::optional<Arguments> parseArguments(int argc, char** argv) {
  Arguments arguments;
  bool haveOut = false;
  for (int i = 1; i < argc; ++i) {
    std::string_view argument = argv[i];
    if (i + 1 >= argc) return std::nullopt;
    if (argument == "--out") {
      arguments.out = argv[++i];
      haveOut = !arguments.out.empty();
    } else if (argument == "--scale") {
      char* end = nullptr;
      arguments.scale = std::strtod(argv[++i], &end);
      if (*end != '\0' || !(arguments.scale > 0 && arguments.scale <= 8)) return std::nullopt;
    } else {
      return std::nullopt;
    }
  }
  if (!haveOut) return std::nullopt;
  return arguments;
}

void writeIndex(const std::filesystem::path& file) {
  std::ofstream out(file, std::ios::trunc);
  out << "<!doctype html>\n<html><head><meta charset=\"utf-8\"><title>Kestrona palette</title>\n"
         "<style>body{font-family:sans-serif;background:#888;margin:24px}img{max-width:100%}</style></head>\n"
         "<body><h1>Kestrona palette</h1>\n<p>PNG</p><img src=\"palette.png\" alt=\"palette\">\n"
         "<p>SVG</p><img src=\"palette.svg\" alt=\"palette as SVG\">\n</body></html>\n";
  if (!out) throw kestrona::palette::PaletteSheetError(0, "cannot write " + file.string());
}

}  // namespace

int main(int argc, char** argv) {
  std::optional<Arguments> arguments = parseArguments(argc, argv);
  if (!arguments) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  try {
    std::error_code error;
    std::filesystem::create_directories(arguments->out, error);
    if (error) {
      std::fprintf(stderr, "kestrona-palette: cannot create %s: %s\n", arguments->out.c_str(),
                   error.message().c_str());
      return 1;
    }
    kestrona::palette::writePaletteSheetPNG(arguments->out / "palette.png", arguments->scale);
    kestrona::palette::writePaletteSheetSVG(arguments->out / "palette.svg");
    writeIndex(arguments->out / "index.html");
    std::printf("%s\n", (arguments->out / "index.html").c_str());
    return 0;
  } catch (const kestrona::Error& failure) {
    std::fprintf(stderr, "kestrona-palette: %s\n", failure.what());
    return 1;
  }
}
