// What Linux tells of its time, on the main loop.
//
// Clock sets: a timerfd on CLOCK_REALTIME armed for a far absolute date with
// TFD_TIMER_CANCEL_ON_SET; the kernel cancels it whenever the realtime clock
// is set discontinuously, which makes it readable, and the source then
// signals clockSet and arms it again. Zone files: inotify on the folder of
// the system's zone files (/etc by default), for the names "localtime" and
// "timezone" being written, created, moved in or out, or removed — the ways
// in which tools replace them. A zone file whose symbolic link keeps its
// target while the target's contents change (a time-zone data update) is
// not seen; TimeZone::current() names the zone by the link's target anyway.
//
// Threading: make, start, stop and destroy on the loop's thread; signals
// come on it. The loop must outlive the source.
#pragma once

#include <memory>
#include <string>

#include "Platform/SystemTime/SystemTimeSignalSource.h"

namespace kestrona {

class MainLoop;

class LinuxSystemTimeSignalSource final : public SystemTimeSignalSource {
 public:
  explicit LinuxSystemTimeSignalSource(MainLoop& loop, std::string zoneFileFolder = "/etc");
  ~LinuxSystemTimeSignalSource() override;

  void start(Handler handler) override;
  void stop() noexcept override;

  struct State;

 private:
  MainLoop& loop_;
  std::string zoneFileFolder_;
  std::shared_ptr<State> state_;
};

}  // namespace kestrona
