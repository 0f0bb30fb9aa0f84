// Why UserDefaults::synchronize() wrote nothing.
//
// noDirectory: neither XDG_CONFIG_HOME nor a home directory is known.
// fileNotReplaceable: the file in place could not be read or kept aside,
// so writing would destroy what it holds. writeFailed: the temporary file
// could not be made, written, flushed or renamed over the domain's file;
// the underlying error is the errno in "NSPOSIXErrorDomain". Every case
// carries the domain's file under "NSFilePath" (empty without a
// directory). The changes stay pending for the next synchronize().
#pragma once

#include <string>

#include "Platform/Foundation/Error.h"

namespace kestrona {

enum class UserDefaultsErrorCode { noDirectory, fileNotReplaceable, writeFailed };

class UserDefaultsError : public CodedError<UserDefaultsErrorCode> {
 public:
  using Code = UserDefaultsErrorCode;
  static constexpr const char* kFilePathKey = "NSFilePath";

  UserDefaultsError(Code code, std::string description, const std::string& file,
                    std::shared_ptr<const Error> underlying = nullptr)
      : CodedError("UserDefaultsError", code, std::move(description), {{kFilePathKey, file}},
                   std::move(underlying)) {}
};

}  // namespace kestrona
