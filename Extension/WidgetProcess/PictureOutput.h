// Where the drawings of kestrona-widgets go.
//
// pictureData() draws a laid-out widget as PNG bytes (at scale pixels per
// point) or as an SVG document (in points). writeFileReplacing() puts bytes
// at a path as a whole: they go to a new file beside it, which then takes
// the path's place, so a failure never leaves a half-written picture or
// page, and what was there before stays until the new file is complete.
// writeOutput() does that, or writes to the given stream when the path is
// "-" (the standard output).
//
// Failures: a drawing that fails throws ViewRenderingError; a file that
// can't be written throws the file system's error (FileSystemError.h),
// which names the path and the operating system's reason: a missing or
// read-only folder, a path that is a folder, a full disk.
//
// Threading: plain functions; any thread, one call per path at a time.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/View/Layout.h"

namespace kestrona {

enum class PictureFormat { png, svg };

// The format a file name's extension names (".png", ".svg"); none for others.
std::optional<PictureFormat> pictureFormatOfFile(const std::filesystem::path& file);

std::string pictureData(const LayoutTree& tree, PictureFormat format, double scale);

void writeFileReplacing(const std::filesystem::path& path, std::string_view bytes);

void writeOutput(const std::string& out, std::string_view bytes, std::ostream& standardOutput);

}  // namespace kestrona
