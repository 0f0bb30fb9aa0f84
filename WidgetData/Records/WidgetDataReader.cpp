#include "WidgetData/Records/WidgetDataReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "WidgetData/Records/FileSystemError.h"
#include "WidgetData/Records/WidgetError.h"
#include "WidgetData/Records/WidgetStoreDirectory.h"

namespace kestrona {
namespace {

// Closes a descriptor when it goes out of scope.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const noexcept { return descriptor_; }

 private:
  int descriptor_;
};

// The whole content of the regular file at path, or the file error that
// says why it could not be had. The file is opened without blocking, so a
// FIFO or a device at the path is refused at once, and read to its end
// rather than to the size it had when opened, so a file that grows while it
// is read is read whole, up to the limit.
WidgetDataResult<std::string> loadFile(const std::filesystem::path& path) {
  using Result = WidgetDataResult<std::string>;
  const auto failure = [](const Error& error) {
    return Result::failure(
        WidgetError(WidgetError::Code::cannotReadData, std::make_shared<const Error>(error)));
  };
  Descriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (descriptor.get() < 0) return failure(fileReadError(path, errno));
  struct stat status {};
  if (::fstat(descriptor.get(), &status) != 0) return failure(fileReadError(path, errno));
  if (!S_ISREG(status.st_mode)) return failure(fileReadError(path, kFileReadUnknownError, "it is not a regular file"));
  std::string content;
  std::array<char, 16384> buffer;
  for (;;) {
    ssize_t count = ::read(descriptor.get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failure(fileReadError(path, errno));
    if (count == 0) break;
    content.append(buffer.data(), static_cast<std::size_t>(count));
    if (content.size() > WidgetDataReader::kMaximumFileSize) {
      return failure(fileReadError(path, kFileReadTooLargeError, "it is larger than 4 MiB"));
    }
  }
  return Result::success(std::move(content));
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

std::optional<std::filesystem::path> WidgetDataReader::filePath() const {
  if (!storeDirectoryURL_) return std::nullopt;
  URL fileURL = storeDirectoryURL_->appendingPathComponent(rawValue(widgetType_));
  if (!fileURL.isFileURL()) return std::nullopt;
  return fileURL.filesystemPath();
}

WidgetDataResult<std::string> WidgetDataReader::readData() const {
  if (!storeDirectoryURL_) {
    return WidgetDataResult<std::string>::failure(WidgetError(WidgetError::Code::cannotAccessDirectory));
  }
  std::optional<std::filesystem::path> path = filePath();
  if (!path) return WidgetDataResult<std::string>::failure(WidgetError(WidgetError::Code::cannotReadData));
  return loadFile(*path);
}

}  // namespace kestrona
