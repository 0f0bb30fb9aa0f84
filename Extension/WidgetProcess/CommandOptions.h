// Reading a command's own arguments: options written "--name value" or
// "--name=value", each at most once, and at most one bare argument (the
// widget kind, for the commands that take one), in any order.
//
// readCommandOptions() accepts only the option names it is given and throws
// CommandLineError for an unknown option, an option given twice or without
// its value, and a bare argument too many (or any, when none is taken). The
// parse functions read an option's value and throw CommandLineError naming
// the option when it is not what they take.
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
// A finite number above zero.
double parsePositiveOption(std::string_view name, const std::string& text);
// Seconds since 1970, as --now takes them.
Date parseNowOption(const std::string& text);

}  // namespace kestrona
