// The seam through which this system starts other programs.
//
// A ProcessLauncher starts one program per request and reports, once, how
// that run ended: it exited with a status, a signal ended it, it outlived the
// request's time limit (and was killed), or it could not be started at all.
// Every start of a process goes through this interface, so that tests can
// replace the real launcher (PosixProcessLauncher) with one that injects any
// outcome, and so that the real one is tested once, against real programs.
//
// Contract for implementations:
//   - completion is called exactly once, on the launcher's main loop, and
//     never from within launch() itself;
//   - a program still running at its time limit is killed, and reaped before
//     the completion runs, so that no zombie is left; the processes it
//     started are sent the same kill (they die on their own schedule, and
//     their new parent reaps them);
//   - launching never blocks the main loop while the program runs.
//
// Threading: call launch() on the main loop's thread.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kestrona {

struct ProcessLaunchRequest {
  // Run directly, without a shell; also passed as the program's argv[0].
  std::filesystem::path executable;
  // The arguments after argv[0].
  std::vector<std::string> arguments;
  // Set in the program's environment on top of this process's own.
  std::vector<std::pair<std::string, std::string>> environment;
  // Seconds the program may run before it is killed.
  double timeLimit = 5.0;
};

struct ProcessExited {
  int status;
  friend bool operator==(const ProcessExited&, const ProcessExited&) = default;
};
struct ProcessSignaled {
  int signal;
  friend bool operator==(const ProcessSignaled&, const ProcessSignaled&) = default;
};
struct ProcessTimedOut {
  friend bool operator==(const ProcessTimedOut&, const ProcessTimedOut&) = default;
};
// The program could not be started; errorNumber is the errno of the failure
// (ENOENT: no such file, EACCES: not executable, ENOEXEC: not a program).
struct ProcessLaunchFailed {
  int errorNumber;
  friend bool operator==(const ProcessLaunchFailed&, const ProcessLaunchFailed&) = default;
};

using ProcessOutcome = std::variant<ProcessExited, ProcessSignaled, ProcessTimedOut, ProcessLaunchFailed>;

class ProcessLauncher {
 public:
  using Completion = std::function<void(ProcessOutcome)>;

  virtual ~ProcessLauncher() = default;

  virtual void launch(ProcessLaunchRequest request, Completion completion) = 0;
};

}  // namespace kestrona
