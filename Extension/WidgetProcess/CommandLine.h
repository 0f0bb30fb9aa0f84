// The command line of kestrona-widgets.
//
//   kestrona-widgets COMMAND [OPTIONS] [--] [KIND]
//   kestrona-widgets -h | --help | --version
//   kestrona-widgets COMMAND -h | --help
//
// runWidgetProcess() looks the command up in one dispatch table
// (widgetCommands()) and runs it with the bundle. "-h" or "--help" before
// any "--" prints the usage (after a command: that command's help) to the
// output; "--version" prints the program's name and version. The usage
// names every command with a one-line summary, the widget kinds with their
// families (the first is the default), the folder the widget files are read
// from, and the exit statuses:
//
//   0  the command did its work (or printed help or the version);
//   1  the work failed: a file could not be read, drawn or written (the
//      message names the path and the operating system's reason), the live
//      host could not watch its files, a pressed button's intent failed;
//   2  the command line was wrong: an unknown command, kind, family or
//      option, an option given twice or without its value, two options that
//      exclude each other, a malformed or out-of-range value, an extra
//      argument. Then nothing goes to the output.
//
// Every failure is one line "kestrona-widgets: <what was wrong>" on the
// error stream, a usage error followed by a hint to the help. Whatever a
// command throws is caught here: a CommandLineError is a usage error, any
// other exception a failure of the work. Warnings (a widget that shows
// stand-in data because its file can't be used) go to the error stream as
// "kestrona-widgets: warning: ..." and don't change the status.
//
// Each command lives in a file of its own and reports a wrong command line
// by throwing CommandLineError. Runs on the calling thread.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "Extension/WidgetProcess/KestronaWidgets.h"
#include "Platform/Foundation/Error.h"

namespace kestrona {

enum class CommandLineErrorCode {
  unknownCommand,
  unknownKind,
  unknownFamily,
  unsupportedFamily,
  missingValue,
  badValue,
  unexpectedArgument,
  repeatedOption,
  conflictingOptions,
};

class CommandLineError : public CodedError<CommandLineErrorCode> {
 public:
  using Code = CommandLineErrorCode;
  static constexpr std::string_view kDomain = "CommandLineError";

  CommandLineError(Code code, std::string description);
};

struct CommandInvocation {
  const KestronaWidgets& bundle;
  // The arguments after the command's name.
  std::vector<std::string> arguments;
  std::ostream& output;
  // Warnings; failures are written by runWidgetProcess.
  std::ostream& errors;
};

struct WidgetCommand {
  std::string_view name;
  // The arguments, as the usage shows them.
  std::string_view synopsis;
  // One line for the usage.
  std::string_view summary;
  // The command's options, one per line, for its help; may be empty.
  std::string options;
  std::function<int(const CommandInvocation&)> run;
};

// The commands, in the order the usage lists them.
const std::vector<WidgetCommand>& widgetCommands();

// arguments excludes the program's name.
int runWidgetProcess(const KestronaWidgets& bundle, const std::vector<std::string>& arguments, std::ostream& output,
                     std::ostream& errors);

// The commands' own entry points, for the dispatch table.
int runTimelineCommand(const CommandInvocation& invocation);
int runSnapshotCommand(const CommandInvocation& invocation);
int runPlaceholderCommand(const CommandInvocation& invocation);
int runListCommand(const CommandInvocation& invocation);
int runRunCommand(const CommandInvocation& invocation);
int runRenderCommand(const CommandInvocation& invocation);
int runRenderAllCommand(const CommandInvocation& invocation);
int runPressCommand(const CommandInvocation& invocation);

}  // namespace kestrona
