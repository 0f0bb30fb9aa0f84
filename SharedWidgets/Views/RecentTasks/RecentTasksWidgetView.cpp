#include "SharedWidgets/Views/RecentTasks/RecentTasksWidgetView.h"

#include <vector>

#include "Platform/Foundation/LocalizedString.h"
#include "Platform/Intents/AppIntent.h"
#include "SharedWidgets/Views/RecentTasks/RecentTaskPlateView.h"
#include "SharedWidgets/Views/Timer/WidgetColors.h"
#include "WidgetData/TimerIntent/KestronaWidgetDeepLinkScheme.h"

namespace kestrona {
namespace {

constexpr double kWidgetPadding = 12;
constexpr double kColumnSpacing = 10;
constexpr double kEmptyTextOpacity = 0.6;

View emptyState() {
  return Text(localizedString("widget.recentTasks.empty", "No Recent Tasks",
                              "Recent tasks widget with no tasks to show"))
      .font(Font::system(17, Font::Weight::bold))
      .foregroundColor(withOpacity(Color::white(), kEmptyTextOpacity));
}

View emptyCell() { return EmptyView().frame(FlexibleFrame{.maxWidth = kInfinity, .maxHeight = kInfinity}); }

}  // namespace

RecentTasksGrid RecentTasksGrid::forFamily(WidgetFamily family) {
  switch (family) {
    case WidgetFamily::systemMedium: return RecentTasksGrid{.columns = 2, .rows = 2};
    case WidgetFamily::systemLarge: return RecentTasksGrid{.columns = 2, .rows = 4};
    case WidgetFamily::systemSmall: break;
  }
  return RecentTasksGrid{.columns = 1, .rows = 2};
}

View RecentTasksWidgetView::body() const {
  View content;
  if (entry.tasks.empty()) {
    content = emptyState();
  } else {
    const RecentTasksGrid grid = RecentTasksGrid::forFamily(family);
    const std::optional<double> spacing = grid.columns > 1 ? std::optional<double>(kColumnSpacing) : 0.0;
    std::vector<View> rows;
    for (int row = 0; row < grid.rows; ++row) {
      std::vector<View> cells;
      for (int column = 0; column < grid.columns; ++column) {
        const auto index = static_cast<std::size_t>(row * grid.columns + column);
        if (index >= entry.tasks.size()) {
          cells.push_back(emptyCell());
          continue;
        }
        const RecentTaskVO& task = entry.tasks[index];
        const View plate = RecentTaskPlateView{.task = task, .bundle = &WidgetAssetCatalog::module()}.body();
        cells.push_back(plateAction ? (*plateAction)(plate, task) : plate);
      }
      rows.push_back(HStack(VerticalAlignment::center, spacing, std::move(cells)));
    }
    content = VStack(HorizontalAlignment::center, std::nullopt, std::move(rows));
  }
  return content.padding(kWidgetPadding)
      .frame(FlexibleFrame{.maxWidth = kInfinity, .maxHeight = kInfinity})
      .background(ColorFill(WidgetColors::background()))
      .widgetURL(*url(KestronaWidgetDeepLinkScheme::openApp));
}

TimerWidgetAppIntent recentTaskAppIntent(const RecentTaskVO& task) {
  if (task.isRunning()) return TimerWidgetAppIntent(TimerActionType::pause, std::nullopt);
  return TimerWidgetAppIntent(TimerActionType::start, task.taskId);
}

RecentTasksWidgetView::PlateAction recentTaskPlateAction() {
  return [](const View& plate, const RecentTaskVO& task) {
    return plate.pressTarget(AnyAppIntent(recentTaskAppIntent(task)));
  };
}

RecentTasksWidgetView makeRecentTasksWidgetView(const RecentTasksEntry& entry, WidgetFamily family) {
  return RecentTasksWidgetView{.entry = entry, .plateAction = recentTaskPlateAction(), .family = family};
}

}  // namespace kestrona
