// One node of a rule tree (entity "RuleBase", abstract): a Rule or a
// RuleCombination. A top rule belongs to a rule set (set); a rule inside a
// combination has that combination as parent and no set. Deleting a rule
// deletes the rules below it (cascade).
//
// Threading: only on the context's queue.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/ObjectStore/FetchRequest.h"
#include "SharedCore/Model/NSManagedObjectWithIdentifier.h"

namespace kestrona {

class RuleSet;

class RuleBase : public NSManagedObjectWithIdentifier {
 public:
  explicit RuleBase(Construction construction) : NSManagedObjectWithIdentifier(std::move(construction)) {}

  static FetchRequest fetchRequest() { return FetchRequest("RuleBase"); }

  bool active() { return boolForKey("active"); }
  void setActive(bool active) { setValue(Value(active), "active"); }
  std::int16_t order() { return static_cast<std::int16_t>(integerForKey("order")); }
  void setOrder(std::int16_t order) { setValue(Value(std::int64_t{order}), "order"); }
  std::shared_ptr<RuleSet> set();
  void setSet(const std::shared_ptr<RuleSet>& set);
  std::shared_ptr<RuleBase> parent();
  void setParent(const std::shared_ptr<RuleBase>& parent) { setValue(valueOf(parent), "parent"); }
  // In no defined order.
  std::vector<std::shared_ptr<RuleBase>> children();
};

}  // namespace kestrona
