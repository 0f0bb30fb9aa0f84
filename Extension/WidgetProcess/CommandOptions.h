// Reading a command's own arguments: options written "--name value" or
// "--name=value", each at most once, and at most one bare argument (the
// widget kind, for the commands that take one), in any order. "--" ends the
// options: what follows is bare, even when it begins with "-".
//
// readCommandOptions() accepts only the option names it is given and throws
// CommandLineError for an unknown option (anything else beginning with "-",
// but "-" itself), an option given twice or without its value, and a bare
// argument too many (or any, when none is taken). The parse functions read
// an option's value and throw CommandLineError naming the option and the
// value when it is not what they take.
//
// numberText() writes a number as people read it in messages: "170", "0.5",
// never "170.000000".
//
// Threading: plain functions; any thread.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Time/Date.h"

namespace kestrona {

struct CommandOptions {
  std::optional<std::string> argument;
  // By name, "--" included.
  std::map<std::string, std::string, std::less<>> values;

  // The option's value; null when it was not given.
  const std::string* value(std::string_view name) const;
};

CommandOptions readCommandOptions(const std::vector<std::string>& arguments, const std::vector<std::string_view>& names,
                                  bool takesArgument);

// A finite number.
double parseNumberOption(std::string_view name, const std::string& text);
// A finite number from 0 on.
double parseNonNegativeOption(std::string_view name, const std::string& text);
// Pixels per point: above 0 and at most 8.
double parseScaleOption(const std::string& text);
// Seconds since 1970 within the years 1970 to 9999, as --now takes them.
Date parseNowOption(const std::string& text);

std::string numberText(double number);

}  // namespace kestrona
