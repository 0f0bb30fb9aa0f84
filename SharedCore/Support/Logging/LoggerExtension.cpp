#include "SharedCore/Support/Logging/LoggerExtension.h"

#include <charconv>
#include <cstdint>
#include <typeinfo>
#include <vector>

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/ExceptionDescription.h"
#include "Platform/Time/Date.h"

namespace kestrona::logging {
namespace {

std::string printedDouble(double value) {
  char buffer[64];
  auto [end, status] = std::to_chars(buffer, buffer + sizeof buffer, value);
  if (status != std::errc()) return "nan";
  return std::string(buffer, end);
}

// The printed form of an integer of any width, or none when value holds none.
std::optional<std::string> printedInteger(const std::any& value) {
  if (auto v = std::any_cast<int>(&value)) return std::to_string(*v);
  if (auto v = std::any_cast<long>(&value)) return std::to_string(*v);
  if (auto v = std::any_cast<long long>(&value)) return std::to_string(*v);
  if (auto v = std::any_cast<unsigned>(&value)) return std::to_string(*v);
  if (auto v = std::any_cast<unsigned long>(&value)) return std::to_string(*v);
  if (auto v = std::any_cast<unsigned long long>(&value)) return std::to_string(*v);
  if (auto v = std::any_cast<short>(&value)) return std::to_string(*v);
  if (auto v = std::any_cast<unsigned short>(&value)) return std::to_string(*v);
  if (auto v = std::any_cast<signed char>(&value)) return std::to_string(*v);
  if (auto v = std::any_cast<unsigned char>(&value)) return std::to_string(*v);
  return std::nullopt;
}

void logWithData(const Logger& logger, Logger::Level level, const LazyMessage& message, const LazyData& data,
                 const LogSite& site) {
  if (!logger.isEnabled(level)) return;
  std::optional<Data> resolved = data.resolve();
  Logger::Metadata metadata = resolved ? metadataFrom(*resolved) : Logger::Metadata{};
  std::string text = message.resolve();
  std::string source = Logger::sourceFromFileID(site.fileID);
  logger.log(level, text, metadata, source, site.fileID, site.function, site.line);
}

std::any anyFrom(const Logger::MetadataValue& value) {
  if (const std::string* text = value.string()) return *text;
  if (const Logger::MetadataValue::List* list = value.list()) {
    std::vector<std::any> elements;
    elements.reserve(list->size());
    for (const Logger::MetadataValue& element : *list) elements.push_back(anyFrom(element));
    return elements;
  }
  return *toDictionary(value);
}

}  // namespace

LogSite::LogSite(std::source_location location)
    : fileID(Logger::fileIDFromPath(location.file_name())),
      function(location.function_name()),
      line(static_cast<std::uint32_t>(location.line())) {}

LogSite::LogSite(std::string fileIDValue, std::string functionName, std::uint32_t lineNumber)
    : fileID(std::move(fileIDValue)), function(std::move(functionName)), line(lineNumber) {}

void error(const Logger& logger, const LazyMessage& message, const LazyData& data, const LogSite& site) {
  logWithData(logger, Logger::Level::error, message, data, site);
}

void warning(const Logger& logger, const LazyMessage& message, const LazyData& data, const LogSite& site) {
  logWithData(logger, Logger::Level::warning, message, data, site);
}

void info(const Logger& logger, const LazyMessage& message, const LazyData& data, const LogSite& site) {
  logWithData(logger, Logger::Level::info, message, data, site);
}

void debug(const Logger& logger, const LazyMessage& message, const LazyData& data, const LogSite& site) {
  logWithData(logger, Logger::Level::debug, message, data, site);
}

void error(const Logger& logger, std::string_view message, const std::exception& error, const LogSite& site) {
  if (!logger.isEnabled(Logger::Level::error)) return;
  logger.log(Logger::Level::error, message, {{"error", Logger::MetadataValue(error.what())}},
             Logger::sourceFromFileID(site.fileID), site.fileID, site.function, site.line);
}

void error(const Logger& logger, std::string_view message, const std::exception_ptr& error, const LogSite& site) {
  if (!logger.isEnabled(Logger::Level::error)) return;
  logger.log(Logger::Level::error, message, {{"error", Logger::MetadataValue(exceptionDescription(error))}},
             Logger::sourceFromFileID(site.fileID), site.fileID, site.function, site.line);
}

Logger::MetadataValue metadataValueFrom(const std::any& value) {
  if (!value.has_value()) return "nil";
  if (auto v = std::any_cast<std::string>(&value)) return *v;
  if (auto v = std::any_cast<std::string_view>(&value)) return *v;
  if (auto v = std::any_cast<const char*>(&value)) return *v ? *v : "nil";
  if (auto v = std::any_cast<Logger::MetadataValue>(&value)) return *v;
  if (auto v = std::any_cast<std::vector<std::any>>(&value)) {
    Logger::MetadataValue::List list;
    list.reserve(v->size());
    for (const std::any& element : *v) list.push_back(metadataValueFrom(element));
    return list;
  }
  if (auto v = std::any_cast<std::vector<std::string>>(&value)) {
    return Logger::MetadataValue::List(v->begin(), v->end());
  }
  if (auto v = std::any_cast<Data>(&value)) {
    Logger::MetadataValue::Dictionary dictionary;
    for (const auto& [key, element] : *v) dictionary.emplace(key, metadataValueFrom(element));
    return dictionary;
  }
  if (auto v = std::any_cast<std::map<std::string, std::string>>(&value)) {
    return Logger::MetadataValue::Dictionary(v->begin(), v->end());
  }
  if (auto v = std::any_cast<bool>(&value)) return *v ? "true" : "false";
  if (auto printed = printedInteger(value)) return *printed;
  if (auto v = std::any_cast<double>(&value)) return printedDouble(*v);
  if (auto v = std::any_cast<float>(&value)) return printedDouble(*v);
  if (auto v = std::any_cast<Date>(&value)) return printedDouble(v->timeIntervalSince1970());
  if (auto v = std::any_cast<Error>(&value)) return v->what();
  if (auto v = std::any_cast<std::exception_ptr>(&value)) return exceptionDescription(*v);
  return "<unprintable " + std::string(value.type().name()) + ">";
}

Logger::Metadata metadataFrom(const Data& data) {
  Logger::Metadata metadata;
  for (const auto& [key, value] : data) metadata.emplace(key, metadataValueFrom(value));
  return metadata;
}

std::optional<Data> toDictionary(const Logger::MetadataValue& value) {
  const Logger::MetadataValue::Dictionary* dictionary = value.dictionary();
  if (!dictionary) return std::nullopt;
  Data result;
  for (const auto& [key, element] : *dictionary) result.emplace(key, anyFrom(element));
  return result;
}

std::string toString(const Logger::MetadataValue& value) { return value.description(); }

const Logger::MetadataValue::Dictionary* dict(const Logger::MetadataValue& value) { return value.dictionary(); }

}  // namespace kestrona::logging
