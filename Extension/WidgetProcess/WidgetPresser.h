// Pressing a laid-out widget, as a person presses it on the desktop.
//
// press(tree, point, completion) hit-tests the tree at the point (points
// from the widget's top-left corner; HitTesting.h decides what lies there)
// at once, so the tree need not outlive the call, and then:
//   - a press target runs its intent on the presser's loop through the
//     registered timer-intent host (TimerWidgetIntentHost::current()). For
//     the length of the run a recording host stands in front of the
//     registered one, so that the outcome names the deep link the press
//     handed over; the registered host is back in place before the
//     completion runs;
//   - a region link or the widget's link is only reported: following it is
//     the caller's business;
//   - a press that nothing takes is reported as such.
//
// Presses run one at a time, in the order they were made: a press made while
// an intent runs waits for it, because the recording host is the process's
// one host while it stands. The completion runs once per press, on the
// loop's thread, never inside press(). Destroying the presser drops the
// presses still waiting, whose completions then never run, and puts the
// registered host back at once; an intent already running goes on, and its
// completion is dropped too.
//
// pressOutcomeJSON() gives the fields that describe an outcome, in the order
// "kestrona-widgets press" prints them:
//   {"pressed": "nothing"}
//   {"pressed": "link", "url", "isWidgetURL"}
//   {"pressed": "intent", "intent": <title>, "command": "start" | "pause",
//    "taskId" (start only), "deepLink", "result": "performed" | "failed",
//    "error": {"domain", "code", "description"} (failed only)}
// "command" and "deepLink" are absent when the intent failed before it
// reached the host.
//
// Threading: make, use and destroy a presser on its loop's thread.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "Platform/RunLoop/MainLoop.h"
#include "Platform/View/Geometry.h"
#include "Platform/View/HitTesting.h"
#include "Platform/View/Layout.h"
#include "WidgetData/TimerIntent/TimerWidgetDeepLink.h"

namespace kestrona {

struct WidgetPressOutcome {
  enum class Pressed { nothing, link, intent };

  Pressed pressed = Pressed::nothing;
  // For a link.
  std::optional<PressLink> link;
  // For an intent: its title, the command the host was asked for (none when
  // the intent failed before it asked), and its failure (null when it was
  // performed).
  std::string intentTitle;
  std::optional<TimerWidgetDeepLink> deepLink;
  std::exception_ptr failure;
};

class WidgetPresser {
 public:
  using Completion = std::function<void(WidgetPressOutcome)>;

  explicit WidgetPresser(MainLoop& loop);
  ~WidgetPresser();
  WidgetPresser(const WidgetPresser&) = delete;
  WidgetPresser& operator=(const WidgetPresser&) = delete;

  void press(const LayoutTree& tree, Point point, Completion completion);

  // Internal; public so that the source file's helpers can name it.
  struct State;

 private:
  std::shared_ptr<State> state_;
};

nlohmann::ordered_json pressOutcomeJSON(const WidgetPressOutcome& outcome);

// A failure as pressOutcomeJSON() writes it: {"domain", "code",
// "description"} for an Error, {"description"} for anything else thrown.
nlohmann::ordered_json failureJSON(const std::exception_ptr& failure);

}  // namespace kestrona
