// The seam through which the widget host learns that a data file changed.
//
// A monitor watches files by path; neither the file nor its folder need
// exist yet. takeChangedFiles() hands back, once each, the watched files
// that were written (a writer closed them), created by a rename, renamed
// away or removed since the last call, in no particular order. It never
// blocks: a host calls it whenever it wakes up, and waits for the monitor's
// readiness in its own loop if it can (InotifyFileChangeMonitor offers a
// file descriptor for that). A change may be reported when nothing changed
// (a folder was made, a file rewritten with the same bytes); a reload too
// many is cheap, a missed one is not.
//
// Tests hand the host a monitor of their own and report changes by hand.
//
// Threading: a monitor is used from one thread, the host's.
#pragma once

#include <filesystem>
#include <vector>

namespace kestrona {

class FileChangeMonitor {
 public:
  virtual ~FileChangeMonitor() = default;

  virtual void watch(const std::filesystem::path& file) = 0;
  virtual std::vector<std::filesystem::path> takeChangedFiles() = 0;

 protected:
  FileChangeMonitor() = default;
  FileChangeMonitor(const FileChangeMonitor&) = delete;
  FileChangeMonitor& operator=(const FileChangeMonitor&) = delete;
};

}  // namespace kestrona
