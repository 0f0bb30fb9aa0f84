// What the two failures of a CodableColor's JSON form share.
//
// A ColorCodingError carries the key that failed as its coding path (a list
// of texts under the user-info key "codingPath", empty when the value as a
// whole is at fault) and a debug description (under "debugDescription"); its
// description joins the two. ColorDecodingError and ColorEncodingError derive
// from it with their own domains and codes.
//
// Errors are values, safe to copy and read from any thread.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Foundation/Error.h"

namespace kestrona {

namespace colorcoding {

std::string describe(const std::vector<std::string>& codingPath, const std::string& debugDescription);
ErrorUserInfo userInfo(std::vector<std::string> codingPath, std::string debugDescription);
std::vector<std::string> codingPath(const Error& error);
std::string debugDescription(const Error& error);

}  // namespace colorcoding

template <typename Code>
class ColorCodingError : public CodedError<Code> {
 public:
  ColorCodingError(std::string_view domain, Code code, std::vector<std::string> codingPath,
                   std::string debugDescription)
      : CodedError<Code>(std::string(domain), code, colorcoding::describe(codingPath, debugDescription),
                         colorcoding::userInfo(std::move(codingPath), std::move(debugDescription))) {}

  std::vector<std::string> codingPath() const { return colorcoding::codingPath(*this); }
  std::string debugDescription() const { return colorcoding::debugDescription(*this); }
};

}  // namespace kestrona
