#include "Platform/Logging/LoggingSystem.h"

#include <mutex>
#include <shared_mutex>

#include "Platform/Foundation/FatalError.h"
#include "Platform/Logging/StreamLogHandler.h"

namespace kestrona {
namespace {

struct Installed {
  std::shared_mutex lock;
  bool bootstrapped = false;
  LoggingSystem::Factory factory;
};

Installed& installed() {
  static Installed value;
  return value;
}

}  // namespace

void LoggingSystem::bootstrap(Factory factory) {
  Installed& state = installed();
  std::unique_lock lock(state.lock);
  if (state.bootstrapped) fatalError("logging system can only be initialized once per process.");
  state.bootstrapped = true;
  state.factory = std::move(factory);
}

std::shared_ptr<LogHandler> LoggingSystem::makeHandler(const std::string& label) {
  Installed& state = installed();
  std::shared_ptr<LogHandler> handler;
  {
    std::shared_lock lock(state.lock);
    if (state.factory) handler = state.factory(label);
  }
  // A factory that declines gets the default handler rather than a logger
  // that crashes on its first line.
  return handler ? handler : StreamLogHandler::standardError();
}

}  // namespace kestrona
