// Helpers for the widget view tests: layout with hand-computable text sizes
// at a fixed moment, a timer-intent host that notes the commands it gets,
// and pressing a laid-out widget.
#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Intents/AppIntent.h"
#include "Platform/RunLoop/Async.h"
#include "Platform/View/HitTesting.h"
#include "Platform/View/Layout.h"
#include "WidgetData/TimerIntent/TimerWidgetIntentHost.h"
#include "tests/Platform/View/FixedWidthMeasurer.h"

namespace kestrona::testing {

// The moment the tests' layouts read as "now".
inline constexpr Date kNow{1700000000};

// Lays root out on canvas with FixedWidthMeasurer (every character half
// the font size wide, lines 1.2 times it high), Inter and Quicksand, at kNow.
inline LayoutTree layOutWidget(const View& root, Size canvas) {
  static const FixedWidthMeasurer measurer;
  static const FontCatalog catalog({"Inter", "Quicksand"});
  return layout(root, canvas, measurer, catalog, LayoutEnvironment{.appearance = Appearance::dark(), .now = kNow});
}

// Notes each command as "start <taskId>" or "pause".
class RecordingTimerHost final : public TimerWidgetIntentHosting {
 public:
  asio::awaitable<bool> startTimer(std::string taskId) override {
    commands.push_back("start " + taskId);
    co_return true;
  }
  asio::awaitable<void> pauseTimer() override {
    commands.push_back("pause");
    co_return;
  }

  std::vector<std::string> commands;
};

// Installs a recording host for the life of a test and presses widgets.
class PressingTest : public ::testing::Test {
 protected:
  void SetUp() override { TimerWidgetIntentHost::setCurrent(host); }
  void TearDown() override { TimerWidgetIntentHost::setCurrent(nullptr); }

  // What a press at point does: "link <url>" for a link, the command the
  // host got for an intent, "error <code>" for an intent that failed with a
  // typed error, "" when nothing takes the press.
  std::string press(const LayoutTree& tree, Point point) {
    const auto action = hitTest(tree, point);
    if (!action) return "";
    if (const auto* link = std::get_if<PressLink>(&*action)) return "link " + link->url.absoluteString();
    MainLoop loop;
    bool done = false;
    std::exception_ptr failure;
    const std::size_t before = host->commands.size();
    std::get<PressIntent>(*action).intent->run(loop, [&](std::exception_ptr error) {
      failure = error;
      done = true;
    });
    for (int round = 0; round < 100 && !done; ++round) loop.poll();
    EXPECT_TRUE(done) << "the intent never finished";
    if (failure) {
      try {
        std::rethrow_exception(failure);
      } catch (const Error& error) {
        return "error " + std::to_string(error.code());
      }
    }
    return host->commands.size() > before ? host->commands.back() : "ran without a command";
  }

  std::string pressAt(const LayoutTree& tree, const LaidOutNode& node) {
    return press(tree, Point{node.frame.midX(), node.frame.midY()});
  }

  std::shared_ptr<RecordingTimerHost> host = std::make_shared<RecordingTimerHost>();
};

inline void expectFrame(const LaidOutNode& node, Rect expected) {
  EXPECT_NEAR(node.frame.minX(), expected.minX(), 1e-9);
  EXPECT_NEAR(node.frame.minY(), expected.minY(), 1e-9);
  EXPECT_NEAR(node.frame.width(), expected.width(), 1e-9);
  EXPECT_NEAR(node.frame.height(), expected.height(), 1e-9);
}

inline void expectColor(const RGBAComponents& actual, const RGBAComponents& expected) {
  EXPECT_NEAR(actual.red, expected.red, 1e-6);
  EXPECT_NEAR(actual.green, expected.green, 1e-6);
  EXPECT_NEAR(actual.blue, expected.blue, 1e-6);
  EXPECT_NEAR(actual.alpha, expected.alpha, 1e-6);
}

// The device RGB components color is drawn in, in the dark scheme.
inline RGBAComponents drawnComponents(const Color& color) {
  return color.resolved(Appearance::dark()).usingColorSpace(ColorSpace::deviceRGB)->components();
}

// The texts of tree, in drawing order.
inline std::vector<std::string> textsOf(const LayoutTree& tree) {
  std::vector<std::string> texts;
  for (const LaidOutNode* node : tree.nodesOfKind(ViewKind::text)) texts.push_back(node->text->string);
  return texts;
}

}  // namespace kestrona::testing
