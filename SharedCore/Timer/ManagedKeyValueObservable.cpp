#include "SharedCore/Timer/ManagedKeyValueObservable.h"

#include "Platform/Foundation/Error.h"

namespace kestrona {

Value ManagedKeyValueObservable::valueForKeyPathOfValue(const Value& value, std::string_view keyPath) const {
  const Value::Object* object = value.get<Value::Object>();
  if (!object || !*object) return Value();
  try {
    return (*object)->valueForKeyPath(keyPath);
  } catch (const Error&) {
    return Value();
  }
}

KeyValueObservation ManagedKeyValueObservable::observeKeyPathOfValue(const Value& value, std::string keyPath,
                                                                     NestedChangeCallback changed) {
  const Value::Object* object = value.get<Value::Object>();
  if (!object || !*object) return {};
  return (*object)->observe(std::move(keyPath), KeyValueObservingOption::prior,
                            [changed = std::move(changed)](const KeyValueChange& change) { changed(change.isPrior); });
}

}  // namespace kestrona
