#include "Extension/WidgetProcess/DataFileWarnings.h"

#include <memory>
#include <optional>
#include <ostream>
#include <utility>

#include "WidgetData/Records/CodingError.h"
#include "WidgetData/Records/RecentTasksWidgetDataVO.h"
#include "WidgetData/Records/RevenueWidgetDataVO.h"
#include "WidgetData/Records/TimeTrackedWidgetDataVO.h"
#include "WidgetData/Records/TimerStateVO.h"
#include "WidgetData/Records/WidgetDataReader.h"
#include "WidgetData/Records/WidgetError.h"

namespace kestrona {
namespace {

template <typename Record>
std::shared_ptr<const Error> readingFailure(const WidgetDataReader& reader) {
  WidgetDataResult<Record> result = reader.readCodableData<Record>();
  return result.isSuccess() ? nullptr : result.sharedError();
}

// Why the file of reader's widget can't be used, naming the file; none
// when it can.
std::optional<std::string> problem(const WidgetDataReader& reader) {
  std::shared_ptr<const Error> failure;
  switch (reader.widgetType()) {
    case WidgetType::timer: failure = readingFailure<TimerStateVO>(reader); break;
    case WidgetType::recentTasks: failure = readingFailure<RecentTasksWidgetDataVO>(reader); break;
    case WidgetType::weeklyTimeTrackedChart:
    case WidgetType::monthlyTimeTrackedChart: failure = readingFailure<TimeTrackedWidgetDataVO>(reader); break;
    case WidgetType::weeklyRevenueChart:
    case WidgetType::monthlyRevenueChart: failure = readingFailure<RevenueWidgetDataVO>(reader); break;
  }
  if (!failure) return std::nullopt;
  const std::string file = reader.filePath() ? "\"" + reader.filePath()->string() + "\"" : "of the widget";
  if (failure->is(WidgetError::kDomain, static_cast<std::int64_t>(WidgetError::Code::cannotAccessDirectory))) {
    return "There is no folder for the widget files: neither XDG_DATA_HOME nor HOME is set";
  }
  std::string reason = failure->domain() == DecodingError::kDomain
                           ? "The file " + file + " is damaged: " + failure->localizedDescription()
                       : failure->underlyingError() ? failure->underlyingError()->localizedDescription()
                                                    : "The file " + file + " could not be read";
  if (!reason.empty() && reason.back() == '.') reason.pop_back();
  return reason;
}

std::string_view standIn(WidgetType type) {
  switch (type) {
    case WidgetType::timer: return "its placeholder";
    case WidgetType::recentTasks: return "its sample tasks";
    case WidgetType::weeklyTimeTrackedChart:
    case WidgetType::monthlyTimeTrackedChart:
    case WidgetType::weeklyRevenueChart:
    case WidgetType::monthlyRevenueChart: return "an empty chart";
  }
  return "";
}

}  // namespace

DataFileWarnings::DataFileWarnings(std::string appGroupName, std::ostream& errors)
    : appGroupName_(std::move(appGroupName)), errors_(errors) {}

void DataFileWarnings::check(std::string_view kind) {
  std::optional<WidgetType> type = fromRawValue<WidgetType>(kind);
  if (!type) return;
  std::optional<std::string> reason = problem(*WidgetDataReader::withAppGroupName(appGroupName_, *type));
  auto told = told_.find(kind);
  if (!reason) {
    if (told != told_.end()) told_.erase(told);
    return;
  }
  if (told != told_.end() && told->second == *reason) return;
  errors_ << "kestrona-widgets: warning: " << *reason << "; the " << kind << " widget shows " << standIn(*type) << "\n";
  told_[std::string(kind)] = *reason;
}

}  // namespace kestrona
