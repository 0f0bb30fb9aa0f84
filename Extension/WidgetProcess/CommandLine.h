// The command line of kestrona-widgets.
//
//   kestrona-widgets timeline KIND [--family F] [--now SECONDS]
//   kestrona-widgets snapshot KIND [--family F] [--now SECONDS]
//   kestrona-widgets placeholder KIND [--family F] [--now SECONDS]
//   kestrona-widgets list
//   kestrona-widgets run [--for SECONDS]
//   kestrona-widgets render KIND [--family F] [--now SECONDS] [--scale N] --out FILE
//   kestrona-widgets render-all --out DIR [--now SECONDS]
//   kestrona-widgets press KIND [--family F] (--x X --y Y | --plate N) [--now SECONDS]
//
// runWidgetProcess() looks the command up in one dispatch table
// (widgetCommands()), runs it with the bundle, and answers the exit status:
// 0 when the command did its work, 2 when the command line was wrong (an
// unknown command, kind or family, a family the widget doesn't offer, a
// missing or malformed value, an extra argument). Then it writes one line
// "kestrona-widgets: <what was wrong>" and a hint to the error stream, and
// nothing to the output. 1 when the command could not do its work: run
// cannot watch the widget files, a drawing or a file cannot be written, a
// pressed button's intent failed.
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
};

struct WidgetCommand {
  std::string_view name;
  std::string_view synopsis;
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
