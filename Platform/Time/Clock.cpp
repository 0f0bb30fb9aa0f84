#include "Platform/Time/Clock.h"

#include <chrono>

namespace kestrona {
namespace {

class SystemClock final : public Clock {
 public:
  Date now() const override {
    auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Date(std::chrono::duration<double>(sinceEpoch).count());
  }
};

}  // namespace

Clock& Clock::system() {
  static SystemClock clock;
  return clock;
}

std::atomic<Clock*> Clock::current_{nullptr};

Clock& Clock::current() {
  Clock* clock = current_.load();
  return clock ? *clock : system();
}

Date Date::now() { return Clock::current().now(); }

}  // namespace kestrona
