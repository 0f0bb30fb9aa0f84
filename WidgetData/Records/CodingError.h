// The failures of turning widget records into JSON and back.
//
// DecodingError is what the reader hands back, as it stands, when a widget
// file is there but is not the record asked for: not JSON at all
// (dataCorrupted), a required key missing (keyNotFound), a required value
// null (valueNotFound), or a value of the wrong kind or out of range
// (typeMismatch, dataCorrupted). EncodingError is thrown when a record has a
// value that JSON cannot carry, such as a non-finite number or text that is
// not UTF-8.
//
// Both are CodingErrors (Platform/Foundation/CodingError.h): they keep the
// coding path from the top of the file down to the failing value and a
// debug description.
// Errors are values, safe to copy and read from any thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/CodingError.h"

namespace kestrona {

enum class DecodingErrorCode {
  typeMismatch,
  valueNotFound,
  keyNotFound,
  dataCorrupted,
};

class DecodingError : public CodingError<DecodingErrorCode> {
 public:
  using Code = DecodingErrorCode;
  static constexpr std::string_view kDomain = "DecodingError";

  DecodingError(Code code, CodingPath codingPath, std::string debugDescription,
                std::shared_ptr<const Error> underlying = nullptr);

  // The same error seen from one level further up: key goes in front of the path.
  DecodingError prependingCodingKey(std::string_view key) const;
};

enum class EncodingErrorCode {
  invalidValue,
};

class EncodingError : public CodingError<EncodingErrorCode> {
 public:
  using Code = EncodingErrorCode;
  static constexpr std::string_view kDomain = "EncodingError";

  EncodingError(Code code, CodingPath codingPath, std::string debugDescription);

  EncodingError prependingCodingKey(std::string_view key) const;
};

}  // namespace kestrona
