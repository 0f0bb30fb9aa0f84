#include "SharedCore/DataProviders/WriteOperationError.h"

namespace kestrona {

WriteOperationError::WriteOperationError(WriteOperationErrorCode code)
    : CodedError(kDomain, code, "The write operation returned no value") {}

}  // namespace kestrona
