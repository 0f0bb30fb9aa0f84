// The handler that writes one text line per message to a stream.
//
// Line format, byte for byte:
//   <timestamp> <level>[ <label>]:[ <key>=<value>...] [<source>] <message>\n
// The timestamp is the local time of the handler's clock, formatted with
// strftime "%Y-%m-%dT%H:%M:%S%z" (into a 255-byte buffer); when local time
// cannot be had it reads "<unknown>". The label and its blank are left out
// when the label is empty. Metadata pairs come in ascending key order,
// joined by one blank, each value in its printed form
// (Logger::MetadataValue::description()).
//
// Each line is written with one locked write and flushed, so lines from
// different threads never interleave, in this process or with any other
// writer of the same FILE* that locks it (flockfile).
//
// Threading: thread-safe. The stream and the clock must outlive the handler.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "Platform/Logging/LogHandler.h"
#include "Platform/Time/Clock.h"

namespace kestrona {

class StreamLogHandler final : public LogHandler {
 public:
  // A handler writing to standard output or standard error, with local time
  // by the process's current clock.
  static std::shared_ptr<StreamLogHandler> standardOutput(Logger::Level initialLevel = Logger::Level::info);
  static std::shared_ptr<StreamLogHandler> standardError(Logger::Level initialLevel = Logger::Level::info);

  // A handler writing to stream; the timestamp comes from clock (or, when it
  // is null, from the clock current at each line) in the local time zone of
  // the process (TZ).
  StreamLogHandler(std::FILE* stream, const Clock* clock, Logger::Level initialLevel = Logger::Level::info);

  void log(const LogRecord& record) noexcept override;
  Logger::Level initialLogLevel() const noexcept override { return initialLevel_; }

  // The complete line that log() writes for record at time, line feed
  // included. Thread-safe; reads the process's time zone.
  static std::string formatLine(const LogRecord& record, Date time);

  // The timestamp part alone: "<unknown>" when time has no local time.
  static std::string timestamp(Date time);

 private:
  std::FILE* stream_;
  const Clock* clock_;
  Logger::Level initialLevel_;
};

}  // namespace kestrona
