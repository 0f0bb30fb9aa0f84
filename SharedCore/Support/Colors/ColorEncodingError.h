// The failure of writing a CodableColor as JSON.
//
// JSON has no form for a number that is not finite: rather than let such a
// component become null, and the colour fail to read back, encoding throws
// a ColorEncodingError. Its domain is "EncodingError" and its one code,
// invalidValue (0), has the same number as the widget records' encoding
// failure of that name. The component's key is the coding path, under the
// user-info key "codingPath"; a debug description is under
// "debugDescription".
//
// Errors are values, safe to copy and read from any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/CodingError.h"

namespace kestrona {

enum class ColorEncodingErrorCode {
  // A component is NaN or infinite.
  invalidValue,
};

class ColorEncodingError : public CodingError<ColorEncodingErrorCode> {
 public:
  using Code = ColorEncodingErrorCode;
  static constexpr std::string_view kDomain = "EncodingError";

  ColorEncodingError(Code code, std::vector<std::string> codingPath, std::string debugDescription)
      : CodingError(kDomain, code, std::move(codingPath), std::move(debugDescription)) {}
};

}  // namespace kestrona
