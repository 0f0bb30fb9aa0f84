#include "SharedCore/Support/TimeText/DateIntervalExtensions.h"

namespace kestrona {

bool intersectsStrict(const DateInterval& interval, const DateInterval& other) {
  if (!interval.intersects(other)) return false;
  if (interval.duration() <= 0 || other.duration() <= 0) return true;
  if (interval.start() == other.end()) return false;
  if (interval.end() == other.start()) return false;
  return true;
}

}  // namespace kestrona
