#include "Platform/View/HitTesting.h"

#include <gtest/gtest.h>

#include <string>

#include "Platform/Intents/AppIntent.h"
#include "tests/Platform/View/FixedWidthMeasurer.h"

namespace kestrona {
namespace {

struct NoteIntent {
  static std::string_view title() { return "Note"; }
  static std::string_view description() { return "Does nothing"; }
  asio::awaitable<IntentResult> perform() const { return done(); }
  static asio::awaitable<IntentResult> done() { co_return IntentResult::result(); }
};

const URL kOpenApp = *URL::fromString("deeplink-openApp://");

LayoutTree layOut(const View& root, Size canvas) {
  static const testing::FixedWidthMeasurer measurer;
  static const FontCatalog catalog({"Inter"});
  return layout(root, canvas, measurer, catalog, LayoutEnvironment{});
}

// A view of size filled with white that runs an intent when pressed.
View target(double width, double height) {
  return ColorFill(Color::white()).frame(width, height).pressTarget(AnyAppIntent(NoteIntent{}));
}

// What a press at point takes: "target N" for the N-th press target in
// drawing order, "link <url>" or "widget <url>" for a link, "" for nothing.
std::string pressed(const LayoutTree& tree, Point point) {
  const auto action = hitTest(tree, point);
  if (!action) return "";
  if (const auto* link = std::get_if<PressLink>(&*action)) {
    return (link->isWidgetURL ? "widget " : "link ") + link->url.absoluteString();
  }
  const auto targets = tree.nodesOfKind(ViewKind::pressTarget);
  const auto found = std::find(targets.begin(), targets.end(), std::get<PressIntent>(*action).target);
  return "target " + std::to_string(found - targets.begin());
}

TEST(HitTestingTest, APressOnTheRoundButtonRunsItsIntentAndElsewhereFollowsTheWidgetsLink) {
  const View button = target(36, 36).clipShape(Shape::circle());
  const auto tree =
      layOut(HStack(VerticalAlignment::top, 0, {Text("Concept"), Spacer(), button}).padding(13).widgetURL(kOpenApp),
             {170, 170});
  const Rect frame = tree.nodesOfKind(ViewKind::pressTarget)[0]->frame;
  EXPECT_EQ(pressed(tree, {frame.midX(), frame.midY()}), "target 0");
  EXPECT_EQ(pressed(tree, {20, 150}), "widget deeplink-openApp://");
  // The button's corner lies outside its circle.
  EXPECT_EQ(pressed(tree, {frame.minX() + 1, frame.minY() + 1}), "widget deeplink-openApp://");
}

TEST(HitTestingTest, TheInnermostAndTopmostTargetTakesThePress) {
  const View nested =
      ZStack({ColorFill(Color::black()).frame(100, 100), target(20, 20)}).pressTarget(AnyAppIntent(NoteIntent{}));
  const auto tree = layOut(nested, {100, 100});
  EXPECT_EQ(pressed(tree, {50, 50}), "target 1");
  EXPECT_EQ(pressed(tree, {5, 5}), "target 0");

  const auto layered = layOut(ZStack(Alignment::topLeading(), {target(60, 60), target(40, 40)}), {60, 60});
  EXPECT_EQ(pressed(layered, {10, 10}), "target 1");
  EXPECT_EQ(pressed(layered, {50, 50}), "target 0");
}

TEST(HitTestingTest, RegionLinksTakeWhatNoTargetTakesAndTheWidgetsLinkIsTheOutermost) {
  const URL reports = *URL::fromString("deeplink-openWeeklyReports://");
  const auto regions =
      layOut(VStack(HorizontalAlignment::center, 0,
                    {ColorFill(Color::white()).frame(100, 50).link(reports), ColorFill(Color::black()).frame(100, 50)}),
             {100, 100});
  EXPECT_EQ(pressed(regions, {50, 25}), "link deeplink-openWeeklyReports://");
  // Without a widget link, a press that nothing takes does nothing.
  EXPECT_EQ(pressed(regions, {50, 75}), "");
  EXPECT_FALSE(widgetURL(regions).has_value());

  const URL inner = *URL::fromString("deeplink-toggleTimer://");
  EXPECT_EQ(widgetURL(layOut(Text("x").widgetURL(inner).padding(4).widgetURL(kOpenApp), {50, 50})), kOpenApp);
}

}  // namespace
}  // namespace kestrona
