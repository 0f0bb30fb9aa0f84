#include "SharedCore/Model/Rules/RuleCombination.h"

#include "SharedCore/Model/EntityValues.h"

namespace kestrona {

std::vector<std::shared_ptr<RuleBase>> RuleCombination::childrenArray() { return sortedByOrder(children()); }

}  // namespace kestrona
