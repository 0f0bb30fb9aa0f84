// Programming errors that end the process.
//
// fatalError() is for states the program must never reach: a damaged
// counter, a negative index, a second bootstrap. It writes
// "Fatal error: <message>" and the source location to standard error and
// aborts, so that death tests can match the message. It never throws and is
// safe from any thread.
#pragma once

#include <source_location>
#include <string_view>

namespace kestrona {

[[noreturn]] void fatalError(std::string_view message,
                             std::source_location location = std::source_location::current());

// fatalError(message) unless condition holds.
inline void precondition(bool condition, std::string_view message,
                         std::source_location location = std::source_location::current()) {
  if (!condition) fatalError(message, location);
}

}  // namespace kestrona
