#include <gtest/gtest.h>

#include "Platform/Time/Clock.h"
#include "Platform/View/WidgetCanvas.h"
#include "SharedWidgets/Timelines/TimerWidgetTimelineProvider.h"
#include "SharedWidgets/Views/Timer/DurationView.h"
#include "SharedWidgets/Views/Timer/TimerWidgetView.h"
#include "tests/SharedWidgets/Timelines/TimelineTestSupport.h"
#include "tests/SharedWidgets/Views/Timer/WidgetViewTestSupport.h"

namespace kestrona {
namespace {

using testing::drawnComponents;
using testing::expectColor;
using testing::expectFrame;
using testing::kNow;
using testing::layOutWidget;
using testing::textsOf;

const Color kTaskColor = Color::deviceRGB(0.2, 0.5, 0.9, 1);
const Color kLightContentColor = Color::deviceRGB(0.1, 0.3, 0.6, 1);
constexpr char kTaskId[] = "x-kestrona://4F0C7A38-1D52-4B5E-9A0E-6C1F2B3D4E5F/Task/p7";

TimerWidgetEntry finishedEntry() {
  return TimerWidgetEntry{
      .date = kNow,
      .taskId = kTaskId,
      .taskName = "Concept",
      .taskColor = kTaskColor,
      .startButtonBackgroundOpacity = 0.25F,
      .taskBackgroundColorOptimizedForLightContent = kLightContentColor,
      .folderName = "Design",
      .timeEntryBegin = kNow.addingTimeInterval(-7200),
      .timeEntryEnd = kNow.addingTimeInterval(-7200 + 3725),
  };
}

TimerWidgetEntry runningEntry() {
  TimerWidgetEntry entry = finishedEntry();
  entry.timeEntryBegin = kNow.addingTimeInterval(-3725);
  entry.timeEntryEnd = std::nullopt;
  return entry;
}

Size canvasOf(WidgetFamily family) {
  return family == WidgetFamily::systemSmall ? widgetcanvas::kSmall : widgetcanvas::kMedium;
}

LayoutTree layOutTimer(const TimerWidgetEntry& entry, WidgetFamily family) {
  return layOutWidget(makeTimerWidgetView(entry, family).body(), canvasOf(family));
}

// The placeholder entry of a provider that finds no timer file.
TimerWidgetEntry placeholderEntry() {
  auto file = std::make_shared<testing::InMemoryWidgetFile>();
  return TimerWidgetTimelineProvider(file).placeholderEntry();
}

// The image of symbol, and the scale it is drawn at (the product of the
// scale effects above it).
struct DrawnImage {
  const LaidOutNode* node = nullptr;
  double scale = 1;
};

DrawnImage imageOf(const LayoutTree& tree, TemplateSymbol symbol) {
  for (const LaidOutNode* node : tree.nodesOfKind(ViewKind::image)) {
    if (node->as<ImageNode>()->symbol != symbol) continue;
    DrawnImage image{node, 1};
    for (const LaidOutNode* ancestor : tree.ancestry(*node)) {
      if (const auto* scale = ancestor->as<ScaleNode>()) image.scale *= scale->factor;
    }
    return image;
  }
  ADD_FAILURE() << "no image " << templateSymbolName(symbol);
  return {};
}

// The fill behind the round button.
const LaidOutNode* buttonBackground(const LayoutTree& tree) {
  for (const LaidOutNode* node : tree.nodesOfKind(ViewKind::shape)) {
    if (node->as<ShapeNode>()->shape.kind() == Shape::Kind::circle) return node;
  }
  return nullptr;
}

// The fill of taskColor at 0.3 behind the content of a running timer.
const LaidOutNode* runningLayer(const LayoutTree& tree) {
  for (const LaidOutNode* node : tree.nodesOfKind(ViewKind::shape)) {
    if (node->as<ShapeNode>()->shape.kind() == Shape::Kind::rectangle && node->color &&
        std::abs(node->color->alpha - 0.3) < 1e-9)
      return node;
  }
  return nullptr;
}

const LaidOutNode& textNode(const LayoutTree& tree, std::string_view string) {
  const LaidOutNode* node = tree.findText(string);
  if (node == nullptr) throw std::runtime_error("no text " + std::string(string));
  return *node;
}

void expectFont(const LaidOutNode& node, std::string_view family, double size, Font::Weight weight) {
  SCOPED_TRACE(node.text->string);
  EXPECT_EQ(node.text->font.family, family);
  EXPECT_DOUBLE_EQ(node.text->font.size, size);
  EXPECT_EQ(node.text->font.weight, weight);
}

TEST(TimerWidgetViewTest, PlaceholderShowsTheTaskNoFolderZeroAndThePlaySign) {
  const LayoutTree tree = layOutTimer(placeholderEntry(), WidgetFamily::systemSmall);

  EXPECT_EQ(textsOf(tree), (std::vector<std::string>{"Task", "0:00:00"}));
  expectFont(textNode(tree, "Task"), "Inter", 17, Font::Weight::bold);
  expectColor(textNode(tree, "Task").text->color, {1, 1, 1, 1});
  expectFont(textNode(tree, "0:00:00"), "Quicksand", 26, Font::Weight::semibold);

  // The play sign shows; the pause sign is there, shrunk to nothing.
  const DrawnImage play = imageOf(tree, TemplateSymbol::play);
  ASSERT_NE(play.node, nullptr);
  EXPECT_DOUBLE_EQ(play.node->as<ImageNode>()->edge, 36);
  EXPECT_DOUBLE_EQ(play.scale, 1);
  expectColor(*play.node->color, {1, 1, 1, 1});
  EXPECT_LT(imageOf(tree, TemplateSymbol::pause).scale, 1e-6);

  EXPECT_EQ(runningLayer(tree), nullptr);
  // The placeholder's opacity of 0.5 reaches the button.
  ASSERT_NE(buttonBackground(tree), nullptr);
  EXPECT_NEAR(buttonBackground(tree)->color->alpha, 0.5, 1e-6);
  // The widget is drawn on black, from edge to edge.
  const LaidOutNode& backdrop = *tree.nodesOfKind(ViewKind::shape)[0];
  expectFrame(backdrop, {{0, 0}, widgetcanvas::kSmall});
  expectColor(*backdrop.color, {0, 0, 0, 1});
}

TEST(TimerWidgetViewTest, SmallFamilyLaysTextsAndButtonOnTopAndTheDurationAtTheBottom) {
  const LayoutTree tree = layOutTimer(finishedEntry(), WidgetFamily::systemSmall);
  EXPECT_EQ(textsOf(tree), (std::vector<std::string>{"Design", "Concept", "1:02:05"}));

  // Padding: top 13, leading 13, bottom 16, trailing 16. The texts share
  // the row with the 36-point button and 8 points of spacing: 97 wide.
  const LaidOutNode& folder = textNode(tree, "Design");
  expectFont(folder, "Inter", 10, Font::Weight::bold);
  expectColor(folder.text->color, {1, 1, 1, 0.55});
  EXPECT_DOUBLE_EQ(folder.frame.minX(), 13);
  EXPECT_DOUBLE_EQ(folder.frame.minY(), 13);
  const LaidOutNode& task = textNode(tree, "Concept");
  expectFont(task, "Inter", 17, Font::Weight::bold);
  // Folder line 12 high, then spacing 2.
  EXPECT_DOUBLE_EQ(task.frame.minX(), 13);
  EXPECT_DOUBLE_EQ(task.frame.minY(), 27);

  const LaidOutNode* pressTarget = tree.nodesOfKind(ViewKind::pressTarget).at(0);
  expectFrame(*pressTarget, {{118, 13}, {36, 36}});

  // The duration: on the bottom row, at the leading edge, 26 points.
  const LaidOutNode& duration = textNode(tree, "1:02:05");
  expectFont(duration, "Quicksand", 26, Font::Weight::semibold);
  expectColor(duration.text->color, {1, 1, 1, 1});
  EXPECT_DOUBLE_EQ(duration.frame.minX(), 13);
  EXPECT_NEAR(duration.frame.maxY(), 154, 1e-9);
  EXPECT_EQ(duration.text->lineLimit, 1);
}

TEST(TimerWidgetViewTest, MediumFamilyPutsTheDurationUnderTheButtonAtTheTrailingEdge) {
  const LayoutTree tree = layOutTimer(finishedEntry(), WidgetFamily::systemMedium);
  expectFont(textNode(tree, "Design"), "Inter", 13, Font::Weight::bold);
  expectFont(textNode(tree, "Concept"), "Inter", 24, Font::Weight::bold);
  EXPECT_DOUBLE_EQ(textNode(tree, "Design").frame.minX(), 16);
  EXPECT_DOUBLE_EQ(textNode(tree, "Design").frame.minY(), 15);

  // Padding: top 15, trailing 20; the button is 48 points.
  const LaidOutNode* pressTarget = tree.nodesOfKind(ViewKind::pressTarget).at(0);
  expectFrame(*pressTarget, {{296, 15}, {48, 48}});
  EXPECT_DOUBLE_EQ(imageOf(tree, TemplateSymbol::play).node->as<ImageNode>()->edge, 48);

  // 34 points, flush with the trailing padding, 2 points under the button.
  const LaidOutNode& duration = textNode(tree, "1:02:05");
  expectFont(duration, "Quicksand", 34, Font::Weight::semibold);
  EXPECT_NEAR(duration.frame.maxX(), 344, 1e-9);
  EXPECT_NEAR(duration.frame.minY(), 65, 1e-9);
}

TEST(TimerWidgetViewTest, ATaskWithoutFolderTakesTheFirstLine) {
  TimerWidgetEntry entry = finishedEntry();
  entry.folderName = std::nullopt;
  const LayoutTree tree = layOutTimer(entry, WidgetFamily::systemSmall);
  EXPECT_EQ(textsOf(tree), (std::vector<std::string>{"Concept", "1:02:05"}));
  EXPECT_DOUBLE_EQ(textNode(tree, "Concept").frame.minY(), 13);
}

TEST(TimerWidgetViewTest, LongTaskNamesShrinkToFourFifthsAndThenTruncateOnOneLine) {
  TimerWidgetEntry entry = finishedEntry();
  // 97 points hold 11 characters at 17 points, 14 at 0.8 of it.
  entry.taskName = "Concept sketch";
  const LayoutTree shrunkTree = layOutTimer(entry, WidgetFamily::systemSmall);
  const LaidOutNode& shrunk = textNode(shrunkTree, "Concept sketch");
  EXPECT_LT(shrunk.text->scale, 1);
  EXPECT_GE(shrunk.text->scale, 0.8);
  EXPECT_FALSE(shrunk.text->isTruncated);

  entry.taskName = "Concept sketches for the spring campaign";
  const LayoutTree cutTree = layOutTimer(entry, WidgetFamily::systemSmall);
  const LaidOutNode& cut = textNode(cutTree, *entry.taskName);
  EXPECT_DOUBLE_EQ(cut.text->scale, 0.8);
  EXPECT_TRUE(cut.text->isTruncated);
  EXPECT_EQ(cut.text->lineCount, 1);
  EXPECT_LE(cut.frame.maxX(), 110 + 1e-9);
}

TEST(TimerWidgetViewTest, RunningTimerStandsOnTheTaskColourAndShowsTheLiveTime) {
  const LayoutTree tree = layOutTimer(runningEntry(), WidgetFamily::systemSmall);
  const LaidOutNode* layer = runningLayer(tree);
  ASSERT_NE(layer, nullptr);
  expectFrame(*layer, {{0, 0}, widgetcanvas::kSmall});
  expectColor(*layer->color, {0.2, 0.5, 0.9, 0.3});
  // A live timer from the begin, read at the layout's moment.
  const LaidOutNode& duration = textNode(tree, "1:02:05");
  EXPECT_TRUE(std::holds_alternative<LiveTimer>(duration.as<TextNode>()->content));
}

TEST(TimerWidgetViewTest, ButtonShowsPauseOnAFilledDiscWhileRunningAndPlayOtherwise) {
  for (const WidgetFamily family : {WidgetFamily::systemSmall, WidgetFamily::systemMedium}) {
    SCOPED_TRACE(rawValue(family));
    const LayoutTree running = layOutTimer(runningEntry(), family);
    const DrawnImage grownPlay = imageOf(running, TemplateSymbol::play);
    EXPECT_DOUBLE_EQ(grownPlay.scale, 5);
    expectColor(*grownPlay.node->color, drawnComponents(kLightContentColor));
    const DrawnImage pause = imageOf(running, TemplateSymbol::pause);
    EXPECT_DOUBLE_EQ(pause.scale, 1);
    expectColor(*pause.node->color, {1, 1, 1, 1});

    const LayoutTree idle = layOutTimer(finishedEntry(), family);
    const DrawnImage play = imageOf(idle, TemplateSymbol::play);
    EXPECT_DOUBLE_EQ(play.scale, 1);
    expectColor(*play.node->color, drawnComponents(kTaskColor));
    // The play sign sits 3 points right of the button's centre line.
    const LaidOutNode* target = idle.nodesOfKind(ViewKind::pressTarget).at(0);
    EXPECT_NEAR(play.node->frame.midX() - target->frame.midX(), 1.5, 1e-9);
    EXPECT_LT(imageOf(idle, TemplateSymbol::pause).scale, 1e-6);

    // The disc: the task colour at the entry's opacity, clipped round.
    for (const LayoutTree* tree : {&running, &idle}) {
      const LaidOutNode* disc = buttonBackground(*tree);
      ASSERT_NE(disc, nullptr);
      expectColor(*disc->color, {0.2, 0.5, 0.9, 0.25});
      EXPECT_EQ(tree->nodesOfKind(ViewKind::clip).size(), 1u);
    }
  }
}

TEST(TimerWidgetViewTest, NoButtonOpacityMeansATransparentButton) {
  TimerWidgetEntry entry = finishedEntry();
  entry.startButtonBackgroundOpacity = std::nullopt;
  EXPECT_DOUBLE_EQ(buttonBackground(layOutTimer(entry, WidgetFamily::systemSmall))->color->alpha, 0);

  // An opacity out of range from a damaged file is held to 0...1.
  entry.startButtonBackgroundOpacity = 7.5F;
  EXPECT_DOUBLE_EQ(buttonBackground(layOutTimer(entry, WidgetFamily::systemSmall))->color->alpha, 1);
  entry.startButtonBackgroundOpacity = -1.0F;
  EXPECT_DOUBLE_EQ(buttonBackground(layOutTimer(entry, WidgetFamily::systemSmall))->color->alpha, 0);
}

class TimerWidgetPressTest : public testing::PressingTest {};

TEST_F(TimerWidgetPressTest, RunningButtonPausesWithoutATask) {
  const LayoutTree tree = layOutTimer(runningEntry(), WidgetFamily::systemSmall);
  EXPECT_EQ(pressAt(tree, *tree.nodesOfKind(ViewKind::pressTarget).at(0)), "pause");
  EXPECT_FALSE(timerWidgetAppIntent(runningEntry()).taskId.value().has_value());
}

TEST_F(TimerWidgetPressTest, IdleButtonStartsTheEntrysTask) {
  for (const WidgetFamily family : {WidgetFamily::systemSmall, WidgetFamily::systemMedium}) {
    const LayoutTree tree = layOutTimer(finishedEntry(), family);
    EXPECT_EQ(pressAt(tree, *tree.nodesOfKind(ViewKind::pressTarget).at(0)), std::string("start ") + kTaskId);
  }
}

TEST_F(TimerWidgetPressTest, IdleButtonWithoutTaskStillOffersStartAndTheIntentFails) {
  TimerWidgetEntry entry = finishedEntry();
  entry.taskId = std::nullopt;
  const LayoutTree tree = layOutTimer(entry, WidgetFamily::systemSmall);
  EXPECT_EQ(pressAt(tree, *tree.nodesOfKind(ViewKind::pressTarget).at(0)),
            "error " + std::to_string(static_cast<int>(TimerWidgetAppIntent::AppIntentErrorCode::taskIdNotPassed)));
  EXPECT_EQ(timerWidgetAppIntent(entry).action.value(), TimerActionType::start);
}

TEST_F(TimerWidgetPressTest, APressBesideTheButtonOpensTheApplication) {
  const LayoutTree tree = layOutTimer(runningEntry(), WidgetFamily::systemMedium);
  EXPECT_EQ(press(tree, {20, 150}), "link deeplink-openApp://");
  EXPECT_EQ(pressAt(tree, textNode(tree, "Concept")), "link deeplink-openApp://");
  // The corner of the button's square lies outside its circle.
  const Rect button = tree.nodesOfKind(ViewKind::pressTarget).at(0)->frame;
  EXPECT_EQ(press(tree, {button.minX() + 1, button.minY() + 1}), "link deeplink-openApp://");
}

TEST_F(TimerWidgetPressTest, WithoutMainActionTheButtonIsAPictureThatOpensTheApplication) {
  const TimerWidgetView view{.entry = runningEntry(),
                             .mainAction = std::nullopt,
                             .bundle = &WidgetAssetCatalog::module(),
                             .family = WidgetFamily::systemMedium};
  const LayoutTree tree = layOutWidget(view.body(), widgetcanvas::kMedium);
  EXPECT_TRUE(tree.nodesOfKind(ViewKind::pressTarget).empty());
  const auto images = tree.nodesOfKind(ViewKind::image);
  ASSERT_EQ(images.size(), 1u);
  EXPECT_EQ(images[0]->as<ImageNode>()->symbol, TemplateSymbol::pause);
  expectColor(*images[0]->color, drawnComponents(kTaskColor));
  // Inset by 3 at the top and leading side, at the top trailing corner.
  expectFrame(*images[0], {{296, 18}, {48, 48}});
  EXPECT_EQ(pressAt(tree, *images[0]), "link deeplink-openApp://");
  // The duration follows the picture with no gap.
  EXPECT_NEAR(textNode(tree, "1:02:05").frame.minY(), 66, 1e-9);

  const TimerWidgetView idle{.entry = finishedEntry(),
                             .mainAction = std::nullopt,
                             .bundle = &WidgetAssetCatalog::module(),
                             .family = WidgetFamily::systemSmall};
  const LayoutTree idleTree = layOutWidget(idle.body(), widgetcanvas::kSmall);
  const auto idleImages = idleTree.nodesOfKind(ViewKind::image);
  ASSERT_EQ(idleImages.size(), 1u);
  EXPECT_EQ(idleImages[0]->as<ImageNode>()->symbol, TemplateSymbol::play);
}

class DurationViewTest : public ::testing::Test {
 protected:
  std::string durationText(const DurationView& view) {
    const LayoutTree tree = layOutWidget(view.body(), widgetcanvas::kSmall);
    const auto texts = textsOf(tree);
    return texts.empty() ? "<nothing>" : texts.at(0);
  }

