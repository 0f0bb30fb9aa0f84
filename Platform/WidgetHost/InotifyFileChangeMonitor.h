// A FileChangeMonitor over Linux inotify.
//
// Each watched file's folder is watched for files closed after writing,
// moved in or out, and removed; only events that name a watched file count.
// A folder that does not exist yet is stood in for by its nearest existing
// ancestor, watched for new folders: when one appears the watches are
// armed again, and the watched files already present in a folder that has
// just become watchable are reported as changed, since they may have been
// written before the watch took hold. The same happens when a watched
// folder is removed or moved away.
//
// An in-place write (truncate, then write) is reported when the writer
// closes the file, so a reader that reacts to the report sees the whole
// record, unless another write has begun since.
//
// make() throws FileChangeMonitorError (cannotStart) when the kernel gives
// no inotify instance; watch() throws it (cannotWatch) when no folder on the
// way to the file can be watched. fileDescriptor() becomes readable when
// events are waiting; the monitor owns it and closes it when destroyed.
//
// Threading: one thread at a time, like every FileChangeMonitor.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <vector>

#include "Platform/Foundation/Error.h"
#include "Platform/WidgetHost/FileChangeMonitor.h"

namespace kestrona {

enum class FileChangeMonitorErrorCode { cannotStart, cannotWatch };

class FileChangeMonitorError : public CodedError<FileChangeMonitorErrorCode> {
 public:
  using Code = FileChangeMonitorErrorCode;
  static constexpr std::string_view kDomain = "FileChangeMonitorError";

  // The path concerned is under "NSFilePath", the errno under "errno".
  FileChangeMonitorError(Code code, const std::filesystem::path& path, int errorNumber);
};

class InotifyFileChangeMonitor final : public FileChangeMonitor {
 public:
  static std::unique_ptr<InotifyFileChangeMonitor> make();
  ~InotifyFileChangeMonitor() override;

  void watch(const std::filesystem::path& file) override;
  std::vector<std::filesystem::path> takeChangedFiles() override;

  int fileDescriptor() const noexcept { return descriptor_; }

 private:
  explicit InotifyFileChangeMonitor(int descriptor) : descriptor_(descriptor) {}

  // Watches every folder of a watched file, or its nearest existing
  // ancestor; adds to changed the files of folders newly watched.
  void arm(std::set<std::filesystem::path>& changed);
  // Adds a watch on path; true when it took.
  bool addWatch(const std::filesystem::path& path);

  int descriptor_;
  // Folder -> names of the watched files in it.
  std::map<std::filesystem::path, std::set<std::filesystem::path>> files_;
  // The folders of watched files that are watched themselves right now.
  std::set<std::filesystem::path> armedFolders_;
  // Watch descriptor -> the folder it watches.
  std::map<int, std::filesystem::path> watches_;
};

}  // namespace kestrona
