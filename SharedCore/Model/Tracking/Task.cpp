#include "SharedCore/Model/Tracking/Task.h"

#include "SharedCore/Model/EntityValues.h"
#include "SharedCore/Model/Rules/RuleSet.h"
#include "SharedCore/Model/Tracking/Session.h"

namespace kestrona {

std::vector<std::shared_ptr<Session>> Task::sessions() { return objectsOfClass<Session>(objectsForKey("sessions")); }

std::shared_ptr<RuleSet> Task::ruleSet() { return std::dynamic_pointer_cast<RuleSet>(objectForKey("ruleSet")); }

void Task::setRuleSet(const std::shared_ptr<RuleSet>& ruleSet) { setValue(valueOf(ruleSet), "ruleSet"); }

void Task::setHasBlacklistedMatch(bool hasMatch) {
  willChangeValueForKey("hasBlacklistedMatch");
  hasBlacklistedMatch_ = hasMatch;
  didChangeValueForKey("hasBlacklistedMatch");
}

Value Task::valueForUndefinedKey(std::string_view key) {
  if (key == "hasBlacklistedMatch") return Value(hasBlacklistedMatch_);
  return Node::valueForUndefinedKey(key);
}

}  // namespace kestrona
