// The logging facade.
//
// A Logger is a value: a label ("Data", "Timer", ...), a level below which
// messages are dropped, key-value metadata attached to every line, and the
// handler that writes its lines. Copies are independent: changing the level
// or the metadata of one copy leaves the others as they were. The handler is
// shared between copies and made by the factory that
// LoggingSystem::bootstrap() installed (see LoggingSystem.h); a Logger made
// before any bootstrap writes through a StreamLogHandler on standard error.
//
// Levels ascend from trace (0) to critical (6); a message is dropped when the
// logger's logLevel() is above the message's level. Callers whose metadata is
// costly to build test isEnabled(level) first.
//
// Threading: a Logger may be used from any thread, but one Logger object must
// not be changed (setLogLevel, metadata) while another thread uses it; give
// each thread its own copy. Handlers are thread-safe.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <source_location>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Platform/Foundation/RawRepresentable.h"

namespace kestrona {

class LogHandler;

class Logger {
 public:
  enum class Level : std::uint8_t { trace = 0, debug = 1, info = 2, notice = 3, warning = 4, error = 5, critical = 6 };

  // A metadata value: a string, a list of values or a dictionary from string
  // to value. Printed (description()) as the string itself; a list as
  // ["a", "b"] with every element printed and quoted; a dictionary as
  // ["k": "v"] in ascending key order, values printed and quoted; an empty
  // dictionary as [:].
  class MetadataValue {
   public:
    using List = std::vector<MetadataValue>;
    using Dictionary = std::map<std::string, MetadataValue, std::less<>>;

    MetadataValue() = default;  // the empty string
    MetadataValue(std::string text) : storage_(std::move(text)) {}
    MetadataValue(std::string_view text) : storage_(std::string(text)) {}
    MetadataValue(const char* text) : storage_(std::string(text)) {}
    MetadataValue(List list) : storage_(std::move(list)) {}
    MetadataValue(Dictionary dictionary) : storage_(std::move(dictionary)) {}

    // Exactly one of these is non-null.
    const std::string* string() const noexcept { return std::get_if<std::string>(&storage_); }
    const List* list() const noexcept { return std::get_if<List>(&storage_); }
    const Dictionary* dictionary() const noexcept { return std::get_if<Dictionary>(&storage_); }

    std::string description() const;

    friend bool operator==(const MetadataValue&, const MetadataValue&) = default;

   private:
    std::variant<std::string, List, Dictionary> storage_;
  };

  // Ordered by key: that is the order in which a line prints its pairs.
  using Metadata = std::map<std::string, MetadataValue, std::less<>>;

  // A logger with this label, through the handler the bootstrapped factory
  // makes for it, at that handler's initial level.
  explicit Logger(std::string label);
  // A logger that writes through handler; for tests and special sinks.
  Logger(std::string label, std::shared_ptr<LogHandler> handler);

  const std::string& label() const noexcept { return label_; }

  Level logLevel() const noexcept { return logLevel_; }
  void setLogLevel(Level level) noexcept { logLevel_ = level; }
  bool isEnabled(Level level) const noexcept { return level >= logLevel_; }

  const Metadata& metadata() const noexcept { return metadata_; }
  // The logger's own metadata under key, for reading and writing.
  MetadataValue& operator[](const std::string& key) { return metadata_[key]; }
  void removeMetadata(std::string_view key);

  // Writes message at level unless the level is off. metadata is merged over
  // the logger's own (a key given here wins). source names the component the
  // line comes from; when it is empty, it is taken from location's file by
  // sourceFromFileID().
  void log(Level level, std::string_view message, const Metadata& metadata = {}, std::string_view source = {},
           std::source_location location = std::source_location::current()) const;

  // The same with the caller's place given explicitly, for layers that
  // forward their own caller's place. file is a file identifier.
  void log(Level level, std::string_view message, const Metadata& metadata, std::string_view source,
           std::string_view file, std::string_view function, std::uint32_t line) const;

  void trace(std::string_view message, const Metadata& metadata = {},
             std::source_location location = std::source_location::current()) const {
    log(Level::trace, message, metadata, {}, location);
  }
  void notice(std::string_view message, const Metadata& metadata = {},
              std::source_location location = std::source_location::current()) const {
    log(Level::notice, message, metadata, {}, location);
  }
  void critical(std::string_view message, const Metadata& metadata = {},
                std::source_location location = std::source_location::current()) const {
    log(Level::critical, message, metadata, {}, location);
  }

  // The source of a line by the file identifier of its caller: the part in
  // front of the first "/", or "n/a" when there is none.
  // "SharedCore/DataModifier" gives "SharedCore".
  static std::string sourceFromFileID(std::string_view fileID);

  // The file identifier of a compiled file: its path relative to the
  // project's root ("Platform/Logging/Logger.cpp"), whether the compiler was
  // given it as an absolute path or relative to the build tree; a path
  // outside the project stays as it is.
  static std::string fileIDFromPath(std::string_view path);

 private:
  std::string label_;
  Level logLevel_;
  Metadata metadata_;
  std::shared_ptr<LogHandler> handler_;
};

// The case name: "trace", ..., "critical".
std::string_view toString(Logger::Level level) noexcept;

// The integer of a level, by which levels compare.
template <>
struct RawRepresentable<Logger::Level> {
  using RawValue = std::uint8_t;
  static constexpr RawValue rawValue(Logger::Level level) { return static_cast<RawValue>(level); }
  static constexpr std::optional<Logger::Level> fromRawValue(RawValue raw) {
    if (raw > static_cast<RawValue>(Logger::Level::critical)) return std::nullopt;
    return static_cast<Logger::Level>(raw);
  }
};

template <>
inline constexpr std::array<Logger::Level, 7> allCases<Logger::Level> = {
    Logger::Level::trace,   Logger::Level::debug, Logger::Level::info,    Logger::Level::notice,
    Logger::Level::warning, Logger::Level::error, Logger::Level::critical};

}  // namespace kestrona
