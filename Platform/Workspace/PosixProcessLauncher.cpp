#include "Platform/Workspace/PosixProcessLauncher.h"

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <memory>
#include <optional>

extern char** environ;

namespace kestrona {
namespace {

using namespace std::chrono_literals;

// The run of one program, kept alive by the waits it has outstanding on the
// loop. It ends once: by finish().
class Run : public std::enable_shared_from_this<Run> {
 public:
  Run(asio::io_context& context, pid_t pid, ProcessLauncher::Completion completion)
      : pid_(pid), limitTimer_(context), pollTimer_(context), completion_(std::move(completion)) {}

  ~Run() {
    // Only when the loop destroyed our waits unrun: never leave the program
    // running or unreaped.
    if (!finished_) {
      killGroup();
      int status = 0;
      while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
      }
    }
  }

  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  void start(asio::io_context& context, double timeLimit, PosixProcessLauncher::ExitWatch exitWatch) {
    if (exitWatch == PosixProcessLauncher::ExitWatch::processDescriptor) {
      int descriptor = static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0));
      if (descriptor >= 0) pidDescriptor_.emplace(context, descriptor);
    }
    waitForExit();
    auto limit = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(timeLimit > 0 ? timeLimit : 0));
    limitTimer_.expires_after(limit);
    limitTimer_.async_wait([self = shared_from_this()](const std::error_code& error) {
      if (!error) self->limitReached();
    });
  }

 private:
  void waitForExit() {
    if (pidDescriptor_) {
      pidDescriptor_->async_wait(asio::posix::descriptor_base::wait_read,
                                 [self = shared_from_this()](const std::error_code&) { self->checkExit(); });
    } else {
      pollTimer_.expires_after(10ms);
      pollTimer_.async_wait([self = shared_from_this()](const std::error_code& error) {
        if (!error) self->checkExit();
      });
    }
  }

  void checkExit() {
    if (finished_) return;
    int status = 0;
    pid_t reaped = ::waitpid(pid_, &status, WNOHANG);
    while (reaped < 0 && errno == EINTR) reaped = ::waitpid(pid_, &status, WNOHANG);
    if (reaped == 0) {
      waitForExit();
      return;
    }
    if (reaped < 0) {
      // ECHILD: somebody else reaped the program (SIGCHLD ignored by the
      // process). Its status is lost; it counts as a failed run.
      finish(ProcessExited{-1});
      return;
    }
    if (timedOut_) {
      finish(ProcessTimedOut{});
    } else if (WIFSIGNALED(status)) {
      finish(ProcessSignaled{WTERMSIG(status)});
    } else {
      finish(ProcessExited{WEXITSTATUS(status)});
    }
  }

  void limitReached() {
    if (finished_) return;
    timedOut_ = true;
    killGroup();
    // The exit that the kill causes arrives through the usual wait.
  }

  void killGroup() {
    ::kill(-pid_, SIGKILL);
    ::kill(pid_, SIGKILL);
  }

  void finish(ProcessOutcome outcome) {
    finished_ = true;
    limitTimer_.cancel();
    pollTimer_.cancel();
    if (pidDescriptor_) pidDescriptor_->cancel();
    ProcessLauncher::Completion completion = std::move(completion_);
    completion(std::move(outcome));
  }

  pid_t pid_;
  asio::steady_timer limitTimer_;
  asio::steady_timer pollTimer_;
  std::optional<asio::posix::stream_descriptor> pidDescriptor_;
  ProcessLauncher::Completion completion_;
  bool timedOut_ = false;
  bool finished_ = false;
};

// posix_spawn's attributes and file actions, released on every path out.
struct SpawnSetup {
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_t fileActions;
  SpawnSetup() {
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&fileActions);
  }
  ~SpawnSetup() {
    posix_spawn_file_actions_destroy(&fileActions);
    posix_spawnattr_destroy(&attributes);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;
};

std::vector<std::string> environmentFor(const ProcessLaunchRequest& request) {
  std::map<std::string, std::string> variables;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    std::string_view text(*entry);
    std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) continue;
    variables[std::string(text.substr(0, equals))] = std::string(text.substr(equals + 1));
  }
  for (const auto& [name, value] : request.environment) variables[name] = value;
  std::vector<std::string> environment;
  environment.reserve(variables.size());
  for (const auto& [name, value] : variables) environment.push_back(name + "=" + value);
  return environment;
}

// Starts the program; its pid, or why it could not start.
std::variant<pid_t, ProcessLaunchFailed> spawn(const ProcessLaunchRequest& request) {
  SpawnSetup setup;
  // A group of its own, so that a kill at the time limit reaches whatever the
  // program started too; signals at their defaults and none blocked, whatever
  // this process has set for itself.
  sigset_t noSignals;
  sigset_t allSignals;
  sigemptyset(&noSignals);
  sigfillset(&allSignals);
  posix_spawnattr_setflags(&setup.attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  posix_spawnattr_setpgroup(&setup.attributes, 0);
  posix_spawnattr_setsigmask(&setup.attributes, &noSignals);
  posix_spawnattr_setsigdefault(&setup.attributes, &allSignals);
  posix_spawn_file_actions_addopen(&setup.fileActions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);

  std::string executable = request.executable.string();
  std::vector<char*> argv;
  argv.push_back(executable.data());
  std::vector<std::string> arguments = request.arguments;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  std::vector<std::string> environment = environmentFor(request);
  std::vector<char*> envp;
  for (std::string& variable : environment) envp.push_back(variable.data());
  envp.push_back(nullptr);

  pid_t pid = 0;
  int result = posix_spawn(&pid, executable.c_str(), &setup.fileActions, &setup.attributes, argv.data(), envp.data());
  if (result != 0) return ProcessLaunchFailed{result};
  return pid;
}

}  // namespace

void PosixProcessLauncher::launch(ProcessLaunchRequest request, Completion completion) {
  asio::io_context& context = loop_.context();
  std::variant<pid_t, ProcessLaunchFailed> spawned = spawn(request);
  if (const auto* failure = std::get_if<ProcessLaunchFailed>(&spawned)) {
    asio::post(context, [completion = std::move(completion), failure = *failure] { completion(failure); });
    return;
  }
  auto run = std::make_shared<Run>(context, std::get<pid_t>(spawned), std::move(completion));
  run->start(context, request.timeLimit, exitWatch_);
}

}  // namespace kestrona
