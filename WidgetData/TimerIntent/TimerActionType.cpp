#include "WidgetData/TimerIntent/TimerActionType.h"

namespace kestrona {

std::string_view RawRepresentable<TimerActionType>::rawValue(TimerActionType action) {
  switch (action) {
    case TimerActionType::start:
      return "start";
    case TimerActionType::pause:
      return "pause";
  }
  return "start";
}

std::optional<TimerActionType> RawRepresentable<TimerActionType>::fromRawValue(RawValue raw) {
  for (TimerActionType action : allCases<TimerActionType>) {
    if (rawValue(action) == raw) return action;
  }
  return std::nullopt;
}

std::string_view AppEnumDisplay<TimerActionType>::caseDisplayRepresentation(TimerActionType action) {
  switch (action) {
    case TimerActionType::start:
      return "Start";
    case TimerActionType::pause:
      return "Pause";
  }
  return "Start";
}

}  // namespace kestrona
