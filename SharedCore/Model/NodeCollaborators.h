// What a store context carries so that the objects living in it reach the
// process's services: the colour set manager, strongly, and the one timer,
// weakly (nil in a process without a timer, such as a reader). The timer is
// seen through CurrentSessionProviding, the one thing the entities ask of
// it; the timer class implements that interface, so a std::shared_ptr to it
// converts to the timer kept here.
//
// The stack sets one NodeCollaborators on every context it hands out, under
// one process-wide key of the context's associated-object slot, and the
// context keeps it for as long as it lives. Objects find it through
// nodeCollaborators(context) of their own context.
//
// Threading: the collaborators are shared by contexts on different threads.
// colorSetManager() never changes; the timer is set once at start-up on the
// main thread and may be read from any thread, so it sits behind a lock.
#pragma once

#include <memory>
#include <mutex>

namespace kestrona {

class ColorSetManager;
class CurrentSessionProviding;
class ManagedObjectContext;

class NodeCollaborators {
 public:
  explicit NodeCollaborators(std::shared_ptr<ColorSetManager> colorSetManager,
                             std::weak_ptr<CurrentSessionProviding> timer = {});
  NodeCollaborators(const NodeCollaborators&) = delete;
  NodeCollaborators& operator=(const NodeCollaborators&) = delete;

  const std::shared_ptr<ColorSetManager>& colorSetManager() const noexcept { return colorSetManager_; }
  // The timer while it lives; null when none was set or it is gone.
  std::shared_ptr<CurrentSessionProviding> timer() const;
  void setTimer(std::weak_ptr<CurrentSessionProviding> timer);

 private:
  std::shared_ptr<ColorSetManager> colorSetManager_;
  mutable std::mutex timerMutex_;
  std::weak_ptr<CurrentSessionProviding> timer_;
};

// The collaborators kept on context, or null when none were set.
std::shared_ptr<NodeCollaborators> nodeCollaborators(const ManagedObjectContext& context);
// Keeps collaborators on context for as long as it lives (null removes them).
void setNodeCollaborators(ManagedObjectContext& context, std::shared_ptr<NodeCollaborators> collaborators);

}  // namespace kestrona
