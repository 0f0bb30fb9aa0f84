// The failure of a write that went right in the store but gave no value to
// a caller that awaits one.
//
// Domain "WriteOperationError"; the single case unexpectedNilAsResult (0) is
// thrown by the coroutine form of CoreDataStack's untracked write when the
// block returned no value.
#pragma once

#include "Platform/Foundation/Error.h"

namespace kestrona {

enum class WriteOperationErrorCode { unexpectedNilAsResult = 0 };

class WriteOperationError : public CodedError<WriteOperationErrorCode> {
 public:
  static constexpr const char* kDomain = "WriteOperationError";
  explicit WriteOperationError(WriteOperationErrorCode code);
};

}  // namespace kestrona
