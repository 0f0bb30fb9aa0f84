#include "Platform/WidgetHost/InotifyFileChangeMonitor.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>

namespace kestrona {
namespace {

constexpr std::uint32_t kWatchMask = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CREATE |
                                     IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
// What, said of a watched file, means its content may differ now.
constexpr std::uint32_t kContentChange = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
// What means that folders appeared or went, so the watches must be armed again.
constexpr std::uint32_t kStructureChange = IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED;

std::string describe(FileChangeMonitorErrorCode code, const std::filesystem::path& path, int errorNumber) {
  std::string what = code == FileChangeMonitorErrorCode::cannotStart ? "Cannot start watching files"
                                                                     : "Cannot watch " + path.string();
  return what + ": " + std::strerror(errorNumber);
}

}  // namespace

FileChangeMonitorError::FileChangeMonitorError(Code code, const std::filesystem::path& path, int errorNumber)
    : CodedError(std::string(kDomain), code, describe(code, path, errorNumber),
                 ErrorUserInfo{{"NSFilePath", path.string()}, {"errno", std::int64_t{errorNumber}}}) {}

std::unique_ptr<InotifyFileChangeMonitor> InotifyFileChangeMonitor::make() {
  int descriptor = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (descriptor < 0) throw FileChangeMonitorError(FileChangeMonitorErrorCode::cannotStart, {}, errno);
  return std::unique_ptr<InotifyFileChangeMonitor>(new InotifyFileChangeMonitor(descriptor));
}

InotifyFileChangeMonitor::~InotifyFileChangeMonitor() { ::close(descriptor_); }

bool InotifyFileChangeMonitor::addWatch(const std::filesystem::path& path) {
  int watch = ::inotify_add_watch(descriptor_, path.c_str(), kWatchMask);
  if (watch < 0) return false;
  watches_[watch] = path;
  return true;
}

void InotifyFileChangeMonitor::watch(const std::filesystem::path& file) {
  std::filesystem::path absolute = std::filesystem::absolute(file).lexically_normal();
  files_[absolute.parent_path()].insert(absolute.filename());
  std::set<std::filesystem::path> ignored;
  arm(ignored);
  if (armedFolders_.count(absolute.parent_path()) == 0) {
    // Not watchable itself: some ancestor must be, or nothing will ever tell us.
    bool covered = false;
    for (std::filesystem::path ancestor = absolute.parent_path(); !covered; ancestor = ancestor.parent_path()) {
      for (const auto& [watchDescriptor, folder] : watches_) covered = covered || folder == ancestor;
      if (ancestor == ancestor.parent_path()) break;
    }
    if (!covered) throw FileChangeMonitorError(FileChangeMonitorErrorCode::cannotWatch, file, errno);
  }
}

void InotifyFileChangeMonitor::arm(std::set<std::filesystem::path>& changed) {
  std::set<std::filesystem::path> armed;
  for (const auto& [folder, names] : files_) {
    if (addWatch(folder)) {
      armed.insert(folder);
      if (armedFolders_.count(folder) == 0) {
        for (const std::filesystem::path& name : names) {
          std::error_code error;
          if (std::filesystem::exists(folder / name, error)) changed.insert(folder / name);
        }
      }
      continue;
    }
    for (std::filesystem::path ancestor = folder.parent_path();; ancestor = ancestor.parent_path()) {
      if (addWatch(ancestor) || ancestor == ancestor.parent_path()) break;
    }
  }
  // A folder that went away: its files are gone, and that is a change too.
  for (const std::filesystem::path& folder : armedFolders_) {
    if (armed.count(folder) == 0) {
      for (const std::filesystem::path& name : files_[folder]) changed.insert(folder / name);
    }
  }
  armedFolders_ = std::move(armed);
}

std::vector<std::filesystem::path> InotifyFileChangeMonitor::takeChangedFiles() {
  std::set<std::filesystem::path> changed;
  bool rearm = false;
  alignas(inotify_event) std::array<char, 8192> buffer;
  for (;;) {
    ssize_t count = ::read(descriptor_, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    for (ssize_t offset = 0; offset < count;) {
      inotify_event event;
      std::memcpy(&event, buffer.data() + offset, sizeof event);
      std::string name(buffer.data() + offset + sizeof event, ::strnlen(buffer.data() + offset + sizeof event, event.len));
      offset += static_cast<ssize_t>(sizeof event + event.len);
      if (event.mask & IN_Q_OVERFLOW) {
        // Events were lost: say that everything may have changed.
        for (const auto& [folder, names] : files_) {
          for (const std::filesystem::path& file : names) changed.insert(folder / file);
        }
        rearm = true;
        continue;
      }
      if (event.mask & kStructureChange) rearm = true;
      if ((event.mask & IN_ISDIR) && (event.mask & (IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE))) {
        rearm = true;
      }
      auto watched = watches_.find(event.wd);
      if (watched == watches_.end() || name.empty() || !(event.mask & kContentChange)) continue;
      auto folder = files_.find(watched->second);
      if (folder != files_.end() && folder->second.count(name) > 0) changed.insert(watched->second / name);
    }
  }
  if (rearm) arm(changed);
  return {changed.begin(), changed.end()};
}

}  // namespace kestrona
