#include "Extension/WidgetWindow/WidgetWindowOptions.h"

#include <optional>
#include <string_view>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/WidgetSelection.h"

namespace kestrona {
namespace {

using Code = CommandLineErrorCode;

// The value of option name at arguments[index], as "--name value" or
// "--name=value"; none when the argument is another one. Moves index past
// what it read.
std::optional<std::string> optionValue(const std::vector<std::string>& arguments, std::size_t& index,
                                       std::string_view name) {
  const std::string& argument = arguments[index];
  if (argument.size() > name.size() && argument.compare(0, name.size(), name) == 0 && argument[name.size()] == '=') {
    return argument.substr(name.size() + 1);
  }
  if (argument != name) return std::nullopt;
  if (index + 1 >= arguments.size()) throw CommandLineError(Code::missingValue, std::string(name) + " needs a value");
  return arguments[++index];
}

}  // namespace

WidgetWindowOptions parseWidgetWindowOptions(const std::vector<std::string>& arguments,
                                             const std::vector<WidgetConfiguration>& widgets) {
  WidgetWindowOptions options;
  const WidgetConfiguration* current = nullptr;
  bool familyGiven = false;
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    if (arguments[index] == "--help" || arguments[index] == "-h") {
      options.help = true;
    } else if (std::optional<std::string> kind = optionValue(arguments, index, "--kind")) {
      current = &widgetOfKind(widgets, *kind);
      familyGiven = false;
      options.widgets.push_back(WidgetChoice{current->kind(), current->supportedFamilies().front()});
    } else if (std::optional<std::string> family = optionValue(arguments, index, "--family")) {
      if (!current) throw CommandLineError(Code::unexpectedArgument, "--family must follow the --kind it is for");
      if (familyGiven) throw CommandLineError(Code::unexpectedArgument, "one --family per --kind");
      options.widgets.back().family = familyOfWidget(*current, *family);
      familyGiven = true;
    } else {
      throw CommandLineError(Code::unexpectedArgument, "unexpected argument '" + arguments[index] + "'");
    }
  }
  return options;
}

std::string widgetWindowUsage() {
  return "usage: kestrona-widget-window [--kind KIND [--family F]]...\n"
         "Shows the widgets live in a window; with no --kind, the ones chosen last time\n"
         "(at first the timer, the recent tasks and the weekly time tracked chart).\n"
         "Tab moves between buttons, Enter or Space presses, Escape hides the focus.\n";
}

}  // namespace kestrona
