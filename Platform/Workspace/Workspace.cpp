#include "Platform/Workspace/Workspace.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <variant>

#include "Platform/Bundle/Bundle.h"
#include "Platform/RunLoop/Async.h"
#include "Platform/Workspace/PosixProcessLauncher.h"

namespace kestrona {
namespace {

std::string describeOutcome(const ProcessOutcome& outcome, double timeLimit) {
  if (const auto* exited = std::get_if<ProcessExited>(&outcome)) {
    return "it exited with status " + std::to_string(exited->status);
  }
  if (const auto* signaled = std::get_if<ProcessSignaled>(&outcome)) {
    return "it was ended by signal " + std::to_string(signaled->signal) + " (" + strsignal(signaled->signal) + ")";
  }
  if (std::holds_alternative<ProcessTimedOut>(outcome)) {
    return "it ran longer than " + std::to_string(timeLimit) + " s and was stopped";
  }
  int errorNumber = std::get<ProcessLaunchFailed>(outcome).errorNumber;
  return std::string("it could not be started: ") + std::strerror(errorNumber);
}

// Null when the outcome is success.
std::exception_ptr errorForOutcome(const ProcessOutcome& outcome, double timeLimit, ErrorUserInfo userInfo) {
  const std::string& executable = std::get<std::string>(userInfo.at("executable"));
  std::string description = "Opening the URL with " + executable + " failed: " + describeOutcome(outcome, timeLimit);
  WorkspaceErrorCode code = WorkspaceErrorCode::launchFailed;
  if (const auto* exited = std::get_if<ProcessExited>(&outcome)) {
    if (exited->status == 0) return nullptr;
    code = WorkspaceErrorCode::applicationFailed;
    userInfo["status"] = std::int64_t{exited->status};
  } else if (const auto* signaled = std::get_if<ProcessSignaled>(&outcome)) {
    code = WorkspaceErrorCode::applicationCrashed;
    userInfo["signal"] = std::int64_t{signaled->signal};
  } else if (std::holds_alternative<ProcessTimedOut>(outcome)) {
    code = WorkspaceErrorCode::timedOut;
    userInfo["timeLimit"] = timeLimit;
  } else {
    int errorNumber = std::get<ProcessLaunchFailed>(outcome).errorNumber;
    userInfo["errno"] = std::int64_t{errorNumber};
    if (errorNumber == ENOENT || errorNumber == ENOTDIR) {
      code = WorkspaceErrorCode::executableMissing;
    } else if (errorNumber == EACCES || errorNumber == ENOEXEC || errorNumber == EISDIR || errorNumber == EPERM) {
      code = WorkspaceErrorCode::executableNotExecutable;
    }
  }
  return std::make_exception_ptr(WorkspaceError(code, std::move(description), std::move(userInfo)));
}

// Delivers an error found before anything started: on the loop, not inline.
void failLater(MainLoop& loop, Workspace::CompletionHandler completionHandler, WorkspaceError error) {
  loop.post([completionHandler = std::move(completionHandler), error = std::move(error)] {
    completionHandler(std::make_exception_ptr(error));
  });
}

void resumeContinuation(const Continuation<std::monostate>& continuation, std::exception_ptr error) {
  if (error) {
    continuation.resume(error);
  } else {
    continuation.resume(std::monostate());
  }
}

}  // namespace

WorkspaceError::WorkspaceError(WorkspaceErrorCode code, std::string description, ErrorUserInfo userInfo,
                               std::shared_ptr<const Error> underlying)
    : CodedError("WorkspaceError", code, std::move(description), std::move(userInfo), std::move(underlying)) {}

std::shared_ptr<Workspace> Workspace::shared() {
  static std::shared_ptr<Workspace> workspace =
      make(MainLoop::main(), std::make_shared<PosixProcessLauncher>(MainLoop::main()));
  return workspace;
}

std::shared_ptr<Workspace> Workspace::make(MainLoop& loop, std::shared_ptr<ProcessLauncher> launcher) {
  return std::shared_ptr<Workspace>(new Workspace(loop, std::move(launcher)));
}

void Workspace::openURLs(const std::vector<URL>& urls, const URL& applicationURL,
                         const OpenConfiguration& configuration, CompletionHandler completionHandler) {
  ErrorUserInfo userInfo{{"application", applicationURL.filesystemPath().string()}};
  if (urls.empty()) {
    failLater(loop_, std::move(completionHandler),
              WorkspaceError(WorkspaceErrorCode::noURLs, "There is no URL to open", userInfo));
    return;
  }
  std::optional<Bundle> bundle;
  try {
    bundle = Bundle::load(applicationURL);
  } catch (const BundleError& error) {
    failLater(loop_, std::move(completionHandler),
              WorkspaceError(WorkspaceErrorCode::applicationNotFound,
                             "There is no application at " + applicationURL.absoluteString(), userInfo,
                             std::make_shared<const BundleError>(error)));
    return;
  }
  if (!bundle->executableURL()) {
    failLater(loop_, std::move(completionHandler),
              WorkspaceError(WorkspaceErrorCode::executableMissing,
                             "The application at " + applicationURL.absoluteString() + " names no executable",
                             userInfo));
    return;
  }

  ProcessLaunchRequest request;
  request.executable = bundle->executableURL()->filesystemPath();
  request.arguments.push_back("open-url");
  for (const URL& url : urls) request.arguments.push_back(url.absoluteString());
  request.environment = {{"KESTRONA_OPEN_ACTIVATES", configuration.activates() ? "1" : "0"},
                         {"KESTRONA_OPEN_PROMPTS_USER", configuration.promptsUserIfNeeded() ? "1" : "0"}};
  request.timeLimit = timeLimit_;
  userInfo["executable"] = request.executable.string();

  launcher_->launch(std::move(request), [completionHandler = std::move(completionHandler), userInfo,
                                         timeLimit = timeLimit_](ProcessOutcome outcome) {
    completionHandler(errorForOutcome(outcome, timeLimit, userInfo));
  });
}

asio::awaitable<void> Workspace::open(std::vector<URL> urls, URL applicationURL, OpenConfiguration configuration) {
  // The workspace must outlive the wait; the caller's shared_ptr may not.
  std::shared_ptr<Workspace> self = shared_from_this();
  // A named function, not a temporary lambda inside the co_await: GCC 12
  // destroys such temporaries twice.
  std::function<void(Continuation<std::monostate>)> start = [self, urls, applicationURL,
                                                   configuration](Continuation<std::monostate> continuation) {
    self->openURLs(urls, applicationURL, configuration,
                   [continuation](std::exception_ptr error) { resumeContinuation(continuation, error); });
  };
  co_await withContinuation<std::monostate>(std::move(start));
}

}  // namespace kestrona
