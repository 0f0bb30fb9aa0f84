// The one door through which the core shows a message to the user.
//
// reporter() is held strongly and starts empty; the application sets it once
// at start. post() hands a message to the reporter and returns what it
// returns; with no reporter the message is lost and the result is none, which
// is not a failure. dismiss() passes on to the reporter, or does nothing.
//
// Threading: there is no lock. Set the reporter before any message is
// posted, on the main thread; post and dismiss then from any thread, the
// reporter being called on the caller's.
#pragma once

#include <memory>
#include <optional>

#include "Platform/Foundation/UUID.h"
#include "SharedCore/Timer/UserMessage.h"
#include "SharedCore/Timer/UserMessageReporter.h"

namespace kestrona {

class UserMessageCenter {
 public:
  UserMessageCenter() = delete;

  static const std::shared_ptr<UserMessageReporter>& reporter() noexcept { return reporter_; }
  static void setReporter(std::shared_ptr<UserMessageReporter> reporter) noexcept { reporter_ = std::move(reporter); }

  static std::optional<UUID> post(const UserMessage& message) {
    return reporter_ ? reporter_->post(message) : std::nullopt;
  }
  static void dismiss(const UUID& id) {
    if (reporter_) reporter_->dismiss(id);
  }

 private:
  static inline std::shared_ptr<UserMessageReporter> reporter_;
};

}  // namespace kestrona
