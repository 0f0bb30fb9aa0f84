#include "SharedCore/Model/Tracking/NodeBillingOption.h"

#include "Platform/Foundation/LocalizedString.h"

namespace kestrona {

std::string NodeBillingOption::description() const {
  if (const auto* inherited = std::get_if<Inherited>(&case_)) {
    if (inherited->isBillable) {
      return localizedString("node.billing.billableInherited", "Billable (inherited)",
                             "Billing of a task or folder that follows its parent folder, which is billable");
    }
    return localizedString("node.billing.nonBillableInherited", "Non-Billable (inherited)",
                           "Billing of a task or folder that follows its parent folder, which is not billable");
  }
  if (std::holds_alternative<Billable>(case_)) {
    return localizedString("node.billing.billable", "Billable", "Billing of a task or folder");
  }
  return localizedString("node.billing.nonBillable", "Non-Billable", "Billing of a task or folder");
}

}  // namespace kestrona