  ManualClock clock{kNow};
  ScopedClock scopedClock{clock};
};

TEST_F(DurationViewTest, FinishedEntryShowsItsLengthAndNeverANegativeOne) {
  DurationView view{
      .isRunning = false, .begin = kNow.addingTimeInterval(-90000), .end = kNow.addingTimeInterval(-89999.5)};
  EXPECT_EQ(durationText(view), "0:00:00");
  view.end = kNow.addingTimeInterval(-90000 + 3725.9);
  EXPECT_EQ(durationText(view), "1:02:05");
  // An end before the begin is the begin.
  view.end = kNow.addingTimeInterval(-99999);
  EXPECT_EQ(durationText(view), "0:00:00");
  // More than a day: the hours go on counting.
  view.end = kNow;
  EXPECT_EQ(durationText(view), "25:00:00");
}

TEST_F(DurationViewTest, MissingDatesOfAFinishedEntryAreThePresentMoment) {
  EXPECT_EQ(durationText(DurationView{}), "0:00:00");
  EXPECT_EQ(durationText(DurationView{.begin = kNow.addingTimeInterval(-65), .end = std::nullopt}), "0:01:05");
  // An end without a begin lies before the present moment: zero.
  EXPECT_EQ(durationText(DurationView{.begin = std::nullopt, .end = kNow.addingTimeInterval(-65)}), "0:00:00");
}

TEST_F(DurationViewTest, RunningEntryCountsUpFromItsBeginAndWithoutOneShowsNothing) {
  const DurationView running{.isRunning = true, .begin = kNow.addingTimeInterval(-65), .end = kNow};
  EXPECT_EQ(durationText(running), "1:05");
  EXPECT_EQ(durationText(DurationView{.isRunning = true, .begin = std::nullopt, .end = std::nullopt}), "<nothing>");
}

TEST_F(DurationViewTest, LongDurationsShrinkToHalfBeforeTheyTruncate) {
  // 13 characters at 26 points need 169 points; the frame gives 141.
  const DurationView view{.isRunning = false, .begin = Date(0), .end = Date(3600.0 * 1000000)};
  const LayoutTree tree = layOutWidget(view.body().frame(141, std::nullopt), widgetcanvas::kSmall);
  const LaidOutNode& text = *tree.nodesOfKind(ViewKind::text).at(0);
  EXPECT_EQ(text.text->string, "1000000:00:00");
  EXPECT_LT(text.text->scale, 1);
  EXPECT_GE(text.text->scale, 0.5);
  EXPECT_FALSE(text.text->isTruncated);
}

}  // namespace
}  // namespace kestrona
