// A timer command as a deep link: start the timer on a task, or pause it.
//
// The grammar, in both directions:
//   start(taskId: T)  "deeplink-startTimer://?taskId=" and T percent-encoded
//                     as a query value (":" and "/" stay literal; "&", "=",
//                     "+", "#", "%", blanks and non-ASCII bytes are escaped)
//   pause             "deeplink-pauseTimer://"
//
// url() builds the link through URLComponents, never by pasting text.
// fromURL() reads a link back and gives none for anything that is not a
// command link: no scheme, a scheme outside the vocabulary (compared with
// case respected), a navigation or other scheme, a start link without a
// "taskId" item, or whose first "taskId" item has no value or an empty one.
// A pause link ignores host, path and query. A task identifier is an opaque
// string: in practice an object URI such as "x-kestrona://<UUID>/Task/p12".
//
// Threading: a value; any thread.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "Platform/URL/URL.h"

namespace kestrona {

class TimerWidgetDeepLink {
 public:
  struct Start {
    std::string taskId;
    friend bool operator==(const Start&, const Start&) = default;
  };
  struct Pause {
    friend bool operator==(const Pause&, const Pause&) = default;
  };

  static TimerWidgetDeepLink start(std::string taskId) { return TimerWidgetDeepLink(Start{std::move(taskId)}); }
  static TimerWidgetDeepLink pause() { return TimerWidgetDeepLink(Pause{}); }

  // The link read back from url; none when url is not a command link.
  static std::optional<TimerWidgetDeepLink> fromURL(const URL& url);

  const std::variant<Start, Pause>& value() const noexcept { return value_; }
  // The task of a start link; none for pause.
  std::optional<std::string> taskId() const;

  std::optional<URL> url() const;

  // "start(taskId: \"<id>\")" or "pause", for logs.
  std::string description() const;

  friend bool operator==(const TimerWidgetDeepLink&, const TimerWidgetDeepLink&) = default;

 private:
  explicit TimerWidgetDeepLink(std::variant<Start, Pause> value) : value_(std::move(value)) {}

  std::variant<Start, Pause> value_;
};

}  // namespace kestrona
