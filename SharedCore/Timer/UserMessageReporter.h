// What presents user messages: the application's, set in UserMessageCenter.
//
// post() shows a message and returns an identifier for it, or none when it
// is not shown; dismiss() takes a shown message away by that identifier (an
// unknown one is ignored).
//
// Threading: called on the thread of whoever posts; an implementation that
// draws moves the work to its own thread.
#pragma once

#include <optional>

#include "Platform/Foundation/UUID.h"
#include "SharedCore/Timer/UserMessage.h"

namespace kestrona {

class UserMessageReporter {
 public:
  virtual ~UserMessageReporter() = default;
  virtual std::optional<UUID> post(const UserMessage& message) = 0;
  virtual void dismiss(const UUID& id) = 0;
};

}  // namespace kestrona
