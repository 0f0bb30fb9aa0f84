#include "SharedWidgets/Views/Chart/ChartWidgetView.h"

#include "Platform/Foundation/LocalizedString.h"
#include "SharedCore/Support/TimeText/TimeIntervalStringFormat.h"
#include "SharedWidgets/Views/Chart/ChartValueFormatting.h"
#include "SharedWidgets/Views/Chart/LabeledValueView.h"
#include "WidgetData/Records/WidgetType.h"
#include "WidgetData/TimerIntent/KestronaWidgetDeepLinkScheme.h"

namespace kestrona {
namespace {

// The scale of the time charts: one hour, in seconds.
constexpr double kTimeChartMinBarValue = 3600;

std::string timeTrackedTitle() {
  return localizedString("widget.chart.timeTracked", "Time tracked",
                         "Time tracked chart widget: the week's or month's total");
}

std::string revenueTitle() {
  return localizedString("widget.chart.revenue", "Revenue", "Revenue chart widget: the week's or month's total");
}

std::string dailyAverageTitle() {
  return localizedString("widget.chart.dailyAverage", "Daily avg.",
                         "Chart widgets: the average per day, next to the total");
}

std::optional<URL> reportsURL(ChartView::DateRangeType dateRangeType) {
  return url(dateRangeType == ChartView::DateRangeType::weekly ? KestronaWidgetDeepLinkScheme::openWeeklyReports
                                                               : KestronaWidgetDeepLinkScheme::openMonthlyReports);
}

// The background colour of every widget.
const Color& widgetBackground() {
  static const Color color = Color::black();
  return color;
}

}  // namespace

double chartTotalValue(const std::vector<ChartBar>& bars) {
  double total = 0;
  for (const ChartBar& bar : bars) total += bar.totalValue;
  return total;
}

double chartDailyAverage(const std::vector<ChartBar>& bars) {
  std::size_t daysWithValue = 0;
  for (const ChartBar& bar : bars) {
    if (bar.totalValue > 0) ++daysWithValue;
  }
  if (daysWithValue == 0) return 0;
  return chartTotalValue(bars) / static_cast<double>(daysWithValue);
}

ChartWidgetView ChartWidgetView::forTimeTracked(const TimeTrackedWidgetEntry& entry,
                                                ChartView::DateRangeType dateRangeType, WidgetFamily family,
                                                Calendar calendar) {
  const bool weekly = dateRangeType == ChartView::DateRangeType::weekly;
  return ChartWidgetView{
      .dateRangeType = dateRangeType,
      .firstDayOfWeek = entry.firstDayOfWeek,
      .chartBars = entry.chartBars,
      .primaryTitle = timeTrackedTitle(),
      .smallPrimaryTitle =
          displayName(weekly ? WidgetType::weeklyTimeTrackedChart : WidgetType::monthlyTimeTrackedChart),
      .primaryValue = chartTotalValue(entry.chartBars),
      .secondaryTitle = dailyAverageTitle(),
      .secondaryValue = chartDailyAverage(entry.chartBars),
      .totalValueFormatter = [](double value) { return toString(value, TimeIntervalStringFormat::digitalHoursMinutes); },
      .chartValueFormatter = std::nullopt,
      .minBarValue = kTimeChartMinBarValue,
      .widgetURL = reportsURL(dateRangeType),
      .family = family,
      .calendar = std::move(calendar),
  };
}

ChartWidgetView ChartWidgetView::forRevenue(const RevenueWidgetEntry& entry, ChartView::DateRangeType dateRangeType,
                                            WidgetFamily family, Calendar calendar) {
  const bool weekly = dateRangeType == ChartView::DateRangeType::weekly;
  const Locale locale(entry.currencyLocalIdentifier);
  std::function<std::string(double)> barFormatter;
  if (weekly) {
    barFormatter = [locale](double value) { return compactNumberString(value, locale); };
  } else {
    barFormatter = [locale](double value) { return plainNumberString(value, locale); };
  }
  return ChartWidgetView{
      .dateRangeType = dateRangeType,
      .firstDayOfWeek = entry.firstDayOfWeek,
      .chartBars = entry.chartBars,
      .primaryTitle = revenueTitle(),
      .smallPrimaryTitle = displayName(weekly ? WidgetType::weeklyRevenueChart : WidgetType::monthlyRevenueChart),
      .primaryValue = chartTotalValue(entry.chartBars),
      .secondaryTitle = dailyAverageTitle(),
      .secondaryValue = chartDailyAverage(entry.chartBars),
      .totalValueFormatter = [locale](double value) { return compactCurrencyString(value, locale); },
      .chartValueFormatter = std::move(barFormatter),
      .minBarValue = 0,
      .widgetURL = reportsURL(dateRangeType),
      .family = family,
      .calendar = std::move(calendar),
  };
}

ChartView ChartWidgetView::chartView() const {
  return ChartView{
      .bars = chartBars,
      .firstDayOfWeek = firstDayOfWeek,
      .dateRangeType = dateRangeType,
      .valueFormatter = chartValueFormatter.value_or(totalValueFormatter),
      .minBarValue = minBarValue,
      .family = family,
      .calendar = calendar,
  };
}

View ChartWidgetView::content() const {
  if (family == WidgetFamily::systemSmall) {
    return VStack(HorizontalAlignment::leading, kDefaultSpacing,
                  {
                      LabeledValueView{smallPrimaryTitle, totalValueFormatter(primaryValue), 1}.body(),
                      chartView().body(),
                  });
  }
  const View totals = VStack(HorizontalAlignment::leading, kDefaultSpacing,
                             {
                                 LabeledValueView{primaryTitle, totalValueFormatter(primaryValue), 1}.body(),
                                 LabeledValueView{secondaryTitle, totalValueFormatter(secondaryValue), 1}.body(),
                             });
  return HStack(VerticalAlignment::top, 0,
                {
                    totals,
                    chartView().body().padding(EdgeInsets{kChartPadding, kChartPadding, 0, 0}),
                });
}

View ChartWidgetView::body() const {
  const View inner = content();
  View widget = SizeReader([inner](Size size) {
                  return inner.padding(kContentMargin).frame(size.width, size.height, Alignment::center());
                }).background(ColorFill(widgetBackground()));
  if (widgetURL) widget = widget.widgetURL(*widgetURL);
  return widget;
}

}  // namespace kestrona
