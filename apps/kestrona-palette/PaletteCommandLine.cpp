#include "apps/kestrona-palette/PaletteCommandLine.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>
#include <system_error>

#include "Platform/Foundation/ExceptionDescription.h"
#include "apps/kestrona-palette/PaletteSheet.h"

namespace kestrona::palette {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kUsage =
    "Usage: kestrona-palette --out DIR [--scale N]\n"
    "       kestrona-palette --help\n\n"
    "Draws the palette sheet: every colour set in the light and the dark appearance,\n"
    "to DIR/palette.png, DIR/palette.svg and DIR/index.html, which shows both.\n\n"
    "Options:\n"
    "  --out DIR   the folder to write to, made when missing\n"
    "  --scale N   pixels per point of the PNG, above 0 and at most 8 (default 2)\n"
    "  -h, --help  show this help\n\n"
    "Exit status: 0 done; 1 a file could not be written; 2 a wrong command line.\n";

struct Arguments {
  fs::path out;
  double scale = 2;
};

// A wrong command line, with its reason.
struct UsageError {
  std::string reason;
};

std::optional<Arguments> parse(const std::vector<std::string>& arguments, std::ostream& output) {
  std::optional<std::string> out;
  std::optional<std::string> scale;
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    const std::string& argument = arguments[index];
    if (argument == "-h" || argument == "--help") {
      output << kUsage;
      return std::nullopt;
    }
    const std::string name = argument.substr(0, argument.find('='));
    std::optional<std::string>* slot = name == "--out" ? &out : name == "--scale" ? &scale : nullptr;
    if (!slot) {
      throw UsageError{argument.starts_with("-") ? "unknown option " + name : "unexpected argument '" + argument + "'"};
    }
    if (*slot) throw UsageError{name + " is given twice"};
    if (name.size() < argument.size()) {
      *slot = argument.substr(name.size() + 1);
    } else if (index + 1 < arguments.size()) {
      *slot = arguments[++index];
    } else {
      throw UsageError{name + " needs a value"};
    }
  }
  if (!out) throw UsageError{"--out DIR is needed"};
  if (out->empty()) throw UsageError{"--out needs a folder name"};
  Arguments parsed{.out = *out};
  if (scale) {
    auto [end, error] = std::from_chars(scale->data(), scale->data() + scale->size(), parsed.scale);
    if (error != std::errc() || end != scale->data() + scale->size() || !std::isfinite(parsed.scale) ||
        parsed.scale <= 0 || parsed.scale > 8) {
      throw UsageError{"--scale takes a number above 0 and at most 8, not '" + *scale + "'"};
    }
  }
  return parsed;
}

void writeIndex(const fs::path& file) {
  errno = 0;
  std::ofstream out(file, std::ios::trunc);
  out << "<!doctype html>\n<html><head><meta charset=\"utf-8\"><title>Kestrona palette</title>\n"
         "<style>body{font-family:sans-serif;background:#888;margin:24px}img{max-width:100%}</style></head>\n"
         "<body><h1>Kestrona palette</h1>\n<p>PNG</p><img src=\"palette.png\" alt=\"palette\">\n"
         "<p>SVG</p><img src=\"palette.svg\" alt=\"palette as SVG\">\n</body></html>\n";
  out.close();
  if (!out) throw PaletteSheetError(0, "cannot write " + file.string() + ": " + std::strerror(errno ? errno : EIO));
}

}  // namespace

int runPaletteCommandLine(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors) {
  std::optional<Arguments> parsed;
  try {
    parsed = parse(arguments, output);
  } catch (const UsageError& error) {
    errors << "kestrona-palette: " << error.reason << "\nRun 'kestrona-palette --help' for the usage.\n";
    return 2;
  }
  if (!parsed) return 0;
  try {
    std::error_code error;
    fs::create_directories(parsed->out, error);
    if (error) throw PaletteSheetError(0, "cannot make " + parsed->out.string() + ": " + error.message());
    writePaletteSheetPNG(parsed->out / "palette.png", parsed->scale);
    writePaletteSheetSVG(parsed->out / "palette.svg");
    writeIndex(parsed->out / "index.html");
    output << (parsed->out / "index.html").string() << "\n";
    return 0;
  } catch (const Error& failure) {
    errors << "kestrona-palette: " << failure.localizedDescription() << "\n";
  } catch (...) {
    errors << "kestrona-palette: " << exceptionDescription(std::current_exception()) << "\n";
  }
  return 1;
}

}  // namespace kestrona::palette
