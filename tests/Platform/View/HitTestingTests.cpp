#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Platform/Intents/AppIntent.h"
#include "Platform/RunLoop/Async.h"
#include "Platform/View/HitTesting.h"
#include "tests/Platform/View/FixedWidthMeasurer.h"

namespace kestrona {
namespace {

// Notes its label in a shared log when performed.
struct RecordingIntent {
  static std::string_view title() { return "Record"; }
  static std::string_view description() { return "Notes that it ran"; }

  asio::awaitable<IntentResult> perform() const { return record(log, label); }

  static asio::awaitable<IntentResult> record(std::shared_ptr<std::vector<std::string>> log, std::string label) {
    log->push_back(label);
    co_return IntentResult::result();
  }

  std::shared_ptr<std::vector<std::string>> log;
  std::string label;
};

LayoutTree layOut(const View& root, Size canvas) {
  static const testing::FixedWidthMeasurer measurer;
  static const FontCatalog catalog({"Inter"});
  return layout(root, canvas, measurer, catalog, LayoutEnvironment{});
}

class HitTestingTest : public ::testing::Test {
 protected:
  AnyAppIntent intent(std::string label) const { return AnyAppIntent(RecordingIntent{log, std::move(label)}); }

  // The label of the intent a press at point runs, or "" when it runs none.
  std::string pressedLabel(const LayoutTree& tree, Point point) {
    const auto action = hitTest(tree, point);
    if (!action || !std::holds_alternative<PressIntent>(*action)) return "";
    MainLoop loop;
    bool done = false;
    std::exception_ptr failure;
    const std::size_t before = log->size();
    std::get<PressIntent>(*action).intent->run(loop, [&](std::exception_ptr error) {
      failure = error;
      done = true;
    });
    for (int round = 0; round < 100 && !done; ++round) loop.poll();
    EXPECT_TRUE(done);
    EXPECT_EQ(failure, nullptr);
    return log->size() > before ? log->back() : "ran without a label";
  }

  std::shared_ptr<std::vector<std::string>> log = std::make_shared<std::vector<std::string>>();
  const URL openApp = *URL::fromString("deeplink-openApp://");
};

TEST_F(HitTestingTest, APressOnTheButtonRunsItsIntentAndElsewhereFollowsTheWidgetsLink) {
  const View button = ColorFill(Color::white()).frame(36, 36).clipShape(Shape::circle()).pressTarget(intent("start"));
  const View widget =
      HStack(VerticalAlignment::top, 0, {Text("Concept"), Spacer(), button}).padding(13).widgetURL(openApp);
  const auto tree = layOut(widget, {170, 170});

  const LaidOutNode& target = *tree.nodesOfKind(ViewKind::pressTarget)[0];
  EXPECT_EQ(pressedLabel(tree, {target.frame.midX(), target.frame.midY()}), "start");

  const auto outside = hitTest(tree, {20, 150});
  ASSERT_TRUE(outside.has_value());
  ASSERT_TRUE(std::holds_alternative<PressLink>(*outside));
  EXPECT_EQ(std::get<PressLink>(*outside).url, openApp);
  EXPECT_TRUE(std::get<PressLink>(*outside).isWidgetURL);

  // The round button's corner lies outside its circle.
  const auto corner = hitTest(tree, {target.frame.minX() + 1, target.frame.minY() + 1});
  ASSERT_TRUE(corner.has_value());
  EXPECT_TRUE(std::holds_alternative<PressLink>(*corner));
}

TEST_F(HitTestingTest, TheInnermostAndTopmostTargetTakesThePress) {
  const View inner = ColorFill(Color::white()).frame(20, 20).pressTarget(intent("inner"));
  const View outer = ZStack({ColorFill(Color::black()).frame(100, 100), inner}).pressTarget(intent("outer"));
  const auto nested = layOut(outer, {100, 100});
  EXPECT_EQ(pressedLabel(nested, {50, 50}), "inner");
  EXPECT_EQ(pressedLabel(nested, {5, 5}), "outer");

  const View lower = ColorFill(Color::black()).frame(60, 60).pressTarget(intent("lower"));
  const View upper = ColorFill(Color::white()).frame(40, 40).pressTarget(intent("upper"));
  const auto layered = layOut(ZStack(Alignment::topLeading(), {lower, upper}), {60, 60});
  EXPECT_EQ(pressedLabel(layered, {10, 10}), "upper");
  EXPECT_EQ(pressedLabel(layered, {50, 50}), "lower");
}

TEST_F(HitTestingTest, RegionLinksAreFollowedWhereNoTargetTakesThePress) {
  const URL reports = *URL::fromString("deeplink-openWeeklyReports://");
  const View tree =
      VStack(HorizontalAlignment::center, 0,
             {ColorFill(Color::white()).frame(100, 50).link(reports), ColorFill(Color::black()).frame(100, 50)});
  const auto laidOut = layOut(tree, {100, 100});
  const auto top = hitTest(laidOut, {50, 25});
  ASSERT_TRUE(top.has_value());
  EXPECT_EQ(std::get<PressLink>(*top).url, reports);
  EXPECT_FALSE(std::get<PressLink>(*top).isWidgetURL);
  // Without a widget link, a press that nothing takes does nothing.
  EXPECT_FALSE(hitTest(laidOut, {50, 75}).has_value());
  EXPECT_FALSE(widgetURL(laidOut).has_value());
}

TEST_F(HitTestingTest, TheWidgetsLinkIsTheOutermostOne) {
  const URL inner = *URL::fromString("deeplink-toggleTimer://");
  const auto tree = layOut(Text("x").widgetURL(inner).padding(4).widgetURL(openApp), {50, 50});
  EXPECT_EQ(widgetURL(tree), openApp);
}

}  // namespace
}  // namespace kestrona
