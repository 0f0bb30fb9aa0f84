// The vocabulary of key-value observation, shared by every observable kind
// of object: the managed objects of the store and plain objects such as the
// timer.
//
// An observer registers for a key path with options and a callback, and
// hears a change record each time the value at that key path is announced to
// change. The options choose which values a record carries, and whether the
// observer hears once at registration (initial) and once before each change
// (prior, which carries the old value only).
//
// Threading: these are plain values; who calls the callback, and on which
// thread, is the observed object's contract.
#pragma once

#include <optional>
#include <string>

namespace kestrona {

using KeyValueObservingOptions = unsigned;
namespace KeyValueObservingOption {
inline constexpr KeyValueObservingOptions newValue = 0x01;
inline constexpr KeyValueObservingOptions oldValue = 0x02;
inline constexpr KeyValueObservingOptions initial = 0x04;
inline constexpr KeyValueObservingOptions prior = 0x08;
}  // namespace KeyValueObservingOption

enum class KeyValueChangeKind : int { setting = 1, insertion = 2, removal = 3, replacement = 4 };

// One change as an observer hears it, over the observed kind's value type
// and object type. Each kind of observable names its own instance
// (`KeyValueChange` for managed objects). A to-many key is reported as a
// setting of the whole collection.
template <typename ValueType, typename ObjectType>
struct BasicKeyValueChange {
  KeyValueChangeKind kind = KeyValueChangeKind::setting;
  // Present when the options asked for them; no old value on the initial
  // call, no new value on a prior call.
  std::optional<ValueType> oldValue;
  std::optional<ValueType> newValue;
  bool isPrior = false;
  std::string keyPath;
  // The observed object (the start of the key path), not owned.
  ObjectType* object = nullptr;
};

}  // namespace kestrona
