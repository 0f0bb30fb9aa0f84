// Intents: actions that a widget's press target carries and the system runs.
//
// An intent is a value: its parameters are fields (IntentParameter), its
// presentation is a set of statics (title(), description()), and its work is
// an asynchronous perform() on the main loop that returns an IntentResult or
// throws a typed Error. The AppIntent concept states that shape; AnyAppIntent
// holds any such value, copied, so that a view can carry it as the target of
// a press without knowing its type, and run it later with run().
//
// Running an intent: run() starts perform() as a coroutine on the given loop
// and calls the completion there once it ends, with null or the exception it
// threw. The loop must be running (or be run) for the intent to progress.
//
// Threading: perform() and run() on the loop's thread. Intent values may be
// made and copied anywhere.
#pragma once

#include <concepts>
#include <exception>
#include <functional>
#include <memory>
#include <string_view>

#include "Platform/Intents/IntentParameter.h"
#include "Platform/RunLoop/MainLoop.h"

// After standard headers on purpose; see Platform/Workspace/Workspace.h.
#include <asio/awaitable.hpp>

namespace kestrona {

// The empty result of an intent that returns nothing to show.
struct IntentResult {
  static IntentResult result() { return {}; }
  friend bool operator==(const IntentResult&, const IntentResult&) = default;
};

template <typename Intent>
concept AppIntent = std::copy_constructible<Intent> && requires(Intent intent) {
  { Intent::title() } -> std::convertible_to<std::string_view>;
  { Intent::description() } -> std::convertible_to<std::string_view>;
  { intent.perform() } -> std::same_as<asio::awaitable<IntentResult>>;
};

class AnyAppIntent {
 public:
  using Completion = std::function<void(std::exception_ptr error)>;

  // Not for AnyAppIntent itself: copying one would otherwise ask whether it
  // is an AppIntent, which asks whether it can be copied (clang refuses the
  // loop).
  template <typename Intent>
    requires(!std::same_as<Intent, AnyAppIntent> && AppIntent<Intent>)
  AnyAppIntent(Intent intent) : model_(std::make_shared<Model<Intent>>(std::move(intent))) {}

  std::string_view title() const { return model_->title(); }

  // Runs a copy of the intent, so that the value held here never changes.
  asio::awaitable<IntentResult> perform() const { return model_->perform(); }

  void run(MainLoop& loop, Completion completion) const;

 private:
  struct Concept {
    virtual ~Concept() = default;
    virtual std::string_view title() const = 0;
    virtual asio::awaitable<IntentResult> perform() const = 0;
  };

  template <typename Intent>
  struct Model final : Concept {
    explicit Model(Intent value) : intent(std::move(value)) {}
    std::string_view title() const override { return Intent::title(); }
    asio::awaitable<IntentResult> perform() const override { return performCopy(intent); }
    static asio::awaitable<IntentResult> performCopy(Intent copy) { co_return co_await copy.perform(); }
    Intent intent;
  };

  std::shared_ptr<const Concept> model_;
};

}  // namespace kestrona
