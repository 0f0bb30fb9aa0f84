#include "WidgetData/Records/WidgetDataReader.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "WidgetData/Records/WidgetError.h"
#include "WidgetData/Records/WidgetStoreDirectory.h"

namespace kestrona {
namespace {

// The whole content of the file at path, or none when any step fails. The
// file is read to its end rather than to the size it had when opened, so a
// file that grows while it is read is read whole.
std::optional<std::string> loadFile(const std::filesystem::path& path) {
  int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return std::nullopt;
  std::string content;
  std::array<char, 16384> buffer;
  bool failed = false;
  for (;;) {
    ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      failed = true;
      break;
    }
    if (count == 0) break;
    content.append(buffer.data(), static_cast<std::size_t>(count));
  }
  ::close(descriptor);
  if (failed) return std::nullopt;
  return content;
}

}  // namespace

std::shared_ptr<WidgetDataReader> WidgetDataReader::withAppGroupName(std::string_view appGroupName,
                                                                     WidgetType widgetType) {
  return withStoreDirectoryURL(widgetStoreDirectoryUrl(appGroupName), widgetType);
}

std::shared_ptr<WidgetDataReader> WidgetDataReader::withStoreDirectoryURL(std::optional<URL> storeDirectoryURL,
                                                                          WidgetType widgetType) {
  return std::shared_ptr<WidgetDataReader>(new WidgetDataReader(std::move(storeDirectoryURL), widgetType));
}

WidgetDataReader::WidgetDataReader(std::optional<URL> storeDirectoryURL, WidgetType widgetType)
    : storeDirectoryURL_(std::move(storeDirectoryURL)), widgetType_(widgetType) {}

WidgetDataResult<std::string> WidgetDataReader::readData() const {
  if (!storeDirectoryURL_) {
    return WidgetDataResult<std::string>::failure(WidgetError(WidgetError::Code::cannotAccessDirectory));
  }
  URL fileURL = storeDirectoryURL_->appendingPathComponent(rawValue(widgetType_));
  std::optional<std::string> content;
  if (fileURL.isFileURL()) content = loadFile(fileURL.filesystemPath());
  if (!content) return WidgetDataResult<std::string>::failure(WidgetError(WidgetError::Code::cannotReadData));
  return WidgetDataResult<std::string>::success(std::move(*content));
}

}  // namespace kestrona
