#include "Extension/WidgetProcess/CommandOptions.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "Extension/WidgetProcess/CommandLine.h"
#include "WidgetData/Records/RecordCoding.h"

namespace kestrona {
namespace {

using Code = CommandLineErrorCode;

constexpr double kMaximumScale = 8;

std::optional<double> parseFinite(const std::string& text) {
  double number = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return std::nullopt;
  return number;
}

[[noreturn]] void throwBadValue(std::string_view name, std::string_view wanted, const std::string& text) {
  throw CommandLineError(Code::badValue, std::string(name) + " takes " + std::string(wanted) + ", not '" + text + "'");
}

}  // namespace

const std::string* CommandOptions::value(std::string_view name) const {
  auto found = values.find(name);
  return found == values.end() ? nullptr : &found->second;
}

CommandOptions readCommandOptions(const std::vector<std::string>& arguments, const std::vector<std::string_view>& names,
                                  bool takesArgument) {
  CommandOptions options;
  bool optionsEnded = false;
  for (std::size_t position = 0; position < arguments.size(); ++position) {
    const std::string& argument = arguments[position];
    if (!optionsEnded && argument == "--") {
      optionsEnded = true;
      continue;
    }
    if (optionsEnded || argument.empty() || argument[0] != '-' || argument == "-") {
      if (!takesArgument || options.argument) {
        throw CommandLineError(Code::unexpectedArgument, "unexpected argument '" + argument + "'");
      }
      options.argument = argument;
      continue;
    }
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    if (std::find(names.begin(), names.end(), name) == names.end()) {
      throw CommandLineError(Code::unexpectedArgument, "unknown option " + name);
    }
    if (options.values.contains(name)) throw CommandLineError(Code::repeatedOption, name + " is given twice");
    if (equals != std::string::npos) {
      options.values[name] = argument.substr(equals + 1);
    } else if (position + 1 < arguments.size()) {
      options.values[name] = arguments[++position];
    } else {
      throw CommandLineError(Code::missingValue, name + " needs a value");
    }
  }
  return options;
}

double parseNumberOption(std::string_view name, const std::string& text) {
  std::optional<double> number = parseFinite(text);
  if (!number) throwBadValue(name, "a number", text);
  return *number;
}

double parseNonNegativeOption(std::string_view name, const std::string& text) {
  std::optional<double> number = parseFinite(text);
  if (!number || *number < 0) throwBadValue(name, "a number from 0 on", text);
  return *number;
}

double parseScaleOption(const std::string& text) {
  std::optional<double> scale = parseFinite(text);
  if (!scale || *scale <= 0 || *scale > kMaximumScale) throwBadValue("--scale", "a number above 0 and at most 8", text);
  return *scale;
}

Date parseNowOption(const std::string& text) {
  std::optional<double> seconds = parseFinite(text);
  if (!seconds || !isWidgetTime(*seconds)) {
    throwBadValue("--now", "seconds since 1970 within the years 1970 to 9999", text);
  }
  return Date(*seconds);
}

std::string numberText(double number) {
  std::array<char, 32> buffer;
  auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  if (error != std::errc()) return std::to_string(number);
  return std::string(buffer.data(), end);
}

}  // namespace kestrona
