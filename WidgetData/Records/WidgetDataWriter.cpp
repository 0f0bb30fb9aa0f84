#include "WidgetData/Records/WidgetDataWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "Platform/Foundation/FatalError.h"
#include "WidgetData/Records/FileSystemError.h"
#include "WidgetData/Records/WidgetStoreDirectory.h"

namespace kestrona {
namespace {

// Replaces the content of the file at path with bytes: created when
// missing, truncated, then written. Throws the file error. Something other
// than a file at path, such as a FIFO that nobody reads, fails at once
// instead of blocking.
void writeFile(const std::filesystem::path& path, std::string_view bytes) {
  int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666);
  if (descriptor < 0) throw fileWriteError(path, errno);
  std::size_t written = 0;
  while (written < bytes.size()) {
    ssize_t count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      int writeError = errno;
      ::close(descriptor);
      throw fileWriteError(path, writeError);
    }
    written += static_cast<std::size_t>(count);
  }
  // A delayed write error (a full disk on a network file system) shows here.
  if (::close(descriptor) != 0 && errno != EINTR) throw fileWriteError(path, errno);
}

}  // namespace

WidgetDataWriterError::WidgetDataWriterError(Code code)
    : CodedError(std::string(kDomain), code, "The widget store directory is not available.") {}

std::shared_ptr<WidgetDataWriter> WidgetDataWriter::withAppGroupName(std::string_view appGroupName,
                                                                     WidgetType widgetType) {
  return withStoreDirectoryURL(widgetStoreDirectoryUrl(appGroupName), widgetType);
}

std::shared_ptr<WidgetDataWriter> WidgetDataWriter::withStoreDirectoryURL(std::optional<URL> storeDirectoryURL,
                                                                          WidgetType widgetType) {
  return std::shared_ptr<WidgetDataWriter>(new WidgetDataWriter(std::move(storeDirectoryURL), widgetType));
}

WidgetDataWriter::WidgetDataWriter(std::optional<URL> storeDirectoryURL, WidgetType widgetType)
    : storeDirectoryURL_(std::move(storeDirectoryURL)), widgetType_(widgetType) {}

URL WidgetDataWriter::prepareFileURL() const {
  if (!storeDirectoryURL_) throw WidgetDataWriterError(WidgetDataWriterError::Code::cannotGetWidgetStoreDirectoryUrl);
  if (storeDirectoryURL_->isFileURL()) {
    // Only existence is asked, not whether the path is a directory; a
    // directory that can't be made is reported by the write that follows.
    std::filesystem::path directory = storeDirectoryURL_->filesystemPath();
    std::error_code ignored;
    if (!std::filesystem::exists(directory, ignored)) std::filesystem::create_directories(directory, ignored);
  }
  return storeDirectoryURL_->appendingPathComponent(rawValue(widgetType_));
}

void WidgetDataWriter::write(std::optional<std::string_view> data, const Completion& completion) const {
  precondition(static_cast<bool>(completion), "WidgetDataWriter.write needs a completion");
  std::string_view bytes = data.value_or(std::string_view());
  std::optional<WidgetDataResult<bool>> result;
  try {
    URL fileURL = prepareFileURL();
    if (!fileURL.isFileURL()) throw unsupportedSchemeError(fileURL);
    writeFile(fileURL.filesystemPath(), bytes);
    result = WidgetDataResult<bool>::success(!bytes.empty());
  } catch (const WidgetDataWriterError& error) {
    result = WidgetDataResult<bool>::failure(error);
  } catch (const Error& error) {
    result = WidgetDataResult<bool>::failure(error);
  }
  // Called outside the try, so that what the completion throws reaches the
  // caller and the completion is never called twice.
  completion(*result);
}

}  // namespace kestrona
