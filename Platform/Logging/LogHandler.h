// Where log lines go.
//
// A LogHandler receives every message that a Logger lets through, with the
// merged metadata and the source, and writes it somewhere. The level test has
// already happened in the Logger; a handler writes what it is given.
//
// Threading: log() may be called from any thread at any time, concurrently;
// implementations must be thread-safe and must not call back into logging.
#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/Logging/Logger.h"

namespace kestrona {

// One message on its way to a handler. The views are valid only during the
// call to LogHandler::log().
struct LogRecord {
  Logger::Level level;
  std::string_view label;
  std::string_view message;
  const Logger::Metadata& metadata;
  std::string_view source;
  std::string_view file;
  std::string_view function;
  std::uint32_t line;
};

class LogHandler {
 public:
  virtual ~LogHandler() = default;

  // Writes one record. Never throws.
  virtual void log(const LogRecord& record) noexcept = 0;

  // The level a Logger made through this handler starts with.
  virtual Logger::Level initialLogLevel() const noexcept { return Logger::Level::info; }
};

}  // namespace kestrona
