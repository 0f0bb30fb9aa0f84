// A task's auto-tracking rules (entity "RuleSet"): whether they are in
// force, what happens when they match and after what delay, and the top
// rules. It belongs to one task; deleting the set deletes its rules
// (cascade), and deleting the task deletes the set.
//
// The four options are stored as small integers and read tolerantly:
// startTypeIndex 0 is notify and anything else active; pauseTypeIndex 0 is
// none, 1 notify, anything else active; a delay index without a case reads
// as for10sec. Writing stores the case's raw value.
//
// Threading: only on the context's queue.
#pragma once

#include <memory>
#include <vector>

#include "Platform/ObjectStore/FetchRequest.h"
#include "SharedCore/Model/NSManagedObjectWithIdentifier.h"
#include "SharedCore/Model/Rules/RuleSetOptions.h"

namespace kestrona {

class RuleBase;
class Task;

class RuleSet : public NSManagedObjectWithIdentifier {
 public:
  using StartType = RuleSetStartType;
  using PauseType = RuleSetPauseType;
  using StartDelay = RuleSetStartDelay;
  using PauseDelay = RuleSetPauseDelay;

  explicit RuleSet(Construction construction) : NSManagedObjectWithIdentifier(std::move(construction)) {}

  static FetchRequest fetchRequest() { return FetchRequest("RuleSet"); }

  bool active() { return boolForKey("active"); }
  void setActive(bool active) { setValue(Value(active), "active"); }
  // The top rules, in no defined order.
  std::vector<std::shared_ptr<RuleBase>> rules();
  std::shared_ptr<Task> task();

  StartType startType();
  void setStartType(StartType type);
  StartDelay startDelay();
  void setStartDelay(StartDelay delay);
  PauseType pauseType();
  void setPauseType(PauseType type);
  PauseDelay pauseDelay();
  void setPauseDelay(PauseDelay delay);
};

}  // namespace kestrona
