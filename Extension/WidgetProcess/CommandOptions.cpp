#include "Extension/WidgetProcess/CommandOptions.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "Extension/WidgetProcess/CommandLine.h"

namespace kestrona {
namespace {

using Code = CommandLineErrorCode;

std::optional<double> parseFinite(const std::string& text) {
  double number = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return std::nullopt;
  return number;
}

}  // namespace

const std::string* CommandOptions::value(std::string_view name) const {
  auto found = values.find(name);
  return found == values.end() ? nullptr : &found->second;
}

CommandOptions readCommandOptions(const std::vector<std::string>& arguments, const std::vector<std::string_view>& names,
                                  bool takesArgument) {
  CommandOptions options;
  for (std::size_t position = 0; position < arguments.size(); ++position) {
    const std::string& argument = arguments[position];
    if (argument.rfind("--", 0) != 0) {
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
    if (options.values.contains(name)) throw CommandLineError(Code::unexpectedArgument, name + " is given twice");
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
  if (!number) throw CommandLineError(Code::badValue, std::string(name) + " takes a number, not '" + text + "'");
  return *number;
}

double parsePositiveOption(std::string_view name, const std::string& text) {
  std::optional<double> number = parseFinite(text);
  if (!number || *number <= 0) {
    throw CommandLineError(Code::badValue, std::string(name) + " takes a number above 0, not '" + text + "'");
  }
  return *number;
}

Date parseNowOption(const std::string& text) {
  std::optional<double> seconds = parseFinite(text);
  if (!seconds) throw CommandLineError(Code::badValue, "--now takes seconds since 1970, not '" + text + "'");
  return Date(*seconds);
}

}  // namespace kestrona
