// Named converters between an attribute's value and the bytes stored for it.
//
// A transformable attribute names a transformer in the model; the store
// calls transformedValue() when it writes the attribute and
// reverseTransformedValue() when it reads it back. Transformers are
// registered by name, once, at start-up (setValueTransformer), and then read
// from any thread; registration itself takes a lock, so it is safe but
// should not race with saves that need the transformer. A transformer that
// cannot convert a value throws; the save that needed it fails, and a read
// that needed it gives nil.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Platform/ObjectStore/Value.h"

namespace kestrona {

class ValueTransformer {
 public:
  virtual ~ValueTransformer() = default;

  virtual Data transformedValue(const Value& value) const = 0;
  virtual Value reverseTransformedValue(const Data& data) const = 0;

  // Registers transformer under name, replacing any earlier one; a null
  // transformer removes the name.
  static void setValueTransformer(std::shared_ptr<const ValueTransformer> transformer, std::string name);
  // The transformer registered under name, or null.
  [[nodiscard]] static std::shared_ptr<const ValueTransformer> valueTransformerForName(std::string_view name);
};

}  // namespace kestrona
