// The workspace: opens URLs at an application.
//
// openURLs(urls, applicationURL, configuration, completionHandler) loads the
// application bundle at applicationURL, starts the executable that its
// Info.json names with the arguments
//
//     open-url <URL> [<URL> ...]
//
// (each URL's absolute string, no shell involved), and reports success when
// that program exits with status 0. The application is expected to hand the
// URLs to its running instance, or to act on them, and exit. The
// configuration travels to it in its environment: "KESTRONA_OPEN_ACTIVATES"
// and "KESTRONA_OPEN_PROMPTS_USER", each "1" or "0". An application that
// honours "0" brings no window forward and asks nothing.
//
// Failures are WorkspaceError values:
//   noURLs                  the list of URLs was empty; nothing is started
//   applicationNotFound     no bundle folder at applicationURL, or its
//                           Info.json is unreadable or malformed
//                           (underlying: the BundleError)
//   executableMissing       the bundle names no executable, or no file is there
//   executableNotExecutable the file cannot be run (no permission, a folder,
//                           not a program)
//   launchFailed            starting it failed for another reason ("errno")
//   applicationFailed       it exited with a non-zero status ("status")
//   applicationCrashed      a signal ended it ("signal")
//   timedOut                it ran longer than timeLimit() seconds; it was
//                           killed and reaped ("timeLimit")
// The user-info keys in brackets hold the numbers; every error also carries
// "application" (the bundle's path) and "executable" when known.
//
// The completion handler runs once, on the main loop, never inside the
// call. open() is the same operation as a coroutine: it resumes on the
// awaiting coroutine's executor and throws the WorkspaceError; it keeps the
// workspace alive while it waits.
//
// Workspace is a reference type held by std::shared_ptr. shared() works on
// MainLoop::main() with the real process launcher; make() takes a loop and
// the launcher seam (tests inject one).
//
// Threading: every member on the loop's thread.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

// After a standard header on purpose: Asio picks its allocator by a macro of
// the standard library's configuration, and a translation unit that reaches
// Asio first would allocate with one and free with the other.
#include <asio/awaitable.hpp>

#include "Platform/Foundation/Error.h"
#include "Platform/RunLoop/MainLoop.h"
#include "Platform/URL/URL.h"
#include "Platform/Workspace/ProcessLauncher.h"

namespace kestrona {

enum class WorkspaceErrorCode {
  noURLs = 0,
  applicationNotFound,
  executableMissing,
  executableNotExecutable,
  launchFailed,
  applicationFailed,
  applicationCrashed,
  timedOut,
};

// Domain "WorkspaceError".
class WorkspaceError : public CodedError<WorkspaceErrorCode> {
 public:
  WorkspaceError(WorkspaceErrorCode code, std::string description, ErrorUserInfo userInfo = {},
                 std::shared_ptr<const Error> underlying = nullptr);
};

class Workspace : public std::enable_shared_from_this<Workspace> {
 public:
  // How an application is opened. Both default to true, as a user's own
  // open would; a widget press turns both off.
  class OpenConfiguration {
   public:
    bool activates() const noexcept { return activates_; }
    void setActivates(bool activates) noexcept { activates_ = activates; }
    bool promptsUserIfNeeded() const noexcept { return promptsUserIfNeeded_; }
    void setPromptsUserIfNeeded(bool prompts) noexcept { promptsUserIfNeeded_ = prompts; }

   private:
    bool activates_ = true;
    bool promptsUserIfNeeded_ = true;
  };

  // Null on success.
  using CompletionHandler = std::function<void(std::exception_ptr error)>;

  static constexpr double kDefaultTimeLimit = 5.0;

  static std::shared_ptr<Workspace> shared();
  static std::shared_ptr<Workspace> make(MainLoop& loop, std::shared_ptr<ProcessLauncher> launcher);

  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  double timeLimit() const noexcept { return timeLimit_; }
  void setTimeLimit(double seconds) noexcept { timeLimit_ = seconds; }

  void openURLs(const std::vector<URL>& urls, const URL& applicationURL, const OpenConfiguration& configuration,
                CompletionHandler completionHandler);

  asio::awaitable<void> open(std::vector<URL> urls, URL applicationURL, OpenConfiguration configuration);

 private:
  Workspace(MainLoop& loop, std::shared_ptr<ProcessLauncher> launcher)
      : loop_(loop), launcher_(std::move(launcher)) {}

  MainLoop& loop_;
  std::shared_ptr<ProcessLauncher> launcher_;
  double timeLimit_ = kDefaultTimeLimit;
};

}  // namespace kestrona
