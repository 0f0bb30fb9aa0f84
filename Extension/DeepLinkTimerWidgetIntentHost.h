// The widget process's timer-intent host: it hands each timer command to the
// containing application as a deep link.
//
// startTimer(taskId) and pauseTimer() both make the command's deep link
// (TimerWidgetDeepLink) and open it at the containing application through
// the workspace, without bringing the application forward and without
// asking the user anything. startTimer completes with true only when the
// application took the link (its program exited with status 0); pauseTimer
// drops that answer.
//
// The containing application is found from the main bundle alone: three
// path components up from the widget bundle (out of KestronaWidgets.appex,
// PlugIns and Contents), and it must end in ".app". There is no search
// by identifier. An extension placed anywhere else has no application: every
// start then fails and every pause does nothing.
//
// Failures are logged at error level under the label "TimerWidgetIntent",
// with the metadata "subsystem" set to the main bundle's identifier (or
// "KestronaWidgets" without one):
//   "No URL or containing app for <deep link>"     no link or no application
//   "Opening <URL> at the app failed: <error>"     the workspace failed
//
// Threading: a reference type held by std::shared_ptr; its coroutines run on
// the workspace's main loop.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/URL/URL.h"
#include "Platform/Workspace/Workspace.h"
#include "WidgetData/TimerIntent/TimerWidgetDeepLink.h"
#include "WidgetData/TimerIntent/TimerWidgetIntentHosting.h"

namespace kestrona {

class DeepLinkTimerWidgetIntentHost final : public TimerWidgetIntentHosting,
                                            public std::enable_shared_from_this<DeepLinkTimerWidgetIntentHost> {
 public:
  // A host that opens links through Workspace::shared().
  static std::shared_ptr<DeepLinkTimerWidgetIntentHost> make();
  // A host that opens links through workspace.
  static std::shared_ptr<DeepLinkTimerWidgetIntentHost> make(std::shared_ptr<Workspace> workspace);

  asio::awaitable<bool> startTimer(std::string taskId) override;
  asio::awaitable<void> pauseTimer() override;

  // The containing application's bundle URL, by the rule above; none when
  // the main bundle is not three levels below a ".app" folder.
  static std::optional<URL> containingApplicationURL();

 private:
  explicit DeepLinkTimerWidgetIntentHost(std::shared_ptr<Workspace> workspace) : workspace_(std::move(workspace)) {}

  // Opens the link at the containing application; true when it was handed
  // over. Never throws: failures are logged.
  asio::awaitable<bool> open(TimerWidgetDeepLink deepLink);

  std::shared_ptr<Workspace> workspace_;
};

}  // namespace kestrona
