#include "Platform/Logging/StreamLogHandler.h"

#include <cmath>
#include <ctime>

namespace kestrona {

std::shared_ptr<StreamLogHandler> StreamLogHandler::standardOutput(Logger::Level initialLevel) {
  return std::make_shared<StreamLogHandler>(stdout, nullptr, initialLevel);
}

std::shared_ptr<StreamLogHandler> StreamLogHandler::standardError(Logger::Level initialLevel) {
  return std::make_shared<StreamLogHandler>(stderr, nullptr, initialLevel);
}

StreamLogHandler::StreamLogHandler(std::FILE* stream, const Clock* clock, Logger::Level initialLevel)
    : stream_(stream), clock_(clock), initialLevel_(initialLevel) {}

std::string StreamLogHandler::timestamp(Date time) {
  double seconds = std::floor(time.timeIntervalSince1970());
  // A date outside what time_t and the calendar can hold has no local time.
  if (!std::isfinite(seconds) || seconds < -67767976233316800.0 || seconds > 67767976233316800.0) {
    return "<unknown>";
  }
  std::time_t whole = static_cast<std::time_t>(seconds);
  std::tm local{};
  // Reads TZ anew, so that a changed zone shows in the next line.
  tzset();
  if (localtime_r(&whole, &local) == nullptr) return "<unknown>";
  char buffer[255];
  std::size_t length = std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%S%z", &local);
  if (length == 0) return "<unknown>";
  return std::string(buffer, length);
}

std::string StreamLogHandler::formatLine(const LogRecord& record, Date time) {
  std::string line = timestamp(time);
  line += ' ';
  line += toString(record.level);
  if (!record.label.empty()) {
    line += ' ';
    line += record.label;
  }
  line += ':';
  // One blank before the pairs and one between them: a blank before each.
  for (const auto& [key, value] : record.metadata) {
    line += ' ';
    line += key;
    line += '=';
    line += value.description();
  }
  line += " [";
  line += record.source;
  line += "] ";
  line += record.message;
  line += '\n';
  return line;
}

void StreamLogHandler::log(const LogRecord& record) noexcept {
  try {
    std::string line = formatLine(record, clock_ ? clock_->now() : Date::now());
    flockfile(stream_);
    std::fwrite(line.data(), 1, line.size(), stream_);
    std::fflush(stream_);
    funlockfile(stream_);
  } catch (...) {
    // Out of memory while formatting: the line is lost, the caller goes on.
  }
}

}  // namespace kestrona
