// One key of a fetch's order, and the one order every part of the store
// sorts by.
//
// precedesInSortOrder: nil comes first when ascending and last when
// descending; numbers, dates and texts compare as the format language
// compares them; values without an order between them (mixed kinds) tie.
// The store's ORDER BY and every in-memory sort agree with it.
// sortByDescriptors sorts objects by their values at the descriptors' key
// paths, stably, ties falling to the next descriptor. Both are used on the
// objects' context queue.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Platform/ObjectStore/Value.h"

namespace kestrona {

class ManagedObject;

struct SortDescriptor {
  std::string key;
  bool ascending = true;
};

bool precedesInSortOrder(const Value& left, const Value& right, bool ascending);

void sortByDescriptors(std::vector<std::shared_ptr<ManagedObject>>& objects,
                       const std::vector<SortDescriptor>& descriptors);

}  // namespace kestrona
