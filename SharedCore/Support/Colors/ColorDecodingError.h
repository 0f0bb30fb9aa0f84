// The failure of reading a CodableColor from JSON.
//
// A ColorDecodingError says which required value was wrong and how, in the
// same terms as the decoding failures of the widget records: its domain is
// "DecodingError", and its codes have the same numbers there (typeMismatch
// 0, valueNotFound 1, keyNotFound 2), so a caller that tests
// is("DecodingError", code) treats both alike. The key that failed is the
// coding path, a list of texts under the user-info key "codingPath" (empty
// when the value as a whole is not an object); a debug description is under
// "debugDescription".
//
// Errors are values, safe to copy and read from any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/CodingError.h"

namespace kestrona {

enum class ColorDecodingErrorCode {
  // The value is there but of another kind: not an object, or not a number.
  typeMismatch,
  // The value is null.
  valueNotFound,
  // A required key is absent.
  keyNotFound,
};

class ColorDecodingError : public CodingError<ColorDecodingErrorCode> {
 public:
  using Code = ColorDecodingErrorCode;
  static constexpr std::string_view kDomain = "DecodingError";

  ColorDecodingError(Code code, std::vector<std::string> codingPath, std::string debugDescription)
      : CodingError(kDomain, code, std::move(codingPath), std::move(debugDescription)) {}
};

}  // namespace kestrona
