#include "Extension/DeepLinkTimerWidgetIntentHost.h"

#include "Platform/Bundle/Bundle.h"
#include "Platform/Foundation/ExceptionDescription.h"
#include "Platform/Logging/Logger.h"

namespace kestrona {
namespace {

constexpr int kLevelsAboveTheExtension = 3;

// The process's log for the timer intent, made at its first use.
const Logger& intentLogger() {
  static const Logger logger = [] {
    Logger made("TimerWidgetIntent");
    made["subsystem"] = Bundle::main().bundleIdentifier().value_or("KestronaWidgets");
    return made;
  }();
  return logger;
}

// Opens url at application; null, or what the workspace threw.
asio::awaitable<std::exception_ptr> openCatchingFailure(std::shared_ptr<Workspace> workspace, URL url,
                                                         URL application,
                                                         Workspace::OpenConfiguration configuration) {
  std::vector<URL> urls;
  urls.push_back(std::move(url));
  std::exception_ptr failure;
  try {
    co_await workspace->open(std::move(urls), std::move(application), configuration);
  } catch (...) {
    failure = std::current_exception();
  }
  co_return failure;
}

}  // namespace

std::shared_ptr<DeepLinkTimerWidgetIntentHost> DeepLinkTimerWidgetIntentHost::make() {
  return make(Workspace::shared());
}

std::shared_ptr<DeepLinkTimerWidgetIntentHost> DeepLinkTimerWidgetIntentHost::make(
    std::shared_ptr<Workspace> workspace) {
  return std::shared_ptr<DeepLinkTimerWidgetIntentHost>(new DeepLinkTimerWidgetIntentHost(std::move(workspace)));
}

asio::awaitable<bool> DeepLinkTimerWidgetIntentHost::startTimer(std::string taskId) {
  std::shared_ptr<DeepLinkTimerWidgetIntentHost> self = shared_from_this();
  bool handedOver = co_await self->open(TimerWidgetDeepLink::start(std::move(taskId)));
  co_return handedOver;
}

asio::awaitable<void> DeepLinkTimerWidgetIntentHost::pauseTimer() {
  std::shared_ptr<DeepLinkTimerWidgetIntentHost> self = shared_from_this();
  co_await self->open(TimerWidgetDeepLink::pause());
}

std::optional<URL> DeepLinkTimerWidgetIntentHost::containingApplicationURL() {
  URL url = Bundle::main().bundleURL();
  for (int level = 0; level < kLevelsAboveTheExtension; ++level) url = url.deletingLastPathComponent();
  if (url.pathExtension() != "app") return std::nullopt;
  return url;
}

asio::awaitable<bool> DeepLinkTimerWidgetIntentHost::open(TimerWidgetDeepLink deepLink) {
  std::optional<URL> url = deepLink.url();
  std::optional<URL> application;
  if (url) application = containingApplicationURL();
  if (!url || !application) {
    intentLogger().log(Logger::Level::error, "No URL or containing app for " + deepLink.description());
    co_return false;
  }

  Workspace::OpenConfiguration configuration;
  configuration.setActivates(false);
  configuration.setPromptsUserIfNeeded(false);
  std::exception_ptr failure = co_await openCatchingFailure(workspace_, *url, *application, configuration);
  if (!failure) co_return true;

  intentLogger().log(Logger::Level::error,
                     "Opening " + url->absoluteString() + " at the app failed: " + exceptionDescription(failure));
  co_return false;
}

}  // namespace kestrona
