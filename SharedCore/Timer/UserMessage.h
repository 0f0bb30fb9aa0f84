// A toast or message that the core asks the user interface to show.
//
// kind tells an error from information; message is the title, description
// the optional detail, and action an optional button with its title and the
// function it runs. error() and info() only fix the kind. The core hands
// messages to UserMessageCenter, never to a view.
//
// Threading: a value; the action's handler runs where the reporter calls it.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace kestrona {

struct UserMessage {
  enum class Kind { error, info };

  struct Action {
    std::string title;
    std::function<void()> handler;
  };

  Kind kind = Kind::info;
  std::string message;
  std::optional<std::string> description;
  std::optional<Action> action;

  static UserMessage error(std::string message, std::optional<std::string> description = std::nullopt,
                           std::optional<Action> action = std::nullopt) {
    return {Kind::error, std::move(message), std::move(description), std::move(action)};
  }
  static UserMessage info(std::string message, std::optional<std::string> description = std::nullopt,
                          std::optional<Action> action = std::nullopt) {
    return {Kind::info, std::move(message), std::move(description), std::move(action)};
  }
};

}  // namespace kestrona
