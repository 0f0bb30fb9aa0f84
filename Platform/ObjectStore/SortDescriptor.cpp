#include "Platform/ObjectStore/SortDescriptor.h"

#include <algorithm>

#include "Platform/ObjectStore/ManagedObject.h"

namespace kestrona {

bool precedesInSortOrder(const Value& left, const Value& right, bool ascending) {
  if (left.isNil() || right.isNil()) {
    if (left.isNil() == right.isNil()) return false;
    return ascending ? left.isNil() : right.isNil();
  }
  auto order = left <=> right;
  return ascending ? order == std::partial_ordering::less : order == std::partial_ordering::greater;
}

void sortByDescriptors(std::vector<std::shared_ptr<ManagedObject>>& objects,
                       const std::vector<SortDescriptor>& descriptors) {
  if (descriptors.empty()) return;
  std::stable_sort(objects.begin(), objects.end(), [&descriptors](const auto& lhs, const auto& rhs) {
    for (const auto& descriptor : descriptors) {
      Value left = lhs->valueForKeyPath(descriptor.key);
      Value right = rhs->valueForKeyPath(descriptor.key);
      if (precedesInSortOrder(left, right, descriptor.ascending)) return true;
      if (precedesInSortOrder(right, left, descriptor.ascending)) return false;
    }
    return false;
  });
}

}  // namespace kestrona
