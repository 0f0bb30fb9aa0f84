#include "WidgetData/TimerIntent/TimerWidgetIntentHost.h"

#include <mutex>

namespace kestrona {
namespace {

struct Slot {
  std::mutex mutex;
  std::shared_ptr<TimerWidgetIntentHosting> host;
};

Slot& slot() {
  static Slot theSlot;
  return theSlot;
}

}  // namespace

std::shared_ptr<TimerWidgetIntentHosting> TimerWidgetIntentHost::current() {
  std::lock_guard lock(slot().mutex);
  return slot().host;
}

void TimerWidgetIntentHost::setCurrent(std::shared_ptr<TimerWidgetIntentHosting> host) {
  std::shared_ptr<TimerWidgetIntentHosting> previous;
  {
    std::lock_guard lock(slot().mutex);
    previous = std::exchange(slot().host, std::move(host));
  }
  // The previous host is released here, outside the lock, in case its
  // destructor looks at the slot.
}

}  // namespace kestrona
