#include "Platform/Foundation/ExceptionDescription.h"

namespace kestrona {

std::string exceptionDescription(const std::exception_ptr& exception) noexcept {
  if (!exception) return "nil";
  try {
    std::rethrow_exception(exception);
  } catch (const std::exception& caught) {
    return caught.what();
  } catch (...) {
    return "unknown error";
  }
}

}  // namespace kestrona
