// A plain object observed as managed objects are, over the store's values.
//
// A subclass (the timer) answers its keys as Values; a key may hold a
// managed object, and key paths go on through it: "currentSession.task.name"
// reads and observes "task.name" on the session the timer's key
// "currentSession" holds, and follows when the timer's session or the
// session's task changes. Past a key that holds no object, or one that cannot
// be read (a fault whose row is gone), a key path's value is nil.
//
// Threading: as KeyValueObservable, and the objects reached must belong to
// the thread that observes and announces (the main loop's view context).
#pragma once

#include <string>
#include <string_view>

#include "Platform/ObjectStore/ManagedObject.h"
#include "Platform/ObjectStore/Value.h"
#include "Platform/Observation/KeyValueObservable.h"

namespace kestrona {

class ManagedKeyValueObservable : public KeyValueObservable<Value> {
 protected:
  Value valueForKeyPathOfValue(const Value& value, std::string_view keyPath) const override;
  KeyValueObservation observeKeyPathOfValue(const Value& value, std::string keyPath,
                                            NestedChangeCallback changed) override;
};

}  // namespace kestrona
