// Whether two time spans overlap in the sense reports need.
//
// intersectsStrict() is the platform's closed intersection, except that two
// intervals with length that only touch (one ends where the other starts)
// do not count, while an interval of zero length at either end of the other
// does. Thread-safe.
#pragma once

#include "Platform/Time/DateInterval.h"

namespace kestrona {

bool intersectsStrict(const DateInterval& interval, const DateInterval& other);

}  // namespace kestrona
