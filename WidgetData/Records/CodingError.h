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
// Both keep the coding path, the keys (and "Index <n>" for list elements)
// from the top of the file down to the failing value, under the user-info
// key "codingPath", and a debug description under "debugDescription".
// Errors are values, safe to copy and read from any thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/Error.h"

namespace kestrona {

using CodingPath = std::vector<std::string>;

enum class DecodingErrorCode {
  typeMismatch,
  valueNotFound,
  keyNotFound,
  dataCorrupted,
};

class DecodingError : public CodedError<DecodingErrorCode> {
 public:
  using Code = DecodingErrorCode;
  static constexpr std::string_view kDomain = "DecodingError";

  DecodingError(Code code, CodingPath codingPath, std::string debugDescription,
                std::shared_ptr<const Error> underlying = nullptr);

  CodingPath codingPath() const;
  std::string debugDescription() const;

  // The same error seen from one level further up: key goes in front of the path.
  DecodingError prependingCodingKey(std::string_view key) const;
};

enum class EncodingErrorCode {
  invalidValue,
};

class EncodingError : public CodedError<EncodingErrorCode> {
 public:
  using Code = EncodingErrorCode;
  static constexpr std::string_view kDomain = "EncodingError";

  EncodingError(Code code, CodingPath codingPath, std::string debugDescription);

  CodingPath codingPath() const;
  std::string debugDescription() const;

  EncodingError prependingCodingKey(std::string_view key) const;
};

// "a.b.Index 2.c", the path as it reads in descriptions; "" for the top.
std::string codingPathText(const CodingPath& path);

}  // namespace kestrona
