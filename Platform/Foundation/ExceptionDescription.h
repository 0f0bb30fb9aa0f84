// The text of any exception, for logs and messages.
//
// exceptionDescription() gives what() of a std::exception, which for an
// Error is "<description> (<domain> <code>)"; "unknown error" for anything
// else that was thrown; "nil" when there is no exception. It never throws.
//
// A plain function; any thread.
#pragma once

#include <exception>
#include <string>

namespace kestrona {

std::string exceptionDescription(const std::exception_ptr& exception) noexcept;

}  // namespace kestrona
