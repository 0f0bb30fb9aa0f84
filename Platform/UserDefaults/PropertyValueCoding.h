// The JSON form of property values, as user defaults files hold them.
//
// Booleans, integers, texts and arrays are the JSON values of the same kind;
// a finite number is a JSON number that always carries a fraction or an
// exponent, so it reads back as a number and not as an integer. The other
// kinds are objects with a single key that names the kind:
//
//   {"data": "<base64, standard alphabet, padded>"}
//   {"date": <seconds since 1970>}
//   {"dictionary": {"<key>": <value>, ...}}
//   {"double": "nan" | "inf" | "-inf"}      numbers that JSON cannot hold
//
// so a dictionary whose only key is "data" cannot be mistaken for data.
// Decoding anything else (null, a bare object, an integer beyond 64 bits,
// bad base64) throws PropertyValueCodingError. Pure functions, thread-safe.
#pragma once

#include <nlohmann/json.hpp>

#include "Platform/Foundation/Error.h"
#include "Platform/UserDefaults/PropertyValue.h"

namespace kestrona {

enum class PropertyValueCodingErrorCode { wrongShape };

class PropertyValueCodingError : public CodedError<PropertyValueCodingErrorCode> {
 public:
  using Code = PropertyValueCodingErrorCode;

  explicit PropertyValueCodingError(std::string description)
      : CodedError("PropertyValueCodingError", Code::wrongShape, std::move(description)) {}
};

nlohmann::json encodePropertyValue(const PropertyValue& value);
PropertyValue decodePropertyValue(const nlohmann::json& json);

}  // namespace kestrona
