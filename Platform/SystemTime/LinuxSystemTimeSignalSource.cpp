#include "Platform/SystemTime/LinuxSystemTimeSignalSource.h"

#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <array>
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "Platform/Foundation/Error.h"
#include "Platform/RunLoop/MainLoop.h"

namespace kestrona {
namespace {

Error posixError(std::string_view what) {
  const int code = errno;
  return Error("NSPOSIXErrorDomain", code, std::string(what) + ": " + std::strerror(code));
}

// Arms the timer for a date far ahead (2096), to be cancelled by the next
// clock set.
bool armClockSetTimer(int descriptor) {
  itimerspec far{};
  far.it_value.tv_sec = 4'000'000'000;
  return timerfd_settime(descriptor, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &far, nullptr) == 0;
}

bool namesZoneFile(std::string_view name) { return name == "localtime" || name == "timezone"; }

}  // namespace

struct LinuxSystemTimeSignalSource::State {
  explicit State(asio::io_context& context) : clock(context), zoneFiles(context) {}
  asio::posix::stream_descriptor clock;
  asio::posix::stream_descriptor zoneFiles;
  Handler handler;
  bool running = false;
};

namespace {

using State = LinuxSystemTimeSignalSource::State;

// Each wait holds the state weakly and checks running, so that a stopped or
// destroyed source calls nothing even with a completion already queued.
void awaitClockSet(const std::shared_ptr<State>& state) {
  std::weak_ptr<State> weak = state;
  state->clock.async_wait(asio::posix::stream_descriptor::wait_read, [weak](const std::error_code& error) {
    auto strong = weak.lock();
    if (error || !strong || !strong->running) return;
    std::uint64_t expirations = 0;
    const int descriptor = strong->clock.native_handle();
    bool set = read(descriptor, &expirations, sizeof expirations) < 0 && errno == ECANCELED;
    // A cancelled timer stays cancelled until it is armed again; one that
    // cannot be armed again tells of no further sets.
    if (!set || armClockSetTimer(descriptor)) awaitClockSet(strong);
    if (set) strong->handler(SystemTimeSignal::clockSet);
  });
}

void awaitZoneFiles(const std::shared_ptr<State>& state) {
  std::weak_ptr<State> weak = state;
  state->zoneFiles.async_wait(asio::posix::stream_descriptor::wait_read, [weak](const std::error_code& error) {
    auto strong = weak.lock();
    if (error || !strong || !strong->running) return;
    alignas(inotify_event) std::array<char, 4096> buffer;
    bool changed = false;
    ssize_t length;
    while ((length = read(strong->zoneFiles.native_handle(), buffer.data(), buffer.size())) > 0) {
      for (ssize_t offset = 0; offset < length;) {
        auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + offset);
        if (event->len > 0 && namesZoneFile(event->name)) changed = true;
        offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
      }
    }
    awaitZoneFiles(strong);
    if (changed) strong->handler(SystemTimeSignal::timeZoneFilesChanged);
  });
}

}  // namespace

LinuxSystemTimeSignalSource::LinuxSystemTimeSignalSource(MainLoop& loop, std::string zoneFileFolder)
    : loop_(loop), zoneFileFolder_(std::move(zoneFileFolder)) {}

LinuxSystemTimeSignalSource::~LinuxSystemTimeSignalSource() { stop(); }

void LinuxSystemTimeSignalSource::start(Handler handler) {
  stop();
  auto state = std::make_shared<State>(loop_.context());
  const int clock = timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC);
  if (clock < 0) throw posixError("timerfd_create");
  state->clock.assign(clock);
  if (!armClockSetTimer(clock)) throw posixError("timerfd_settime");
  const int zoneFiles = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (zoneFiles < 0) throw posixError("inotify_init1");
  state->zoneFiles.assign(zoneFiles);
  constexpr std::uint32_t kMask = IN_CLOSE_WRITE | IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_ATTRIB;
  if (inotify_add_watch(zoneFiles, zoneFileFolder_.c_str(), kMask | IN_ONLYDIR) < 0) {
    throw posixError("inotify_add_watch " + zoneFileFolder_);
  }
  state->handler = std::move(handler);
  state->running = true;
  awaitClockSet(state);
  awaitZoneFiles(state);
  state_ = std::move(state);
}

void LinuxSystemTimeSignalSource::stop() noexcept {
  if (!state_) return;
  state_->running = false;
  std::error_code ignored;
  state_->clock.close(ignored);
  state_->zoneFiles.close(ignored);
  state_.reset();
}

}  // namespace kestrona
