#include "Extension/WidgetProcess/CommandLine.h"

#include <filesystem>
#include <ostream>


namespace kestrona {
namespace {

constexpr int kUsageStatus = 2;
constexpr int kFailureStatus = 1;

void printUsage(std::ostream& stream) {
  stream << "usage:\n";
  for (const WidgetCommand& command : widgetCommands()) {
    stream << "  kestrona-widgets " << command.name;
    if (!command.synopsis.empty()) stream << " " << command.synopsis;
    stream << "\n";
  }
}

}  // namespace

CommandLineError::CommandLineError(Code code, std::string description)
    : CodedError(std::string(kDomain), code, std::move(description)) {}

const std::vector<WidgetCommand>& widgetCommands() {
  static const std::vector<WidgetCommand> commands = {
      {"timeline", "KIND [--family F] [--now SECONDS]", runTimelineCommand},
      {"snapshot", "KIND [--family F] [--now SECONDS]", runSnapshotCommand},
      {"placeholder", "KIND [--family F] [--now SECONDS]", runPlaceholderCommand},
      {"list", "", runListCommand},
      {"run", "[--for SECONDS]", runRunCommand},
      {"render", "KIND [--family F] [--now SECONDS] [--scale N] --out FILE.png|FILE.svg", runRenderCommand},
      {"render-all", "--out DIR [--now SECONDS]", runRenderAllCommand},
      {"press", "KIND [--family F] (--x X --y Y | --plate N) [--now SECONDS]   (plates count from 1)",
       runPressCommand},
  };
  return commands;
}

int runWidgetProcess(const KestronaWidgets& bundle, const std::vector<std::string>& arguments, std::ostream& output,
                     std::ostream& errors) {
  if (arguments.empty()) {
    errors << "kestrona-widgets: no command given\n";
    printUsage(errors);
    return kUsageStatus;
  }
  if (arguments.front() == "--help" || arguments.front() == "help") {
    printUsage(output);
    return 0;
  }
  for (const WidgetCommand& command : widgetCommands()) {
    if (command.name != arguments.front()) continue;
    try {
      return command.run(CommandInvocation{bundle, {arguments.begin() + 1, arguments.end()}, output});
    } catch (const CommandLineError& error) {
      errors << "kestrona-widgets: " << error.localizedDescription() << "\n";
      errors << "Run 'kestrona-widgets --help' for the usage.\n";
      return kUsageStatus;
    } catch (const Error& error) {
      errors << "kestrona-widgets: " << error.localizedDescription() << "\n";
      return kFailureStatus;
    } catch (const std::filesystem::filesystem_error& error) {
      errors << "kestrona-widgets: " << error.what() << "\n";
      return kFailureStatus;
    }
  }
  errors << "kestrona-widgets: unknown command '" << arguments.front() << "'\n";
  printUsage(errors);
  return kUsageStatus;
}

}  // namespace kestrona
