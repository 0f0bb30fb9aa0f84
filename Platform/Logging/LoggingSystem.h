// The process-wide choice of log handler.
//
// bootstrap() installs the factory that makes the handler for every Logger
// created afterwards. It may run once per process, before or after Loggers
// exist (those keep their handler); a second call is a programming error and
// ends the process with "logging system can only be initialized once per
// process.". Without a bootstrap, Loggers write to standard error through a
// StreamLogHandler at level info.
//
// Threading: thread-safe. The factory sits behind a reader-writer lock: any
// number of threads make Loggers at once, bootstrap excludes them all. The
// factory is called under the read lock and must not call bootstrap().
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Platform/Logging/LogHandler.h"

namespace kestrona {

class LoggingSystem {
 public:
  using Factory = std::function<std::shared_ptr<LogHandler>(const std::string& label)>;

  static void bootstrap(Factory factory);

  // The handler for a new Logger with label, by the installed factory.
  static std::shared_ptr<LogHandler> makeHandler(const std::string& label);

  LoggingSystem() = delete;
};

}  // namespace kestrona
