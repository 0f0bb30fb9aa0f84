#include "SharedWidgets/Views/Chart/ChartWidgetView.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>

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

// Whether locale names a currency of its region. ISO 4217 has codes for
// no currency, for testing and for precious metals, which the locale data
// gives regions that are unknown; money is not written in those.
bool hasCurrency(const Locale& locale) {
  static constexpr std::string_view kNoCurrency[] = {"XXX", "XTS", "XAU", "XAG", "XPD", "XPT"};
  const std::optional<std::string> code = locale.currencyCode();
  return code && std::find(std::begin(kNoCurrency), std::end(kNoCurrency), *code) == std::end(kNoCurrency);
}

// The locale the system writes money in: LC_ALL, then LC_MONETARY, then
// LANG, the first that is set and not empty. The C and POSIX locales have
// no currency.
std::optional<Locale> systemMoneyLocale() {
  for (const char* name : {"LC_ALL", "LC_MONETARY", "LANG"}) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') continue;
    const std::optional<std::string> identifier = Locale::identifierFromPOSIXName(value);
    if (!identifier || *identifier == "en_US_POSIX") return std::nullopt;
    return Locale(*identifier);
  }
  return std::nullopt;
}

// Revenue totals: compact currency in the record's locale; when that has no
// currency (a placeholder's empty identifier, an unknown one), in the
// system's; when neither has one, a plain number in the record's locale.
std::function<std::string(double)> moneyFormatter(const Locale& record) {
  std::optional<Locale> money = hasCurrency(record) ? std::optional(record) : systemMoneyLocale();
  if (money && !hasCurrency(*money)) money.reset();
  if (money) return [locale = *money](double value) { return compactCurrencyString(value, locale); };
  return [record](double value) { return plainNumberString(value, record); };
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
      .totalValueFormatter = moneyFormatter(locale),
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
