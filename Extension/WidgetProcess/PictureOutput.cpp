#include "Extension/WidgetProcess/PictureOutput.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ostream>
#include <vector>

#include "Platform/View/Renderer.h"
#include "WidgetData/Records/FileSystemError.h"

namespace kestrona {
namespace {

namespace fs = std::filesystem;

// A file made with mkstemp from pattern, removed again unless kept.
class TemporaryFile {
 public:
  // Throws the file error of reported when the file can't be made.
  TemporaryFile(const fs::path& pattern, const fs::path& reported) {
    std::string name = pattern.string();
    descriptor_ = ::mkstemp(name.data());
    if (descriptor_ < 0) throw fileWriteError(reported, errno);
    path_ = name;
  }
  ~TemporaryFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!kept_) ::unlink(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const fs::path& path() const noexcept { return path_; }
  int descriptor() const noexcept { return descriptor_; }
  // Closes the file; the error number of a delayed write failure, or 0.
  int close() {
    int result = ::close(descriptor_);
    descriptor_ = -1;
    return result == 0 || errno == EINTR ? 0 : errno;
  }
  void keep() { kept_ = true; }

 private:
  fs::path path_;
  int descriptor_ = -1;
  bool kept_ = false;
};

// Everything a file holds; throws ViewRenderingError when it can't be had.
std::string contentOf(const fs::path& file) {
  std::string content;
  std::FILE* stream = std::fopen(file.c_str(), "rb");
  if (!stream) {
    throw ViewRenderingError(ViewRenderingErrorCode::cannotWrite, "The drawing could not be read back.", "");
  }
  std::vector<char> buffer(65536);
  while (std::size_t count = std::fread(buffer.data(), 1, buffer.size(), stream)) content.append(buffer.data(), count);
  std::fclose(stream);
  return content;
}

}  // namespace

std::optional<PictureFormat> pictureFormatOfFile(const fs::path& file) {
  const fs::path extension = file.extension();
  if (extension == ".png") return PictureFormat::png;
  if (extension == ".svg") return PictureFormat::svg;
  return std::nullopt;
}

std::string pictureData(const LayoutTree& tree, PictureFormat format, double scale) {
  if (format == PictureFormat::png) {
    std::vector<unsigned char> png = renderPNGData(tree, scale);
    return std::string(png.begin(), png.end());
  }
  // The drawing library writes SVG only to a file: a private one.
  TemporaryFile drawing(fs::temp_directory_path() / "kestrona-widget-XXXXXX", fs::temp_directory_path());
  drawing.close();
  renderSVG(tree, drawing.path());
  return contentOf(drawing.path());
}

void writeFileReplacing(const fs::path& path, std::string_view bytes) {
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  TemporaryFile file(folder / ("." + path.filename().string() + ".XXXXXX"), path);
  // mkstemp makes the file private; a picture is as readable as any new file.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::fchmod(file.descriptor(), 0666 & ~mask);
  for (std::size_t written = 0; written < bytes.size();) {
    ssize_t count = ::write(file.descriptor(), bytes.data() + written, bytes.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw fileWriteError(path, errno);
    written += static_cast<std::size_t>(count);
  }
  if (int error = file.close()) throw fileWriteError(path, error);
  if (::rename(file.path().c_str(), path.c_str()) != 0) throw fileWriteError(path, errno);
  file.keep();
}

void writeOutput(const std::string& out, std::string_view bytes, std::ostream& standardOutput) {
  if (out != "-") {
    writeFileReplacing(out, bytes);
    return;
  }
  standardOutput.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  standardOutput.flush();
  if (!standardOutput) throw fileWriteError("/dev/stdout", EIO);
}

}  // namespace kestrona
