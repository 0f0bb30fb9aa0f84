#include "SharedWidgets/Views/Chart/ChartView.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "SharedCore/Support/Colors/NamedColors.h"
#include "SharedWidgets/Views/Chart/ChartBarView.h"

namespace kestrona {
namespace {

// The width each label is centred in; wide enough for two digits.
constexpr double kLabelWidth = 24;
// Labels closer than this, centre to centre, would crowd.
constexpr double kMinimumLabelDistance = 14;
constexpr double kLabelFontSize = 9;

}  // namespace

double ChartView::gapFactor() const {
  const bool weekly = dateRangeType == DateRangeType::weekly;
  if (family == WidgetFamily::systemSmall) return weekly ? 0.7 : 0.3;
  return weekly ? 0.5 : 0.2;
}

double ChartView::barWidth(double width) const {
  if (bars.empty()) return 0;
  const double count = static_cast<double>(bars.size());
  return width / (count + gapFactor() * (count - 1));
}

double ChartView::scale() const {
  double greatest = minBarValue;
  for (const ChartBar& bar : bars) greatest = std::max(greatest, bar.totalValue);
  return greatest;
}

double ChartView::labelRowHeight() const { return family == WidgetFamily::systemSmall ? 0 : kLabelRowHeight; }

Calendar ChartView::weekCalendar() const {
  Calendar result = calendar;
  if (firstDayOfWeek >= 1 && firstDayOfWeek <= 7) result.setFirstWeekday(static_cast<int>(firstDayOfWeek));
  return result;
}

std::vector<std::string> ChartView::labels(double width) const {
  const Calendar weeks = weekCalendar();
  const double pitch = barWidth(width) * (1 + gapFactor());

  std::optional<std::size_t> today;
  for (std::size_t index = 0; index < bars.size(); ++index) {
    if (weeks.isDateInToday(bars[index].date)) {
      today = index;
      break;
    }
  }
  std::size_t stride = 1;
  if (dateRangeType == DateRangeType::monthly && pitch > 0) {
    stride = static_cast<std::size_t>(std::max(1.0, std::ceil(kMinimumLabelDistance / pitch)));
  }

  const std::vector<std::string> symbols = weeks.veryShortWeekdaySymbols();
  std::vector<std::string> result;
  result.reserve(bars.size());
  for (std::size_t index = 0; index < bars.size(); ++index) {
    const bool isToday = today == index;
    const bool nearToday = today && index != *today &&
                           static_cast<std::size_t>(std::abs(static_cast<long>(index) - static_cast<long>(*today))) < stride;
    if (!isToday && (index % stride != 0 || nearToday)) {
      result.emplace_back();
      continue;
    }
    if (dateRangeType == DateRangeType::weekly) {
      const int weekday = weeks.component(Calendar::Component::weekday, bars[index].date);
      result.push_back(weekday >= 1 && weekday <= static_cast<int>(symbols.size()) ? symbols[weekday - 1] : "");
    } else {
      result.push_back(std::to_string(weeks.component(Calendar::Component::day, bars[index].date)));
    }
  }
  return result;
}

View ChartView::content(Size size) const {
  const double barsHeight = std::max(0.0, size.height - labelRowHeight());
  const double width = barWidth(size.width);
  const double gap = width * gapFactor();
  const double maximum = scale();

  std::vector<View> columns;
  columns.reserve(bars.size());
  for (const ChartBar& bar : bars) {
    // A negative total (a refund, a damaged file) draws no column and
    // leaves the scale of the others alone.
    const double columnHeight = maximum > 0 ? std::max(0.0, bar.totalValue) / maximum * barsHeight : 0;
    const ChartBarView barView{bar, width, columnHeight, dateRangeType == DateRangeType::weekly, valueFormatter, family};
    columns.push_back(barView.body().frame(width, barsHeight, Alignment::bottom()));
  }
  const View barsRow = HStack(VerticalAlignment::bottom, gap, std::move(columns)).frame(size.width, barsHeight);
  if (labelRowHeight() == 0) return barsRow;

  const Calendar weeks = weekCalendar();
  const std::vector<std::string> texts = labels(size.width);
  std::vector<View> labelViews;
  for (std::size_t index = 0; index < texts.size(); ++index) {
    if (texts[index].empty()) continue;
    const bool isToday = weeks.isDateInToday(bars[index].date);
    const double centre = width / 2 + (width + gap) * static_cast<double>(index);
    labelViews.push_back(Text(texts[index])
                             .font(Font::system(kLabelFontSize, isToday ? Font::Weight::bold : Font::Weight::medium))
                             .foregroundColor(isToday ? Color::white() : NamedColors::secondaryLabel())
                             .lineLimit(1)
                             .frame(kLabelWidth, labelRowHeight())
                             .offset(centre - kLabelWidth / 2, 0));
  }
  const View labelRow =
      ZStack(Alignment::topLeading(), std::move(labelViews)).frame(size.width, labelRowHeight(), Alignment::topLeading());
  return VStack(HorizontalAlignment::leading, 0, {barsRow, labelRow});
}

View ChartView::body() const {
  const ChartView chart = *this;
  return SizeReader([chart](Size size) { return chart.content(size); });
}

}  // namespace kestrona
