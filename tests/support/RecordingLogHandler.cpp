#include "tests/support/RecordingLogHandler.h"

#include <memory>
#include <utility>

#include "Platform/Logging/LoggingSystem.h"

namespace kestrona::testing {

std::string LoggedRecord::metadataString(const std::string& key) const {
  const auto found = metadata.find(key);
  if (found == metadata.end() || !found->second.string()) return {};
  return *found->second.string();
}

RecordingLogHandler& RecordingLogHandler::bootstrapped() {
  static const auto handler = std::make_shared<RecordingLogHandler>(Logger::Level::trace);
  static std::once_flag once;
  std::call_once(once, [] { LoggingSystem::bootstrap([](const std::string&) { return handler; }); });
  return *handler;
}

void RecordingLogHandler::log(const LogRecord& record) noexcept {
  std::lock_guard lock(mutex_);
  records_.push_back({record.level, std::string(record.label), std::string(record.message), std::string(record.source),
                      std::string(record.file), std::string(record.function), record.line, record.metadata});
}

std::vector<LoggedRecord> RecordingLogHandler::records() const {
  std::lock_guard lock(mutex_);
  return records_;
}

std::vector<LoggedRecord> RecordingLogHandler::take() {
  std::lock_guard lock(mutex_);
  return std::exchange(records_, {});
}

}  // namespace kestrona::testing
