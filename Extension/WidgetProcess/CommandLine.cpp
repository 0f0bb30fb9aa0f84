#include "Extension/WidgetProcess/CommandLine.h"

#include <algorithm>
#include <ostream>

#include "Platform/Foundation/ExceptionDescription.h"
#include "WidgetData/Records/WidgetStoreDirectory.h"

namespace kestrona {
namespace {

constexpr int kUsageStatus = 2;
constexpr int kFailureStatus = 1;
constexpr std::string_view kProgram = "kestrona-widgets";

constexpr std::string_view kNowOption = "  --now SECONDS    take this moment, in seconds since 1970, as the present\n";
constexpr std::string_view kFamilyOption = "  --family F       the family to show (default: the widget's first)\n";

std::string entryOptions() { return std::string(kFamilyOption) + std::string(kNowOption); }

std::string renderOptions() {
  return entryOptions() +
      "  --out FILE       the picture: a .png or .svg file, or - for the standard output\n"
      "  --format FORMAT  png or svg: the format of --out - (default png)\n"
      "  --scale N        pixels per point of a PNG, above 0 and at most 8 (default 2)\n";
}

std::string pressOptions() {
  return entryOptions() +
         "  --x X --y Y      the point to press, in points from the widget's top-left corner\n"
         "  --plate N        the middle of recent-task plate N, counted from 1, row by row\n";
}

std::string renderAllOptions() {
  return "  --out DIR        the folder for the pictures and index.html, made when missing\n" + std::string(kNowOption);
}

// Whether arguments ask for help before any "--".
bool asksForHelp(const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    if (argument == "--") return false;
    if (argument == "-h" || argument == "--help") return true;
  }
  return false;
}

void printUsage(const KestronaWidgets& bundle, std::ostream& stream) {
  stream << "Usage: " << kProgram << " COMMAND [OPTIONS] [--] [KIND]\n"
         << "       " << kProgram << " [COMMAND] --help\n"
         << "       " << kProgram << " --version\n\n"
         << "Shows the Kestrona desktop widgets from the files the Kestrona application writes: their\n"
         << "timelines, their pictures, and what pressing them does.\n\nCommands:\n";
  std::size_t width = 0;
  for (const WidgetCommand& command : widgetCommands()) width = std::max(width, command.name.size());
  for (const WidgetCommand& command : widgetCommands()) {
    stream << "  " << command.name << std::string(width + 2 - command.name.size(), ' ') << command.summary << "\n";
  }
  stream << "\nWidget kinds and their families (the first is the default):\n";
  for (const WidgetConfiguration& widget : bundle.body()) {
    stream << "  " << widget.kind() << std::string(std::max<std::size_t>(2, 26 - widget.kind().size()), ' ');
    for (std::size_t index = 0; index < widget.supportedFamilies().size(); ++index) {
      stream << (index == 0 ? "" : ", ") << rawValue(widget.supportedFamilies()[index]);
    }
    stream << "\n";
  }
  stream << "\nThe widget files are read from ";
  if (std::optional<URL> directory = widgetStoreDirectoryUrl(bundle.appGroupName)) {
    stream << (directory->filesystemPath() / "KIND").string() << "\n";
  } else {
    stream << "nowhere: set XDG_DATA_HOME or HOME\n";
  }
  stream << "($XDG_DATA_HOME/" << bundle.appGroupName << "/widgetData/, else ~/.local/share/...).\n"
         << "\nExit status: 0 done; 1 the work failed (a file, a drawing, a pressed button);\n"
         << "2 a wrong command line.\n\nRun '" << kProgram << " COMMAND --help' for a command's options.\n";
}

void printCommandHelp(const WidgetCommand& command, std::ostream& stream) {
  stream << "Usage: " << kProgram << " " << command.name;
  if (!command.synopsis.empty()) stream << " " << command.synopsis;
  stream << "\n\n" << command.summary << ".\n";
  if (!command.options.empty()) stream << "\nOptions:\n" << command.options;
  stream << "  -h, --help       show this help\n";
}

void printUsageError(std::string_view message, std::ostream& errors) {
  errors << kProgram << ": " << message << "\n"
         << "Run '" << kProgram << " --help' for the usage.\n";
}

}  // namespace

CommandLineError::CommandLineError(Code code, std::string description)
    : CodedError(std::string(kDomain), code, std::move(description)) {}

const std::vector<WidgetCommand>& widgetCommands() {
  static const std::vector<WidgetCommand> commands = {
      {"timeline", "KIND [--family F] [--now SECONDS]",
       "print the widget's timeline and its reload policy as JSON", entryOptions(), runTimelineCommand},
      {"snapshot", "KIND [--family F] [--now SECONDS]", "print the entry the widget gives for a quick look as JSON",
       entryOptions(), runSnapshotCommand},
      {"placeholder", "KIND [--family F] [--now SECONDS]",
       "print the entry the widget shows before it knows anything as JSON", entryOptions(), runPlaceholderCommand},
      {"list", "", "print the widgets with their kinds, names and families as JSON", "", runListCommand},
      {"run", "[--for SECONDS]",
       "host every widget live, printing a JSON line per reload and change, until ended",
       "  --for SECONDS    stop after this many seconds (0: start, update once, stop)\n", runRunCommand},
      {"render", "KIND [--family F] [--now SECONDS] [--scale N] [--format FORMAT] --out FILE|-",
       "draw what the widget shows to a PNG or SVG picture", renderOptions(), runRenderCommand},
      {"render-all", "--out DIR [--now SECONDS]",
       "draw every widget in each of its families, with an HTML page of them", renderAllOptions(),
       runRenderAllCommand},
      {"press", "KIND [--family F] (--x X --y Y | --plate N) [--now SECONDS]",
       "press the widget and print as JSON what the press did", pressOptions(), runPressCommand},
  };
  return commands;
}

int runWidgetProcess(const KestronaWidgets& bundle, const std::vector<std::string>& arguments, std::ostream& output,
                     std::ostream& errors) {
  if (arguments.empty()) {
    printUsageError("no command given", errors);
    return kUsageStatus;
  }
  const std::string& first = arguments.front();
  if (first == "-h" || first == "--help") {
    printUsage(bundle, output);
    return 0;
  }
  if (first == "--version") {
    output << kProgram << " " << KESTRONA_VERSION << "\n";
    return 0;
  }
  auto command = std::find_if(widgetCommands().begin(), widgetCommands().end(),
                              [&first](const WidgetCommand& candidate) { return candidate.name == first; });
  if (command == widgetCommands().end()) {
    printUsageError("unknown command '" + first + "'", errors);
    return kUsageStatus;
  }
  CommandInvocation invocation{bundle, {arguments.begin() + 1, arguments.end()}, output, errors};
  if (asksForHelp(invocation.arguments)) {
    printCommandHelp(*command, output);
    return 0;
  }
  try {
    return command->run(invocation);
  } catch (const CommandLineError& error) {
    printUsageError(error.localizedDescription(), errors);
    return kUsageStatus;
  } catch (const Error& error) {
    errors << kProgram << ": " << error.localizedDescription() << "\n";
    return kFailureStatus;
  } catch (...) {
    errors << kProgram << ": " << exceptionDescription(std::current_exception()) << "\n";
    return kFailureStatus;
  }
}

}  // namespace kestrona
