// A group of rules (entity "RuleCombination", under "RuleBase"); it adds no
// attribute, only its children.
//
// Threading: only on the context's queue.
#pragma once

#include <memory>
#include <vector>

#include "SharedCore/Model/Rules/RuleBase.h"

namespace kestrona {

class RuleCombination : public RuleBase {
 public:
  explicit RuleCombination(Construction construction) : RuleBase(std::move(construction)) {}

  static FetchRequest fetchRequest() { return FetchRequest("RuleCombination"); }

  // The children by ascending order (a stable sort with no tie-break).
  std::vector<std::shared_ptr<RuleBase>> childrenArray();
};

}  // namespace kestrona
