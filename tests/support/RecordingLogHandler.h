// A log handler that keeps what it is given, for tests that check what was
// logged.
//
// A test either hands its own RecordingLogHandler to a Logger, or takes the
// process's one with RecordingLogHandler::bootstrapped(): the first call
// bootstraps the logging system with it (once per process, as the logging
// system allows), so that every logger made afterwards, inside the code under
// test too, logs to it at every level. take() hands over what was recorded
// and forgets it, so a test starts with take() to drop what earlier tests
// left.
//
// Threading: log(), records() and take() from any thread.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/Logging/LogHandler.h"

namespace kestrona::testing {

struct LoggedRecord {
  Logger::Level level;
  std::string label;
  std::string message;
  std::string source;
  std::string file;
  std::string function;
  std::uint32_t line;
  Logger::Metadata metadata;

  // The value under key as text; empty when there is none or it is a list
  // or dictionary.
  std::string metadataString(const std::string& key) const;
};

class RecordingLogHandler final : public LogHandler {
 public:
  explicit RecordingLogHandler(Logger::Level initialLevel = Logger::Level::info) : initialLevel_(initialLevel) {}

  static RecordingLogHandler& bootstrapped();

  void log(const LogRecord& record) noexcept override;
  Logger::Level initialLogLevel() const noexcept override { return initialLevel_; }

  std::vector<LoggedRecord> records() const;
  std::vector<LoggedRecord> take();

 private:
  Logger::Level initialLevel_;
  mutable std::mutex mutex_;
  std::vector<LoggedRecord> records_;
};

}  // namespace kestrona::testing
