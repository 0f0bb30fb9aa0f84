#include "Platform/ObjectStore/ContextQueue.h"

#include "Platform/RunLoop/MainLoop.h"

namespace kestrona {

void PrivateContextQueue::runAndWait(const std::function<void()>& block) {
  if (isCurrent()) {
    block();
    return;
  }
  std::lock_guard lock(mutex_);
  owner_.store(std::this_thread::get_id());
  struct Release {
    std::atomic<std::thread::id>& owner;
    ~Release() { owner.store(std::thread::id()); }
  } release{owner_};
  block();
}

bool MainContextQueue::isCurrent() const { return loop_.isMainThread(); }

void MainContextQueue::runAndWait(const std::function<void()>& block) { loop_.performAndWait(block); }

bool MainContextQueue::post(std::function<void()> block) {
  loop_.post(std::move(block));
  return true;
}

}  // namespace kestrona
