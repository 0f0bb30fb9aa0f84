#include "Platform/Logging/Logger.h"

#include <utility>

#include "Platform/Logging/LogHandler.h"
#include "Platform/Logging/LoggingSystem.h"

namespace kestrona {
namespace {

// A printed element inside a list or dictionary: quoted, with quotes,
// backslashes and line breaks escaped so that the line stays one line.
std::string quoted(const std::string& text) {
  std::string result;
  result.reserve(text.size() + 2);
  result += '"';
  for (char c : text) {
    switch (c) {
      case '"': result += "\\\""; break;
      case '\\': result += "\\\\"; break;
      case '\n': result += "\\n"; break;
      case '\r': result += "\\r"; break;
      case '\t': result += "\\t"; break;
      default: result += c;
    }
  }
  result += '"';
  return result;
}

}  // namespace

std::string Logger::MetadataValue::description() const {
  if (const std::string* text = string()) return *text;
  std::string result = "[";
  if (const List* elements = list()) {
    bool first = true;
    for (const MetadataValue& element : *elements) {
      if (!first) result += ", ";
      first = false;
      result += quoted(element.description());
    }
  } else {
    const Dictionary& pairs = *dictionary();
    if (pairs.empty()) result += ':';
    bool first = true;
    for (const auto& [key, value] : pairs) {
      if (!first) result += ", ";
      first = false;
      result += quoted(key);
      result += ": ";
      result += quoted(value.description());
    }
  }
  result += ']';
  return result;
}

Logger::Logger(std::string label) : Logger(label, LoggingSystem::makeHandler(label)) {}

Logger::Logger(std::string label, std::shared_ptr<LogHandler> handler)
    : label_(std::move(label)), logLevel_(handler->initialLogLevel()), handler_(std::move(handler)) {}

void Logger::removeMetadata(std::string_view key) {
  auto found = metadata_.find(key);
  if (found != metadata_.end()) metadata_.erase(found);
}

void Logger::log(Level level, std::string_view message, const Metadata& metadata, std::string_view source,
                 std::source_location location) const {
  if (!isEnabled(level)) return;
  log(level, message, metadata, source, fileIDFromPath(location.file_name()), location.function_name(),
      static_cast<std::uint32_t>(location.line()));
}

void Logger::log(Level level, std::string_view message, const Metadata& metadata, std::string_view source,
                 std::string_view file, std::string_view function, std::uint32_t line) const {
  if (!isEnabled(level)) return;
  const Metadata* merged = &metadata_;
  Metadata combined;
  if (!metadata.empty()) {
    combined = metadata;
    // insert() keeps the call's value where both have a key.
    combined.insert(metadata_.begin(), metadata_.end());
    merged = &combined;
  }
  std::string derivedSource;
  if (source.empty()) {
    derivedSource = sourceFromFileID(file);
    source = derivedSource;
  }
  handler_->log(LogRecord{level, label_, message, *merged, source, file, function, line});
}

std::string Logger::sourceFromFileID(std::string_view fileID) {
  std::size_t slash = fileID.find('/');
  if (slash == std::string_view::npos) return "n/a";
  return std::string(fileID.substr(0, slash));
}

std::string Logger::fileIDFromPath(std::string_view path) {
  constexpr std::string_view root = KESTRONA_SOURCE_DIR "/";
  constexpr std::string_view rootFromBuild = KESTRONA_SOURCE_DIR_FROM_BUILD "/";
  if (path.starts_with(root)) {
    path.remove_prefix(root.size());
  } else if (rootFromBuild.size() > 1 && path.starts_with(rootFromBuild)) {
    path.remove_prefix(rootFromBuild.size());
  }
  return std::string(path);
}

std::string_view toString(Logger::Level level) noexcept {
  switch (level) {
    case Logger::Level::trace: return "trace";
    case Logger::Level::debug: return "debug";
    case Logger::Level::info: return "info";
    case Logger::Level::notice: return "notice";
    case Logger::Level::warning: return "warning";
    case Logger::Level::error: return "error";
    case Logger::Level::critical: return "critical";
  }
  return "unknown";
}

}  // namespace kestrona
