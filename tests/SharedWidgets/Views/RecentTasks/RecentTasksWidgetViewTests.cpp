#include <gtest/gtest.h>

#include "Platform/View/WidgetCanvas.h"
#include "SharedWidgets/Timelines/RecentTasksTimelineProvider.h"
#include "SharedWidgets/Views/RecentTasks/RecentTasksWidgetView.h"
#include "tests/SharedWidgets/Views/Timer/WidgetViewTestSupport.h"

namespace kestrona {
namespace {

using testing::drawnComponents;
using testing::expectColor;
using testing::expectFrame;
using testing::kNow;
using testing::layOutWidget;
using testing::textsOf;

const ColorTransferable kTaskColor{0.9, 0.3, 0.2, 1};
const ColorTransferable kLightContentColor{0.6, 0.15, 0.1, 1};

RecentTaskVO idleTask(std::string name, double confirmedDuration = 8280) {
  return RecentTaskVO{
      .taskId = "x-kestrona://4F0C7A38-1D52-4B5E-9A0E-6C1F2B3D4E5F/Task/" + name,
      .taskName = name,
      .taskColor = kTaskColor,
      .taskBackgroundColorOptimizedForLightContent = kLightContentColor,
      .confirmedDuration = confirmedDuration,
      .runningEntryBeginTimestamp = std::nullopt,
  };
}

RecentTaskVO runningTask(std::string name) {
  RecentTaskVO task = idleTask(std::move(name));
  task.runningEntryBeginTimestamp = kNow.timeIntervalSince1970() - 65;
  return task;
}

RecentTasksEntry entryOf(int count) {
  RecentTasksEntry entry{.date = kNow, .tasks = {}};
  for (int index = 1; index <= count; ++index) entry.tasks.push_back(idleTask("Task " + std::to_string(index)));
  return entry;
}

Size canvasOf(WidgetFamily family) {
  switch (family) {
    case WidgetFamily::systemSmall: return widgetcanvas::kSmall;
    case WidgetFamily::systemMedium: return widgetcanvas::kMedium;
    case WidgetFamily::systemLarge: return widgetcanvas::kLarge;
  }
  return widgetcanvas::kSmall;
}

LayoutTree layOutRecentTasks(const RecentTasksEntry& entry, WidgetFamily family) {
  return layOutWidget(makeRecentTasksWidgetView(entry, family).body(), canvasOf(family));
}

// The plates' backgrounds, in drawing order (row by row).
std::vector<const LaidOutNode*> plates(const LayoutTree& tree) {
  std::vector<const LaidOutNode*> found;
  for (const LaidOutNode* node : tree.nodesOfKind(ViewKind::shape)) {
    const Shape& shape = node->as<ShapeNode>()->shape;
    if (shape.kind() == Shape::Kind::roundedRectangle && shape.cornerRadius() == 12) found.push_back(node);
  }
  return found;
}

std::vector<std::string> namesOf(const LayoutTree& tree) {
  std::vector<std::string> names;
  for (const LaidOutNode* node : tree.nodesOfKind(ViewKind::text)) {
    if (node->text->font.size == 16) names.push_back(node->text->string);
  }
  return names;
}

TEST(RecentTasksWidgetViewTest, AnEmptyListShowsTheMessageAndNoGrid) {
  for (const WidgetFamily family : allCases<WidgetFamily>) {
    SCOPED_TRACE(rawValue(family));
    const LayoutTree tree = layOutRecentTasks(entryOf(0), family);
    EXPECT_EQ(textsOf(tree), std::vector<std::string>{"No Recent Tasks"});
    const LaidOutNode& message = *tree.findText("No Recent Tasks");
    EXPECT_EQ(message.text->font.family, "Inter");
    EXPECT_DOUBLE_EQ(message.text->font.size, 17);
    EXPECT_EQ(message.text->font.weight, Font::Weight::bold);
    expectColor(message.text->color, {1, 1, 1, 0.6});
    EXPECT_NEAR(message.frame.midX(), canvasOf(family).width / 2, 1e-9);
    EXPECT_TRUE(plates(tree).empty());
    EXPECT_TRUE(tree.nodesOfKind(ViewKind::pressTarget).empty());
  }
}

TEST(RecentTasksWidgetViewTest, SampleTasksInTheSmallFamilyShowConceptAndSketching) {
  const LayoutTree tree = layOutRecentTasks(RecentTasksTimelineProvider::sampleEntry(), WidgetFamily::systemSmall);
  EXPECT_EQ(namesOf(tree), (std::vector<std::string>{"Concept", "Sketching"}));
  EXPECT_NE(tree.findText("2:18"), nullptr);
}

TEST(RecentTasksWidgetViewTest, GridHasTheFamilysCellsAndLeavesMissingTasksEmpty) {
  // Small: one column of two plates, 146 wide, (146 - 8) / 2 high.
  const LayoutTree small = layOutRecentTasks(entryOf(3), WidgetFamily::systemSmall);
  ASSERT_EQ(plates(small).size(), 2u);
  expectFrame(*plates(small)[0], {{12, 12}, {146, 69}});
  expectFrame(*plates(small)[1], {{12, 89}, {146, 69}});

  // Medium, three tasks: the second row holds a plate on the left and an
  // empty cell on the right; cells are (340 - 10) / 2 wide.
  const LayoutTree medium = layOutRecentTasks(entryOf(3), WidgetFamily::systemMedium);
  EXPECT_EQ(namesOf(medium), (std::vector<std::string>{"Task 1", "Task 2", "Task 3"}));
  const auto mediumPlates = plates(medium);
  ASSERT_EQ(mediumPlates.size(), 3u);
  expectFrame(*mediumPlates[0], {{12, 12}, {165, 69}});
  expectFrame(*mediumPlates[1], {{187, 12}, {165, 69}});
  expectFrame(*mediumPlates[2], {{12, 89}, {165, 69}});

  // A single task takes half of the row, not the whole.
  const LayoutTree single = layOutRecentTasks(entryOf(1), WidgetFamily::systemMedium);
  expectFrame(*plates(single).at(0), {{12, 12}, {165, 69}});

  // Large, nine tasks: eight plates in four rows; the ninth is not shown.
  const LayoutTree large = layOutRecentTasks(entryOf(9), WidgetFamily::systemLarge);
  const auto largePlates = plates(large);
  ASSERT_EQ(largePlates.size(), 8u);
  EXPECT_EQ(namesOf(large).back(), "Task 8");
  EXPECT_EQ(large.findText("Task 9"), nullptr);
  expectFrame(*largePlates[7], {{187, 286.5}, {165, 83.5}});
}

TEST(RecentTasksWidgetViewTest, IdlePlateShowsHoursAndMinutesAndAPlaySignInTheTaskColour) {
  const LayoutTree tree =
      layOutRecentTasks(RecentTasksEntry{.date = kNow, .tasks = {idleTask("Concept")}}, WidgetFamily::systemMedium);
  const LaidOutNode& plate = *plates(tree).at(0);
  expectColor(*plate.color, {1, 1, 1, 0.1});
  EXPECT_EQ(plate.as<ShapeNode>()->shape.style(), RoundedCornerStyle::continuous);

  const LaidOutNode& name = *tree.findText("Concept");
  EXPECT_EQ(name.text->font.family, "Inter");
  EXPECT_EQ(name.text->font.weight, Font::Weight::bold);
  EXPECT_EQ(name.text->lineLimit, 1);
  expectColor(name.text->color, {1, 1, 1, 1});
  // Padded by 10 in the plate's top leading corner.
  EXPECT_DOUBLE_EQ(name.frame.minX(), plate.frame.minX() + 10);
  EXPECT_DOUBLE_EQ(name.frame.minY(), plate.frame.minY() + 10);

  // 8280 seconds.
  const LaidOutNode& time = *tree.findText("2:18");
  EXPECT_EQ(time.text->font.family, "Quicksand");
  EXPECT_DOUBLE_EQ(time.text->font.size, 14);
  EXPECT_EQ(time.text->font.weight, Font::Weight::semibold);
  expectColor(time.text->color, {1, 1, 1, 0.6});
  // 4 points below the 19.2-point name line.
  EXPECT_GE(time.frame.minY(), name.frame.maxY() + 4 - 1e-9);

  const auto images = tree.nodesOfKind(ViewKind::image);
  ASSERT_EQ(images.size(), 1u);
  EXPECT_EQ(images[0]->as<ImageNode>()->symbol, TemplateSymbol::smallPlay);
  expectColor(*images[0]->color, drawnComponents(kTaskColor.color()));
  EXPECT_DOUBLE_EQ(images[0]->frame.minX(), time.frame.maxX() + 4);
}

TEST(RecentTasksWidgetViewTest, RunningPlateCountsFromTheEntrysBeginAndShowsAPauseSign) {
  const LayoutTree tree =
      layOutRecentTasks(RecentTasksEntry{.date = kNow, .tasks = {runningTask("Sketching")}}, WidgetFamily::systemSmall);
  // Begun 65 seconds ago; its 8280 confirmed seconds are not added.
  const LaidOutNode* time = tree.findText("1:05");
  ASSERT_NE(time, nullptr);
  EXPECT_TRUE(std::holds_alternative<LiveTimer>(time->as<TextNode>()->content));
  EXPECT_EQ(time->text->font.weight, Font::Weight::bold);
  expectColor(time->text->color, {1, 1, 1, 1});
  expectColor(*plates(tree).at(0)->color, drawnComponents(kLightContentColor.color()));

  EXPECT_TRUE(tree.nodesOfKind(ViewKind::image).empty());
  std::vector<const LaidOutNode*> bars;
  for (const LaidOutNode* node : tree.nodesOfKind(ViewKind::shape)) {
    if (node->as<ShapeNode>()->shape.cornerRadius() == 1.5) bars.push_back(node);
  }
  ASSERT_EQ(bars.size(), 2u);
  EXPECT_DOUBLE_EQ(bars[0]->frame.width(), 4);
  EXPECT_DOUBLE_EQ(bars[0]->frame.height(), 12);
  EXPECT_DOUBLE_EQ(bars[1]->frame.minX() - bars[0]->frame.maxX(), 2);
  EXPECT_DOUBLE_EQ(bars[0]->frame.minX(), time->frame.maxX() + 4);
  expectColor(*bars[1]->color, {1, 1, 1, 1});
}

class RecentTasksPressTest : public testing::PressingTest {};

TEST_F(RecentTasksPressTest, PlatesPauseTheRunningTaskAndStartAnyOther) {
  const RecentTasksEntry entry{.date = kNow, .tasks = {runningTask("Sketching"), idleTask("Concept")}};
  const LayoutTree tree = layOutRecentTasks(entry, WidgetFamily::systemMedium);
  const auto shown = plates(tree);
  ASSERT_EQ(shown.size(), 2u);
  EXPECT_EQ(pressAt(tree, *shown[0]), "pause");
  EXPECT_EQ(pressAt(tree, *shown[1]), "start " + entry.tasks[1].taskId);
  EXPECT_FALSE(recentTaskAppIntent(entry.tasks[0]).taskId.value().has_value());
  // The empty cells and the margin open the application.
  EXPECT_EQ(press(tree, {100, 120}), "link deeplink-openApp://");
  EXPECT_EQ(press(tree, {5, 5}), "link deeplink-openApp://");
}

TEST_F(RecentTasksPressTest, WithoutPlateActionPlatesOnlyOpenTheApplication) {
  const RecentTasksWidgetView view{
      .entry = entryOf(2), .plateAction = std::nullopt, .family = WidgetFamily::systemSmall};
  const LayoutTree tree = layOutWidget(view.body(), widgetcanvas::kSmall);
  EXPECT_TRUE(tree.nodesOfKind(ViewKind::pressTarget).empty());
  EXPECT_EQ(pressAt(tree, *plates(tree).at(0)), "link deeplink-openApp://");
}

}  // namespace
}  // namespace kestrona
