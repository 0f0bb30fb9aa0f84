// What every failure of turning values into JSON and back carries.
//
// A CodingError keeps the coding path, the keys (and "Index <n>" for list
// elements) from the top of the document down to the failing value, under
// the user-info key "codingPath" (empty when the value as a whole is at
// fault), and a debug description under "debugDescription"; its description
// joins the two: "<debug description> (at a.b.Index 2.c)". The decoding and
// encoding errors of widget records and of colours derive from it with
// their own domains and codes.
//
// Errors are values, safe to copy and read from any thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Foundation/Error.h"

namespace kestrona {

using CodingPath = std::vector<std::string>;

// "a.b.Index 2.c", the path as it reads in descriptions; "" for the top.
std::string codingPathText(const CodingPath& path);

namespace coding {

std::string describe(const CodingPath& path, const std::string& debugDescription);
ErrorUserInfo userInfo(CodingPath path, std::string debugDescription);
CodingPath codingPath(const Error& error);
std::string debugDescription(const Error& error);

}  // namespace coding

template <typename Code>
class CodingError : public CodedError<Code> {
 public:
  CodingError(std::string_view domain, Code code, CodingPath codingPath, std::string debugDescription,
              std::shared_ptr<const Error> underlying = nullptr)
      : CodedError<Code>(std::string(domain), code, coding::describe(codingPath, debugDescription),
                         coding::userInfo(codingPath, debugDescription), std::move(underlying)) {}

  CodingPath codingPath() const { return coding::codingPath(*this); }
  std::string debugDescription() const { return coding::debugDescription(*this); }
};

}  // namespace kestrona
