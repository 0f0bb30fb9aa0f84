// What the shared core adds to the logging facade.
//
// The core logs through these free functions, which take the Logger first:
//   logging::error(logger, "could not save", {{"task", taskId}});
//   logging::debug(logger, [&] { return "fetched " + std::to_string(n); });
//   logging::error(logger, "save failed", error);
//
// Each first tests the logger's level and returns at once when it is off,
// without evaluating the message or the data: both may be given as callables
// (LazyMessage, LazyData), which then run only for a line that is written.
// The data, a dictionary from string to any value, becomes the line's
// metadata by metadataValueFrom(); the source of the line is the part of the
// caller's file identifier in front of its first "/" (Logger::sourceFromFileID),
// so a line from "SharedCore/DataProviders/CoreDataStack.cpp" has the source
// "SharedCore". The file identifier is the caller's path relative to the
// project root, taken from std::source_location unless a LogSite names one.
//
// Threading: as the Logger used (any thread, one Logger per thread when it is
// changed). The callables run on the calling thread, before the call returns.
#pragma once

#include <any>
#include <concepts>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <optional>
#include <source_location>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Platform/Logging/Logger.h"

namespace kestrona::logging {

// One value of the dictionary a caller attaches to a line: any value, held
// as a std::any. An exception of any class (a typed Error and everything
// derived from it included) is held as a std::exception_ptr to a copy of
// itself, so that it prints by its own what() whatever its class; a
// std::any cannot be asked for a base class of what it holds.
class DataValue : public std::any {
 public:
  DataValue() = default;
  template <typename T>
    requires(!std::same_as<std::remove_cvref_t<T>, DataValue>)
  DataValue(T&& value) : std::any(held(std::forward<T>(value))) {}

 private:
  template <typename T>
  static std::any held(T&& value) {
    if constexpr (std::is_base_of_v<std::exception, std::remove_cvref_t<T>>) {
      return std::make_exception_ptr(std::forward<T>(value));
    } else {
      return std::any(std::forward<T>(value));
    }
  }
};

// The dictionary a caller attaches to a line.
using Data = std::map<std::string, DataValue, std::less<>>;

// A message, given as text or as a callable that makes it only when needed.
class LazyMessage {
 public:
  LazyMessage(const char* text) : text_(text) {}
  LazyMessage(std::string text) : text_(std::move(text)) {}
  LazyMessage(std::string_view text) : text_(std::string(text)) {}
  template <typename Make>
    requires std::invocable<Make&> && std::convertible_to<std::invoke_result_t<Make&>, std::string>
  LazyMessage(Make make) : make_([make = std::move(make)]() mutable { return std::string(make()); }) {}

  std::string resolve() const { return make_ ? make_() : text_; }

 private:
  std::string text_;
  std::function<std::string()> make_;
};

// Optional data, given as a dictionary or as a callable that makes it (or
// none) only when needed.
class LazyData {
 public:
  LazyData() = default;
  LazyData(std::nullopt_t) {}
  LazyData(Data data) : data_(std::move(data)) {}
  template <typename Make>
    requires std::invocable<Make&> && std::convertible_to<std::invoke_result_t<Make&>, std::optional<Data>>
  LazyData(Make make) : make_([make = std::move(make)]() mutable { return std::optional<Data>(make()); }) {}

  std::optional<Data> resolve() const { return make_ ? make_() : data_; }

 private:
  std::optional<Data> data_;
  std::function<std::optional<Data>()> make_;
};

// Where a line comes from: file identifier, function and line.
struct LogSite {
  LogSite(std::source_location location = std::source_location::current());
  LogSite(std::string fileID, std::string function, std::uint32_t line);

  std::string fileID;
  std::string function;
  std::uint32_t line = 0;
};

void error(const Logger& logger, const LazyMessage& message, const LazyData& data = {},
           const LogSite& site = std::source_location::current());
void warning(const Logger& logger, const LazyMessage& message, const LazyData& data = {},
             const LogSite& site = std::source_location::current());
void info(const Logger& logger, const LazyMessage& message, const LazyData& data = {},
          const LogSite& site = std::source_location::current());
void debug(const Logger& logger, const LazyMessage& message, const LazyData& data = {},
           const LogSite& site = std::source_location::current());

// Logs message at level error with the metadata key "error" holding the
// error's printed form (what()).
void error(const Logger& logger, std::string_view message, const std::exception& error,
           const LogSite& site = std::source_location::current());
// The same for a caught exception; an unknown one prints as "unknown error".
void error(const Logger& logger, std::string_view message, const std::exception_ptr& error,
           const LogSite& site = std::source_location::current());

// Any value as metadata. Text (std::string, std::string_view, const char*)
// stays a string; a std::vector<std::any> or std::vector<std::string> becomes
// a list and a Data (or std::map<std::string, std::string>) a dictionary, their
// elements converted in turn; a Logger::MetadataValue is kept. Other values are
// printed: integers and bool as C++ writes them ("true"), floating point in
// the shortest form that reads back the same, a Date as its seconds since
// 1970, an Error or std::exception by what(), a std::exception_ptr by the
// what() of what it holds (so an exception of any class put into Data, which
// holds it so, prints by its what()). An empty std::any prints "nil"; a type
// not listed prints "<unprintable " and its mangled type name ">".
Logger::MetadataValue metadataValueFrom(const std::any& value);

// Data as a line's metadata, each value by metadataValueFrom().
Logger::Metadata metadataFrom(const Data& data);

// The other way, for display: a dictionary value as Data whose strings are
// std::string, lists std::vector<std::any> and dictionaries Data; none for a
// string or a list.
std::optional<Data> toDictionary(const Logger::MetadataValue& value);
// The printed form: a string as it is, a list or dictionary as
// Logger::MetadataValue::description() prints it.
std::string toString(const Logger::MetadataValue& value);
// The dictionary of a dictionary value, else null.
const Logger::MetadataValue::Dictionary* dict(const Logger::MetadataValue& value);

}  // namespace kestrona::logging
