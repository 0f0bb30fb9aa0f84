// The seam between SystemTimeWatcher and what the operating system tells of
// its time: that the wall clock was set, and that the zone files changed.
//
// start(handler) begins delivering signals to handler on the main thread;
// it throws Error (domain "NSPOSIXErrorDomain", the errno as code) when the
// system refuses what it needs, and then delivers nothing. stop() ends the
// deliveries; no handler call follows it. A source is started at most once
// at a time. Tests hand the watcher a source of their own and signal by hand.
//
// Threading: start and stop on the main thread.
#pragma once

#include <functional>

namespace kestrona {

enum class SystemTimeSignal {
  // The wall clock was set discontinuously (by hand or by the time service).
  clockSet,
  // A file that names the system's zone was written, replaced or removed.
  timeZoneFilesChanged,
};

class SystemTimeSignalSource {
 public:
  using Handler = std::function<void(SystemTimeSignal)>;

  virtual ~SystemTimeSignalSource() = default;
  virtual void start(Handler handler) = 0;
  virtual void stop() noexcept = 0;
};

}  // namespace kestrona
