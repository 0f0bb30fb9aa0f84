// What the tracking entities need of the process's one timer: the entry it
// is running or last paused. The timer implements it; the model reaches it
// only through NodeCollaborators, so this library does not depend on the
// timer's.
//
// Threading: called on the main thread, where the timer and the view
// context's objects live; the session returned belongs to the view context.
#pragma once

#include <memory>

namespace kestrona {

class Session;

class CurrentSessionProviding {
 public:
  virtual ~CurrentSessionProviding() = default;

  // The running or last paused entry, or null when there is none.
  virtual std::shared_ptr<Session> currentSession() const = 0;
};

}  // namespace kestrona
