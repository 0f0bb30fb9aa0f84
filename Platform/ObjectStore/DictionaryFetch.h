// Dictionary results of a fetch: one map per row of the propertiesToFetch,
// optionally grouped and distinct, with the context's pending changes
// merged in.
//
// Properties are attribute key paths, to-one relationship key paths (whose
// value is the destination's object ID) and expressions "sum:", "count:",
// "min:", "max:" over a key path. An aggregate's value has the type of its
// attribute (a date's minimum is a date), converted to the expression's
// result type when one is given. Without grouping an aggregate fetch gives
// exactly one row; a sum or count over no rows is 0 there, a minimum or
// maximum over no rows is absent. A nil value leaves its key out of the row.
//
// The SQL aggregate over the rows the context has not touched is combined
// with the same aggregate over its matching pending objects, group by
// group. A fetch grouped by one to-one relationship whose destination table
// holds at most kMostGroupKeys rows runs one range query per destination on
// the covering index instead of GROUP BY, which sorts through a temporary
// B-tree.
//
// Failures: a function other than the four, an aggregate other than count:
// over a relationship, and a group-by key that is not among the properties
// throw StoreError managedObjectValidation (1550) naming the key; see also
// FetchExecutor.h. Internal to the store; used on the context's queue.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "Platform/ObjectStore/FetchRequest.h"

namespace kestrona {

class ManagedObjectContext;

constexpr std::int64_t kMostGroupKeys = 500;

std::vector<std::map<std::string, Value>> fetchDictionaryResults(ManagedObjectContext& context,
                                                                 const FetchRequest& request);

}  // namespace kestrona
