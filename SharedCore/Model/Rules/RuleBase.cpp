#include "SharedCore/Model/Rules/RuleBase.h"

#include "SharedCore/Model/EntityValues.h"
#include "SharedCore/Model/Rules/RuleSet.h"

namespace kestrona {

std::shared_ptr<RuleSet> RuleBase::set() { return std::dynamic_pointer_cast<RuleSet>(objectForKey("set")); }

void RuleBase::setSet(const std::shared_ptr<RuleSet>& set) { setValue(valueOf(set), "set"); }

std::shared_ptr<RuleBase> RuleBase::parent() { return std::dynamic_pointer_cast<RuleBase>(objectForKey("parent")); }

std::vector<std::shared_ptr<RuleBase>> RuleBase::children() {
  return objectsOfClass<RuleBase>(objectsForKey("children"));
}

}  // namespace kestrona
